// A whole database as JSON, for people and for comparing files.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

struct DumpOptions {
  Text file_name;                // as it stands in the dump
  std::span<const Text> tables;  // only these, without regard to case; all when empty
  // Where to tell what could not be read: it is left out then (a field is null), and the rest is
  // dumped. Null: damage raises, in the middle of what was handed on.
  std::vector<Text>* damage = nullptr;
};

// The name that a dump has for a column's type.
std::string TypeName(ColumnType type);

// Hands the dump, UTF-8, to `write` in pieces. Raises "cannot find the input table" for an option's
// name that is none, before anything is written.
void DumpDatabase(const FileReader& file, const DumpOptions& options,
                  const std::function<void(std::string_view)>& write);

}  // namespace rdv::jet
