// What every program of ours answers to its words, on a program made up for it.
#include "tools/command_line/command_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tools/command_line/standard_output.h"
#include "tools/command_line/suggestion.h"

namespace rdv::tools {
namespace {

// Refuses what is flushed, as a full disk does.
struct FullDisk : std::streambuf {
  int sync() override { throw OutputError("No space left on device"); }
  int_type overflow(int_type unit) override { return unit; }
};

class CommandLineTest : public testing::Test {
 protected:
  CommandLineTest() : line_("brew", "makes tea") {
    CLI::App& pour = line_.Add("pour", "fills cups", [this] {
      poured_ = true;
      if (refuse_) throw Refusal("no milk");
      if (lost_) throw std::runtime_error("the pot is not there");
      return 0;
    });
    pour.add_option("POT", pot_, "the pot")->required()->check(NotEmpty());
    pour.add_option("--cups", cups_, "how many")->check(CLI::Range(1, 12));
    CLI::App& order = line_.Add("order", "orders by name", [] { return 0; });
    order.add_option("SHOP", pot_, "the shop")->required();
    line_.TakeRest(order, 1, rest_, "NAME", "what to order");
    line_.AddTopic("leaves", "tells the kinds of leaves", "green, black\n");
  }

  int Run(const std::vector<std::string>& words) {
    out_.str("");
    errors_.str("");
    return line_.Execute(words, out_, errors_);
  }
  // A usage error is one line, and nothing is done.
  void ExpectUsageError(const std::vector<std::string>& words, const std::string& beginning) {
    EXPECT_EQ(Run(words), kUsage);
    EXPECT_EQ(errors_.str().substr(0, beginning.size()), beginning);
    EXPECT_EQ(std::ranges::count(errors_.str(), '\n'), 1) << errors_.str();
    EXPECT_EQ(out_.str(), "");
    EXPECT_FALSE(poured_);
  }
  bool Printed(const std::string& text) const { return out_.str().find(text) != std::string::npos; }

  CommandLine line_;
  std::string pot_;
  int cups_ = 4;
  std::vector<std::string> rest_;
  bool poured_ = false;
  bool refuse_ = false;
  bool lost_ = false;
  std::ostringstream out_;
  std::ostringstream errors_;
};

TEST_F(CommandLineTest, HelpInEverySpellingIsPrintedAndNothingIsDone) {
  for (const char* word : {"--help", "-h", "help"}) {
    EXPECT_EQ(Run({word}), kDone);
    EXPECT_TRUE(Printed("makes tea") && Printed("pour") && Printed("orders by name") &&
                Printed("help leaves") && Printed("Exit codes"))
        << out_.str();
    EXPECT_EQ(errors_.str(), "");
  }
}

TEST_F(CommandLineTest, HelpOnACommandIsTheSameInEverySpelling) {
  ASSERT_EQ(Run({"help", "pour"}), kDone);
  const std::string help = out_.str();
  EXPECT_TRUE(Printed("brew pour") && Printed("POT") && Printed("--cups")) << help;
  const std::vector<std::vector<std::string>> spellings = {
      {"pour", "--help"}, {"pour", "-h"}, {"pour", "x", "--help"}, {"pour", "--help", "x"}};
  for (const std::vector<std::string>& words : spellings) {
    EXPECT_EQ(Run(words), kDone);
    EXPECT_EQ(out_.str(), help);
  }
  EXPECT_FALSE(poured_);
  EXPECT_EQ(Run({"order", "x", "--help"}), kDone);
  EXPECT_TRUE(Printed("[NAME"));
}

TEST_F(CommandLineTest, HelpHasPagesOfTheirOwn) {
  EXPECT_EQ(Run({"help", "leaves"}), kDone);
  EXPECT_EQ(out_.str(), "green, black\n");
}

TEST_F(CommandLineTest, TheVersionIsThatOfTheProduct) {
  EXPECT_EQ(Run({"--version"}), kDone);
  EXPECT_EQ(out_.str(), "brew " RDV_VERSION "\n");
}

TEST_F(CommandLineTest, AMisspeltWordIsNamedWithWhatWasMeant) {
  ExpectUsageError({"por", "x"}, "brew: unknown command 'por': did you mean 'pour'?");
  ExpectUsageError({"Pour"}, "brew: unknown command 'Pour': did you mean 'pour'?");
  ExpectUsageError({"ord"}, "brew: unknown command 'ord': did you mean 'order'?");
  ExpectUsageError({"zzz"}, "brew: unknown command 'zzz' (");
  ExpectUsageError({"--versoin"}, "brew: unknown option '--versoin': did you mean '--version'?");
  ExpectUsageError({"--helpp"}, "brew: unknown option '--helpp': did you mean '--help'?");
  ExpectUsageError({"helpp"}, "brew: unknown command 'helpp': did you mean 'help'?");
  ExpectUsageError({"help", "--version"}, "brew: no help on '--version' (");
  ExpectUsageError({"help", "leafs"}, "brew: no help on 'leafs': did you mean 'leaves'?");
  ExpectUsageError({"pour", "x", "--cup", "3"},
                   "brew pour: unknown option '--cup': did you mean '--cups'?");
  ExpectUsageError({"pour", "x", "--cup=3"},
                   "brew pour: unknown option '--cup': did you mean '--cups'?");
}

TEST_F(CommandLineTest, HelpOnHelpIsHelp) {
  EXPECT_EQ(Run({"help"}), kDone);
  const std::string help = out_.str();
  out_.str("");
  EXPECT_EQ(Run({"help", "help"}), kDone);
  EXPECT_EQ(out_.str(), help);
}

TEST_F(CommandLineTest, MissingSurplusAndEmptyWordsAreNamed) {
  ExpectUsageError({}, "brew: a command is missing: pour, order");
  ExpectUsageError({"pour"}, "brew pour: POT is missing");
  ExpectUsageError({"pour", "x", "y"}, "brew pour: 'y' is one word too many");
  ExpectUsageError({"pour", ""}, "brew pour: POT: must not be empty");
  ExpectUsageError({"--version", "y"}, "brew: 'y' is one word too many");
}

TEST_F(CommandLineTest, ANumberOutOfRangeIsNamedWithItsOption) {
  for (const char* number : {"0", "13", "many", "1.5", "99999999999999999999", ""}) {
    ExpectUsageError({"pour", "x", "--cups", number}, "brew pour: --cups");
  }
  ExpectUsageError({"pour", "x", "--cups"}, "brew pour: --cups");
  EXPECT_EQ(Run({"pour", "x", "--cups", "12"}), kDone);
  EXPECT_EQ(cups_, 12);
}

TEST_F(CommandLineTest, WordsThatAreCommandsToo) {
  EXPECT_EQ(Run({"pour", "order"}), kDone);
  EXPECT_EQ(pot_, "order");
}

TEST_F(CommandLineTest, TheRestOfACommandIsTakenAsItIs) {
  const std::vector<std::string> literal = {"-5", "--cups", "[a,b]", "", "--", "%%", "{x}", "-h"};
  std::vector<std::string> words = {"order", "shop"};
  words.insert(words.end(), literal.begin(), literal.end());
  ASSERT_EQ(Run(words), kDone) << errors_.str();
  EXPECT_EQ(pot_, "shop");
  EXPECT_EQ(rest_, literal);
  ASSERT_EQ(Run({"order", "shop"}), kDone);
  EXPECT_TRUE(rest_.empty());
}

TEST_F(CommandLineTest, FailuresHaveTheirExitCodes) {
  refuse_ = true;
  EXPECT_EQ(Run({"pour", "x"}), kFindings);
  EXPECT_EQ(errors_.str(), "brew pour: no milk\n");
  refuse_ = false;
  lost_ = true;
  EXPECT_EQ(Run({"pour", "x"}), kUnusable);
  EXPECT_EQ(errors_.str(), "brew pour: the pot is not there\n");
}

TEST_F(CommandLineTest, AnErrorOfTheDatabaseHasItsTextBeforeItsNumber) {
  CommandLine line("brew", "makes tea");
  line.Add("boil", "boils water", []() -> int { throw RuntimeError(75, u"No water", u"Kettle"); });
  const std::vector<std::string> words = {"boil"};
  EXPECT_EQ(line.Execute(words, out_, errors_), kUnusable);
  EXPECT_EQ(errors_.str(), "brew boil: No water (error 75, Kettle)\n");
}

TEST_F(CommandLineTest, OutputThatDoesNotArriveIsAnError) {
  FullDisk disk;
  std::ostream out(&disk);
  out.exceptions(std::ios::badbit);
  const std::vector<std::string> words = {"--help"};
  EXPECT_EQ(line_.Execute(words, out, errors_), kUnusable);
  EXPECT_EQ(errors_.str(), "brew: the output cannot be written: No space left on device\n");
}

TEST(OnlyCommand, HasItsHelpWithoutAWord) {
  CommandLine line("sip", "drinks tea");
  std::string cup;
  bool drunk = false;
  line.AddOnly([&drunk] {
        drunk = true;
        return 0;
      })
      .add_option("CUP", cup, "which one")
      ->required();
  std::ostringstream out;
  std::ostringstream errors;
  const std::vector<std::string> help = {"--help"};
  const std::vector<std::string> word = {"help"};
  const std::vector<std::string> mug = {"mug"};
  EXPECT_EQ(line.Execute(help, out, errors), kDone);
  EXPECT_NE(out.str().find("which one"), std::string::npos) << out.str();
  const std::string once = out.str();
  EXPECT_EQ(line.Execute(word, out, errors), kDone);
  EXPECT_EQ(out.str(), once + once);
  EXPECT_FALSE(drunk);
  EXPECT_EQ(line.Execute(mug, out, errors), kDone);
  EXPECT_TRUE(drunk);
  EXPECT_EQ(cup, "mug");
  EXPECT_EQ(line.Execute({}, out, errors), kUsage);
  EXPECT_EQ(errors.str().substr(0, 19), "sip: CUP is missing");
}

TEST(Suggestion, ChoosesTheNearestWordOrNone) {
  const std::vector<std::string> known = {"create", "check", "dump", "--dry-run"};
  EXPECT_EQ(Nearest("crate", known), "create");
  EXPECT_EQ(Nearest("craete", known), "create");
  EXPECT_EQ(Nearest("CHECK", known), "check");
  EXPECT_EQ(Nearest("d", known), "");  // two begin with it
  EXPECT_EQ(Nearest("du", known), "dump");
  EXPECT_EQ(Nearest("--dryrun", known), "--dry-run");
  EXPECT_EQ(Nearest("x", known), "");
  EXPECT_EQ(Nearest("", known), "");
  EXPECT_EQ(Nearest("---", known), "");
}

}  // namespace
}  // namespace rdv::tools
