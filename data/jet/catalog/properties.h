// The properties that the catalog stores with an object, in one block of bytes of its own layout.
#pragma once

#include <cstdint>
#include <span>
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

// The names of those that say something about a column's values.
inline constexpr TextView kPropertyRequired = u"Required";
inline constexpr TextView kPropertyAllowZeroLength = u"AllowZeroLength";
inline constexpr TextView kPropertyDefaultValue = u"DefaultValue";
inline constexpr TextView kPropertyValidationRule = u"ValidationRule";

// MSysObjects.LvProp. Raises the damaged file's error for bytes that are no such block.
std::vector<Property> ParseProperties(const FileReader& file, Bytes bytes);

// The block of a Jet 4 file, empty for no properties. Those of one owner lie together; they are the
// columns'.
std::vector<uint8_t> EncodeProperties(std::span<const Property> properties);

Property YesOrNo(TextView owner, TextView name, bool value);

}  // namespace rdv::jet
