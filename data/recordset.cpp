#include "data/recordset.h"

#include <utility>

#include "runtime/error.h"

namespace rdv {
namespace {

struct RecordsetError {
  int32_t number;
  const char16_t* description;
};

constexpr RecordsetError kNoCurrentRecord{
    3021,
    u"Either BOF or EOF is True, or the current record has been deleted. Requested operation "
    u"requires a current record."};
constexpr RecordsetError kNoSuchItem{3265,
                                     u"Item cannot be found in the collection corresponding to "
                                     u"the requested name or ordinal."};
constexpr RecordsetError kClosed{3704, u"Operation is not allowed when the object is closed."};
constexpr RecordsetError kOpen{3705, u"Operation is not allowed when the object is open."};

[[noreturn]] void Raise(const RecordsetError& error) {
  throw RuntimeError(error.number, error.description, u"ADODB.Recordset");
}

}  // namespace

void Recordset::RequireClosed() const {
  if (IsOpen()) Raise(kOpen);
}

void Recordset::Open(RowTable table) {
  RequireClosed();
  table_ = std::move(table);
  position_ = 0;
}

void Recordset::Close() {
  RequireOpen();
  table_.reset();
}

bool Recordset::EndOfFile() const {
  return position_ >= RequireOpen().rows.size();
}

void Recordset::MoveNext() {
  if (EndOfFile()) Raise(kNoCurrentRecord);
  ++position_;
}

void Recordset::MoveLast() {
  const size_t count = RequireOpen().rows.size();
  if (count == 0) Raise(kNoCurrentRecord);
  position_ = count - 1;
}

const Value& Recordset::Field(TextView name) const {
  const RowTable& table = RequireOpen();
  for (size_t i = 0; i < table.columns.size(); ++i) {
    if (!EqualsIgnoringCase(table.columns[i], name)) continue;
    if (EndOfFile()) Raise(kNoCurrentRecord);
    return table.rows[position_][i];
  }
  Raise(kNoSuchItem);
}

const RowTable& Recordset::RequireOpen() const {
  if (!table_) Raise(kClosed);
  return *table_;
}

}  // namespace rdv
