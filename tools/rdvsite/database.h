// The database that a command was given, and what is said of one that cannot be used.
#pragma once

#include <memory>
#include <string>

#include "data/jet/engine.h"
#include "runtime/error.h"
#include "runtime/text.h"
#include "tools/command_line/command_line.h"
#include "tools/database_file/explained.h"

namespace rdv {

// Adds the operand FILE, which Open and the like take.
void AddFileOperand(CLI::App& command, std::string& file);

// The path of a database: `given` itself, or NewDB.mdb of the site when it is a folder that plays
// the common application data folder. Raises std::runtime_error for another folder.
Text DatabasePath(const std::string& given);

// Raises std::runtime_error with a sentence that says what is wrong and what can be done.
std::unique_ptr<jet::Engine> OpenDatabase(const Text& path);

// Whether it says that the file cannot be used, and not that a statement is refused.
bool IsAboutFile(const RuntimeError& error, const Text& path);

using tools::Described;

}  // namespace rdv
