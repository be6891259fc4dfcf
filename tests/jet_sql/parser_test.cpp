#include <gtest/gtest.h>

#include "data/commands.h"
#include "data/jet/format/errors.h"
#include "data/jet/sql/statement_parser.h"
#include "data/jet/sql/syntax_error.h"
#include "runtime/error.h"

namespace rdv::jet::sql {
namespace {

Condition WhereOf(TextView condition) {
  const Statement statement = ParseStatement(u"SELECT * FROM T WHERE " + Text(condition));
  return std::get<Select>(statement).where.value();
}

const Name& NameIn(const Operand& operand) {
  return std::get<Name>(operand);
}
const Literal& LiteralIn(const Operand& operand) {
  return std::get<Literal>(operand);
}

std::string ErrorOf(TextView statement) {
  try {
    ParseStatement(statement);
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), static_cast<int32_t>(ErrorNumber::Syntax));
    EXPECT_EQ(error.Source(), kEngineSource);
    return ToUtf8(error.Description());
  }
  return "no error";
}

TEST(StatementParser, ReadsAllStoredCommands) {
  for (const CommandDefinition& command : AllCommands()) {
    SCOPED_TRACE(ToUtf8(command.name));
    EXPECT_NO_THROW(ParseStatement(command.statement));
  }
}

TEST(StatementParser, ReadsItemsTableConditionAndOrderOfASelect) {
  const Statement statement =
      ParseStatement(u"select a, T.b, T.* from T where a = `p` order by b desc, T.c, d ASC;");
  const auto& select = std::get<Select>(statement);
  ASSERT_EQ(select.items.size(), 3u);
  EXPECT_EQ(NameIn(std::get<Operand>(select.items[0])).column, u"a");
  EXPECT_EQ(NameIn(std::get<Operand>(select.items[1])).table, u"T");
  EXPECT_EQ(NameIn(std::get<Operand>(select.items[1])).column, u"b");
  EXPECT_EQ(std::get<AllColumns>(select.items[2]).table, u"T");
  EXPECT_EQ(select.table, u"T");
  EXPECT_EQ(NameIn(select.where->right).column, u"p");
  ASSERT_EQ(select.order.size(), 3u);
  EXPECT_TRUE(select.order[0].descending);
  EXPECT_EQ(select.order[1].name.table, u"T");
  EXPECT_FALSE(select.order[2].descending);
}

TEST(StatementParser, ReadsUpdateInsertAndDelete) {
  const Statement update = ParseStatement(u"UPDATE T SET a = 1, b = c WHERE d = 2");
  EXPECT_EQ(std::get<Update>(update).items.size(), 2u);
  EXPECT_TRUE(std::get<Update>(update).where.has_value());
  const Statement insert = ParseStatement(u"INSERT INTO T (a, b) VALUES (`p`, NULL)");
  EXPECT_EQ(std::get<Insert>(insert).columns, (std::vector<Text>{u"a", u"b"}));
  EXPECT_EQ(LiteralIn(std::get<Insert>(insert).values[1]).kind, LiteralKind::Null);
  const Statement all_columns = ParseStatement(u"INSERT INTO T VALUES (1)");
  EXPECT_TRUE(std::get<Insert>(all_columns).columns.empty());
  for (const TextView text : {u"DELETE FROM T", u"DELETE * FROM T", u"DELETE T.* FROM T"})
    EXPECT_EQ(std::get<Delete>(ParseStatement(text)).table, u"T");
}

TEST(StatementParser, TakesAnyCharactersInQuotedNames) {
  EXPECT_EQ(NameIn(WhereOf(u"[Order By] = 1").left).column, u"Order By");
  EXPECT_EQ(NameIn(WhereOf(u"`SELECT` = 1").left).column, u"SELECT");
  EXPECT_EQ(NameIn(WhereOf(u"[My Table].[My Column] = 1").left).table, u"My Table");
}

TEST(StatementParser, ReadsLiterals) {
  EXPECT_EQ(LiteralIn(WhereOf(u"a = -1.5e-3").right).text, u"-1.5e-3");
  EXPECT_EQ(LiteralIn(WhereOf(u"a = +.5").right).text, u".5");
  EXPECT_EQ(LiteralIn(WhereOf(u"a = 'O''Brien'").right).text, u"O'Brien");
  EXPECT_EQ(LiteralIn(WhereOf(u"a = \"say \"\"x\"\"\"").right).text, u"say \"x\"");
  EXPECT_EQ(LiteralIn(WhereOf(u"a = ''").right).text, u"");
  EXPECT_EQ(LiteralIn(WhereOf(u"a = #2011-03-14#").right).kind, LiteralKind::Date);
  EXPECT_EQ(LiteralIn(WhereOf(u"a = True").right).text, u"-1");
  EXPECT_EQ(LiteralIn(WhereOf(u"a = false").right).text, u"0");
}

TEST(StatementParser, BindsNotBeforeAndBeforeOr) {
  const Condition condition = WhereOf(u"a = 1 OR NOT b = 2 AND c IS NOT NULL");
  ASSERT_EQ(condition.kind, ConditionKind::Or);
  ASSERT_EQ(condition.parts.size(), 2u);
  const Condition& both = condition.parts[1];
  ASSERT_EQ(both.kind, ConditionKind::And);
  EXPECT_EQ(both.parts[0].kind, ConditionKind::Not);
  ASSERT_EQ(both.parts[1].kind, ConditionKind::Not);
  EXPECT_EQ(both.parts[1].parts[0].kind, ConditionKind::IsNull);
}

TEST(StatementParser, GroupsByParentheses) {
  const Condition condition = WhereOf(u"(a = 1 OR b = 2) AND (c = 3)");
  ASSERT_EQ(condition.kind, ConditionKind::And);
  EXPECT_EQ(condition.parts[0].kind, ConditionKind::Or);
  EXPECT_EQ(condition.parts[1].kind, ConditionKind::Compare);
}

TEST(StatementParser, KnowsAllComparisons) {
  const std::pair<TextView, Comparison> comparisons[] = {
      {u"=", Comparison::Equal},   {u"<>", Comparison::NotEqual},
      {u"<", Comparison::Less},    {u"<=", Comparison::LessOrEqual},
      {u">", Comparison::Greater}, {u">=", Comparison::GreaterOrEqual}};
  for (const auto& [symbol, comparison] : comparisons)
    EXPECT_EQ(WhereOf(u"a" + Text(symbol) + u"1").comparison, comparison) << ToUtf8(symbol);
}

TEST(StatementParser, NamesTheClauseThatIsWrong) {
  const std::string unknown =
      "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.";
  EXPECT_EQ(ErrorOf(u""), unknown);
  EXPECT_EQ(ErrorOf(u"   "), unknown);
  EXPECT_EQ(ErrorOf(u"SHOW TABLES"), unknown);
  EXPECT_EQ(ErrorOf(u"SELECT * FROM"), "Syntax error in FROM clause.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE"), "Syntax error in WHERE clause.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE a = 1 AND"), "Syntax error in WHERE clause.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE (a = 1"), "Syntax error in WHERE clause.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T ORDER a"), "Syntax error in ORDER BY clause.");
  EXPECT_EQ(ErrorOf(u"UPDATE T SET"), "Syntax error in UPDATE statement.");
  EXPECT_EQ(ErrorOf(u"UPDATE T SET a 1"), "Syntax error in UPDATE statement.");
  EXPECT_EQ(ErrorOf(u"INSERT T VALUES (1)"), "Syntax error in INSERT INTO statement.");
  EXPECT_EQ(ErrorOf(u"INSERT INTO T (a VALUES (1)"), "Syntax error in INSERT INTO statement.");
  EXPECT_EQ(ErrorOf(u"DELETE T"), "Syntax error in DELETE statement.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T; SELECT"), "Characters found after end of SQL statement.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T 1"), "Characters found after end of SQL statement.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE a b"), "Syntax error in WHERE clause.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE (a"), "Syntax error in WHERE clause.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE a = (1"), "Syntax error in WHERE clause.");
}

TEST(StatementParser, NamesWhatItDoesNotSupport) {
  const std::pair<TextView, const char*> statements[] = {
      {u"SELECT a + 1 FROM T", "Arithmetic is not supported."},
      {u"UPDATE T SET a = a * 2", "Arithmetic is not supported."},
      {u"SELECT * FROM T WHERE a MOD 2 = 0", "Arithmetic is not supported."},
      {u"SELECT a & b FROM T", "The joining of texts is not supported."},
      {u"SELECT a AS b FROM T", "A name of its own for a column or a table (AS) is not supported."},
      {u"SELECT * FROM T AS u", "A name of its own for a column or a table (AS) is not supported."},
      {u"SELECT a b FROM T", "A name of its own for a column or a table (AS) is not supported."},
      {u"SELECT * FROM T u", "A name of its own for a column or a table (AS) is not supported."},
      {u"UPDATE T u SET a = 1", "A name of its own for a column or a table (AS) is not supported."},
      {u"SELECT * FROM T WHERE a = -b", "Arithmetic is not supported."},
      {u"SELECT * FROM T WHERE -a = 2", "Arithmetic is not supported."},
      {u"SELECT * FROM T WHERE a = -(2)", "Arithmetic is not supported."},
      {u"SELECT -a FROM T", "Arithmetic is not supported."},
      {u"UPDATE T, U SET a = 1", "More than one table is not supported."},
      {u"UPDATE T INNER JOIN U ON T.a = U.a SET a = 1", "A join is not supported."},
      {u"SELECT * INTO U FROM T", "Making a table (SELECT ... INTO) is not supported."},
      {u"SELECT 1", "A SELECT without FROM is not supported."},
      {u"SELECT (a) FROM T", "A column in parentheses is not supported."},
      {u"SELECT * FROM T ORDER BY 1", "A column by its number in ORDER BY is not supported."},
      {u"SELECT * FROM T ORDER BY a LIMIT 5", "LIMIT (TOP says how many rows) is not supported."},
      {u"SELECT * FROM T LIMIT 5", "LIMIT (TOP says how many rows) is not supported."},
      {u"SELECT * FROM T WHERE a != 1", "The sign != is not supported: unequal is <>."},
      {u"SELECT * FROM T WHERE a = &H2",
       "Numbers in hexadecimal or octal (&H, &O) are not supported."},
      {u"SELECT * FROM T WHERE (a = 1) = TRUE",
       "A condition in place of a value is not supported."},
      {u"SELECT * FROM T WHERE EXISTS (SELECT * FROM U)",
       "A query within a statement is not supported."},
      {u"SELECT * FROM T WHERE a = (SELECT b FROM U)",
       "A query within a statement is not supported."},
      {u"SELECT * FROM T WHERE a > ALL (SELECT b FROM U)",
       "A query within a statement is not supported."},
      {u"INSERT INTO T VALUES (1), (2)",
       "More than one row in an INSERT INTO statement is not supported."},
      {u"CREATE TABLE T (a INTEGER)", "CREATE is not supported."},
      {u"drop table T", "DROP is not supported."},
      {u"SELECT * FROM T, U", "More than one table is not supported."},
      {u"SELECT * FROM T INNER JOIN U ON T.a = U.a", "A join is not supported."},
      {u"SELECT * FROM (SELECT * FROM T)",
       "A join or a query in place of a table is not supported."},
      {u"SELECT a FROM T GROUP BY a", "GROUP BY is not supported."},
      {u"SELECT a FROM T UNION SELECT a FROM U", "UNION is not supported."},
      {u"SELECT DISTINCTROW a FROM T", "DISTINCTROW is not supported."},
      {u"SELECT TOP 5 PERCENT a FROM T", "TOP ... PERCENT is not supported."},
      {u"SELECT * FROM T WHERE a IN (SELECT a FROM U)",
       "A query within a statement is not supported."},
      {u"INSERT INTO T SELECT * FROM U", "A query within a statement is not supported."},
      {u"SELECT MAX(a) FROM T", "The function MAX is not supported."},
      {u"SELECT * FROM T WHERE UCASE(a) = 'X'", "The function UCASE is not supported."},
  };
  for (const auto& [statement, error] : statements)
    EXPECT_EQ(ErrorOf(statement), error) << ToUtf8(statement);
}

// Where it stands, for whoever shows the statement.
TEST(StatementParser, SaysWhereItIsThatIsNotSupported) {
  const std::pair<TextView, size_t> statements[] = {
      {u"SELECT a b FROM T", 9},
      {u"SELECT * FROM T WHERE a = -b", 26},
      {u"UPDATE T, U SET a = 1", 8},
      {u"SELECT * INTO U FROM T", 9},
      {u"SELECT * FROM T WHERE a != 1", 24},
      {u"SELECT * FROM T WHERE a = &H2", 26},
      {u"SELECT * FROM T LIMIT 5", 16},
      {u"SELECT * FROM T WHERE EXISTS (SELECT 1)", 22},
      {u"SELECT * FROM T ORDER BY 1", 25},
      {u"DROP TABLE T", 0}};
  for (const auto& [statement, position] : statements) {
    try {
      ParseStatement(statement);
      ADD_FAILURE() << ToUtf8(statement);
    } catch (const SyntaxError& error) {
      EXPECT_EQ(error.Position(), position) << ToUtf8(statement);
      EXPECT_NE(error.Unexpected(), u"") << ToUtf8(statement);
    }
  }
}

TEST(StatementParser, TakesAValueForAConditionAndOneInParenthesesForAValue) {
  const Condition flag = WhereOf(u"Used");
  ASSERT_EQ(flag.kind, ConditionKind::Compare);
  EXPECT_EQ(flag.comparison, Comparison::NotEqual);
  EXPECT_EQ(LiteralIn(flag.right).text, u"0");
  EXPECT_EQ(WhereOf(u"NOT Used AND a = 1").parts[0].kind, ConditionKind::Not);
  EXPECT_EQ(WhereOf(u"(Used) OR (b)").parts.size(), 2u);
  EXPECT_EQ(NameIn(WhereOf(u"(a) = ((2))").left).column, u"a");
  EXPECT_EQ(LiteralIn(WhereOf(u"(a) = ((2))").right).text, u"2");
  EXPECT_EQ(WhereOf(u"(a) NOT IN (1, (2))").kind, ConditionKind::Not);
  EXPECT_EQ(WhereOf(u"((a) = 1)").comparison, Comparison::Equal);
}

TEST(StatementParser, ReadsAListARangeAndAPattern) {
  const Condition list = WhereOf(u"a NOT IN (1, p, 'x')");
  ASSERT_EQ(list.kind, ConditionKind::Not);
  ASSERT_EQ(list.parts[0].kind, ConditionKind::Or);
  ASSERT_EQ(list.parts[0].parts.size(), 3u);
  EXPECT_EQ(NameIn(list.parts[0].parts[1].right).column, u"p");
  const Condition range = WhereOf(u"a BETWEEN 1 AND 2 AND b = 3");
  ASSERT_EQ(range.kind, ConditionKind::And);
  ASSERT_EQ(range.parts.size(), 2u);
  // From either bound to the other.
  ASSERT_EQ(range.parts[0].kind, ConditionKind::Or);
  ASSERT_EQ(range.parts[0].parts.size(), 2u);
  for (const size_t way : {0u, 1u}) {
    const Condition& within = range.parts[0].parts[way];
    ASSERT_EQ(within.kind, ConditionKind::And);
    EXPECT_EQ(within.parts[0].comparison, Comparison::GreaterOrEqual);
    EXPECT_EQ(within.parts[1].comparison, Comparison::LessOrEqual);
    EXPECT_EQ(LiteralIn(within.parts[0].right).text, way == 0 ? u"1" : u"2");
    EXPECT_EQ(LiteralIn(within.parts[1].right).text, way == 0 ? u"2" : u"1");
  }
  EXPECT_EQ(WhereOf(u"a LIKE 'x%'").comparison, Comparison::Like);
  EXPECT_EQ(WhereOf(u"a NOT LIKE 'x%'").kind, ConditionKind::Not);
  for (const TextView wrong : {u"a IN ()", u"a IN 1", u"a BETWEEN 1", u"a NOT = 1", u"a LIKE"})
    EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE " + Text(wrong)), "Syntax error in WHERE clause.");
}

TEST(StatementParser, ReadsWhatStandsInFrontOfTheItems) {
  const auto select = [](TextView text) { return std::get<Select>(ParseStatement(text)); };
  EXPECT_TRUE(select(u"SELECT DISTINCT a FROM T").distinct);
  EXPECT_FALSE(select(u"SELECT ALL a FROM T").distinct);
  EXPECT_EQ(select(u"SELECT DISTINCT TOP 12 * FROM T").top, 12u);
  EXPECT_TRUE(std::holds_alternative<CountAll>(select(u"SELECT COUNT(*) FROM T").items[0]));
  // Where nothing follows them they are names like others.
  const Select names = select(u"SELECT Top, Distinct, Count, All FROM T");
  EXPECT_EQ(names.items.size(), 4u);
  EXPECT_FALSE(names.distinct || names.top);
  EXPECT_EQ(select(u"SELECT Distinct FROM T").items.size(), 1u);
  for (const TextView wrong : {u"SELECT TOP 0 a FROM T", u"SELECT TOP 1.5 a FROM T"})
    EXPECT_NE(ErrorOf(wrong), "no error");
}

TEST(StatementParser, RefusesQuotesThatAreNotClosed) {
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE a = 'x"),
            "Syntax error in string in query expression.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE a = #1"), "Syntax error in date in query expression.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM [T"), "Syntax error in query expression.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE a ! 1"), "Syntax error in query expression.");
}

TEST(StatementParser, BoundsDepthAndLength) {
  const auto nested = [](size_t depth) {
    return u"SELECT * FROM T WHERE " + Text(depth, u'(') + u"a = 1" + Text(depth, u')');
  };
  EXPECT_NO_THROW(ParseStatement(nested(kMaxConditionDepth)));
  EXPECT_EQ(ErrorOf(nested(kMaxConditionDepth + 1)), "Query is too complex.");
  EXPECT_EQ(ErrorOf(nested(20000)), "Query is too complex.");
  Text negations = u"SELECT * FROM T WHERE ";
  for (int i = 0; i < 10000; ++i) negations += u"NOT ";
  EXPECT_EQ(ErrorOf(negations + u"a = 1"), "Query is too complex.");
  EXPECT_EQ(ErrorOf(Text(kMaxStatementLength + 1, u' ')), "Query is too complex.");
}

}  // namespace
}  // namespace rdv::jet::sql
