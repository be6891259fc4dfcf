#include "tests/scenarios/random_script.h"

#include <array>
#include <iterator>
#include <random>
#include <string_view>

namespace rdv::test {
namespace {

constexpr int kTwipsPerPixel = 15;

constexpr std::array<std::string_view, 11> kLists = {
    "cmbPartition",  "cmbStartingNodeName", "cmbStartingNodeNumber", "cmbVolume",   "cmbModeType",
    "cmbModeNumber", "cmbNISOption",        "cmbImpedance",          "cmbSoftStop", "cmbLineType",
    "cmbRDVType"};
// With the column of the cell that each lies over.
struct EditedColumn {
  std::string_view editor;
  int column;
};
constexpr std::array<EditedColumn, 11> kEditedColumns = {{{"cmbPartition", 12},
                                                          {"cmbStartingNodeName", 13},
                                                          {"cmbStartingNodeNumber", 13},
                                                          {"cmbVolume", 14},
                                                          {"cmbModeType", 15},
                                                          {"cmbModeNumber", 15},
                                                          {"cmbNISOption", 16},
                                                          {"txtEWTOption", 17},
                                                          {"cmbImpedance", 18},
                                                          {"cmbSoftStop", 19},
                                                          {"txtLabel", 20}}};
constexpr std::array<std::string_view, 14> kTexts = {
    "0",   "1",  "2",  "15",     "16",      "999",           "007",
    "12a", "ab", "-3", "Lobby ", "O'Brien", "say \\\"x\\\"", "Zürich 2"};
constexpr std::array<std::string_view, 4> kButtons = {"cmdApply", "cmdOK", "cmdCancel",
                                                      "cmdShowDefaults"};
constexpr std::array<std::string_view, 4> kAnswers = {"ok", "yes", "no", "cancel"};

class Writer {
 public:
  explicit Writer(unsigned seed) : engine_(seed) {}

  std::string Write(int actions) {
    Line("create");
    Line("dump lists");
    Show();
    for (int action = 1; action <= actions; ++action) {
      Act();
      Line("dump state editors");
      if (action % 4 == 0) Line("dump rows");
      if (action % 10 == 0) Line("dump lists geometry");
    }
    for (int configuration = 1; configuration <= 4; ++configuration) {
      Line("lines " + std::to_string(configuration));
      Line("cards " + std::to_string(configuration));
    }
    return std::move(text_);
  }

 private:
  // Not the library's distributions: they differ from one library to the next.
  int Below(int bound) { return static_cast<int>(engine_() % static_cast<unsigned>(bound)); }
  int Between(int low, int high) { return low + Below(high - low + 1); }
  template <typename List>
  auto OneOf(const List& list) {
    return list[static_cast<size_t>(Below(static_cast<int>(std::size(list))))];
  }

  void Line(const std::string& line) { (text_ += line) += '\n'; }
  static std::string Length(int pixels) { return std::to_string(pixels * kTwipsPerPixel); }
  static std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

  void Show() { Line("show " + std::to_string(Between(1, 4))); }

  std::string HeldKeys() {
    constexpr std::array<std::string_view, 8> kHeld = {"",      "",      "",       "",
                                                       " ctrl", " ctrl", " shift", " ctrl shift"};
    return std::string(OneOf(kHeld));
  }

  // Most picks and typing follow a click into the right column, or few would come through.
  void Edit() {
    const EditedColumn edited = OneOf(kEditedColumns);
    Line("click " + std::to_string(Between(1, 10)) + ' ' + std::to_string(edited.column) +
         HeldKeys());
    Change(edited.editor);
  }

  void Change(std::string_view editor) {
    const std::string name(editor);
    switch (name.starts_with("txt") ? Between(4, 6) : Below(6)) {
      case 0:
      case 1:
      case 2:
        Line("pick " + name + " #" + std::to_string(Below(12)));
        break;
      case 3:
        Line("pick " + name + " =" + std::to_string(OneOf(kCodes)));
        break;
      case 4:
        Line("type " + name + ' ' + Quoted(OneOf(kTexts)));
        break;
      default:
        Line("paste " + name + ' ' + Quoted(OneOf(kTexts)));
        break;
    }
  }

  void MoveTheGrid() {
    switch (Below(5)) {
      case 0:
        Line("scroll h " + Length(Between(-120, 120)));
        break;
      case 1:
        Line("scroll v " + Length(Between(-60, 60)));
        break;
      case 2:
        Line("columnwidth " + std::to_string(Between(10, 20)) + ' ' + Length(OneOf(kWidths)));
        break;
      case 3:
        Line("columnclick " + std::to_string(Between(10, 20)));
        break;
      default:
        Line("clickat " + Length(Between(0, 900)) + ' ' + Length(Between(0, 330)) + HeldKeys());
        break;
    }
  }

  // A unit type that nobody knows has eleven rows.
  void RestoreAnUnknownUnit() {
    Line("paste cmbRDVType \"twelve lines\"");
    Line("press cmdShowDefaults");
    Line("columnwidth " + std::to_string(Between(10, 20)) + ' ' + Length(600));
    Line("click 11 " + std::to_string(Between(10, 14)));
    Line("click 1 " + std::to_string(Between(10, 14)));
  }

  void PressAButton() {
    const int answers = Below(3);
    for (int i = 0; i < answers; ++i) Line("answer " + std::string(OneOf(kAnswers)));
    Line("press " + std::string(OneOf(kButtons)));
  }

  void CallTheControl() {
    switch (Below(7)) {
      case 6:
        RestoreAnUnknownUnit();
        break;
      case 0:
        Line("destroy");
        Line("create");
        Show();
        break;
      case 1:
        Line("assign " + std::to_string(Between(4, 7)) + ' ' + std::to_string(Between(4, 7)));
        break;
      default:
        Show();
        break;
    }
  }

  void Act() {
    const int chance = Below(100);
    if (chance < 50) return Edit();
    if (chance < 60) return Change(OneOf(kLists));
    if (chance < 74) return MoveTheGrid();
    if (chance < 82) return Line(Below(3) == 0 ? "key x" : "key ctrl+a");
    if (chance < 92) return PressAButton();
    CallTheControl();
  }

  // Of columns, in pixels.
  static constexpr std::array<int, 10> kWidths = {0, 7, 20, 21, 40, 75, 80, 130, 130, 600};
  static constexpr std::array<int, 12> kCodes = {0, 1, 2, 3, 5, 6, 8, 17, 25, 128, 33, 999};

  std::mt19937 engine_;
  std::string text_;
};

}  // namespace

std::string RandomScript(unsigned seed, int actions) {
  return Writer(seed).Write(actions);
}

}  // namespace rdv::test
