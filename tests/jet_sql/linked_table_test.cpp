// Tables that another database of the site has.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/linked_file.h"
#include "data/jet/sql/jet_connection.h"
#include "runtime/error.h"
#include "tests/support/link_maker.h"
#include "tests/support/site_files.h"

namespace rdv::jet::sql {
namespace {

LinkedTable LinkTo(const Text& database, const Text& connect = {}, bool server = false) {
  return {.name = u"Lines",
          .database = database,
          .foreign_name = u"Stored_Lines",
          .connect = connect,
          .server = server};
}

class LinkedTables : public testing::Test {
 protected:
  LinkedTables() {
    std::filesystem::create_directories(folder_.Path() / "parts");
    main_ = FromUtf8((folder_.Path() / "main.mdb").string());
    part_ = FromUtf8((folder_.Path() / "parts" / "lines.mdb").string());
    Engine::Create(main_);
    Engine::Create(part_, {}, [](Engine& engine) {
      Engine::WriteScope scope(engine);
      engine.CreateTable(
          {.name = u"Stored_Lines",
           .columns = {{.name = u"Line"}, {.name = u"Label", .type = ColumnType::Memo}},
           .indexes = {{.name = u"Key", .columns = {{u"Line"}}, .primary = true}}});
      scope.Commit();
    });
  }

  void Link(const LinkedTable& link) { test::LinkMaker(main_).Make(link); }

  static CommandResult Run(const Text& path, TextView statement) {
    const auto connection = OpenJetConnection(path, {.lock_wait = std::chrono::milliseconds(0)});
    CommandResult result = connection->Execute(statement, {});
    connection->Close();
    return result;
  }

  std::string ErrorOf(TextView statement) {
    try {
      Run(main_, statement);
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
    return "no error";
  }

  test::TemporaryFolder folder_;
  Text main_;
  Text part_;
};

TEST_F(LinkedTables, AreReadAndWrittenInTheFileThatHasThem) {
  Link(LinkTo(part_));
  const auto connection = OpenJetConnection(main_);
  EXPECT_EQ(
      connection->Execute(u"INSERT INTO Lines (Line, Label) VALUES (1, 'a')", {}).rows_written, 1);
  connection->Execute(u"INSERT INTO lines VALUES (2, 'b')", {});
  connection->Execute(u"INSERT INTO Lines VALUES (3, 'c')", {});
  EXPECT_EQ(
      connection->Execute(u"UPDATE Lines SET Label = 'B' WHERE Lines.Line = 2", {}).rows_written,
      1);
  EXPECT_EQ(connection->Execute(u"DELETE FROM Lines WHERE Line = 3", {}).rows_written, 1);
  const CommandResult rows = connection->Execute(u"SELECT Lines.* FROM Lines ORDER BY Line", {});
  EXPECT_EQ(rows.rows->columns, (std::vector<Text>{u"Line", u"Label"}));
  const std::vector<std::vector<Value>> expected = {{int32_t{1}, Text(u"a")},
                                                    {int32_t{2}, Text(u"B")}};
  EXPECT_EQ(rows.rows->rows, expected);
  connection->Close();
  EXPECT_EQ(Run(part_, u"SELECT * FROM Stored_Lines ORDER BY Line").rows->rows, expected);
}

TEST_F(LinkedTables, ObeyTheRulesOfTheirOwnFile) {
  Link(LinkTo(u"parts\\lines.mdb"));
  Run(main_, u"INSERT INTO Lines VALUES (1, 'a')");
  EXPECT_NE(ErrorOf(u"INSERT INTO Lines VALUES (1, 'b')").find("duplicate values"),
            std::string::npos);
  const auto engine = Engine::Open(part_);
  {
    const Engine::WriteScope held(*engine);
    EXPECT_EQ(ErrorOf(u"UPDATE Lines SET Label = 'x'"),
              "Could not use '" + ToUtf8(part_) + "'; file already in use.");
  }
  EXPECT_EQ(Run(main_, u"UPDATE Lines SET Label = 'x'").rows_written, 1);
}

#ifndef _WIN32  // Making one takes a right there.
TEST_F(LinkedTables, LeadFromWhereTheFileIsNotFromWhereALinkToItIs) {
  const auto elsewhere = folder_.Path() / "elsewhere";
  std::filesystem::create_directories(elsewhere / "parts");
  std::filesystem::create_symlink(folder_.Path() / "main.mdb", elsewhere / "main.mdb");
  std::filesystem::copy_file(folder_.Path() / "parts" / "lines.mdb",
                             elsewhere / "parts" / "lines.mdb");
  Link(LinkTo(u"parts\\lines.mdb"));
  const Text spelled = FromUtf8((elsewhere / "main.mdb").string());
  Run(spelled, u"INSERT INTO Lines VALUES (1, 'a')");
  EXPECT_EQ(Run(part_, u"SELECT * FROM Stored_Lines").rows->rows.size(), 1u);
}
#endif

TEST_F(LinkedTables, WhoseFileIsNotThereAreToldAndTheConnectionClosesAllTheSame) {
  Link(LinkTo(u"gone.mdb"));
  const auto connection = OpenJetConnection(main_);
  EXPECT_THROW(connection->Execute(u"SELECT * FROM Lines", {}), RuntimeError);
  connection->Close();
}

TEST_F(LinkedTables, AreLookedUpAnewWhereTheLinkHasChanged) {
  const auto connection = OpenJetConnection(main_);
  EXPECT_THROW(connection->Execute(u"SELECT * FROM Lines", {}), RuntimeError);
  Link(LinkTo(part_));
  EXPECT_TRUE(connection->Execute(u"SELECT * FROM Lines", {}).rows->rows.empty());
}

TEST_F(LinkedTables, ThatLeadElsewhereAreNamedAndNotFollowed) {
  const std::string table = "The table 'Lines' is linked to ";
  const std::string refused = ". Such links are not followed.";
  const auto error_for = [&](const LinkedTable& link) {
    std::filesystem::remove(ToUtf8(main_));
    Engine::Create(main_);
    Link(link);
    return ErrorOf(u"SELECT * FROM Lines");
  };
  EXPECT_EQ(error_for(LinkTo(u"\\\\server\\share\\lines.mdb")),
            table + "the network path '\\\\server\\share\\lines.mdb'" + refused);
  EXPECT_EQ(error_for(LinkTo({}, u"ODBC;DSN=Sites;UID=sa;PWD=secret", true)),
            table + "a server (ODBC; DSN=Sites)" + refused);
  EXPECT_EQ(error_for(LinkTo(u"lines.xls", u"Excel 8.0;HDR=YES")),
            table + "'lines.xls', which is of another kind (Excel 8.0)" + refused);
  for (const Text& outside :
       std::vector<Text>{u"..\\lines.mdb", u"D:\\Other\\lines.mdb", u"parts/../../lines.mdb", u""})
    EXPECT_EQ(error_for(LinkTo(outside)), table + "'" + ToUtf8(outside) +
                                              "', which lies outside of the folder of '" +
                                              ToUtf8(main_) + "'" + refused);
}

#ifndef _WIN32

// Whoever may write the folder may put a link there.
TEST_F(LinkedTables, ThatALinkOfTheFileSystemLeadsOutOfTheFolderAreNamedAndNotFollowed) {
  const test::TemporaryFolder elsewhere;
  const auto outside = elsewhere.Path() / "lines.mdb";
  std::filesystem::rename(ToUtf8(part_), outside);
  std::filesystem::create_directory_symlink(elsewhere.Path(), folder_.Path() / "away");
  std::filesystem::create_symlink(outside, ToUtf8(part_));
  for (const Text& database : std::vector<Text>{u"away\\lines.mdb", u"parts\\lines.mdb"}) {
    std::filesystem::remove(ToUtf8(main_));
    Engine::Create(main_);
    Link(LinkTo(database));
    EXPECT_EQ(ErrorOf(u"SELECT * FROM Lines"),
              "The table 'Lines' is linked to '" + ToUtf8(database) + "', which leads to '" +
                  outside.string() + "', outside of the folder of '" + ToUtf8(main_) +
                  "'. Such links are not followed.");
  }
}

TEST_F(LinkedTables, AreFoundThroughALinkThatStaysInTheFolder) {
  std::filesystem::create_directory_symlink(folder_.Path() / "parts", folder_.Path() / "here");
  Link(LinkTo(u"here\\lines.mdb"));
  EXPECT_TRUE(Run(main_, u"SELECT * FROM Lines").rows->rows.empty());
}

#endif

TEST_F(LinkedTables, WhoseFileIsNotThereSayWhichOne) {
  Link(LinkTo(u"parts\\gone.mdb"));
  const std::string gone = (folder_.Path() / "parts" / "gone.mdb").string();
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Lines"), "Could not find file '" + gone + "'.");
}

TEST(FileOfLink, LiesInTheFolderOfTheDatabaseOrBelowIt) {
  const auto file = [](const Text& database, const Text& path) {
    return std::filesystem::path(ToUtf8(FileOfLink(LinkTo(database), path))).generic_string();
  };
  EXPECT_EQ(file(u"b.mdb", u"/site/a.mdb"), "/site/b.mdb");
  EXPECT_EQ(file(u".\\x\\..\\y\\b.mdb", u"/site/a.mdb"), "/site/y/b.mdb");
  EXPECT_EQ(file(u"/site/y/b.mdb", u"/site/a.mdb"), "/site/y/b.mdb");
  EXPECT_EQ(file(u"/site/y/b.mdb", u"/other/../site/a.mdb"), "/other/../site/y/b.mdb");
  EXPECT_EQ(file(u"b.mdb", u"a.mdb"), "b.mdb");
  for (const Text& outside :
       std::vector<Text>{u"/sites/b.mdb", u"/b.mdb", u"/site", u"/site/../b.mdb", u"c:b.mdb"})
    EXPECT_THROW(file(outside, u"/site/a.mdb"), RuntimeError) << ToUtf8(outside);
}

}  // namespace
}  // namespace rdv::jet::sql
