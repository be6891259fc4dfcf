#include "data/jet/rows/long_value_writer.h"

#include <algorithm>
#include <cassert>

#include "data/jet/file/write_context.h"
#include "data/jet/format/errors.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/long_value.h"
#include "data/jet/rows/row_codec.h"

namespace rdv::jet {

std::vector<uint8_t> EncodeLongValue(const Format& format, const Column& column,
                                     const Value& value) {
  if (column.type == ColumnType::Ole) {
    const Binary* binary = std::get_if<Binary>(&value);
    if (!binary) RaiseTypeMismatch();
    return *binary;
  }
  const Text* text = std::get_if<Text>(&value);
  if (!text) RaiseTypeMismatch();
  std::vector<uint8_t> compressed = EncodeText(*text, true);
  if (compressed.size() <= format.long_value.inline_max) return compressed;
  return EncodeText(*text, false);
}

LongValueWriter::LongValueWriter(const WriteContext& context, PageAllocator& allocator,
                                 const Column& column)
    : context_(context),
      format_(context.Layout()),
      rows_(context, allocator, kOwnerLongValues, column.owned_map, column.free_map) {}

size_t LongValueWriter::FieldSize(Bytes value) const {
  const bool is_inline = value.size() <= format_.long_value.inline_max;
  return kLongValueDescriptorSize + (is_inline ? value.size() : 0);
}

std::vector<uint8_t> LongValueWriter::Store(Bytes value) {
  if (value.size() > kLongValueLengthMask) RaiseFieldTooSmall();
  std::vector<uint8_t> field(FieldSize(value));
  const auto length = static_cast<uint32_t>(value.size());
  if (value.size() <= format_.long_value.inline_max) {
    Store32(field.data(), length | kLongValueInline);
    std::ranges::copy(value, field.begin() + kLongValueDescriptorSize);
  } else if (value.size() <= format_.long_value.single_row_max) {
    Store32(field.data(), length | kLongValueSingleRow);
    StoreRowPointer(field.data() + kLongValuePointer, rows_.Insert(value));
  } else {
    uint32_t stamp = 0;
    const RowId first = StoreChain(value, stamp);
    Store32(field.data(), length | kLongValueChain);
    StoreRowPointer(field.data() + kLongValuePointer, first);
    Store32(field.data() + kLongValueDescriptorStamp, stamp);
  }
  return field;
}

// From the end to the beginning, so that each row knows its next. What is left over for the last
// row may share its page with others.
RowId LongValueWriter::StoreChain(Bytes value, uint32_t& stamp) {
  assert(value.size() > format_.long_value.single_row_max);
  const size_t chunk = format_.long_value.chunk;
  size_t start = (value.size() - 1) / chunk * chunk;
  RowId next;
  for (;; start -= chunk) {
    const Bytes payload = value.subspan(start, std::min(chunk, value.size() - start));
    std::vector<uint8_t> row(kRowPointerSize + payload.size());
    StoreRowPointer(row.data(), next);
    std::ranges::copy(payload, row.begin() + kRowPointerSize);
    const bool may_share = start > 0 && row.size() <= format_.long_value.single_row_max;
    next = may_share ? rows_.Insert(row) : rows_.InsertAlone(row);
    if (start == 0) break;
  }
  // Tells this chain from one that had the page before. Never 0, which says "no chain".
  stamp = (next.page * 0x9E3779B1u) | 1u;
  Store32(context_.pager.Edit(next.page) + kLongValueStamp, stamp);
  return next;
}

void LongValueWriter::Release(Bytes field) {
  for (const RowId row : LongValueRows(context_.file, field)) rows_.RemoveWithPage(row);
}

}  // namespace rdv::jet
