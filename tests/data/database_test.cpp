// The data-environment object on sample sites.
#include "data/database.h"

#include <gtest/gtest.h>

#include <functional>

#include "runtime/error.h"
#include "tests/support/line_columns.h"
#include "tests/support/site_fixture.h"

namespace rdv {
namespace {

std::string ErrorOf(const std::function<void()>& call, TextView source) {
  try {
    call();
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Source(), source);
    return ToUtf8(error.Description());
  }
  return "no error";
}

std::string EngineErrorOf(const std::function<void()>& call) {
  return ErrorOf(call, u"Microsoft JET Database Engine");
}

class DataBaseObject : public test::SiteTest {
 protected:
  void SetUp() override {
    test::SiteTest::SetUp();
    UseSite("plain");
  }

  std::string DatabasePath() { return CurrentSite().DatabaseFile().string(); }

  static std::vector<std::vector<Value>> Rows(Recordset& recordset,
                                              std::initializer_list<TextView> columns) {
    std::vector<std::vector<Value>> rows;
    for (; !recordset.EndOfFile(); recordset.MoveNext()) {
      auto& row = rows.emplace_back();
      for (const TextView column : columns) row.push_back(recordset.Field(column));
    }
    recordset.Close();
    return rows;
  }

  RowTable StoredLines() { return CurrentSite().Execute(u"SELECT * FROM Used_Lines"); }

  static LineArguments LineWith(TextView configuration, TextView line) {
    LineArguments arguments;
    for (size_t i = 0; i < arguments.size(); ++i)
      arguments[i] = Decimal(static_cast<int64_t>(100 + i));
    arguments[20] = configuration;
    arguments[21] = u"1";
    arguments[22] = u"1";
    arguments[23] = line;
    return arguments;
  }

  // Where each of the 24 arguments goes.
  static void ExpectStored(const LineArguments& arguments) {
    DataBase database;
    database.Get_Specific_Line(arguments[20], u"1", u"1", arguments[23]);
    ASSERT_FALSE(database.rsGet_Specific_Line.EndOfFile());
    for (size_t i = 0; i < arguments.size(); ++i)
      EXPECT_EQ(ToText(database.rsGet_Specific_Line.Field(kLineColumns[i])), arguments[i])
          << ToUtf8(kLineColumns[i]);
  }
};

TEST(ConnectionString, NamesTheJetProviderAndTheFileInTheDataFolder) {
  EXPECT_EQ(DatabaseConnectionString(),
            u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + GetDatabaseFolder() + u"NewDB.mdb");
}

// Stored last, it still comes first.
TEST_F(DataBaseObject, GivesLinesByTheirNumberWhateverTheOrderOfStorage) {
  const auto renumber = [&](TextView from, TextView to) {
    CurrentSite().Execute(
        u"UPDATE Used_Lines SET Line = `t` WHERE Config_ID = 1 AND Base_Slot_No = 1 AND "
        u"Slot_Offset = 1 AND Line = `f`",
        {Text(to), Text(from)});
  };
  renumber(u"1", u"50");
  renumber(u"12", u"1");
  renumber(u"50", u"12");
  DataBase database;
  database.Get_Used_Lines(u"1");
  const auto rows = Rows(database.rsGet_Used_Lines, {u"Line"});
  ASSERT_EQ(rows.size(), 12u);
  for (size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].at(0), Value(static_cast<int16_t>(i + 1)));
  }
}

TEST_F(DataBaseObject, DeletesTheCardOfThatSlotOnly) {
  DataBase database;
  const auto cards = [&] { return CurrentSite().Execute(u"SELECT * FROM Used_Cards").rows.size(); };
  for (const TextView slot : {u"1", u"2"}) {
    for (const TextView offset : {u"7", u"8"}) {
      database.Insert_Used_Card({u"2", Text(slot), Text(offset), u"", u"", u"6", u"0", u"", u"0"});
    }
  }
  const size_t before = cards();
  database.Delete_Used_Card(u"2", u"1", u"7");
  EXPECT_EQ(cards(), before - 1);
}

TEST_F(DataBaseObject, GivesTheLinesOfTheUnitsOwnSlotByTheirNumber) {
  DataBase database;
  database.Get_Used_Lines(u"1");
  const auto rows = Rows(database.rsGet_Used_Lines, {u"Base_Slot_No", u"Slot_Offset", u"Line"});
  ASSERT_EQ(rows.size(), 12u);
  for (size_t i = 0; i < rows.size(); ++i) {
    const std::vector<Value> expected = {int16_t{1}, int16_t{1}, static_cast<int16_t>(i + 1)};
    EXPECT_EQ(rows[i], expected);
  }
}

TEST_F(DataBaseObject, GivesAllowedModesInTheOrderOfStorageAndVolumesByTheirNumber) {
  CurrentSite().Execute(
      u"INSERT INTO SR_Card_Type_can_use_Mode (Card_Type_ID, Mode_Type_ID) VALUES (5, 1)");
  CurrentSite().Execute(
      u"INSERT INTO SR_Card_Type_can_use_Volume (Card_Type_ID, Volume_Type_ID) VALUES (7, 2)");
  DataBase database;
  database.Get_Line_Type_Allowed_Modes(u"5");
  const auto modes = Rows(database.rsGet_Line_Type_Allowed_Modes, {u"Mode_Type_ID"});
  EXPECT_EQ(modes.back(), std::vector<Value>{int16_t{1}}) << "added last, stored last";
  EXPECT_EQ(modes.size(), 6u);
  database.Get_Line_Type_Allowed_Volume(u"7");
  const auto volumes = Rows(database.rsGet_Line_Type_Allowed_Volume, {u"Volume_Type_ID"});
  EXPECT_EQ(volumes, (std::vector<std::vector<Value>>{{int16_t{0}}, {int16_t{2}}, {int16_t{128}}}));
}

TEST_F(DataBaseObject, FillsARecordsetForEachQuery) {
  DataBase database;
  database.Get_All_Partitions(u"1");
  database.Get_All_Card_Name();
  database.Get_All_Node_Names();
  database.Get_All_Mode_Names();
  database.Get_Max_NodeNumber(u"1", u"1", u"4");
  database.Get_Specific_Line(u"1", u"2", u"3", u"4");
  database.GetORVSettings(u"2");
  EXPECT_EQ(Rows(database.rsGet_All_Partitions, {u"Name"}).size(), 5u);
  EXPECT_EQ(Rows(database.rsGet_All_Card_Name, {u"English_Name"}).size(), 8u);
  EXPECT_EQ(Rows(database.rsGet_All_Node_Names, {u"English_Name"}).size(), 17u);
  EXPECT_EQ(Rows(database.rsGet_All_Mode_Names, {u"English_Name"}).size(), 33u);
  EXPECT_EQ(Rows(database.rsGet_Max_NodeNumber, {u"Max_Number"}).at(0).at(0), Value(int16_t{999}));
  EXPECT_EQ(Rows(database.rsGet_Specific_Line, {u"rsvd1"}).at(0).at(0), Value(int16_t{1004}));
  EXPECT_EQ(Rows(database.rsGetORVSettings, {u"PartitionEnabled"}).at(0).at(0), Value(false));
}

TEST_F(DataBaseObject, RefusesToRunAQueryWhoseRecordsetIsOpen) {
  DataBase database;
  database.Get_All_Card_Name();
  EXPECT_EQ(ErrorOf([&] { database.Get_All_Card_Name(); }, u"ADODB.Recordset"),
            "Operation is not allowed when the object is open.");
  EXPECT_EQ(Rows(database.rsGet_All_Card_Name, {u"ID"}).size(), 8u);
  EXPECT_NO_THROW(database.Get_All_Card_Name());
}

TEST_F(DataBaseObject, UpdatesEachColumnOfALineWithItsArgument) {
  const LineArguments arguments = LineWith(u"1", u"3");
  DataBase().Update_All_Lines(arguments);
  ExpectStored(arguments);
}

TEST_F(DataBaseObject, InsertsEachColumnOfALineWithItsArgument) {
  const LineArguments arguments = LineWith(u"2", u"9");
  DataBase().Insert_All_Lines(arguments);
  ExpectStored(arguments);
}

TEST_F(DataBaseObject, TouchesNoOtherLineByAnUpdate) {
  const RowTable before = StoredLines();
  DataBase().Update_All_Lines(LineWith(u"1", u"1"));
  const RowTable after = StoredLines();
  ASSERT_EQ(after.rows.size(), before.rows.size());
  size_t changed = 0;
  for (size_t i = 0; i < after.rows.size(); ++i) changed += after.rows[i] != before.rows[i];
  EXPECT_EQ(changed, 1u);
}

TEST_F(DataBaseObject, ChangesNoRowAndReportsNoErrorByAnUpdateOfALineThatDoesNotExist) {
  const RowTable before = StoredLines();
  LineArguments arguments = LineWith(u"2", u"1");
  EXPECT_NO_THROW(DataBase().Update_All_Lines(arguments));
  arguments[1] = u"no number";
  EXPECT_NO_THROW(DataBase().Update_All_Lines(arguments));
  EXPECT_EQ(StoredLines().rows, before.rows);
}

TEST_F(DataBaseObject, KeepsRowsThatWereWrittenBeforeAFailure) {
  DataBase database;
  database.Insert_All_Lines(LineWith(u"2", u"1"));
  LineArguments wrong = LineWith(u"2", u"2");
  wrong[6] = u"Loud";
  EXPECT_EQ(EngineErrorOf([&] { database.Insert_All_Lines(wrong); }),
            "Data type mismatch in criteria expression.");
  EXPECT_EQ(StoredLines().rows.size(), 46u);
  database.Get_Used_Lines(u"2");
  EXPECT_EQ(Rows(database.rsGet_Used_Lines, {u"Line"}).size(), 1u);
}

TEST_F(DataBaseObject, InsertsAndDeletesACard) {
  DataBase database;
  database.Insert_Used_Card({u"7", u"1", u"1", u"Slot 1", u"Hybrid Line", u"6", u"0", u"", u"0"});
  const Text select =
      u"SELECT Slot_Caption, Card_Type_Name, Card_Type_No, Card_Variant, Part_Num, Country_Code "
      u"FROM Used_Cards WHERE Config_ID = 7";
  const std::vector<Value> expected = {
      Text(u"Slot 1"), Text(u"Hybrid Line"), int16_t{6}, int16_t{0}, Text(), int16_t{0}};
  EXPECT_EQ(CurrentSite().Execute(select).rows.at(0), expected);
  database.Delete_Used_Card(u"7", u"1", u"1");
  EXPECT_TRUE(CurrentSite().Execute(select).rows.empty());
}

TEST_F(DataBaseObject, OpensItsConnectionWhenACommandFirstNeedsIt) {
  std::filesystem::remove(CurrentSite().DatabaseFile());
  DataBase database;
  EXPECT_EQ(EngineErrorOf([&] { database.Get_All_Card_Name(); }),
            "Could not find file '" + DatabasePath() + "'.");
  CurrentSite().UseDatabase("plain");
  EXPECT_NO_THROW(database.Get_All_Card_Name());
}

TEST_F(DataBaseObject, KeepsTheDataFolderThatItWasMadeWith) {
  DataBase database;
  const SiteFolder elsewhere(u"/nowhere");
  EXPECT_NO_THROW(database.Get_All_Card_Name());
}

TEST_F(DataBaseObject, NamesAPathWhoseFolderIsNotThere) {
  std::filesystem::remove_all(CurrentSite().DatabaseFile().parent_path());
  EXPECT_EQ(EngineErrorOf([] { DataBase().Get_All_Card_Name(); }),
            "'" + DatabasePath() +
                "' is not a valid path. Make sure that the path name is spelled correctly and that "
                "you are connected to the server on which the file resides.");
}

TEST_F(DataBaseObject, NamesATableThatTheDatabaseDoesNotHave) {
  CurrentSite().UseDatabase("broken/10-missing-table");
  DataBase database;
  EXPECT_EQ(EngineErrorOf([&] { database.Get_All_Mode_Names(); }),
            "The Microsoft Jet database engine cannot find the input table or query "
            "'SR_Mode_Type_Names'. Make sure it exists and that its name is spelled correctly.");
  EXPECT_NO_THROW(database.Get_All_Node_Names());
}

TEST_F(DataBaseObject, NamesAFileThatIsNoDatabase) {
  for (const char* site : {"broken/01-cut-in-header", "broken/03-no-bytes", "broken/04-text-file",
                           "broken/05-random-header"}) {
    CurrentSite().UseDatabase(site);
    const std::string expected = "Unrecognized database format '" + DatabasePath() + "'.";
    EXPECT_EQ(EngineErrorOf([] { DataBase().Get_Used_Lines(u"1"); }).substr(0, expected.size()),
              expected)
        << site;
  }
}

TEST_F(DataBaseObject, NamesAFileThatIsDamaged) {
  for (const char* site : {"broken/06-catalog-overwritten", "broken/07-pointer-out-of-range",
                           "broken/09-row-offset-outside"}) {
    CurrentSite().UseDatabase(site);
    const std::string error = EngineErrorOf([] {
      DataBase database;
      database.Update_All_Lines(LineWith(u"1", u"5"));
      database.Get_Used_Lines(u"1");
      database.Insert_All_Lines(LineWith(u"2", u"1"));
    });
    EXPECT_NE(error.find("'" + DatabasePath() + "'"), std::string::npos) << site << ": " << error;
  }
}

TEST_F(DataBaseObject, EndsTheWalkOfAnIndexThatLeadsInACircle) {
  CurrentSite().UseDatabase("broken/08-cyclic-index");
  DataBase database;
  for (int configuration = 100; configuration < 190; ++configuration) {
    try {
      database.Get_Used_Lines(Decimal(configuration));
      EXPECT_LE(Rows(database.rsGet_Used_Lines, {u"Line"}).size(), 12u);
    } catch (const RuntimeError& error) {
      EXPECT_NE(error.Description().find(u"index"), Text::npos) << error.what();
    }
  }
}

#ifndef _WIN32

TEST_F(DataBaseObject, CannotTakeTheRouteThatThisSystemDoesNotHave) {
  test::SetEnvironment("RDV_DATABASE_ROUTE", "ado");
  EXPECT_EQ(ErrorOf([] { DataBase().Get_All_Card_Name(); }, u"TLV_RDV_Line_Config"),
            "ActiveX component can't create object");
  test::SetEnvironment("RDV_DATABASE_ROUTE", "JET");
  EXPECT_NO_THROW(DataBase().Get_All_Card_Name());
  test::SetEnvironment("RDV_DATABASE_ROUTE", "");
}

#endif

}  // namespace
}  // namespace rdv
