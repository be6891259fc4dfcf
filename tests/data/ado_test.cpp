// The route through the platform's data access, against a stand-in for it.
#ifdef _WIN32

#include <gtest/gtest.h>

#include <algorithm>

#include "data/ado/ado_connection.h"
#include "data/commands.h"
#include "data/connection_route.h"
#include "data/jet/sql/jet_connection.h"
#include "runtime/error.h"
#include "tests/data/ado_stand_in.h"
#include "tests/support/site_fixture.h"

namespace rdv {
namespace {

constexpr int32_t kWholeNumber = 3;
constexpr int32_t kFloatingNumber = 5;
constexpr int32_t kVariableWideText = 202;
constexpr int32_t kInput = 1;
constexpr int32_t kText = 1;

class AdoRoute : public testing::Test {
 protected:
  void SetUp() override {
    const auto sample = sites::SamplePath("sites/plain/NewDB.mdb");
    if (!stand_in_.Usable()) GTEST_SKIP() << "ADODB has no class identifiers on this machine";
    for (const auto& copy : {AdoFile(), JetFile()}) {
      std::filesystem::copy_file(sample, copy);
      std::filesystem::permissions(copy, std::filesystem::perms::owner_write,
                                   std::filesystem::perm_options::add);
    }
    connection_ = ado::OpenAdoConnection(ConnectionString());
  }

  std::filesystem::path AdoFile() const { return folder_.Path() / "ado.mdb"; }
  std::filesystem::path JetFile() const { return folder_.Path() / "jet.mdb"; }
  Text ConnectionString() const {
    return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + AdoFile().u16string();
  }

  static std::vector<Argument> ArgumentsFor(const CommandDefinition& command) {
    std::vector<Argument> arguments;
    for (size_t i = 0; i < command.parameters.size(); ++i) arguments.emplace_back(u"1");
    return arguments;
  }

  // The description; empty when there is none.
  std::string ErrorOf(TextView statement, const std::vector<Argument>& arguments,
                      std::span<const Parameter> parameters) const {
    try {
      connection_->Execute(statement, arguments, parameters);
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
    return {};
  }

  static constexpr Parameter kNumber[] = {{u"p", ParameterKind::WholeNumber}};

  test::AdoStandIn stand_in_;
  test::TemporaryFolder folder_;
  std::unique_ptr<Connection> connection_;
};

TEST_F(AdoRoute, OpensItsConnectionWithTheConnectionStringAndClosesIt) {
  EXPECT_EQ(stand_in_.Notes().connection_strings, std::vector<Text>{ConnectionString()});
  EXPECT_EQ(stand_in_.Notes().open_connections, 1);
  connection_.reset();
  EXPECT_EQ(stand_in_.Notes().open_connections, 0);
}

TEST_F(AdoRoute, SendsEachStoredStatementUnchangedWithParametersDeclaredAfterTheirColumns) {
  for (const CommandDefinition& command : AllCommands()) {
    SCOPED_TRACE(ToUtf8(command.name));
    std::vector<Argument> arguments;
    std::vector<test::SentParameter> expected;
    for (const Parameter& parameter : command.parameters) {
      const Text text = Decimal(static_cast<int64_t>(arguments.size() + 5));
      arguments.emplace_back(text);
      if (parameter.kind == ParameterKind::WholeNumber) {
        expected.push_back({kWholeNumber, kInput, 0, text});
      } else {
        expected.push_back({kVariableWideText, kInput, static_cast<int32_t>(text.size()), text});
      }
    }
    connection_->Execute(command.statement, arguments, command.parameters);
    const test::SentCommand& sent = stand_in_.Notes().commands.back();
    EXPECT_EQ(sent.type, kText);
    EXPECT_EQ(sent.statement, command.statement);
    EXPECT_EQ(sent.parameters, expected);
  }
  EXPECT_EQ(stand_in_.Notes().open_recordsets, 0);
}

// What the declarations are for: the file's own columns say which are numbers.
TEST_F(AdoRoute, DeclaresWholeNumbersExactlyForTheColumnsThatHoldNumbers) {
  const auto engine = jet::OpenJetConnection(JetFile().u16string());
  const std::pair<Command, TextView> inserts[] = {
      {Command::Insert_All_Lines, u"SELECT * FROM Used_Lines"},
      {Command::Insert_Used_Card, u"SELECT * FROM Used_Cards"}};
  for (const auto& [command, rows] : inserts) {
    const CommandDefinition& definition = DefinitionOf(command);
    const RowTable table = *engine->Execute(rows, {}).rows;
    ASSERT_FALSE(table.rows.empty());
    const Text statement(definition.statement);
    size_t place = statement.find(u'(');
    for (const Parameter& parameter : definition.parameters) {
      const size_t end = statement.find_first_of(u",)", ++place);
      const Text column(Trim(TextView(statement).substr(place, end - place)));
      place = end;
      const auto found = std::ranges::find(table.columns, column);
      ASSERT_NE(found, table.columns.end()) << ToUtf8(column);
      const Value& value = table.rows.front()[static_cast<size_t>(found - table.columns.begin())];
      EXPECT_EQ(std::holds_alternative<Text>(value), parameter.kind == ParameterKind::AnyText)
          << ToUtf8(column);
    }
  }
}

TEST_F(AdoRoute, IsRefusedATextThatIsComparedWithAColumnOfNumbers) {
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines WHERE Config_ID = p", {u"1"}, {}),
            "Data type mismatch in criteria expression.");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines WHERE Config_ID = p", {u"1"}, kNumber), "");
  EXPECT_EQ(ErrorOf(u"SELECT * FROM Used_Lines WHERE Description = p", {u"1"}, {}), "");
}

TEST_F(AdoRoute, SendsWholeNumbersAsNumbersWhateverTheyAreWrittenLike) {
  const std::pair<TextView, TextView> numbers[] = {{u"1", u"1"},   {u" 1 ", u"1"}, {u"+1", u"1"},
                                                   {u"2.5", u"2"}, {u"3.5", u"4"}, {u"1e1", u"10"}};
  for (const auto& [text, number] : numbers) {
    connection_->Execute(u"SELECT * FROM Used_Lines WHERE Config_ID = p",
                         std::vector<Argument>{Text(text)}, kNumber);
    const std::vector<test::SentParameter> expected = {{kWholeNumber, kInput, 0, Text(number)}};
    EXPECT_EQ(stand_in_.Notes().commands.back().parameters, expected) << ToUtf8(text);
  }
}

TEST_F(AdoRoute, FindsNoRowByANumberThatNoColumnHolds) {
  for (const TextView number : {u"70000", u"-99999999999", u"1e300"}) {
    const std::vector<Argument> arguments = {Text(number)};
    const CommandResult result =
        connection_->Execute(u"SELECT * FROM Used_Lines WHERE Config_ID = p", arguments, kNumber);
    EXPECT_TRUE(result.rows->rows.empty()) << ToUtf8(number);
  }
  EXPECT_EQ(stand_in_.Notes().commands.back().parameters.front().type, kFloatingNumber);
}

TEST_F(AdoRoute, ReportsANumberThatIsNoneWhereARowIsMetAndNotBefore) {
  constexpr TextView kStatement = u"UPDATE Used_Lines SET LineType = v WHERE Config_ID = p";
  constexpr Parameter kBoth[] = {{u"v", ParameterKind::WholeNumber},
                                 {u"p", ParameterKind::WholeNumber}};
  const auto lines = [this] {
    return connection_->Execute(u"SELECT * FROM Used_Lines", {}).rows->rows;
  };
  const auto before = lines();
  EXPECT_EQ(ErrorOf(kStatement, {u"six", u"1"}, kBoth),
            "Data type mismatch in criteria expression.");
  EXPECT_EQ(ErrorOf(kStatement, {u"70000", u"1"}, kBoth), "Overflow");
  EXPECT_EQ(ErrorOf(kStatement, {u"99999999999", u"1"}, kBoth), "Overflow");
  EXPECT_EQ(ErrorOf(kStatement, {u"1", u"one"}, kBoth),
            "Data type mismatch in criteria expression.");
  EXPECT_EQ(lines(), before);
  EXPECT_EQ(ErrorOf(kStatement, {u"six", u"30000"}, kBoth), "");
}

TEST_F(AdoRoute, SendsNullAndEmptyTextAsWhatTheyAre) {
  connection_->Execute(u"UPDATE Used_Lines SET Description = a, Volume_Name = b",
                       std::vector<Argument>{Argument(), u""});
  const std::vector<test::SentParameter> expected = {{kVariableWideText, kInput, 1, Argument()},
                                                     {kVariableWideText, kInput, 1, Argument(u"")}};
  EXPECT_EQ(stand_in_.Notes().commands.back().parameters, expected);
}

TEST_F(AdoRoute, GivesTheSameRowsAndCountsAsTheEngine) {
  const auto engine = jet::OpenJetConnection(JetFile().u16string());
  size_t found = 0;
  for (const CommandDefinition& command : AllCommands()) {
    SCOPED_TRACE(ToUtf8(command.name));
    if (command.command == Command::Insert_All_Lines ||
        command.command == Command::Insert_Used_Card)
      continue;  // the row of these arguments is there already
    const std::vector<Argument> arguments = ArgumentsFor(command);
    const CommandResult expected = engine->Execute(command.statement, arguments);
    const CommandResult actual =
        connection_->Execute(command.statement, arguments, command.parameters);
    ASSERT_EQ(actual.rows.has_value(), expected.rows.has_value());
    EXPECT_EQ(actual.rows_written, expected.rows_written);
    if (!expected.rows) continue;
    EXPECT_EQ(actual.rows->columns, expected.rows->columns);
    EXPECT_EQ(actual.rows->rows, expected.rows->rows);
    found += actual.rows->rows.size();
  }
  EXPECT_GT(found, 50u);
}

TEST_F(AdoRoute, PassesNumberDescriptionAndSourceOfErrorsOn) {
  const auto engine = jet::OpenJetConnection(JetFile().u16string());
  const std::pair<TextView, std::vector<Argument>> failing[] = {
      {u"SELECT * FROM Nowhere", {}},
      {u"SELECT * FROM Used_Lines WHERE Config_ID = p", {u"x"}},
      {u"SELECT * FROM Used_Lines WHERE Config_ID = p", {}},
      {DefinitionOf(Command::Insert_Used_Card).statement,
       ArgumentsFor(DefinitionOf(Command::Insert_Used_Card))}};
  for (const auto& [statement, arguments] : failing) {
    std::string expected;
    std::string actual;
    try {
      engine->Execute(statement, arguments);
    } catch (const RuntimeError& error) {
      expected = error.what();
    }
    try {
      connection_->Execute(statement, arguments);
    } catch (const RuntimeError& error) {
      actual = error.what();
    }
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(actual, expected);
  }
}

TEST_F(AdoRoute, AnErrorThatTellsNothingHasANumberAndADescriptionAllTheSame) {
  stand_in_.FailWith(RuntimeError(0, {}, {}));
  try {
    connection_->Execute(u"SELECT * FROM orvsettings", {});
    FAIL() << "the error was lost";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), static_cast<int32_t>(DISP_E_EXCEPTION));
    EXPECT_FALSE(error.Description().empty());
  }
}

TEST_F(AdoRoute, NamesTheEngineAsUsersKnowItWhicheverOfItsSuccessorsSpeaks) {
  for (const Text name : {u"Microsoft Access", u"Microsoft Office Access"}) {
    stand_in_.FailWith(
        RuntimeError(-2147217865, u"The " + name + u" database engine cannot find the input table.",
                     name + u" Database Engine"));
    try {
      connection_->Execute(u"SELECT * FROM orvsettings", {});
      FAIL() << "the error was lost";
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.Number(), -2147217865);
      EXPECT_EQ(error.Source(), u"Microsoft JET Database Engine");
      EXPECT_EQ(error.Description(),
                u"The Microsoft Jet database engine cannot find the input table.");
    }
  }
}

TEST_F(AdoRoute, LeavesTheNamesOfOthersAsTheyAre) {
  stand_in_.FailWith(
      RuntimeError(3265, u"The Microsoft Access database engine", u"ADODB.Recordset"));
  try {
    connection_->Execute(u"SELECT * FROM orvsettings", {});
    FAIL() << "the error was lost";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Source(), u"ADODB.Recordset");
    EXPECT_EQ(error.Description(), u"The Microsoft Access database engine");
  }
}

TEST_F(AdoRoute, RaisesWhatOpeningRaises) {
  const Text path = (folder_.Path() / "none.mdb").u16string();
  try {
    ado::OpenAdoConnection(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path);
    FAIL() << "a file that is not there was opened";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Description(), u"Could not find file '" + path + u"'.");
    EXPECT_EQ(error.Source(), u"Microsoft JET Database Engine");
  }
}

TEST_F(AdoRoute, IsTakenWhenTheVariableDemandsIt) {
  test::SetEnvironment("RDV_DATABASE_ROUTE", "ado");
  EXPECT_EQ(ChooseDatabaseRoute(ConnectionString()), DatabaseRoute::Ado);
  OpenConnection(ConnectionString())->Execute(u"SELECT * FROM orvsettings", {});
  EXPECT_EQ(stand_in_.Notes().commands.size(), 1u);
  test::SetEnvironment("RDV_DATABASE_ROUTE", "jet");
  EXPECT_EQ(ChooseDatabaseRoute(ConnectionString()), DatabaseRoute::Jet);
  OpenConnection(ConnectionString())->Execute(u"SELECT * FROM orvsettings", {});
  EXPECT_EQ(stand_in_.Notes().commands.size(), 1u);
  test::SetEnvironment("RDV_DATABASE_ROUTE", "");
}

}  // namespace
}  // namespace rdv

#endif
