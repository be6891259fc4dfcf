// Values for columns: the texts and literals of a statement become what the column holds.
#pragma once

#include <optional>

#include "data/connection.h"
#include "data/jet/format/schema.h"
#include "data/jet/sql/statement.h"
#include "runtime/value.h"

namespace rdv::jet::sql {

// A value for a column to be written. Numbers are rounded to what the column can hold, a half to
// even; Null for a Boolean is false. Raises "Data type mismatch ..." for a text that is no value of
// the column's type and "Overflow" for a number outside its range. The length of texts is not
// looked at.
Value ToColumn(const Column& column, const Argument& argument);
Value ToColumn(const Column& column, const Literal& literal);
// A value that another column held.
Value ToColumn(const Column& column, const Value& value);

// What a column is compared with.
struct SearchValue {
  Value value;  // of the column's type, or Null: nothing compares with it
  // Of a number outside the column's range: below (-1) or above (1) all that the column can hold;
  // `value` does not count then.
  int beyond = 0;
  // Of a number that the column cannot hold: just below (-1) or above (1) `value`.
  int beside = 0;

  bool IsNull() const { return beyond == 0 && rdv::IsNull(value); }
  // Whether a column may hold it.
  bool Exists() const { return beyond == 0 && beside == 0 && !rdv::IsNull(value); }
};

// Raise "Data type mismatch ..." as above; a literal must also be written like a value of the type:
// a number is no text and a quoted text no number. An argument becomes what the column can hold, a
// half rounded to even; a literal counts as it is written: no whole number is equal to 2.5, and
// true is -1.
SearchValue ToSearchValue(const Column& column, const Argument& argument);
SearchValue ToSearchValue(const Column& column, const Literal& literal);

// A column whose values are written like the literal.
Column ColumnFor(LiteralKind kind);

}  // namespace rdv::jet::sql
