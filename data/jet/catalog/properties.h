// The properties that the catalog stores with an object, in one block of bytes of its own layout.
#pragma once

#include <cstdint>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/bytes.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

struct Property {
  Text owner;  // a column's name, "" for the object itself
  Text name;
  ColumnType type = ColumnType::Text;
  std::vector<uint8_t> value;  // a text is never compressed
};

// MSysObjects.LvProp. Raises the damaged file's error for bytes that are no such block.
std::vector<Property> ParseProperties(const FileReader& file, Bytes bytes);

}  // namespace rdv::jet
