// A form without windows and the user at it.
#pragma once

#include "rules/grid_columns.h"
#include "tests/support/test_form.h"
#include "widgets/memory/memory_form.h"

namespace rdv::test {

class MemoryTestForm : public TestForm {
 public:
  Form Widgets() override { return form_.Widgets(); }

  Refusal ClickCell(int row, int column, Keys held) override {
    return Grid().UserClickCell(row, column, {.ctrl = held.ctrl, .shift = held.shift});
  }
  Refusal ClickAt(Twips x, Twips y, Keys held) override {
    return Grid().UserClick(x, y, {.ctrl = held.ctrl, .shift = held.shift});
  }
  Refusal PressKey(char16_t key) override { return Grid().UserKey(key); }
  Refusal ClickHeader(int column) override { return Grid().UserColumnClick(column); }
  Refusal ResizeColumn(int column, Twips width) override {
    return Grid().UserResizeColumn(column, width);
  }
  Refusal ScrollHorizontally(Twips distance) override {
    return Grid().UserScrollHorizontally(distance);
  }
  Refusal ScrollVertically(Twips distance) override {
    return Grid().UserScrollVertically(distance);
  }
  Refusal Pick(ComboBox& list, int index) override { return Of(list).UserPick(index); }
  Refusal Type(Editor& editor, TextView text) override {
    if (auto* box = TextBoxOf(editor)) return box->UserType(text);
    return Of(dynamic_cast<ComboBox&>(editor)).UserType(text);
  }
  Refusal Paste(Editor& editor, TextView text) override {
    if (auto* box = TextBoxOf(editor)) return box->UserPaste(text);
    return Of(dynamic_cast<ComboBox&>(editor)).UserPaste(text);
  }
  Refusal Press(Button& button) override {
    return dynamic_cast<memory::MemoryButton&>(button).UserPress();
  }

  void QueueAnswer(MessageAnswer answer) override { form_.screen.QueueAnswer(answer); }
  std::vector<Message> TakeMessages() override {
    std::vector<Message> messages;
    for (memory::ShownMessage& shown : form_.screen.TakeMessages()) {
      messages.push_back({shown.text, shown.style, shown.title});
    }
    return messages;
  }

  std::optional<std::string> FocusedWidget() override { return form_.FocusedWidget(); }
  int DropDownWidth(ComboBox& list) override { return Of(list).DropDownWidth(); }
  Text ColumnCaption(int column) override { return Grid().ColumnCaption(column); }

 private:
  memory::MemoryLineGrid& Grid() { return form_.LVRDVLineConfig; }
  static memory::MemoryComboBox& Of(ComboBox& list) {
    return dynamic_cast<memory::MemoryComboBox&>(list);
  }
  static memory::MemoryTextBox* TextBoxOf(Editor& editor) {
    return dynamic_cast<memory::MemoryTextBox*>(&editor);
  }

  memory::MemoryForm form_{kGridContent};
};

}  // namespace rdv::test
