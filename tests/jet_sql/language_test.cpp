// What the language says about rows, on a table of the test's own.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/sql/jet_connection.h"
#include "data/jet/sql/like_pattern.h"
#include "runtime/error.h"
#include "tests/support/site_files.h"

namespace rdv::jet::sql {
namespace {

class Language : public testing::Test {
 protected:
  Language() {
    const Text path = FromUtf8((folder_.Path() / "own.mdb").string());
    Engine::Create(path, {}, [](Engine& engine) {
      Engine::WriteScope scope(engine);
      engine.CreateTable({.name = u"T",
                          .columns = {{.name = u"Line", .type = ColumnType::Integer},
                                      {.name = u"Label", .type = ColumnType::Text, .length = 50},
                                      {.name = u"Note", .type = ColumnType::Memo},
                                      {.name = u"Used", .type = ColumnType::Boolean},
                                      {.name = u"Cost", .type = ColumnType::Currency}},
                          .indexes = {{.name = u"Line", .columns = {{u"Line"}}, .primary = true},
                                      {.name = u"Note", .columns = {{u"Note"}}}}});
      scope.Commit();
    });
    connection_ = OpenJetConnection(path);
    Add(u"1, 'Lobby', 'near', TRUE, 1.5");
    Add(u"2, 'lobby', NULL, FALSE, 2.25");
    Add(u"3, 'Garden 5%', 'far', TRUE, 1.5");
    Add(u"4, NULL, 'far', FALSE, NULL");
  }

  void Add(TextView values) {
    connection_->Execute(u"INSERT INTO T VALUES (" + Text(values) + u")", {});
  }

  std::vector<std::vector<Value>> Rows(TextView statement,
                                       const std::vector<Argument>& arguments = {}) {
    return connection_->Execute(statement, arguments).rows.value().rows;
  }

  // The numbers of the rows for which the condition holds.
  std::vector<int> Where(TextView condition, const std::vector<Argument>& arguments = {}) {
    std::vector<int> lines;
    for (const auto& row :
         Rows(u"SELECT Line FROM T WHERE " + Text(condition) + u" ORDER BY Line", arguments))
      lines.push_back(ToInteger(row[0]));
    return lines;
  }

  std::string ErrorOf(TextView statement) {
    try {
      connection_->Execute(statement, {});
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
    return "no error";
  }

  using Lines = std::vector<int>;

  test::TemporaryFolder folder_;
  std::unique_ptr<Connection> connection_;
};

TEST_F(Language, TakesALiteralNumberAsItIsWritten) {
  EXPECT_EQ(Where(u"Line = 2.5"), Lines());
  EXPECT_EQ(Where(u"Line = 2.0"), Lines({2}));
  EXPECT_EQ(Where(u"Line <> 2.5"), Lines({1, 2, 3, 4}));
  EXPECT_EQ(Where(u"Line < 2.5"), Lines({1, 2}));
  EXPECT_EQ(Where(u"Line <= 1.5"), Lines({1}));
  EXPECT_EQ(Where(u"Line > 2.5"), Lines({3, 4}));
  EXPECT_EQ(Where(u"Line >= 3.5"), Lines({4}));
  EXPECT_EQ(Where(u"2.5 < Line"), Lines({3, 4}));
  EXPECT_EQ(Where(u"Line > -0.5 AND Line < 1.5"), Lines({1}));
  EXPECT_EQ(Where(u"Cost = 2.25001"), Lines());
  EXPECT_EQ(Where(u"Cost < 2.25001"), Lines({1, 2, 3}));
  EXPECT_EQ(Where(u"Cost >= 2.24999"), Lines({2}));
}

TEST_F(Language, RoundsAnArgumentToWhatTheColumnHolds) {
  EXPECT_EQ(Where(u"Line = p", {u"2.5"}), Lines({2}));
  EXPECT_EQ(Where(u"Used = p", {u"1"}), Lines({1, 3}));
}

TEST_F(Language, HoldsTrueForMinusOne) {
  EXPECT_EQ(Where(u"Used = TRUE"), Lines({1, 3}));
  EXPECT_EQ(Where(u"Used = -1"), Lines({1, 3}));
  EXPECT_EQ(Where(u"Used = 1"), Lines());
  EXPECT_EQ(Where(u"Used <> 1"), Lines({1, 2, 3, 4}));
  EXPECT_EQ(Where(u"Used = 0"), Lines({2, 4}));
  EXPECT_EQ(Where(u"Used <> 0"), Lines({1, 3}));
  EXPECT_EQ(Where(u"Used < 0"), Lines({1, 3}));
  EXPECT_EQ(Where(u"Used = -0.5"), Lines());
  EXPECT_EQ(Where(u"Used < -0.4"), Lines({1, 3}));
  EXPECT_EQ(Where(u"Used > -0.6"), Lines({2, 4}));
  EXPECT_EQ(Where(u"Used >= -1.2"), Lines({1, 2, 3, 4}));
  EXPECT_EQ(Where(u"Used > 0.2"), Lines());
}

TEST_F(Language, ComparesLongTextsToTheirEnds) {
  const Text same(300, u'x');
  Add(u"10, 'a', '" + same + u"1', FALSE, 0");
  Add(u"11, 'b', '" + same + u"2', FALSE, 0");
  EXPECT_EQ(Where(u"Note = '" + same + u"2'"), Lines({11}));
  EXPECT_EQ(Where(u"Note = p", {same + u"1   "}), Lines({10}));
  EXPECT_EQ(Where(u"Note > '" + same + u"1'"), Lines({11}));
  EXPECT_EQ(Where(u"Note = '" + same + u"'"), Lines());
}

TEST_F(Language, FindsWhatIsInAList) {
  EXPECT_EQ(Where(u"Line IN (4, 2, 99, 2.5)"), Lines({2, 4}));
  EXPECT_EQ(Where(u"Line NOT IN (4, 2)"), Lines({1, 3}));
  EXPECT_EQ(Where(u"Label IN ('LOBBY', p)", {u"Garden 5%"}), Lines({1, 2, 3}));
  // Nobody knows whether Null is one of them.
  EXPECT_EQ(Where(u"Label NOT IN ('Lobby')"), Lines({3}));
  EXPECT_EQ(Where(u"Line NOT IN (1, NULL)"), Lines());
}

TEST_F(Language, FindsWhatLiesBetween) {
  EXPECT_EQ(Where(u"Line BETWEEN 2 AND 3"), Lines({2, 3}));
  EXPECT_EQ(Where(u"Line BETWEEN 1.5 AND p AND Used = TRUE", {u"3"}), Lines({3}));
  EXPECT_EQ(Where(u"Line NOT BETWEEN 2 AND 3"), Lines({1, 4}));
  EXPECT_EQ(Where(u"Line BETWEEN 3 AND 2"), Lines({2, 3}));
  EXPECT_EQ(Where(u"Line NOT BETWEEN 3 AND 2"), Lines({1, 4}));
  EXPECT_EQ(Where(u"Line BETWEEN NULL AND 2"), Lines());
  EXPECT_EQ(Where(u"NULL BETWEEN 1 AND 2"), Lines());
}

TEST_F(Language, HoldsAValueForTrueUnlessItIsZero) {
  EXPECT_EQ(Where(u"Used"), Lines({1, 3}));
  EXPECT_EQ(Where(u"NOT Used"), Lines({2, 4}));
  EXPECT_EQ(Where(u"Used AND Line > 1"), Lines({3}));
  EXPECT_EQ(Where(u"NOT (Used OR Line = 2)"), Lines({4}));
  EXPECT_EQ(Where(u"Cost"), Lines({1, 2, 3}));
  EXPECT_EQ(Where(u"NOT Cost"), Lines());  // Null is neither
  EXPECT_EQ(Where(u"TRUE AND (Line) = (2)"), Lines({2}));
  EXPECT_EQ(Where(u"NULL"), Lines());
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE Label"), "Data type mismatch in criteria expression.");
}

// A key is made of a text's first 255 characters, in which one sharp s is as long as two of the
// characters that it is equal to.
TEST_F(Language, FindsEqualMemosThatTheirKeysTellApart) {
  const Text same(254, u'x');
  Add(u"10, 'a', '" + same + u"\u00DF1', FALSE, 0");
  Add(u"11, 'b', '" + same + u"ss1', FALSE, 0");
  EXPECT_EQ(Where(u"Note = '" + same + u"ss1'"), Lines({10, 11}));
  EXPECT_EQ(Where(u"Note = p", {same + u"\u00DF1"}), Lines({10, 11}));
}

TEST_F(Language, KnowsNothingOfNullWhereverItStands) {
  EXPECT_EQ(Where(u"NULL = 1"), Lines());
  EXPECT_EQ(Where(u"1 = NULL"), Lines());
  EXPECT_EQ(Where(u"NOT (NULL <> 1)"), Lines());
  EXPECT_EQ(Where(u"NULL IN (1, 2)"), Lines());
  EXPECT_EQ(Where(u"NULL = 'a' OR Line = 2"), Lines({2}));
}

TEST_F(Language, FindsWhatLooksLikeAPattern) {
  EXPECT_EQ(Where(u"Label LIKE '[]l[]%'"), Lines({1, 2}));
  EXPECT_EQ(Where(u"Label LIKE 'l%'"), Lines({1, 2}));
  EXPECT_EQ(Where(u"Label NOT LIKE 'l%'"), Lines({3}));
  EXPECT_EQ(Where(u"Label LIKE p", {u"%5[%]"}), Lines({3}));
  EXPECT_EQ(Where(u"Label LIKE '%'"), Lines({1, 2, 3}));
  EXPECT_EQ(Where(u"Line LIKE '[2-3]'"), Lines({2, 3}));
  EXPECT_EQ(Where(u"Label LIKE NULL"), Lines());
  EXPECT_EQ(Where(u"'Lobby' LIKE Label"), Lines({1, 2}));
  EXPECT_EQ(Where(u"'abc' LIKE 'a_c' AND Line = 1"), Lines({1}));
  EXPECT_EQ(ErrorOf(u"SELECT * FROM T WHERE Label LIKE '[a'"), "Invalid pattern string.");
}

TEST(LikePattern, MatchesTheWholeText) {
  const auto matches = [](TextView text, TextView pattern) {
    return LikePattern(pattern).Matches(text);
  };
  EXPECT_TRUE(matches(u"", u""));
  EXPECT_TRUE(matches(u"", u"%"));
  EXPECT_FALSE(matches(u"", u"_"));
  EXPECT_FALSE(matches(u"ab", u"a"));
  EXPECT_TRUE(matches(u"abcbc", u"a%bc"));
  EXPECT_FALSE(matches(u"abcb", u"a%bc"));
  EXPECT_TRUE(matches(u"aXbYc", u"a%b%c"));
  EXPECT_TRUE(matches(u"a-b", u"a[-]b"));
  EXPECT_TRUE(matches(u"aqb", u"a[!x-z]b"));
  EXPECT_FALSE(matches(u"ayb", u"a[!X-Z]b"));
  EXPECT_TRUE(matches(u"*?", u"*?"));
  EXPECT_FALSE(matches(u"Line", u"L*"));
  // A text that a careless search takes for ever over.
  EXPECT_FALSE(matches(Text(2000, u'a'), Text(u"%a%a%a%a%a%a%a%a%a%a%a%b")));
}

TEST_F(Language, CountsTheRowsThatMatch) {
  const CommandResult count = connection_->Execute(u"SELECT COUNT(*) FROM T WHERE Used = TRUE", {});
  EXPECT_EQ(count.rows->columns, (std::vector<Text>{u"Expr1000"}));
  EXPECT_EQ(count.rows->rows, (std::vector<std::vector<Value>>{{int32_t{2}}}));
  EXPECT_EQ(Rows(u"SELECT count(*) FROM T WHERE 1 = 2")[0][0], Value(int32_t{0}));
  EXPECT_EQ(ErrorOf(u"SELECT Line, COUNT(*) FROM T"),
            "You tried to execute a query that does not include the specified expression 'Line' as "
            "part of an aggregate function.");
}

TEST_F(Language, GivesEqualRowsOnce) {
  EXPECT_EQ(Rows(u"SELECT DISTINCT Used FROM T").size(), 2u);
  EXPECT_EQ(Rows(u"SELECT DISTINCT Label FROM T").size(), 3u);
  EXPECT_EQ(Rows(u"SELECT DISTINCT Used, Cost FROM T").size(), 3u);
  const auto costs = Rows(u"SELECT DISTINCT Cost FROM T ORDER BY Cost DESC");
  ASSERT_EQ(costs.size(), 3u);
  EXPECT_EQ(costs[0][0], Value(Currency{22500}));
  EXPECT_TRUE(IsNull(costs[2][0]));
  EXPECT_EQ(ErrorOf(u"SELECT DISTINCT Cost FROM T ORDER BY Line"),
            "ORDER BY clause (Line) conflicts with DISTINCT.");
}

TEST_F(Language, GivesTheFirstRowsAndThoseEqualToTheLast) {
  const auto lines = [&](TextView statement) {
    Lines found;
    for (const auto& row : Rows(statement)) found.push_back(ToInteger(row[0]));
    return found;
  };
  EXPECT_EQ(lines(u"SELECT TOP 2 Line FROM T ORDER BY Line DESC"), Lines({4, 3}));
  EXPECT_EQ(lines(u"SELECT TOP 2 Line FROM T"), Lines({1, 2}));
  EXPECT_EQ(lines(u"SELECT TOP 2 Line FROM T ORDER BY Cost"), Lines({4, 1, 3}));
  EXPECT_EQ(lines(u"SELECT TOP 99 Line FROM T ORDER BY Line"), Lines({1, 2, 3, 4}));
  EXPECT_EQ(Rows(u"SELECT DISTINCT TOP 1 Used FROM T ORDER BY Used").size(), 1u);
}

}  // namespace
}  // namespace rdv::jet::sql
