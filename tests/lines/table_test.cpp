// export and import.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/lines/lines_site.h"
#include "tools/lines/csv.h"

namespace rdv::lines::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kHeader =
    "Configuration,Line,Line Type,Partition,Starting Node,Volume,Mode,NIS Option,EWT Option,"
    "Impedance,Soft Stop,Label\r\n";

std::vector<std::vector<Text>> AllRecords(std::string_view bytes) {
  CsvReader reader(bytes);
  std::vector<std::vector<Text>> records;
  for (std::vector<Text> fields; reader.Next(fields);) records.push_back(fields);
  return records;
}

TEST(Csv, ReadsWhatItWrites) {
  const std::vector<Text> fields = {u"",
                                    u"plain",
                                    u"a,b",
                                    u"say \"no\"",
                                    u" blanks ",
                                    u"two\r\nlines",
                                    u"\u00fc\u4e2d\U0001F600",
                                    u"semi;colon",
                                    u"tab\tbed",
                                    Text(1, u'\xD800')};
  std::string bytes(kByteOrderMark);
  AppendCsvRecord(fields, bytes);
  AppendCsvRecord(fields, bytes);
  EXPECT_THAT(AllRecords(bytes), ElementsAre(fields, fields));
}

TEST(Csv, TakesTheSeparatorAndTheLineEndsThatItFinds) {
  for (const char* bytes :
       {"a,b\r\n1,2\r\n", "a;b\n1;2\n", "a\tb\r1\t2", "\xEF\xBB\xBF\"a\",\"b\"\n\n1,2"}) {
    EXPECT_THAT(AllRecords(bytes),
                ElementsAre(std::vector<Text>{u"a", u"b"}, std::vector<Text>{u"1", u"2"}))
        << bytes;
  }
}

TEST(Csv, SaysWhereSomethingIsWrong) {
  const auto error_of = [](std::string_view bytes) -> std::string {
    try {
      AllRecords(bytes);
    } catch (const CsvError& error) {
      return error.what();
    }
    return "none";
  };
  EXPECT_EQ(error_of("a,b\n1,\"2\n"), "row 2, column 2: the quote that opens here is never closed");
  EXPECT_EQ(error_of("a,b\n\n\"1\"x,2\n"),
            "row 3, column 1: there is text behind the quote that closes the field");
  EXPECT_EQ(error_of("a,b\n1,M\xFCller\n"),
            "row 2, column 2: is not UTF-8; save the file as \"CSV UTF-8\"");
  EXPECT_EQ(error_of(std::string_view("\xFF\xFE"
                                      "a\0,\0b\0",
                                      8)),
            "row 1, column 1: the file is UTF-16; save it as \"CSV UTF-8\"");
  EXPECT_EQ(error_of(std::string_view("a,b\n\"1\0\",2\n", 11)),
            "row 2, column 1: has a character that no file of text has");
}

// A site and which of its settings.
using SiteAndSettings = std::pair<const char*, const char*>;

class EverySite : public testing::TestWithParam<SiteAndSettings> {};

TEST_P(EverySite, IsTheSameAfterAnExportAndAnImport) {
  const LinesSite site(GetParam().first, GetParam().second);
  const std::string table = site.Scratch("table.csv").string();
  site.Run("export", {"-o", table});
  EXPECT_THAT(ReadBytes(table), StartsWith(std::string(kByteOrderMark) + kHeader));
  const std::string before = site.Bytes();
  const Outcome imported = site.Run("import", {table});
  EXPECT_EQ(imported.code, 0) << imported.out << imported.errors;
  EXPECT_EQ(imported.out, "nothing was written\n");
  EXPECT_EQ(site.Bytes(), before);
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Sites, EverySite,
    testing::Values(SiteAndSettings{"plain", ""}, SiteAndSettings{"plain", "ini-china"},
                    SiteAndSettings{"plain", "ini-nochina"},
                    SiteAndSettings{"plain2003", "ini-china"},
                    SiteAndSettings{"indexed", "ini-nochina"}, SiteAndSettings{"large", ""}),
    [](const auto& site) {
      const std::string settings = site.param.second;
      return site.param.first + (settings.empty() ? settings : "_" + settings.substr(4));
    });

// The table of a site with one text in the place of another.
std::string Edited(const LinesSite& site, const std::string& from, const std::string& to) {
  std::string table = site.Run("export").out;
  const size_t at = table.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) table.replace(at, from.size(), to);
  const std::filesystem::path path = site.Scratch("edited.csv");
  WriteBytes(path, table);
  return path.string();
}

TEST(Import, WritesEachCellThatDiffersThroughItsEditor) {
  const LinesSite site;
  const std::string table = Edited(site, "3,2,Hybrid Line,East,Menu 20,High,Tone Group=2,Disabled",
                                   "3,2,Hybrid Line,West,Schedule 7,Low,Ring=5,42");
  const Outcome imported = site.Run("import", {table});
  EXPECT_EQ(imported.code, 0) << imported.out;
  EXPECT_THAT(LinesOf(imported.out),
              Contains("configuration 3, line 2, Starting Node: \"Menu 20\" -> \"Schedule 7\""));
  const StoredRow row = site.Line(3, 2);
  EXPECT_EQ(row.at("Partition_ID"), "4");
  EXPECT_EQ(row.at("Starting_Node_Type_ID"), "6");
  EXPECT_EQ(row.at("Starting_Node_Number"), "7");
  EXPECT_EQ(row.at("Volume_ID"), "0");
  EXPECT_EQ(row.at("Mode_Type_ID"), "1");
  EXPECT_EQ(row.at("Mode_Ring_Number"), "5");
  EXPECT_EQ(row.at("NIS_Option"), "42");
  EXPECT_EQ(site.Run("undo").code, 0);
  EXPECT_EQ(site.Line(3, 2).at("Starting_Node_Caption"), "Menu 20");
}

TEST(Import, WritesNothingAtAllWhereOneCellIsRefused) {
  const LinesSite site;
  std::string table = site.Run("export").out;
  for (const auto& [from, to] :
       {std::pair<std::string, std::string>{"Front desk", "Changed"},
        {"Line 1\r\n", "Changed\r\n"},
        {"3,3,Hybrid Line,South,Queue 30,Low", "3,3,Hybrid Line,South,Queue 30,Loud"}}) {
    table.replace(table.find(from), from.size(), to);
  }
  WriteBytes(site.Scratch("t.csv"), table);
  const std::string bytes = site.Bytes();
  const Outcome imported = site.Run("import", {site.Scratch("t.csv").string()});
  EXPECT_EQ(imported.code, 1);
  EXPECT_THAT(
      LinesOf(imported.out),
      ElementsAre("configuration 1, line 1, Label: \"Front desk\" -> \"Changed\"",
                  "configuration 3, line 1, Label: \"Line 1\" -> \"Changed\"",
                  "refused: " + site.Scratch("t.csv").string() +
                      ", row 14, column 6, configuration 3, line 3, Volume \"Loud\": the list has "
                      "Low, High",
                  "nothing was written"));
  EXPECT_EQ(site.Bytes(), bytes);
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

TEST(Import, RefusesLinesAndUnitsThatAreNotThere) {
  const LinesSite site;
  WriteBytes(site.Scratch("t.csv"),
             std::string(kHeader) +
                 "3,7000,Hybrid Line,North,Menu 1,Low,Ring=1,Disabled,Disabled,Europe,Enabled,x\n"
                 "9,1,Hybrid Line,North,Menu 1,Low,Ring=1,Disabled,Disabled,Europe,Enabled,x\n"
                 "3,5,Hybrid Line,N/A,N/A,N/A,N/A,N/A,N/A,N/A,N/A,\n");
  const Outcome imported = site.Run("import", {site.Scratch("t.csv").string()});
  EXPECT_EQ(imported.code, 1);
  const std::string refused = "refused: " + site.Scratch("t.csv").string();
  EXPECT_THAT(
      LinesOf(imported.out),
      ElementsAre(refused + ", row 2, configuration 3, line 7000: the unit shows no such line",
                  StartsWith(refused + ", row 4, column 3, configuration 3, line 5, Line Type "
                                       "\"Hybrid Line\": the type of a line is never"),
                  refused + ", row 3, configuration 9: it is not in the site",
                  "nothing was written"));
}

TEST(Import, SaysWhatIsWrongWithAFileByRowAndColumn) {
  const LinesSite site;
  const std::string row =
      "3,1,Hybrid Line,North,Message 10,Low,Ring=1,Disabled,Disabled,PBX 600 ohm,Enabled,Line 1\n";
  const std::string bytes = site.Bytes();
  const auto error_of = [&](const std::string& content) {
    const std::filesystem::path path = site.Scratch("bad.csv");
    WriteBytes(path, content);
    const Outcome imported = site.Run("import", {path.string()});
    EXPECT_EQ(imported.code, 1) << content.substr(0, 200);
    EXPECT_EQ(imported.out, "");
    EXPECT_THAT(imported.errors, StartsWith("rdvlines import: " + path.string()));
    return imported.errors;
  };
  EXPECT_THAT(error_of(""), HasSubstr("row 1, column 1: the file is empty"));
  EXPECT_THAT(error_of("Configuration,Line,Type\n"),
              HasSubstr("row 1, column 3: the header has \"Type\" where \"Line Type\" belongs"));
  EXPECT_THAT(error_of(std::string(kHeader) + "3,1\n"),
              HasSubstr("row 2, column 3: the row has 2 fields, not 12"));
  EXPECT_THAT(error_of(kHeader + row + row),
              HasSubstr("row 3, column 2: line 1 of configuration 3 was there before, in row 2"));
  EXPECT_THAT(error_of(kHeader + std::string("three,1,a,a,a,a,a,a,a,a,a,a\n")),
              HasSubstr("row 2, column 1: \"three\" is no number"));
  EXPECT_THAT(error_of(kHeader + std::string("3,\"1,a,a\n")),
              HasSubstr("row 2, column 2: the quote that opens here is never closed"));
  EXPECT_THAT(error_of(kHeader + std::string("3,99999,a,a,a,a,a,a,a,a,a,a\n")),
              HasSubstr("row 2, column 2: \"99999\" is no number"));
  EXPECT_EQ(site.Bytes(), bytes);
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

TEST(Import, TurnsARowWithoutEndDownWhereItLeavesEveryTable) {
  const LinesSite site;
  const auto file = site.Scratch("table.csv");
  ASSERT_EQ(site.Run("export", {"-o", file.string()}).code, 0);
  const std::string bytes = ReadBytes(file);
  WriteBytes(file, bytes.substr(0, bytes.find('\n') + 1) + std::string(1'000'000, ','));
  const Outcome imported = site.Run("import", {file.string()});
  EXPECT_EQ(imported.code, 1);
  EXPECT_THAT(imported.errors,
              HasSubstr("row 2, column 256: the row goes on beyond any that a table has"));
}

TEST(Import, PassesOverRowsOfEmptyFieldsThatSpreadsheetsLeave) {
  const LinesSite site;
  const auto file = site.Scratch("table.csv");
  ASSERT_EQ(site.Run("export", {"-o", file.string()}).code, 0);
  WriteBytes(file, ReadBytes(file) + ",,,,,,,,,,,\r\n,,,,,,,,,,,\r\n");
  EXPECT_EQ(site.Run("import", {file.string()}).code, 0);
}

TEST(Import, TakesAVolumeByTheCaptionThatTheControlShowsOfIt) {
  const LinesSite site;
  const auto file = site.Scratch("table.csv");
  ASSERT_EQ(site.Run("set", {"1", "9", "Volume=0"}).code, 0);
  ASSERT_EQ(site.Run("export", {"-o", file.string()}).code, 0);
  ASSERT_THAT(ReadBytes(file), HasSubstr(",Off,"));
  ASSERT_EQ(site.Run("set", {"1", "9", "Volume=Low"}).code, 0);
  const Outcome imported = site.Run("import", {file.string()});
  EXPECT_EQ(imported.code, 0) << imported.out << imported.errors;
  EXPECT_EQ(site.Line(1, 9).at("Volume_ID"), "0");
}

TEST(Import, TurnsAHundredMegabytesOfRubbishDown) {
  const LinesSite site;
  std::string rubbish(100'000'000, '\0');
  uint32_t random = 1;
  for (char& byte : rubbish) {
    random = random * 1664525u + 1013904223u;
    byte = static_cast<char>(random >> 24);
  }
  WriteBytes(site.Scratch("rubbish.csv"), rubbish);
  const Outcome imported = site.Run("import", {site.Scratch("rubbish.csv").string()});
  EXPECT_EQ(imported.code, 1);
  EXPECT_THAT(imported.errors, HasSubstr("rubbish.csv, row 1, column "));
}

// Of well-formed rows no more are read than the site can have lines.
TEST(Import, StopsAtTheFirstRowTooMany) {
  const LinesSite site;
  std::string table = kHeader;
  for (int config = 5; config < 300; ++config) table += std::to_string(config) + ",1,,,,,,,,,,\n";
  WriteBytes(site.Scratch("rows.csv"), table + "300,rubbish");
  const Outcome imported = site.Run("import", {site.Scratch("rows.csv").string()});
  EXPECT_EQ(imported.code, 1);
  // What is stored of the units, and what four of them can be filled up with.
  size_t most = size_t{4} * 12;
  for (const StoredRow& row : site.Rows("Used_Lines")) {
    if (row.at("Base_Slot_No") == "1" && row.at("Slot_Offset") == "1") ++most;
  }
  EXPECT_EQ(imported.errors, "rdvlines import: " + site.Scratch("rows.csv").string() + ", row " +
                                 std::to_string(most + 2) +
                                 ", column 1: there are more rows than the site can have lines, "
                                 "which are " +
                                 std::to_string(most) + " at most; nothing was written\n");
}

TEST(Import, TellsTheDifferencesAsALoadWouldShowThemAlsoWhereItIsRefused) {
  const LinesSite site;
  std::string table = site.Run("export", {"1"}).out;
  for (const auto& [from, to] : {std::pair<std::string, std::string>{"Music 1,Low", "Music 1,Off"},
                                 {"Queue 12,Low", "Queue 12,Loud"}}) {
    table.replace(table.find(from), from.size(), to);
  }
  WriteBytes(site.Scratch("t.csv"), table);
  const Outcome imported = site.Run("import", {site.Scratch("t.csv").string()});
  EXPECT_EQ(imported.code, 1);
  EXPECT_THAT(LinesOf(imported.out),
              Contains("configuration 1, line 9, Volume: \"Low\" -> \"Off\""));
}

TEST(Import, ReadsWhatASpreadsheetSavesWithSemicolonsAndQuotes) {
  const LinesSite site;
  WriteBytes(site.Scratch("t.csv"),
             "\"Configuration\";\"Line\";\"Line Type\";\"Partition\";\"Starting Node\";\"Volume\";"
             "\"Mode\";\"NIS Option\";\"EWT Option\";\"Impedance\";\"Soft Stop\";\"Label\"\n"
             "3;1;\"Hybrid Line\";\"North\";\"Message 10\";\"Low\";\"Ring=1\";\"Disabled\";"
             "\"Disabled\";\"PBX 600 ohm\";\"Enabled\";\"B\xC3\xBCro; left, \"\"A\"\" no\"\n");
  const Outcome imported = site.Run("import", {site.Scratch("t.csv").string()});
  EXPECT_EQ(imported.code, 1);
  EXPECT_THAT(imported.out, HasSubstr("column 12, configuration 3, line 1, Label \"Büro; left, "
                                      "\"A\" no\": the rules make \"Büro; left, A no\" of it"));
}

TEST(Import, NeedsAFileThatCanBeRead) {
  const LinesSite site;
  EXPECT_EQ(site.Run("import", {site.Scratch("none.csv").string()}).code, 3);
  EXPECT_EQ(site.Run("import", {site.Folder()}).code, 3);
}

TEST(Import, RefusesLinesThatAnotherProgramChangedMeanwhile) {
  const LinesSite site;
  const std::string table = Edited(site, "Front desk", "Reception desk");
  const Outcome imported = site.Run("import", {table}, [&] {
    site.Execute(
        u"UPDATE Used_Lines SET Description = 'Theirs' WHERE Config_ID = 1 AND Line = 1 "
        u"AND Base_Slot_No = 1 AND Slot_Offset = 1");
  });
  EXPECT_EQ(imported.code, 1);
  EXPECT_THAT(imported.out, HasSubstr("Description: it was read as \"Front desk\", it is now "
                                      "\"Theirs\"\nnothing was written\n"));
  EXPECT_EQ(site.Line(1, 1).at("Description"), "Theirs");
}

TEST(Export, PrintsTheSameEachTime) {
  const LinesSite site;
  EXPECT_EQ(site.Run("export").out, site.Run("show", {"--csv"}).out);
  EXPECT_EQ(LinesOf(site.Run("export", {"3"}).out).size(), 11u);
}

TEST(Export, PrintsWhereTheFileIsADash) {
  const LinesSite site;
  EXPECT_EQ(site.Run("export", {"-o", "-"}).out, site.Run("export").out);
  EXPECT_FALSE(std::filesystem::exists("-"));
}

TEST(Export, SaysWhyAFileCannotBeWritten) {
  const LinesSite site;
  const Outcome exported = site.Run("export", {"-o", site.Scratch("no/such/folder.csv").string()});
  EXPECT_EQ(exported.code, 3);
  EXPECT_THAT(exported.errors, HasSubstr("cannot be written"));
}

}  // namespace
}  // namespace rdv::lines::test
