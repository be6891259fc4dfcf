#include "data/jet/index/index_key.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>

#include "data/jet/format/errors.h"

namespace rdv::jet {
namespace {

constexpr uint8_t kNullAscending = 0x00;
constexpr uint8_t kNullDescending = 0xFF;
constexpr uint8_t kFlagAscending = 0x7F;
constexpr uint8_t kFlagDescending = 0x80;
constexpr uint8_t kTrueByte = 0x00;
constexpr uint8_t kFalseByte = 0xFF;
constexpr size_t kSegmentSize = 8;
constexpr uint8_t kMoreSegments = 0x09;
constexpr uint8_t kNumericPositiveSign = 0xFF;
constexpr uint8_t kNumericNegativeSign = 0x00;
constexpr size_t kTypicalKey = 64;  // what is set aside for one at first

// Bytes of a part behind its flag: complemented for a descending column.
void AppendInOrder(const uint8_t* bytes, size_t size, bool descending, Key& key) {
  for (size_t i = 0; i < size; ++i) {
    key.push_back(descending ? static_cast<uint8_t>(~bytes[i]) : bytes[i]);
  }
}

// The highest byte first and the sign bit turned round, so that negative numbers come first.
template <typename Unsigned>
void AppendSigned(Unsigned number, bool descending, Key& key) {
  uint8_t bytes[sizeof(Unsigned)];
  number ^= static_cast<Unsigned>(Unsigned{1} << (sizeof(Unsigned) * 8 - 1));
  for (size_t i = sizeof(Unsigned); i-- > 0; number = static_cast<Unsigned>(number >> 8)) {
    bytes[i] = static_cast<uint8_t>(number);
  }
  AppendInOrder(bytes, sizeof bytes, descending, key);
}

// A floating-point number's bits order like a signed number's once those of negative ones, which
// grow away from zero, are complemented below the sign.
template <typename Unsigned>
void AppendReal(Unsigned bits, bool descending, Key& key) {
  const auto sign = static_cast<Unsigned>(Unsigned{1} << (sizeof(Unsigned) * 8 - 1));
  if (bits & sign) bits = static_cast<Unsigned>(~bits ^ sign);
  AppendSigned(bits, descending, key);
}

void AppendBinary(Bytes bytes, bool descending, Key& key) {
  while (!bytes.empty()) {
    const Bytes segment = bytes.first(std::min(kSegmentSize, bytes.size()));
    bytes = bytes.subspan(segment.size());
    uint8_t padded[kSegmentSize] = {};
    std::copy(segment.begin(), segment.end(), padded);
    AppendInOrder(padded, kSegmentSize, descending, key);
    const auto length = static_cast<uint8_t>(segment.size());
    if (bytes.empty()) {
      AppendInOrder(&length, 1, descending, key);
    } else {
      key.push_back(kMoreSegments);
    }
  }
}

void AppendGuid(const Guid& guid, bool descending, Key& key) {
  std::array<uint8_t, kGuidSize> written;
  for (size_t i = 0; i < written.size(); ++i) written[i] = guid.bytes[kGuidOrder[i]];
  AppendBinary(written, descending, key);
}

void AppendNumeric(const DecimalNumber& number, bool descending, Key& key) {
  key.push_back(number.negative ? kNumericNegativeSign : kNumericPositiveSign);
  for (const uint32_t word : number.magnitude) {
    uint8_t bytes[sizeof word];
    Store32BigEndian(bytes, word);
    AppendInOrder(bytes, sizeof bytes, number.negative != descending, key);
  }
}

// False, and the character in `unsupported`, when the text has no key.
bool AppendText(const FileReader& file, TextView text, bool descending, Key& key,
                char16_t& unsupported) {
  if (file.Layout().IsJet4()) return AppendTextKeyJet4(text, descending, key, unsupported);
  AppendTextKeyJet3(text, descending, key);
  return true;
}

struct PartAppender {
  const FileReader& file;
  const bool descending;
  Key& key;
  char16_t unsupported = 0;

  bool operator()(Null) { return true; }  // the flag says it
  bool operator()(bool flag) {
    const uint8_t byte = flag ? kTrueByte : kFalseByte;
    AppendInOrder(&byte, 1, descending, key);
    return true;
  }
  bool operator()(uint8_t number) {
    AppendInOrder(&number, 1, descending, key);
    return true;
  }
  bool operator()(int16_t number) { return Signed(static_cast<uint16_t>(number)); }
  bool operator()(int32_t number) { return Signed(static_cast<uint32_t>(number)); }
  bool operator()(Currency amount) { return Signed(static_cast<uint64_t>(amount.ten_thousandths)); }
  bool operator()(float number) { return Real(std::bit_cast<uint32_t>(number)); }
  bool operator()(double number) { return Real(std::bit_cast<uint64_t>(number)); }
  bool operator()(DateTime date) { return Real(std::bit_cast<uint64_t>(date.days)); }
  bool operator()(const DecimalNumber& number) {
    AppendNumeric(number, descending, key);
    return true;
  }
  bool operator()(const Guid& guid) {
    AppendGuid(guid, descending, key);
    return true;
  }
  bool operator()(const Binary& binary) {
    AppendBinary(binary, descending, key);
    return true;
  }
  bool operator()(const Text& text) { return AppendText(file, text, descending, key, unsupported); }

  template <typename Unsigned>
  bool Signed(Unsigned number) {
    AppendSigned(number, descending, key);
    return true;
  }
  template <typename Unsigned>
  bool Real(Unsigned bits) {
    AppendReal(bits, descending, key);
    return true;
  }
};

bool HasGeneralOrder(const Column& column) {
  return column.sort_order == kSortOrderGeneral && column.sort_version == 0;
}

// What keeps a text from having a key.
struct Obstacle {
  bool sort_order = false;
  char16_t character = 0;
};

std::optional<Obstacle> TryAppendKeyPart(const FileReader& file, const Column& column,
                                         bool descending, const Value& value, Key& key) {
  if (IsNull(value)) {
    key.push_back(descending ? kNullDescending : kNullAscending);
    return std::nullopt;
  }
  if (!HasTypeOf(column, value)) RaiseTypeMismatch();
  if (column.IsText() && !HasGeneralOrder(column)) return Obstacle{.sort_order = true};
  key.push_back(descending ? kFlagDescending : kFlagAscending);
  PartAppender appender{file, descending, key};
  if (!std::visit(appender, value)) return Obstacle{.character = appender.unsupported};
  return std::nullopt;
}

[[noreturn]] void RaiseObstacle(const Column& column, const Obstacle& obstacle) {
  if (obstacle.sort_order) RaiseUnsupportedSortOrder(column.sort_order);
  RaiseUnsupportedKeyCharacter(obstacle.character);
}

}  // namespace

void AppendKeyPart(const FileReader& file, const Column& column, bool descending,
                   const Value& value, Key& key) {
  const auto obstacle = TryAppendKeyPart(file, column, descending, value, key);
  if (obstacle) RaiseObstacle(column, *obstacle);
}

Key BuildKey(const FileReader& file, const TableDefinition& table, const RealIndex& index,
             std::span<const Value> values) {
  assert(values.size() <= index.columns.size());
  Key key;
  key.reserve(kTypicalKey);
  for (size_t i = 0; i < values.size(); ++i) {
    const IndexColumn& part = index.columns[i];
    AppendKeyPart(file, table.columns[part.column], part.descending, values[i], key);
  }
  if (key.size() > kLongestKey) RaiseKeyTooLong();
  return key;
}

std::optional<Key> TryBuildKey(const FileReader& file, const TableDefinition& table,
                               const RealIndex& index, std::span<const Value> values) {
  assert(values.size() <= index.columns.size());
  Key key;
  key.reserve(kTypicalKey);
  for (size_t i = 0; i < values.size(); ++i) {
    const IndexColumn& part = index.columns[i];
    if (TryAppendKeyPart(file, table.columns[part.column], part.descending, values[i], key)) {
      return std::nullopt;
    }
  }
  return key;
}

std::vector<Value> IndexValuesOfRow(const TableDefinition& table, const RealIndex& index,
                                    const RowView& row) {
  std::vector<Value> values;
  values.reserve(index.columns.size());
  for (const IndexColumn& part : index.columns) {
    values.push_back(row.Get(table.columns[part.column]));
  }
  return values;
}

bool AnyNull(std::span<const Value> values) {
  return std::ranges::any_of(values, IsNull);
}

bool AllNull(std::span<const Value> values) {
  return std::ranges::all_of(values, IsNull);
}

bool HasEntry(const RealIndex& index, std::span<const Value> values) {
  return !index.ignore_nulls || !AllNull(values);
}

std::optional<Key> KeyOfRow(const FileReader& file, const TableDefinition& table,
                            const RealIndex& index, const RowView& row) {
  const std::vector<Value> values = IndexValuesOfRow(table, index, row);
  if (!HasEntry(index, values)) return std::nullopt;
  return BuildKey(file, table, index, values);
}

}  // namespace rdv::jet
