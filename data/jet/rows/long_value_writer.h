// Storing values of memo and OLE columns, and giving up the rows that they take.
#pragma once

#include <cstdint>
#include <vector>

#include "data/jet/file/write_context.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/allocation.h"
#include "data/jet/rows/row_store.h"
#include "runtime/value.h"

namespace rdv::jet {

// The bytes of a column's value, before it is known where they go: short texts are compressed.
// Raises for a value that is none of the column's type.
std::vector<uint8_t> EncodeLongValue(const Format& format, const Column& column,
                                     const Value& value);

class LongValueWriter {
 public:
  LongValueWriter(const WriteContext& context, PageAllocator& allocator, const Column& column);

  // The field for the row. Short values lie in it, longer ones in rows of their own.
  std::vector<uint8_t> Store(Bytes value);
  // The size of that field, without storing anything.
  size_t FieldSize(Bytes value) const;

  // Gives up what the field leads to.
  void Release(Bytes field);

 private:
  RowId StoreChain(Bytes value, uint32_t& stamp);

  const WriteContext& context_;
  const Format& format_;
  RowStore rows_;
};

}  // namespace rdv::jet
