// Which rows a SELECT gives, and in which order.
#include <gtest/gtest.h>

#include "tests/jet_sql/sample_copy.h"
#include "tests/support/foreign_files.h"

namespace rdv::jet::sql {
namespace {

class Queries : public SampleCopyTest {};

TEST_F(Queries, FindTableAndColumnsWithoutRegardToCase) {
  const CommandResult result = connection_->Execute(
      u"select LINE, used_lines.linetype from USED_LINES where config_id = 1 "
      u"and BASE_SLOT_NO = 1 and slot_offset = 1 order by line",
      {});
  EXPECT_EQ(result.rows->columns, (std::vector<Text>{u"Line", u"LineType"}));
  EXPECT_EQ(result.rows->rows.size(), 12u);
}

TEST_F(Queries, GiveColumnsAndNoRowsWhenNothingMatches) {
  const CommandResult result =
      connection_->Execute(u"SELECT * FROM Used_Lines WHERE Config_ID = 99", {});
  EXPECT_TRUE(result.rows->rows.empty());
  EXPECT_EQ(result.rows->columns.size(), 24u);
}

TEST_F(Queries, NameATableThatIsNotThere) {
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Nowhere"),
            "The Microsoft Jet database engine cannot find the input table or query 'Nowhere'. "
            "Make sure it exists and that its name is spelled correctly.");
}

TEST_F(Queries, TakeEveryUnknownNameForAParameter) {
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines WHERE NoColumn = 1"), kMissingParameter);
  EXPECT_EQ(ErrorOf(u"SELECT NoColumn FROM Used_Lines"), kMissingParameter);
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines ORDER BY NoColumn"), kMissingParameter);
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines WHERE Other.Line = 1"), kMissingParameter);
  EXPECT_EQ(Query(u"SELECT * FROM SR_Card_Type_Names WHERE NoColumn = 1", {u"1"}).size(), 8u);
  EXPECT_EQ(Query(u"SELECT * FROM SR_Card_Type_Names WHERE NoColumn = 1", {u"2"}).size(), 0u);
}

TEST_F(Queries, NumberParametersByTheirFirstAppearance) {
  const auto rows = Column(
      u"SELECT Line FROM Used_Lines WHERE Config_ID = `c` AND Base_Slot_No = [s] AND "
      u"Slot_Offset = S AND Line = l",
      {u"1", u"1", u"7"});
  EXPECT_EQ(rows, Integers({7}));
}

TEST_F(Queries, MissAnArgumentEvenWhereNoRowIs) {
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines WHERE Config_ID = 99 AND Line = p"),
            kMissingParameter);
}

TEST_F(Queries, MatchNoRowWithANumberOutsideTheColumnsRange) {
  EXPECT_TRUE(Query(u"SELECT * FROM Used_Lines WHERE Config_ID = p", {u"70000"}).empty());
  EXPECT_TRUE(Query(u"SELECT * FROM Used_Lines WHERE Config_ID = p", {u"-1e300"}).empty());
}

TEST_F(Queries, ConvertASearchTextToTheColumnsType) {
  EXPECT_EQ(Column(u"SELECT ID FROM SR_Card_Type_Names WHERE ID = p", {u" 6.0 "}), Integers({6}));
  EXPECT_EQ(Query(u"SELECT * FROM orvsettings WHERE PartitionEnabled = p", {u"True"}).size(), 3u);
  EXPECT_EQ(Query(u"SELECT * FROM orvsettings WHERE Saved_On = p", {u"2011-03-14 15:09:26"}).size(),
            1u);
  EXPECT_EQ(Query(u"SELECT * FROM orvsettings WHERE Upkeep_Cost = p", {u"-0.0001"}).size(), 1u);
  EXPECT_EQ(Query(u"SELECT * FROM orvsettings WHERE Idle_Factor = p", {u"0.125"}).size(), 1u);
}

TEST_F(Queries, RefuseASearchTextThatIsNoNumberForANumber) {
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines WHERE Config_ID = p", {u"one"}), kMismatch);
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines WHERE Config_ID = p", {u""}), kMismatch);
  EXPECT_EQ(ErrorOf(u"SELECT * FROM orvsettings WHERE ConfigID = p", {u"x"}), kMismatch);
}

TEST_F(Queries, MatchNothingByComparingWithNull) {
  EXPECT_TRUE(Query(u"SELECT * FROM Used_Lines WHERE Description = p", {Argument()}).empty());
  EXPECT_TRUE(Query(u"SELECT * FROM Used_Lines WHERE Description <> NULL").empty());
  EXPECT_TRUE(Query(u"SELECT * FROM Used_Lines WHERE NOT (Description = NULL)").empty());
}

TEST_F(Queries, TellNullFromEmptyText) {
  constexpr TextView kUnit = u"Config_ID = 1 AND Base_Slot_No = 1 AND Slot_Offset = 1 AND ";
  const Text select = u"SELECT Line FROM Used_Lines WHERE " + Text(kUnit);
  EXPECT_EQ(Column(select + u"Description IS NULL"), Integers({4}));
  EXPECT_EQ(Column(select + u"Description = '' ORDER BY Line"), Integers({6, 7, 8, 10, 12}));
  EXPECT_EQ(Query(select + u"Description IS NOT NULL").size(), 11u);
}

TEST_F(Queries, CompareTextsWithoutRegardToCaseAndTrailingBlanks) {
  EXPECT_EQ(Query(u"SELECT * FROM Used_Cards WHERE Part_Num = p", {u"HL-404-01"}).size(), 3u);
  EXPECT_EQ(Query(u"SELECT * FROM Used_Cards WHERE Part_Num = p", {u"hl-404-01   "}).size(), 3u);
  EXPECT_EQ(Query(u"SELECT * FROM Used_Cards WHERE Part_Num = p", {u" HL-404-01"}).size(), 0u);
  EXPECT_EQ(Query(u"SELECT * FROM Partition_Settings WHERE Name = p", {u"ÄRZTEHAUS"}).size(), 1u);
  EXPECT_EQ(Query(u"SELECT * FROM Partition_Settings WHERE Name = p", {u"Arztehaus"}).size(), 0u);
}

TEST_F(Queries, CombineConditions) {
  const Text select = u"SELECT ID FROM SR_Card_Type_Names WHERE ";
  EXPECT_EQ(Column(select + u"ID < 3 OR ID >= 8 ORDER BY ID"), Integers({1, 2, 8}));
  EXPECT_EQ(Column(select + u"NOT ID <> 5"), Integers({5}));
  EXPECT_EQ(Column(select + u"(ID = 5 OR ID = 6) AND 6 <= ID"), Integers({6}));
  EXPECT_EQ(Column(select + u"ID > p AND ID < 70000 ORDER BY ID", {u"6"}), Integers({7, 8}));
  EXPECT_EQ(Column(select + u"ID = ID AND 1 = 1 AND 'a' = 'A' AND ID = 4"), Integers({4}));
  EXPECT_TRUE(Query(select + u"1 = 2").empty());
  EXPECT_EQ(Query(select + u"p IS NULL", {Argument()}).size(), 8u);
}

TEST_F(Queries, OrderByNumbersAndTextsUpAndDown) {
  EXPECT_EQ(Column(u"SELECT ID FROM SR_Card_Type_Names ORDER BY ID DESC"),
            Integers({8, 7, 6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(Column(u"SELECT ID FROM SR_Card_Type_Names ORDER BY English_Name"),
            Integers({6, 7, 5, 8, 4, 1, 2, 3}));
}

TEST_F(Queries, OrderNullBeforeEverythingElse) {
  const auto names =
      Column(u"SELECT Name FROM Partition_Settings WHERE Config_ID = 1 ORDER BY Name");
  ASSERT_EQ(names.size(), 5u);
  EXPECT_TRUE(IsNull(names[0]));
  EXPECT_EQ(names[1], Value(Text(u"Night service")));
}

TEST_F(Queries, KeepTheOrderOfStorageWhereTheOrderLeavesRowsEqual) {
  const auto stored = Column(u"SELECT ID FROM SR_Node_Type_Names");
  EXPECT_EQ(stored, Integers({999, 0, 1, 2, 3, 4, 6, 7, 8, 9, 11, 13, 15, 5, 10, 12, 14}));
  EXPECT_EQ(Column(u"SELECT ID FROM SR_Node_Type_Names ORDER BY p", {u"1"}), stored);
  const auto types = Query(
      u"SELECT Line, LineType FROM Used_Lines WHERE Config_ID = 1 AND Base_Slot_No = 1 AND "
      u"Slot_Offset = 1 ORDER BY LineType");
  std::vector<Value> lines;
  for (const auto& row : types) lines.push_back(row[0]);
  EXPECT_EQ(lines, Integers({7, 8, 5, 6, 1, 2, 3, 4, 9, 10, 11, 12}));
}

TEST_F(Queries, GiveParametersAndLiteralsNamesOfTheirOwn) {
  const CommandResult result =
      connection_->Execute(u"SELECT ID, p, 'x' FROM SR_Card_Type_Names WHERE ID = 1", {{u"arg"}});
  EXPECT_EQ(result.rows->columns, (std::vector<Text>{u"ID", u"Expr1000", u"Expr1001"}));
  EXPECT_EQ(result.rows->rows[0][1], Value(Text(u"arg")));
  EXPECT_EQ(result.rows->rows[0][2], Value(Text(u"x")));
}

TEST_F(Queries, RefuseAllColumnsOfAnotherTable) {
  EXPECT_EQ(ErrorOf(u"SELECT Other.* FROM Used_Lines"),
            "The Microsoft Jet database engine does not recognize 'Other.*' as a valid field name "
            "or expression.");
}

TEST_F(Queries, GiveTheSameRowsThroughEveryIndexAsWithoutOne) {
  Use("sites/indexed/NewDB.mdb");
  // "<= and >=" can use no index, "=" uses the one of the column.
  for (const TextView column :
       {u"Partition_ID", u"Volume_ID", u"Mode_Type_ID", u"Config_ID", u"Starting_Node_Type_ID"}) {
    SCOPED_TRACE(ToUtf8(column));
    const Text select = u"SELECT Rec FROM Used_Lines WHERE " + Text(column);
    size_t found = 0;
    for (int64_t value = -1; value < 130; ++value) {
      const Argument argument = Decimal(value);
      const auto sought = Query(select + u" = p", {argument});
      EXPECT_EQ(sought, Query(select + u" <= p AND " + Text(column) + u" >= p", {argument}));
      found += sought.size();
    }
    EXPECT_GT(found, 10u);
  }
}

TEST_F(Queries, FindLabelsThroughTheIndexOfAMemoColumn) {
  Use("sites/indexed/NewDB.mdb");
  for (const TextView label : {u"front DESK", u"O'Brien \"direct\"", u"Sales – group A"}) {
    EXPECT_EQ(Query(u"SELECT Rec FROM Used_Lines WHERE Description = p", {Text(label)}).size(), 1u)
        << ToUtf8(label);
  }
}

RDV_TEST_ON_FILE(Queries, QueriesReadFilesOfTheOlderVersion, "corpus/jet3/indexTestV1997.mdb") {
  Use(GetParam());
  EXPECT_FALSE(Query(u"SELECT * FROM Table1 ORDER BY id").empty());
}

}  // namespace
}  // namespace rdv::jet::sql
