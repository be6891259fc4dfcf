#include "data/jet/rows/long_value.h"

#include <algorithm>

#include "data/jet/rows/data_page.h"

namespace rdv::jet {
namespace {

// Calls `take(row, payload)` for each row of the value, in order; the payloads make up its length.
template <typename Take>
void ForEachPart(const FileReader& file, const LongValue& value, Take take) {
  size_t left = value.length;
  const auto use = [&](RowId row, Bytes payload) {
    const Bytes part = payload.first(std::min(left, payload.size()));
    left -= part.size();
    take(row, part);
  };
  if (value.kind == LongValue::Kind::Inline) {
    use({}, value.inline_bytes);
  } else if (value.kind == LongValue::Kind::SingleRow) {
    use(value.first, RequireRow(file, kOwnerLongValues, value.first));
  } else {
    // Each full row of a chain takes a page, so that a longer chain leads in a circle.
    uint32_t hops = 0;
    for (RowId row = value.first; row && left > 0; ++hops) {
      if (hops > file.PageCount()) file.Damaged(u"The rows of a long value lead in a circle");
      const Bytes content = RequireRow(file, kOwnerLongValues, row);
      const RowId next = ReadRowPointer(file, content);
      use(row, content.subspan(kRowPointerSize));
      row = next;
    }
  }
  if (left > 0) file.Damaged(u"A long value is shorter than it says");
}

}  // namespace

LongValue ParseLongValue(const FileReader& file, Bytes field) {
  if (field.size() < kLongValueDescriptorSize) {
    file.Damaged(u"The descriptor of a long value is cut off");
  }
  const uint32_t head = Load32(field.data());
  LongValue value;
  value.length = head & kLongValueLengthMask;
  value.first = LoadRowPointer(&field[kLongValuePointer]);
  switch (head & kLongValueKindMask) {
    case kLongValueInline:
      value.kind = LongValue::Kind::Inline;
      value.inline_bytes = field.subspan(kLongValueDescriptorSize);
      break;
    case kLongValueSingleRow:
      value.kind = LongValue::Kind::SingleRow;
      break;
    case kLongValueChain:
      value.kind = LongValue::Kind::Chain;
      value.stamp = Load32(&field[kLongValueDescriptorStamp]);
      break;
    default:
      file.Damaged(u"A long value is stored in an unknown way");
  }
  return value;
}

std::vector<uint8_t> ReadLongValue(const FileReader& file, Bytes field) {
  std::vector<uint8_t> bytes;
  ForEachPart(file, ParseLongValue(file, field),
              [&](RowId, Bytes part) { bytes.insert(bytes.end(), part.begin(), part.end()); });
  return bytes;
}

Text ReadMemo(const FileReader& file, Bytes field) {
  return file.DecodeText(ReadLongValue(file, field));
}

std::vector<RowId> LongValueRows(const FileReader& file, Bytes field) {
  std::vector<RowId> rows;
  // An inline value has none, but is judged like the others.
  ForEachPart(file, ParseLongValue(file, field), [&](RowId row, Bytes) {
    if (row) rows.push_back(row);
  });
  return rows;
}

}  // namespace rdv::jet
