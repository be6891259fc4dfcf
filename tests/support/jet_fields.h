// Where the fields of a database file lie: for files that are sound but for the fields that a test
// or a fuzzer changes on purpose.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "data/jet/format/bytes.h"

namespace rdv::jet {

// Up to four bytes. Named by the way there, as in "Things.column Remarks.flags".
struct FileField {
  std::string name;
  size_t at = 0;  // in the file
  size_t size = 0;
};

// Every field of the file's definitions, maps, index pages, data pages, rows and long values, in
// the order in which a reader meets them. The file is a sound one of Jet 4; raises for others.
std::vector<FileField> FieldsOf(Bytes file);

// The field of that name; ends the program where there is none.
const FileField& FindField(const std::vector<FileField>& fields, std::string_view name);

bool FieldIsThere(const std::vector<FileField>& fields, std::string_view name);

// The field's bytes, the lowest first.
uint32_t LoadField(Bytes file, const FileField& field);
void StoreField(std::vector<uint8_t>& file, const FileField& field, uint32_t value);

}  // namespace rdv::jet
