// Reads the part of SQL that the configuration database is used with:
//
//   SELECT [ALL | DISTINCT] [TOP number] items FROM table [WHERE condition]
//       [ORDER BY name [ASC | DESC], ...]
//   UPDATE table SET name = operand, ... [WHERE condition]
//   INSERT INTO table [(name, ...)] VALUES (operand, ...)
//   DELETE [* | table.*] FROM table [WHERE condition]
//
//   item       *, table.*, an operand, COUNT(*)
//   condition  operand =, <>, <, <=, >, >= operand; operand IS [NOT] NULL;
//              operand [NOT] IN (operand, ...); operand [NOT] BETWEEN operand AND operand;
//              operand [NOT] LIKE operand; operand, which is true unless it is 0; NOT, AND, OR, ( )
//   operand    a name, table.name, a number, 'text', "text", #date#, TRUE, FALSE, NULL,
//              but for an item also ( operand )
//
// Keywords are known in either case; a name that is a keyword, or holds other characters than
// letters, digits and "_", is written in backquotes or brackets. A ";" may end a statement. What
// else the language has is refused by its name.
#pragma once

#include "data/jet/sql/statement.h"
#include "runtime/text.h"

namespace rdv::jet::sql {

// In UTF-16 units and in levels of parentheses; what goes beyond is "too complex".
inline constexpr size_t kMaxStatementLength = 64000;
inline constexpr int kMaxConditionDepth = 50;

// Raises SyntaxError, and the engine's error for what is too complex.
Statement ParseStatement(TextView text);

}  // namespace rdv::jet::sql
