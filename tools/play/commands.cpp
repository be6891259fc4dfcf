#include "tools/play/commands.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "rules/grid_columns.h"
#include "tools/command_line/suggestion.h"
#include "tools/play/arguments.h"
#include "tools/play/stored_rows.h"

namespace rdv::play {
namespace {

enum class Needs { Nothing, NoControl, Control };

constexpr size_t kAnyNumber = std::numeric_limits<size_t>::max();
constexpr int kAnyRow = std::numeric_limits<int>::max();

}  // namespace

struct Commands::Rule {
  std::string_view name;
  std::string_view arguments;  // as help shows them
  size_t least;                // number of arguments
  size_t most;
  Needs needs;
  void (Commands::*run)(const Arguments&);
  std::string_view does;
};

std::span<const Commands::Rule> Commands::Rules() {
  using enum Needs;
  static constexpr Rule kRules[] = {
      {"site", "DIR", 1, 1, NoControl, &Commands::Site,
       "DIR plays the common application data folder; before create"},
      {"create", "", 0, 0, NoControl, &Commands::Create, "makes and places the control"},
      {"show", "CONFIG", 1, 1, Control, &Commands::Show, "ShowControl; answers what it returns"},
      {"assign", "TYPE1 TYPE5", 2, 2, Control, &Commands::Assign, "AssignIndextoDefaultBox"},
      {"click", "ROW COLUMN [ctrl] [shift] [BUTTON]", 2, 5, Control, &Commands::Click,
       "a click into the middle of a cell; rows and columns count from 1. BUTTON is right,\n"
       "    middle or further; left is not written"},
      {"clickat", "X Y [ctrl] [shift] [BUTTON]", 2, 5, Control, &Commands::ClickAt,
       "a click at a point of the grid, in twips"},
      {"key", "KEY", 1, 1, Control, &Commands::Key,
       "a key to the grid: ctrl+a, f2, up, down or one printable character"},
      {"columnclick", "COLUMN", 1, 1, Control, &Commands::ColumnClick, "a click on a header"},
      {"columnwidth", "COLUMN WIDTH", 2, 2, Control, &Commands::ColumnWidth,
       "drags a header's divider until the column is so many twips wide"},
      {"scroll", "h|v DISTANCE", 2, 2, Control, &Commands::Scroll,
       "scrolls the grid by so many twips, back for a negative number"},
      {"pick", "EDITOR ENTRY", 2, 2, Control, &Commands::Pick,
       "picks from a list: #INDEX from 0, =ITEMDATA, or the text of the entry"},
      {"type", "EDITOR TEXT", 2, 2, Control, &Commands::Type,
       "selects the editor's text and types over it, a character at a time"},
      {"paste", "EDITOR TEXT", 2, 2, Control, &Commands::Paste,
       "replaces the editor's text at once"},
      {"press", "BUTTON", 1, 1, Control, &Commands::Press,
       "cmdApply, cmdOK, cmdCancel or cmdShowDefaults"},
      {"answer", "BUTTON", 1, 1, Nothing, &Commands::QueueAnswer,
       "the next message box gets ok, yes, no or cancel"},
      {"dump", "[state|rows|editors|lists|geometry...]", 0, kAnyNumber, Control, &Commands::Dump,
       "what can be seen; state, rows and editors when nothing is named"},
      {"lines", "CONFIG", 1, 1, Nothing, &Commands::Lines, "the stored lines of a configuration"},
      {"cards", "CONFIG", 1, 1, Nothing, &Commands::Cards, "its stored cards"},
      {"destroy", "", 0, 0, Control, &Commands::Destroy, "takes the control away"},
  };
  return kRules;
}

const Commands::Rule& Commands::RuleOf(const Token& command) {
  const std::string name = ToUtf8(command.text);
  const std::span<const Rule> rules = Rules();
  const auto found =
      std::find_if(rules.begin(), rules.end(), [&](const Rule& rule) { return rule.name == name; });
  if (found != rules.end()) return *found;
  std::vector<std::string> names;
  for (const Rule& rule : rules) names.emplace_back(rule.name);
  const std::string nearest = tools::Nearest(name, names);
  throw ScriptError("unknown command '" + name + "'" +
                    (nearest.empty() ? "" : ": did you mean '" + nearest + "'?"));
}

std::string Commands::Help() {
  std::string help;
  for (const Rule& rule : Rules()) {
    help += std::string(rule.name) + (rule.arguments.empty() ? "" : " ") +
            std::string(rule.arguments) + "\n    " + std::string(rule.does) + "\n";
  }
  help += "\nEDITOR is one of";
  for (const std::string_view editor : NamesOf(&WidgetEntry::IsEditor))
    help += " " + std::string(editor);
  return help + ".\n";
}

std::string ScriptHelp() {
  return "A script is text in UTF-8, a command a line; blank lines and lines that begin with # "
         "are\n"
         "skipped. Words are parted by blanks; a text with blanks is written as a JSON "
         "string.\n\n" +
         Commands::Help();
}

void Commands::Run(const std::vector<Token>& line) {
  const Rule& rule = RuleOf(line.front());
  const Arguments given(line);
  const std::string name(rule.name);
  if (given.Count() < rule.least) throw ScriptError("'" + name + "' lacks an argument");
  if (given.Count() > rule.most) throw ScriptError("'" + name + "' has an argument too many");
  if (rule.needs == Needs::Control && !driver_.HasControl()) {
    throw ScriptError("'" + name + "' needs a control");
  }
  if (rule.needs == Needs::NoControl && driver_.HasControl()) {
    throw ScriptError("'" + name + "' comes before the control is created");
  }
  (this->*rule.run)(given);
}

void Commands::Answer(const Refusal& refused) {
  if (refused) answers_.Refused(*refused);
}

void Commands::Site(const Arguments& given) {
  driver_.UseSite(given.AsText(0));
}

void Commands::Create(const Arguments&) {
  driver_.Create();
  answers_.Done("create");
}

void Commands::Show(const Arguments& given) {
  answers_.Done("show", driver_.ShowControl(given.AsInteger(0)));
}

void Commands::Assign(const Arguments& given) {
  driver_.AssignIndextoDefaultBox(given.AsInteger(0), given.AsInteger(1));
  answers_.Nothing("assign");
}

void Commands::Click(const Arguments& given) {
  Answer(driver_.ClickCell(given.AsWhole(0, -kAnyRow, kAnyRow), given.AsWhole(1, 1, kColumnCount),
                           given.AsMousePress(2)));
}

void Commands::ClickAt(const Arguments& given) {
  Answer(driver_.ClickAt(given.AsReal(0), given.AsReal(1), given.AsMousePress(2)));
}

void Commands::Key(const Arguments& given) {
  if (const auto key = given.AsGridKey(0)) return Answer(driver_.PressGridKey(*key));
  for (const char16_t unit : given.AsKey(0)) {
    if (const Refusal refused = driver_.PressKey(unit)) return Answer(refused);
  }
}

void Commands::ColumnClick(const Arguments& given) {
  Answer(driver_.ClickHeader(given.AsWhole(0, 1, kColumnCount)));
}

void Commands::ColumnWidth(const Arguments& given) {
  const double width = given.AsReal(1);
  if (width < 0) throw ScriptError("a column's width is not negative");
  Answer(driver_.ResizeColumn(given.AsWhole(0, 1, kColumnCount), width));
}

void Commands::Scroll(const Arguments& given) {
  constexpr std::array<std::string_view, 2> kDirections = {"h", "v"};
  const bool horizontally = given.AsOneOf(0, kDirections) == "h";
  const double distance = given.AsReal(1);
  Answer(horizontally ? driver_.ScrollHorizontally(distance) : driver_.ScrollVertically(distance));
}

void Commands::Pick(const Arguments& given) {
  const std::string_view editor = given.AsOneOf(0, NamesOf(&WidgetEntry::IsEditor));
  if (!EntryOf(editor).IsList()) return answers_.Refused(refusal::kNoSuchEntry);
  Answer(driver_.Pick(editor, given.AsEntryOf(1, driver_.ListState(editor))));
}

void Commands::Type(const Arguments& given) {
  Answer(driver_.Type(given.AsOneOf(0, NamesOf(&WidgetEntry::IsEditor)), given.AsText(1)));
}

void Commands::Paste(const Arguments& given) {
  Answer(driver_.Paste(given.AsOneOf(0, NamesOf(&WidgetEntry::IsEditor)), given.AsText(1)));
}

void Commands::Press(const Arguments& given) {
  Answer(driver_.Press(given.AsOneOf(0, NamesOf(&WidgetEntry::IsButton))));
}

void Commands::QueueAnswer(const Arguments& given) {
  driver_.QueueAnswer(AnswerNamed(given.AsOneOf(0, kAnswerNames)));
}

void Commands::Dump(const Arguments& given) {
  constexpr std::array<std::string_view, 5> kNames = {"state", "rows", "editors", "lists",
                                                      "geometry"};
  constexpr size_t kDumpedByDefault = 3;
  constexpr void (Commands::*kDumps[])() = {&Commands::DumpState, &Commands::DumpRows,
                                            &Commands::DumpEditors, &Commands::DumpLists,
                                            &Commands::DumpGeometry};
  std::vector<size_t> wanted;
  for (size_t position = 0; position < given.Count(); ++position) {
    const std::string_view name = given.AsOneOf(position, kNames);
    wanted.push_back(
        static_cast<size_t>(std::find(kNames.begin(), kNames.end(), name) - kNames.begin()));
  }
  for (size_t what = 0; given.Count() == 0 && what < kDumpedByDefault; ++what) {
    wanted.push_back(what);
  }
  for (const size_t what : wanted) (this->*kDumps[what])();
}

void Commands::Lines(const Arguments& given) {
  answers_.Stored("lines", StoredLines(given.AsInteger(0)));
}

void Commands::Cards(const Arguments& given) {
  answers_.Stored("cards", StoredCards(given.AsInteger(0)));
}

void Commands::Destroy(const Arguments&) {
  driver_.Destroy();
  answers_.Done("destroy");
}

void Commands::DumpState() {
  answers_.State(driver_.State(), driver_.TakeRemoveMeCount(), driver_.TakeMessages());
}

void Commands::DumpRows() {
  answers_.Rows(driver_.Rows());
}

void Commands::DumpEditors() {
  Answers::Named<EditorSeen> editors;
  for (const std::string_view name : NamesOf(&WidgetEntry::IsInPlace)) {
    editors.emplace_back(name, driver_.EditorState(name));
  }
  answers_.Editors(editors);
}

void Commands::DumpLists() {
  Answers::Named<ListSeen> lists;
  for (const std::string_view name : NamesOf(&WidgetEntry::IsList)) {
    lists.emplace_back(name, driver_.ListState(name));
  }
  answers_.Lists(lists);
}

void Commands::DumpGeometry() {
  answers_.Geometry(driver_.Geometry());
}

}  // namespace rdv::play
