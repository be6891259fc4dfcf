// The control on a form, over a site of its own, driven as its host and its user drive it.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <ostream>
#include <vector>

#include "control/line_config_control.h"
#include "data/recordset.h"
#include "rules/editors.h"
#include "rules/grid_rows.h"
#include "runtime/value.h"
#include "tests/support/line_columns.h"
#include "tests/support/site_fixture.h"
#include "tests/support/test_form.h"

namespace rdv {

// For the messages of failed expectations.
inline void PrintTo(const Text& text, std::ostream* out) {
  *out << '"' << ToUtf8(text) << '"';
}

}  // namespace rdv

namespace rdv::test {

// Rows of configuration 1 of the site "plain", by the type of their line.
inline constexpr int kHybridRow = 1;
inline constexpr int kImpedanceRow = 5;
inline constexpr int kNotInstalledRow = 7;
inline constexpr int kMohRow = 9;

using GridRow = std::array<Text, kColumnCount>;

inline void PrintTo(const Message& message, std::ostream* out) {
  *out << ToUtf8(message.text) << " [style " << message.style << ", "
       << (message.title ? ToUtf8(*message.title) : "no title") << "]";
}

inline Message CriticalError(TextView text) {
  return {Text(text), 16, Text(u"Error")};
}
inline Message PlainMessage(TextView text) {
  return {Text(text), 0, std::nullopt};
}

// Widgets of a test's own in the place of a form's.
struct Replacements {
  Frame* fraConfiguration = nullptr;
  LineGrid* LVRDVLineConfig = nullptr;
  TextBox* txtLabel = nullptr;
  ComboBox* cmbRDVType = nullptr;
  Screen* screen = nullptr;
};

inline Form Replace(const Form& form, const Replacements& with) {
  const auto chosen = [&]<class Widget>(Widget& widget) -> Widget& {
    Widget* other = nullptr;
    if constexpr (std::is_same_v<Widget, Frame>) {
      if (&widget == &form.fraConfiguration) other = with.fraConfiguration;
    } else if constexpr (std::is_same_v<Widget, LineGrid>) {
      other = with.LVRDVLineConfig;
    } else if constexpr (std::is_same_v<Widget, TextBox>) {
      if (&widget == &form.txtLabel) other = with.txtLabel;
    } else if constexpr (std::is_same_v<Widget, ComboBox>) {
      if (&widget == &form.cmbRDVType) other = with.cmbRDVType;
    }
    return other ? *other : widget;
  };
  return std::apply(
      [&](auto&... each) {
        return Form{{chosen(each)...}, with.screen ? *with.screen : form.screen};
      },
      Tie(form));
}

class ControlTest : public SiteTest {
 protected:
  ControlTest() { MakeForm(); }

  // A fresh form with a fresh control on it.
  void Create(ControlOptions options = {}) {
    // Making a form of real windows takes longer than most tests.
    if (had_control_) {
      Destroy();
      MakeForm();
    }
    had_control_ = true;
    control_ = std::make_unique<ucRDVLineConfig>(form(), std::move(options));
    removals_ = 0;
    control_->RemoveME = [this] { ++removals_; };
  }
  void Destroy() { control_.reset(); }

  ucRDVLineConfig& control() { return *control_; }
  const Form& form() const { return *form_; }
  LineGrid& grid() const { return form_->LVRDVLineConfig; }

  // RemoveME events since the control was created.
  int Removals() const { return removals_; }

  // The boxes since the last call.
  std::vector<Message> Messages() { return user_->TakeMessages(); }
  void Answer(MessageAnswer answer) { user_->QueueAnswer(answer); }

  // What the grid shows.
  Text Cell(int row, int column) const { return grid().Cell(row, column); }
  std::vector<Text> Column(int column) const {
    std::vector<Text> cells;
    for (int row = 1; row <= grid().RowCount(); ++row) cells.push_back(Cell(row, column));
    return cells;
  }
  std::vector<GridRow> Rows() const {
    std::vector<GridRow> rows(static_cast<size_t>(grid().RowCount()));
    for (int row = 1; row <= grid().RowCount(); ++row) {
      for (int column = 1; column <= kColumnCount; ++column) {
        rows[static_cast<size_t>(row - 1)][static_cast<size_t>(column - 1)] = Cell(row, column);
      }
    }
    return rows;
  }
  void ExpectGrid(const std::vector<GridRow>& expected) const {
    ASSERT_EQ(grid().RowCount(), static_cast<int>(expected.size()));
    for (int row = 1; row <= grid().RowCount(); ++row) {
      for (int column = 1; column <= kColumnCount; ++column) {
        EXPECT_EQ(Cell(row, column),
                  expected[static_cast<size_t>(row - 1)][static_cast<size_t>(column - 1)])
            << "row " << row << ", column " << column;
      }
    }
  }

  // What the user does. A refused action fails the test.
  void Click(int row, int column, Keys held = {}) { Accept(user_->ClickCell(row, column, held)); }
  void ClickAt(Twips x, Twips y) { Accept(user_->ClickAt(x, y, {})); }
  void Key(char16_t key) { Accept(user_->PressKey(key)); }
  void ChangeColumnWidth(int column, Twips width) { Accept(user_->ResizeColumn(column, width)); }
  void ScrollRight(Twips distance) { Accept(user_->ScrollHorizontally(distance)); }
  void ScrollDown(Twips distance) { Accept(user_->ScrollVertically(distance)); }
  void ClickHeader(int column) { Accept(user_->ClickHeader(column)); }
  void PickCode(ComboBox& list, int32_t code) { Accept(user_->Pick(list, IndexOf(list, code))); }
  void Type(Editor& editor, TextView text) { Accept(user_->Type(editor, text)); }
  void Paste(Editor& editor, TextView text) { Accept(user_->Paste(editor, text)); }
  void Press(Button& button) { Accept(user_->Press(button)); }
  std::string Focus() const { return user_->FocusedWidget().value_or("none"); }

  // The two halves of a click.
  void MouseDownAt(Twips x, Twips y) { grid().on_mouse_down(x, y); }
  void MouseDownOnCell(int row, int column) {
    Click(row, column_beside_all_editors_);
    MouseDownAt(Middle(row, column), grid().RowTop(row) + 100);
  }
  void MouseUpOnCell(int row, int column) {
    grid().on_mouse_up(Middle(row, column), grid().RowTop(row) + 100);
  }
  // For a cell whose middle is out of sight.
  void MouseDownOnCellLeft(int row, int column) {
    MouseDownAt(grid().RowLeft(row) + grid().ColumnLeft(column) + 100, grid().RowTop(row) + 100);
  }

  // Selects the entry of a list that the user never sees.
  static void SelectCode(ComboBox& list, int32_t code) { list.SetListIndex(IndexOf(list, code)); }

  Text Caption(int column) const { return user_->ColumnCaption(column); }
  int DropDownWidth(ComboBox& list) const { return user_->DropDownWidth(list); }

  // What the database holds, read by statements of the test's own. Fields joined by ",".
  std::vector<Text> AllStoredLines(int16_t config) {
    return Joined(u"SELECT * FROM Used_Lines WHERE Config_ID = `Given_ConfigID`", config,
                  LineColumns());
  }
  std::vector<Text> StoredLinesOfOtherSlots(int16_t config) {
    std::vector<Text> lines = AllStoredLines(config);
    const Text own_slot = u"," + Decimal(config) + u",1,1,";
    std::erase_if(lines, [&](const Text& line) { return line.find(own_slot) != Text::npos; });
    return lines;
  }
  std::vector<Text> StoredCards(int16_t config) {
    return Joined(
        u"SELECT * FROM Used_Cards WHERE Config_ID = `Given_ConfigID` ORDER BY "
        u"Base_Slot_No",
        config,
        {u"Config_ID", u"Base_Slot_No", u"Slot_Offset", u"Slot_Caption", u"Card_Type_Name",
         u"Card_Type_No", u"Card_Variant", u"Part_Num", u"Country_Code"});
  }
  std::vector<int> StoredLines(int16_t config) {
    std::vector<int> lines;
    for (const Text& line : Joined(kUnit, config, {u"Line"})) lines.push_back(CLng(line));
    return lines;
  }
  // In the order of the parameters of Insert_All_Lines; empty when there is none.
  Text StoredLine(int16_t config, int line) {
    for (const Text& stored : Joined(kUnit, config, LineColumns())) {
      if (stored.ends_with(u"," + Decimal(line))) return stored;
    }
    return {};
  }
  Text StoredField(int16_t config, int line, TextView field) {
    for (const Text& stored : Joined(kUnit, config, {Text(field), u"Line"})) {
      const Text end = u"," + Decimal(line);
      if (stored.ends_with(end)) return stored.substr(0, stored.size() - end.size());
    }
    return u"no such line";
  }

 private:
  static constexpr TextView kUnit =
      u"SELECT * FROM Used_Lines WHERE Config_ID = `Given_ConfigID` AND Base_Slot_No = 1 AND "
      u"Slot_Offset = 1 ORDER BY Line";

  static std::vector<Text> LineColumns() {
    return std::vector<Text>(kLineColumns.begin(), kLineColumns.end());
  }

  std::vector<Text> Joined(TextView statement, int16_t config, const std::vector<Text>& fields) {
    Recordset rows;
    rows.Open(CurrentSite().Execute(statement, {Decimal(config)}));
    std::vector<Text> joined;
    for (; !rows.EndOfFile(); rows.MoveNext()) {
      Text line;
      for (const Text& field : fields) {
        const Value& value = rows.Field(field);
        if (&field != &fields.front()) line += u",";
        line += IsNull(value) ? Text(u"(Null)") : ToText(value);
      }
      joined.push_back(line);
    }
    return joined;
  }

  static void Accept(const Refusal& refused) {
    EXPECT_FALSE(refused.has_value())
        << "the user cannot do that: " << ToUtf8(refused.value_or(u""));
  }

  static int IndexOf(const ComboBox& list, int32_t code) {
    for (int index = 0; index < list.ListCount(); ++index) {
      if (list.ItemData(index) == code) return index;
    }
    ADD_FAILURE() << "the list offers no " << code;
    return -1;
  }

  Twips Middle(int row, int column) const {
    return grid().RowLeft(row) + grid().ColumnLeft(column) + grid().ColumnWidth(column) / 2;
  }

  void MakeForm() {
    form_.reset();
    user_.reset();
    user_ = MakeTestForm();
    form_ = std::make_unique<Form>(user_->Widgets());
  }

  static constexpr int column_beside_all_editors_ = column::kLine;

  std::unique_ptr<TestForm> user_;
  std::unique_ptr<Form> form_;
  std::unique_ptr<ucRDVLineConfig> control_;
  bool had_control_ = false;
  int removals_ = 0;
};

}  // namespace rdv::test
