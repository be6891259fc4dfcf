// One row: reading its fields where they lie, and building a new one.
#pragma once

#include <cassert>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/bytes.h"
#include "data/jet/format/schema.h"
#include "runtime/value.h"

namespace rdv::jet {

// A view of a row's bytes, checked as a whole when it is made and cheap to point at the next row.
// Lives as long as the page. It is for a walk that meets each row of a table once: the rows and the
// long values of a sound file are not more than the file, so a view that is led to more of them, by
// pointers to one and the same, raises the damaged file's error.
class RowView {
 public:
  // `table` must outlive the view.
  RowView(const FileReader& file, const TableDefinition& table);

  // Raises the damaged file's error for a row whose parts do not fit into it.
  void Reset(RowId id, Bytes row);

  RowId Id() const { return id_; }
  Bytes Content() const { return row_; }

  // The field's bytes as stored; nothing for Null. A Boolean is never Null: its "bytes" are empty
  // and there when it is true.
  std::optional<Bytes> Field(const Column& column) const;
  bool IsNull(const Column& column) const;

  // Raise the damaged file's error for content that does not suit the type; long values are
  // fetched from their pages.
  Value Get(const Column& column) const {
    Value value;
    Read(column, value);
    return value;
  }
  // The same, over what `value` held.
  void Read(const Column& column, Value& value) const;
  // Whether Get would give a value that is equal.
  bool Holds(const Column& column, const Value& value) const;
  // Of an Integer or Long column; nothing for Null.
  std::optional<int32_t> WholeNumber(const Column& column) const;
  // The field as ToText(Get(column)) gives it, without the detour; nothing for Null. GUIDs are
  // written in braces, binary data as hexadecimal digits.
  void AppendText(const Column& column, Text& to) const {
    // Most fields are whole numbers, and most of those have one digit.
    if (!IsFixedNumber(column)) return AppendOtherText(column, to);
    if (!Has(column)) return;
    const int32_t number = FixedNumber(column);
    if (number < 0 || number > 9) return AppendDigits(number, to);
    to.push_back(static_cast<char16_t>(u'0' + number));
  }

 private:
  [[noreturn]] void DamagedRow() const;
  [[noreturn]] void DamagedField(const Column& column) const;
  void ParseVariablePart();
  size_t LoadOffset(size_t position) const;
  size_t VariableOffset(size_t index) const;
  // Whether the null mask has the column's bit.
  bool Has(const Column& column) const {
    const size_t number = column.number;
    return number < column_count_ && (row_[mask_ + number / 8] >> (number % 8) & 1) != 0;
  }
  const uint8_t* FixedField(const Column& column, size_t size) const {
    const size_t start = format_->row.count_size + column.fixed_offset;
    if (start + size > mask_) DamagedField(column);
    return row_.data() + start;
  }
  static bool IsFixedNumber(const Column& column) {
    return column.fixed && (column.type == ColumnType::Integer || column.type == ColumnType::Long);
  }
  // Of such a column.
  int32_t FixedNumber(const Column& column) const {
    if (column.type == ColumnType::Integer)
      return static_cast<int16_t>(Load16(FixedField(column, sizeof(int16_t))));
    return static_cast<int32_t>(Load32(FixedField(column, sizeof(int32_t))));
  }
  std::optional<Bytes> StoredField(const Column& column) const;
  Value ValueOf(const Column& column, Bytes field) const;
  void AppendOtherText(const Column& column, Text& to) const;
  static void AppendDigits(int32_t number, Text& to);
  const uint8_t* Require(const Column& column, Bytes field) const;
  Bytes LongField(Bytes field) const;

  const FileReader* file_;
  const Format* format_;
  uint64_t rows_left_;            // bytes of rows that the walk may still meet
  mutable uint64_t values_left_;  // and of long values
  size_t first_variable_;  // lowest number of a variable column: rows with fewer have no such part
  RowId id_;
  Bytes row_;
  size_t column_count_ = 0;
  size_t variable_count_ = 0;
  size_t mask_ = 0;         // where the null mask starts
  size_t offsets_end_ = 0;  // behind the offset of variable column 0, which comes last
  size_t end_of_data_ = 0;  // of the variable columns
  size_t jumps_ = 0;        // Jet 3: entries of the jump table ...
  size_t jumps_end_ = 0;    // ... and where it ends
};

// A GUID's 16 bytes as "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", and any bytes as hexadecimal
// digits.
void AppendGuid(const uint8_t* bytes, Text& to);
void AppendBinary(Bytes bytes, Text& to);

// Text as Jet stores it: one byte per unit where it is allowed, possible and worth it.
std::vector<uint8_t> EncodeText(TextView text, bool compressible);

// What is set aside for a new row at first.
inline constexpr size_t kTypicalRowSize = 256;

// Bytes that come in small pieces, each to be filled by whoever asks for it.
class FieldBuffer {
 public:
  explicit FieldBuffer(size_t room) : bytes_(room) {}

  size_t Size() const { return size_; }
  size_t Room() const { return bytes_.size(); }
  const uint8_t* At(size_t position) const { return bytes_.data() + position; }
  // Room for `size` more bytes at the end.
  uint8_t* Extend(size_t size) {
    const size_t start = size_;
    size_ += size;
    if (size_ > bytes_.size()) bytes_.resize(2 * size_);
    return bytes_.data() + start;
  }
  // Gives up the last bytes.
  void TakeBack(size_t size) {
    assert(size <= size_);
    size_ -= size;
  }
  void Clear() { size_ = 0; }

 private:
  std::vector<uint8_t> bytes_;
  size_t size_ = 0;
};

// All fields of a new Jet 4 row as stored, in one buffer: rows have many short fields. At first all
// are Null.
class RowFields {
 public:
  explicit RowFields(size_t columns)
      : places_(columns), bytes_(columns == 0 ? 0 : kTypicalRowSize) {}

  // As if made anew, but with the room that there is.
  void Reset(size_t columns) {
    places_.assign(columns, {});
    bytes_.Clear();
  }
  size_t Count() const { return places_.size(); }
  // What they take in memory.
  size_t HeldBytes() const { return places_.size() * sizeof(Place) + bytes_.Room(); }
  // Nothing for Null; for a Boolean, there and empty when true. Valid until a field is set.
  std::optional<Bytes> operator[](size_t column) const {
    assert(column < places_.size());
    const Place& place = places_[column];
    if (!place.present) return std::nullopt;
    return Bytes(bytes_.At(place.start), place.size);
  }

  void Set(size_t column, Bytes stored);
  void SetNull(size_t column) { places_[column].present = false; }
  // The value has the column's own type already, or is Null. Raises "too small" for text and binary
  // data longer than the column. Not for memo and OLE, whose descriptors the writer of long values
  // makes.
  void Encode(size_t column, const Column& definition, const Value& value);

 private:
  struct Place {
    uint32_t start = 0;
    uint32_t size = 0;
    bool present = false;
  };

  void SetPlace(size_t column, size_t start);  // what is behind `start` is the column's

  std::vector<Place> places_;
  FieldBuffer bytes_;
};

// A Jet 4 row; `fields` in the order of the table's columns. Raises when it is larger than a row
// may be.
std::vector<uint8_t> EncodeRow(const TableDefinition& table, const RowFields& fields);
// Likewise, over what `row` holds.
void EncodeRow(const TableDefinition& table, const RowFields& fields, std::vector<uint8_t>& row);

}  // namespace rdv::jet
