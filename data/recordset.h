// The rows of a command's last run, walked from the first to the last.
#pragma once

#include <cstddef>
#include <optional>

#include "data/connection.h"
#include "runtime/value.h"

namespace rdv {

// Closed until its command has run, and again after Close. Every call but IsOpen and Open on a
// closed recordset raises 3704 (Operation is not allowed when the object is closed).
class Recordset {
 public:
  bool IsOpen() const { return table_.has_value(); }

  // Raises 3705 (Operation is not allowed when the object is open) when it is open.
  void RequireClosed() const;

  // Raises 3705 when it is open already. Stands on the first row afterwards, or at the end of file
  // when there is none.
  void Open(RowTable table);
  void Close();

  bool EndOfFile() const;

  // Raise 3021 (Either BOF or EOF is True ...) where there is no row to move from.
  void MoveNext();
  void MoveLast();

  // The field of the current row; the name is compared without regard to case. Raises 3265 for a
  // name that is no column and 3021 when there is no current row. The reference lives until the
  // recordset is closed.
  const Value& Field(TextView name) const;

 private:
  const RowTable& RequireOpen() const;

  std::optional<RowTable> table_;
  size_t position_ = 0;
};

}  // namespace rdv
