#include "tools/database_file/explained.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <vector>

#include "data/jet/file/file.h"
#include "data/jet/format/errors.h"
#include "data/jet/format/format.h"
#include "data/jet/format/header.h"
#include "tools/command_line/command_line.h"

namespace rdv {
namespace {

// Why the file is not read here, nothing when its beginning is that of a database that is.
std::optional<Text> WhyNotRead(const Text& path) {
  try {
    const auto file = jet::NativeFileSystem().Open(path, jet::FileAccess::Read);
    std::vector<uint8_t> start(jet::kJet4.page_size);
    start.resize(file->ReadAt(0, start));
    return jet::WhyNotRecognized(start, file->Stamp().size);
  } catch (const jet::FileError& error) {
    return u"It cannot be read: " + FromUtf8(error.what());
  }
}

std::optional<std::string> WhyNotOpened(const Text& path, jet::FileAccess access) {
  try {
    jet::NativeFileSystem().Open(path, access);
    return std::nullopt;
  } catch (const jet::FileError& error) {
    return error.what();
  }
}

// Which right is missing: one error of the engine stands for all three.
std::string MissingRight(const Text& path) {
  if (const auto reason = WhyNotOpened(path, jet::FileAccess::ReadWrite))
    return Quoted(path) + " can be read and not be written: " + *reason;
  const Text folder =
      std::filesystem::absolute(std::filesystem::path(path)).parent_path().u16string();
  return Quoted(path) + " can be written, but not its folder " + Quoted(folder) +
         ", where the lock file and the journal have to lie beside it";
}

}  // namespace

// Refusals for other reasons than rights have the reason in the text of the error.
bool IsMissingRight(const RuntimeError& error) {
  constexpr TextView kReadOnly = u"Cannot update. Database or object is read-only.";
  constexpr TextView kOwnReasons[] = {u"Access 97 files", u"is the engine's own"};
  return error.Description().starts_with(kReadOnly) &&
         std::ranges::none_of(kOwnReasons, [&](TextView reason) {
           return error.Description().find(reason) != Text::npos;
         });
}

std::string Explained(const RuntimeError& error, const Text& path) {
  std::string text = tools::Described(error);
  if (static_cast<jet::ErrorNumber>(error.Number()) == jet::ErrorNumber::WrongPassword)
    return "'" + ToUtf8(path) + "' is protected by a password; remove it where it was set. " + text;
  if (error.Description().starts_with(u"Unrecognized database format")) {
    // A reason that the error tells itself is not told twice.
    const std::optional<Text> reason = WhyNotRead(path);
    if (reason && error.Description().find(*reason) == Text::npos)
      return ToUtf8(*reason) + ". " + text;
  }
  if (IsMissingRight(error)) {
    // Of a file that nobody may read the engine's text, which is about writing, says nothing.
    if (const auto reason = WhyNotOpened(path, jet::FileAccess::Read))
      return Quoted(path) + " cannot be read: " + *reason;
    return MissingRight(path) + ". " + text;
  }
  return text;
}

std::string Quoted(const Text& name) {
  return "'" + ToUtf8(name) + "'";
}

}  // namespace rdv
