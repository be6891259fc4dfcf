// set, restore and undo, and what they leave beside the database.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/lines/lines_site.h"
#include "tests/support/as_anybody.h"

namespace rdv::lines::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST(Set, WritesWhatAUserWouldHaveChosen) {
  const LinesSite site;
  const Outcome set = site.Run(
      "set", {"3", "1-2,4", "Volume=High", "Mode=Ring=7", "NIS Option=12", "EWT Option=30",
              "Impedance=Europe", "Soft Stop=Enabled", "Label=A new one", "Partition=North"});
  EXPECT_EQ(set.code, 0) << set.out << set.errors;
  EXPECT_THAT(set.out, HasSubstr("configuration 3, line 1, Volume: \"Low\" -> \"High\"\n"));
  EXPECT_THAT(set.out, HasSubstr("configuration 3, line 4, Mode: \"Timed\" -> \"Ring=7\"\n"));
  for (const int line : {1, 2, 4}) {
    const StoredRow row = site.Line(3, line);
    EXPECT_EQ(row.at("Volume_ID"), "128");
    EXPECT_EQ(row.at("Volume_Name"), "High");
    EXPECT_EQ(row.at("Mode_Type_ID"), "1");
    EXPECT_EQ(row.at("Mode_Ring_Number"), "7");
    EXPECT_EQ(row.at("Mode_Caption"), "Ring=7");
    EXPECT_EQ(row.at("NIS_Option"), "12");
    EXPECT_EQ(row.at("RTQA_Option"), "30");
    EXPECT_EQ(row.at("Impedance"), "3");
    EXPECT_EQ(row.at("SoftStop"), "1");
    EXPECT_EQ(row.at("Description"), "A new one");
    EXPECT_EQ(row.at("Partition_ID"), "1");
    EXPECT_EQ(row.at("Partition_Name"), "North");
  }
  EXPECT_EQ(site.Line(3, 3).at("Description"), "Line 3");
}

TEST(Set, TakesANameANumberOrBothForAPairOfLists) {
  const LinesSite site;
  EXPECT_EQ(site.Run("set", {"3", "1", "Starting Node=Menu 16"}).code, 0);
  EXPECT_EQ(site.Line(3, 1).at("Starting_Node_Caption"), "Menu 16");
  EXPECT_EQ(site.Line(3, 1).at("Starting_Node_Type_ID"), "1");
  EXPECT_EQ(site.Run("set", {"3", "1", "Starting Node=3"}).code, 0);
  EXPECT_EQ(site.Line(3, 1).at("Starting_Node_Caption"), "Menu 3");
  EXPECT_EQ(site.Run("set", {"3", "1", "Starting Node=None"}).code, 0);
  EXPECT_EQ(site.Line(3, 1).at("Starting_Node_Caption"), "None");
  EXPECT_EQ(site.Run("set", {"3", "2", "Mode=Ring"}).code, 0);
  EXPECT_EQ(site.Line(3, 2).at("Mode_Caption"), "Ring=2");
  EXPECT_EQ(site.Run("set", {"3", "2", "Mode=9"}).code, 0);
  EXPECT_EQ(site.Line(3, 2).at("Mode_Caption"), "Ring=9");
}

TEST(Set, RefusesEachChoiceThatTheRulesRefuseAndWritesTheOthers) {
  const LinesSite site;
  const Outcome set = site.Run(
      "set", {"1", "1,6-7,9,20", "Volume=High", "Soft Stop=Enabled", "Line Type=Hybrid Line"});
  EXPECT_EQ(set.code, 1);
  const std::vector<std::string> lines = LinesOf(set.out);
  EXPECT_THAT(lines, Contains("configuration 1, line 6, Volume: \"3\" -> \"High\""));
  EXPECT_THAT(lines, Contains("refused: configuration 1, line 6, Soft Stop \"Enabled\": lines of "
                              "type \"Impedance Line\" have none"));
  EXPECT_THAT(lines, Contains("refused: configuration 1, line 7, Volume \"High\": the line is not "
                              "installed"));
  EXPECT_THAT(lines, Contains("refused: configuration 1, line 9, Soft Stop \"Enabled\": lines of "
                              "type \"MOH Line\" have none"));
  EXPECT_THAT(lines, Contains("refused: configuration 1, line 20: the unit shows no such line"));
  EXPECT_THAT(lines, Contains(StartsWith("refused: configuration 1, line 1, Line Type "
                                         "\"Hybrid Line\": the type of a line is never")));
  EXPECT_EQ(site.Line(1, 6).at("Volume_ID"), "128");
}

TEST(Set, TellsWhatTheListHas) {
  const LinesSite site;
  const std::string bytes = site.Bytes();
  const Outcome set = site.Run("set", {"3", "1", "Volume=Loud", "Starting Node=Menu 17",
                                       "EWT Option=12a", "Label=say \"no\""});
  EXPECT_EQ(set.code, 1);
  EXPECT_THAT(
      LinesOf(set.out),
      ElementsAre(
          "refused: configuration 3, line 1, Volume \"Loud\": the list has Low, High",
          "refused: configuration 3, line 1, Starting Node \"Menu 17\": the list has 1, 2, 3, 4, "
          "5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16",
          "refused: configuration 3, line 1, EWT Option \"12a\": the rules make \"12\" of it",
          "refused: configuration 3, line 1, Label \"say \"no\"\": the rules make \"say no\" of it",
          "nothing was written"));
  EXPECT_EQ(site.Bytes(), bytes);
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

// Opening an editor selects its first entry where the list lacks the row's own value.
TEST(Set, LeavesACellAloneWhoseChoiceWasRefused) {
  const LinesSite site;
  const Outcome set = site.Run("set", {"4", "5", "Volume=Loud", "Label=Changed"});
  EXPECT_EQ(set.code, 1);
  EXPECT_EQ(site.Line(4, 5).at("Volume_ID"), "3");
  EXPECT_EQ(site.Line(4, 5).at("Description"), "Changed");
}

TEST(Set, TellsWhatSavingTheUnitChangesBesides) {
  const LinesSite site;
  const Outcome set = site.Run("set", {"4", "2", "Label=x", "-n"});
  EXPECT_THAT(set.out, HasSubstr("saved with it: configuration 4, line 1, SoftStop: \"2\" -> "
                                 "\"0\"\n"));
  EXPECT_THAT(set.out, HasSubstr("saved with it: configuration 4, line 3, LineType: \"7\" -> "
                                 "\"6\"\n"));
}

TEST(Set, TellsEachCellAsTheNextLoadShowsIt) {
  const LinesSite site;
  const Outcome set = site.Run("set", {"1", "9", "Volume=0"});
  EXPECT_THAT(LinesOf(set.out), Contains("configuration 1, line 9, Volume: \"Low\" -> \"Off\""));
  EXPECT_THAT(site.Run("show", {"1", "--csv"}).out, HasSubstr("Music 1,Off,"));
  EXPECT_THAT(LinesOf(site.Run("set", {"1", "1", "EWT Option=007"}).out),
              Contains("configuration 1, line 1, EWT Option: \"Disabled\" -> \"7\""));
  const Outcome restored = site.Run("restore", {"3", "8 Hybrid Lines 2 MOH Lines"});
  EXPECT_THAT(restored.out, testing::Not(HasSubstr(", Mode: \"Continuous\"")));
  EXPECT_THAT(restored.out, HasSubstr("saved with it: configuration 3, line 9, Mode_Caption: "
                                      "\"Continuous\" -> \"Continuous=1\"\n"));
}

TEST(Set, WritesNothingWhereWhatIsChosenIsWhatIsStored) {
  const LinesSite site;
  ASSERT_EQ(site.Run("set", {"1", "1", "EWT Option=7"}).code, 0);
  const std::string bytes = site.Bytes();
  const std::vector<std::string> files = site.FilesBesideDatabase();
  const Outcome set = site.Run("set", {"1", "1", "EWT Option=07"});
  EXPECT_EQ(set.code, 0);
  EXPECT_EQ(set.out, "nothing was written\n");
  EXPECT_EQ(site.Bytes(), bytes);
  EXPECT_EQ(site.FilesBesideDatabase(), files);
}

#ifndef _WIN32  // There the folder gives the rights, and making links takes one of its own.

TEST(Trial, GoesWhereNothingMayBeWritten) {
  namespace fs = std::filesystem;
  const LinesSite site;
  ASSERT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  const fs::path folder = site.Database().parent_path();
  const fs::perms writable = fs::status(folder).permissions();
  fs::permissions(site.Newest(".undo.json"), fs::perms(0444));
  fs::permissions(site.Database(), fs::perms(0444));
  fs::permissions(folder, fs::perms(0555));
  fs::permissions(site.Folder(), fs::perms(0755));
  {
    const rdv::test::AsAnybody anybody;
    const Outcome trial = site.Run("set", {"3", "2", "Label=tried", "-n"});
    EXPECT_EQ(trial.code, 0) << trial.errors;
    EXPECT_EQ(trial.out,
              "configuration 3, line 2, Label: \"Line 2\" -> \"tried\"\n"
              "a trial: nothing was written\n");
    EXPECT_EQ(site.Run("restore", {"2", "8 Hybrid Lines 2 MOH Lines", "-n"}).code, 0);
    const Outcome undo = site.Run("undo", {"-n"});
    EXPECT_EQ(undo.code, 0) << undo.errors;
    EXPECT_THAT(undo.out, HasSubstr("Volume: \"High\" -> \"Low\"\n"));
    const Outcome real = site.Run("set", {"3", "2", "Label=tried"});
    EXPECT_EQ(real.code, 3);
    EXPECT_THAT(real.errors, HasSubstr("can be read and not be written"));
  }
  fs::permissions(folder, writable);
}

TEST(Link, LeadsToTheFilesThatBelongToTheDatabase) {
  const LinesSite site;
  const std::filesystem::path link = site.Scratch("link.mdb");
  std::filesystem::create_symlink(site.Database(), link);
  const Outcome set = RunWords({"set", link.string(), "3", "1", "Volume=High"});
  EXPECT_EQ(set.code, 0) << set.errors;
  // The settings are those of the site: no caption of a volume is made another one.
  EXPECT_EQ(set.out.find("Volume_Name"), std::string::npos) << set.out;
  EXPECT_THAT(site.FilesBesideDatabase(), SizeIs(2));
  EXPECT_FALSE(std::filesystem::exists(site.Scratch("link-")));
  EXPECT_EQ(site.Run("undo").code, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

#endif

TEST(Set, TouchesNoOtherSlotAndNoOtherUnit) {
  const LinesSite site;
  const std::vector<StoredRow> before = site.Rows("Used_Lines");
  ASSERT_EQ(site.Run("set", {"1", "all", "Label=everywhere"}).code, 1);  // two are not installed
  const std::vector<StoredRow> after = site.Rows("Used_Lines");
  ASSERT_EQ(before.size(), after.size());
  int changed = 0;
  for (size_t i = 0; i < before.size(); ++i) {
    if (before[i] == after[i]) continue;
    ++changed;
    EXPECT_EQ(after[i].at("Config_ID"), "1");
    EXPECT_EQ(after[i].at("Base_Slot_No") + "/" + after[i].at("Slot_Offset"), "1/1");
  }
  EXPECT_EQ(changed, 8);
}

TEST(Set, WritesNothingInATrial) {
  const LinesSite site;
  const std::string bytes = site.Bytes();
  const Outcome set = site.Run("set", {"3", "1", "Volume=High", "--dry-run"});
  EXPECT_EQ(set.code, 0);
  EXPECT_EQ(set.out,
            "configuration 3, line 1, Volume: \"Low\" -> \"High\"\n"
            "a trial: nothing was written\n");
  EXPECT_EQ(site.Bytes(), bytes);
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

TEST(Set, RefusesALineThatAnotherProgramChangedMeanwhileWithBothValues) {
  const LinesSite site;
  const Outcome set = site.Run("set", {"3", "1", "Volume=High"}, [&] {
    site.Execute(
        u"UPDATE Used_Lines SET NIS_Option = 5 WHERE Config_ID = 3 AND Line = 4 AND "
        u"Base_Slot_No = 1");
  });
  EXPECT_EQ(set.code, 1);
  EXPECT_THAT(set.out, HasSubstr("changed by another program: configuration 3, line 4, NIS_Option: "
                                 "it was read as \"0\", it is now \"5\"\nnothing was written\n"));
  EXPECT_EQ(site.Line(3, 1).at("Volume_ID"), "0");
  EXPECT_EQ(site.Line(3, 4).at("NIS_Option"), "5");
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

TEST(Set, DoesNotMindAChangeOfAnotherUnit) {
  const LinesSite site;
  const Outcome set = site.Run("set", {"3", "1", "Volume=High"}, [&] {
    site.Execute(u"UPDATE Used_Lines SET NIS_Option = 5 WHERE Config_ID = 1 AND Line = 4");
  });
  EXPECT_EQ(set.code, 0) << set.out;
  EXPECT_EQ(site.Line(3, 1).at("Volume_ID"), "128");
}

TEST(Set, RefusesWhatNoLineCanStoreAtItsCell) {
  const LinesSite site;
  const std::string too_long(256, 'x');
  const Outcome set = site.Run("set", {"3", "1", "EWT Option=40000", "Label=" + too_long});
  EXPECT_EQ(set.code, 1);
  EXPECT_THAT(set.out,
              HasSubstr("refused: configuration 3, line 1, EWT Option \"40000\": it is beyond "
                        "32767, the largest that a line can store\n"));
  EXPECT_THAT(set.out,
              HasSubstr("\": it is longer than the 255 characters that a line can store\n"));
  EXPECT_THAT(set.out, HasSubstr("nothing was written\n"));
  EXPECT_EQ(site.Run("set", {"3", "1", "EWT Option=32767", "Label=" + too_long.substr(1)}).code, 0);
  EXPECT_EQ(site.Line(3, 1).at("RTQA_Option"), "32767");
  EXPECT_EQ(site.Line(3, 1).at("Description"), too_long.substr(1));
}

TEST(Set, RefusesAWordThatIsNotUtf8) {
  const LinesSite site;
  const std::string bytes = site.Bytes();
  const Outcome set = site.Run("set", {"3", "1", "Label=\xFF\xFE"});
  EXPECT_EQ(set.code, 2);
  EXPECT_THAT(set.errors, HasSubstr("'Label=?"
                                    "?' is not UTF-8"));
  EXPECT_EQ(site.Bytes(), bytes);
}

TEST(Set, SaysWhichWordIsWrong) {
  const LinesSite site;
  EXPECT_EQ(site.Run("set", {"3", "1"}).code, 2);
  EXPECT_THAT(site.Run("set", {"3", "1", "Loudness=High"}).errors,
              HasSubstr("'Loudness' is no column; there are Line, Line Type"));
  EXPECT_THAT(site.Run("set", {"3", "4-1", "Volume=High"}).errors, HasSubstr("runs backwards"));
  EXPECT_THAT(site.Run("set", {"x", "1", "Volume=High"}).errors,
              HasSubstr("'x' is no number of a configuration"));
  EXPECT_EQ(site.Run("set", {"99999", "1", "Volume=High"}).code, 2);
  EXPECT_THAT(site.Run("set", {"3", "0-2", "Volume=High"}).errors,
              HasSubstr("lines are counted from 1 (see rdvlines set --help)"));
}

TEST(Set, RefusesAUnitThatTheSiteDoesNotKnowOrThatHasNoLines) {
  const LinesSite site;
  EXPECT_EQ(site.Run("set", {"99", "1", "Volume=High"}).out,
            "refused: configuration 99: it is not in the site\nnothing was written\n");
  EXPECT_EQ(site.Run("set", {"2", "1", "Volume=High"}).out,
            "refused: configuration 2: no lines are stored; restore it to a unit type to make "
            "them\nnothing was written\n");
}

TEST(Copies, AreMadeBeforeEachChangeAndHoldTheDatabaseAsItWas) {
  const LinesSite site;
  const std::string before = site.Bytes();
  ASSERT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  EXPECT_THAT(site.FilesBesideDatabase(), SizeIs(2));
  EXPECT_EQ(ReadBytes(site.Newest(".mdb")), before);
  EXPECT_NE(site.Bytes(), before);
}

TEST(Copies, OfTheNewestTenChangesAreKept) {
  const LinesSite site;
  WriteBytes(site.Database().parent_path() / "NewDB-old.mdb", "mine");
  for (int i = 1; i <= 12; ++i) {
    ASSERT_EQ(site.Run("set", {"3", "1", "NIS Option=" + std::to_string(i)}).code, 0);
  }
  const std::vector<std::string> files = site.FilesBesideDatabase();
  EXPECT_EQ(std::count_if(files.begin(), files.end(),
                          [](const std::string& name) { return name.ends_with(".undo.json"); }),
            10);
  EXPECT_THAT(files, SizeIs(21));
  EXPECT_THAT(files, Contains("NewDB-old.mdb"));
}

#ifndef _WIN32  // There the folder gives the rights.

TEST(Copies, AndRecordsHaveTheRightsOfTheDatabase) {
  namespace fs = std::filesystem;
  const LinesSite site;
  constexpr fs::perms kOwnersOnly = fs::perms::owner_read | fs::perms::owner_write;
  fs::permissions(site.Database(), kOwnersOnly);
  ASSERT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  const fs::path record = site.Newest(".undo.json");
  EXPECT_EQ(fs::status(record).permissions(), kOwnersOnly);
  EXPECT_EQ(
      fs::status(record.parent_path() / (record.stem().stem().string() + ".mdb")).permissions(),
      kOwnersOnly);
}

#endif

TEST(Copies, DoNotFollowAFileWhoseNameHasNoTime) {
  const LinesSite site;
  WriteBytes(site.Database().parent_path() / "NewDB-99999999-999999-999.mdb", "");
  EXPECT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  EXPECT_EQ(site.Run("set", {"3", "1", "Volume=Low"}).code, 0);
  EXPECT_EQ(site.Run("undo").code, 0);
  EXPECT_EQ(site.Run("undo").code, 0);
}

TEST(Copies, OfADatabaseThatIsNotSoundKeepEverythingFromBeingWritten) {
  const LinesSite site("broken/08-cyclic-index", "");
  const std::string before = site.Bytes();
  const Outcome set = site.Run("set", {"3", "1", "Volume=High"});
  EXPECT_EQ(set.code, 3) << set.out;
  EXPECT_EQ(site.Bytes(), before);
  EXPECT_THAT(site.FilesBesideDatabase(), IsEmpty());
}

TEST(Restore, RebuildsAUnitAsTheButtonDoes) {
  const LinesSite site;
  const Outcome restored = site.Run("restore", {"1", "4 Hybrid Lines 2 MOH Lines"});
  EXPECT_EQ(restored.code, 0) << restored.out << restored.errors;
  EXPECT_EQ(site.Line(1, 3).at("Starting_Node_Caption"), "Message 3");
  EXPECT_EQ(site.Line(1, 3).at("Volume_ID"), "128");
  EXPECT_EQ(site.Line(1, 5).at("LineType"), "1");
  EXPECT_EQ(site.Line(1, 9).at("Starting_Node_Number"), "1");
  EXPECT_EQ(site.Line(1, 11).at("Starting_Node_Number"), "2");
}

TEST(Restore, MakesAUnitThatHasNoLinesAndUndoTakesItAwayAgain) {
  const LinesSite site;
  const std::vector<StoredRow> lines = site.Rows("Used_Lines");
  const std::vector<StoredRow> cards = site.Rows("Used_Cards");
  const Outcome trial = site.Run("restore", {"2", "8 Hybrid Lines 2 MOH Lines", "-n"});
  EXPECT_EQ(trial.code, 0) << trial.errors;
  EXPECT_EQ(site.Rows("Used_Lines"), lines);
  const Outcome restored = site.Run("restore", {"2", "8 Hybrid Lines 2 MOH Lines"});
  EXPECT_EQ(restored.code, 0) << restored.errors;
  EXPECT_EQ(site.Line(2, 8).at("LineType"), "6");
  EXPECT_EQ(site.Rows("Used_Lines").size(), lines.size() + 10);
  EXPECT_EQ(site.Run("undo").code, 0);
  EXPECT_THAT(site.Rows("Used_Lines"), testing::UnorderedElementsAreArray(lines));
  EXPECT_THAT(site.Rows("Used_Cards"), testing::UnorderedElementsAreArray(cards));
}

TEST(Restore, MakesNoUnitThatTheSiteDoesNotKnow) {
  const Outcome restored = LinesSite().Run("restore", {"99", "4 Hybrid Lines 2 MOH Lines"});
  EXPECT_EQ(restored.code, 1);
  EXPECT_EQ(restored.out,
            "refused: configuration 99: it is not in the site\nnothing was written\n");
}

TEST(Restore, TellsTheUnitTypesThatThereAre) {
  const Outcome restored = LinesSite().Run("restore", {"1", "9 Hybrid Lines"});
  EXPECT_EQ(restored.code, 2);
  EXPECT_THAT(restored.errors, HasSubstr("\"8 Impedance Lines 2 MOH Lines\""));
}

TEST(Undo, TakesTheChangesBackOneByOne) {
  const LinesSite site("plain", "ini-china");
  const std::vector<StoredRow> original = site.Rows("Used_Lines");
  ASSERT_EQ(site.Run("set", {"1", "1-4", "Label=one"}).code, 0);
  const std::vector<StoredRow> between = site.Rows("Used_Lines");
  ASSERT_EQ(site.Run("set", {"4", "2", "Label=two"}).code, 0);
  const Outcome first = site.Run("undo");
  EXPECT_EQ(first.code, 0) << first.errors;
  EXPECT_THAT(first.out, HasSubstr("4 2 Label=two"));
  EXPECT_THAT(first.out,
              HasSubstr("configuration 4, line 2, Label: \"two\" -> \"Numbers in the options\""));
  EXPECT_EQ(site.Rows("Used_Lines"), between);
  EXPECT_EQ(site.Run("undo").code, 0);
  EXPECT_EQ(site.Rows("Used_Lines"), original);
  const Outcome none = site.Run("undo");
  EXPECT_EQ(none.code, 1);
  EXPECT_THAT(none.errors, HasSubstr("no change of this tool"));
}

TEST(Undo, RefusesWhereSomebodyHasChangedTheLinesSince) {
  const LinesSite site;
  ASSERT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  site.Execute(
      u"UPDATE Used_Lines SET Volume_ID = 0 WHERE Config_ID = 3 AND Line = 1 AND "
      u"Base_Slot_No = 1");
  const std::string bytes = site.Bytes();
  const Outcome undone = site.Run("undo");
  EXPECT_EQ(undone.code, 1);
  EXPECT_THAT(undone.out, HasSubstr("changed by another program: configuration 3, line 1, "
                                    "Volume_ID: the change left \"128\", it is now \"0\""));
  EXPECT_EQ(site.Bytes(), bytes);
}

TEST(Undo, SeesAChangeOfAFieldThatTheChangeLeftAlone) {
  const LinesSite site;
  ASSERT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  site.Execute(
      u"UPDATE Used_Lines SET NIS_Option = 9 WHERE Config_ID = 3 AND Line = 1 AND "
      u"Base_Slot_No = 1");
  const Outcome undone = site.Run("undo");
  EXPECT_EQ(undone.code, 1);
  EXPECT_THAT(undone.out,
              HasSubstr("configuration 3, line 1, NIS_Option: the change left \"0\", it "
                        "is now \"9\"\n"));
  EXPECT_EQ(site.Line(3, 1).at("Volume_ID"), "128");
}

TEST(Undo, WritesNothingInATrial) {
  const LinesSite site;
  ASSERT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  const std::string bytes = site.Bytes();
  const Outcome undone = site.Run("undo", {"-n"});
  EXPECT_EQ(undone.code, 0);
  EXPECT_THAT(undone.out, HasSubstr("\"High\" -> \"Low\""));
  EXPECT_EQ(site.Bytes(), bytes);
  EXPECT_EQ(site.Run("undo").code, 0);
  EXPECT_EQ(site.Line(3, 1).at("Volume_ID"), "0");
}

TEST(Undo, DropsTheRecordOfAChangeThatWasNeverMade) {
  const LinesSite site;
  ASSERT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  // As if the program had ended between the record and the change.
  const std::string before = ReadBytes(site.Newest(".mdb"));
  WriteBytes(site.Database(), before);
  const Outcome undone = site.Run("undo");
  EXPECT_EQ(undone.code, 0) << undone.errors;
  EXPECT_THAT(undone.out, HasSubstr("it was never made"));
  EXPECT_EQ(site.Run("undo").code, 1);
  EXPECT_EQ(site.Bytes(), before);
}

TEST(Undo, SaysOfLinesThatSomebodyHasPutBackThatNothingIsToBeTakenBack) {
  const LinesSite site;
  ASSERT_EQ(site.Line(3, 1).at("Volume_ID"), "0");
  const std::string caption = site.Line(3, 1).at("Volume_Name");
  ASSERT_EQ(site.Run("set", {"3", "1", "Volume=High"}).code, 0);
  site.Execute(u"UPDATE Used_Lines SET Volume_ID = 0, Volume_Name = '" + FromUtf8(caption) +
               u"' WHERE Config_ID = 3 AND Line = 1 AND Base_Slot_No = 1 AND Slot_Offset = 1");
  const Outcome undone = site.Run("undo");
  EXPECT_EQ(undone.code, 0) << undone.errors;
  EXPECT_THAT(undone.out, HasSubstr("every line is again what it was before it"));
}

TEST(Undo, PassesOverWhatIsNoFile) {
  const LinesSite site;
  std::filesystem::create_directory(site.Database().parent_path() /
                                    "NewDB-20200101-000000-000.undo.json");
  EXPECT_EQ(site.Run("undo").code, 1);
}

TEST(Undo, RefusesARecordThatIsNone) {
  const LinesSite site;
  WriteBytes(site.Database().parent_path() / "NewDB-20200101-000000-000.undo.json", "{\"a\":");
  const Outcome undone = site.Run("undo");
  EXPECT_EQ(undone.code, 3);
  EXPECT_THAT(undone.errors, HasSubstr("the record of the last change cannot be read"));
}

TEST(Undo, ReadsNoRecordThatGoesDeeperThanOneDoes) {
  const LinesSite site;
  WriteBytes(site.Database().parent_path() / "NewDB-20200101-000000-000.undo.json",
             std::string(100'000, '['));
  const Outcome undone = site.Run("undo");
  EXPECT_EQ(undone.code, 3);
  EXPECT_THAT(undone.errors, HasSubstr("000.undo.json: it is none\n"));
}

}  // namespace
}  // namespace rdv::lines::test
