// Values of memo and OLE columns: in the row, in a row of their own, or in a chain of rows.
#pragma once

#include <cstdint>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/bytes.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

struct LongValue {
  enum class Kind { Inline, SingleRow, Chain };

  Kind kind = Kind::Inline;
  uint32_t length = 0;  // bytes
  RowId first;          // not for Inline
  uint32_t stamp = 0;   // of a Jet 4 chain
  Bytes inline_bytes;
};

// `field` is the column's content in the row. Raises the damaged file's error for one that is no
// descriptor.
LongValue ParseLongValue(const FileReader& file, Bytes field);

// The whole value. A length that the chain does not bear out raises the damaged file's error;
// memory is taken as rows are found, never on the word of the descriptor.
std::vector<uint8_t> ReadLongValue(const FileReader& file, Bytes field);
Text ReadMemo(const FileReader& file, Bytes field);

// The rows that hold the value, in order; none for an inline one.
std::vector<RowId> LongValueRows(const FileReader& file, Bytes field);

}  // namespace rdv::jet
