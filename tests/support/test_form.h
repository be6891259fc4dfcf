// A form for tests and the user at it: widgets without windows off Windows, the real ones there.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "runtime/text.h"
#include "widgets/form.h"
#include "widgets/refusal.h"

namespace rdv::test {

struct Keys {
  bool ctrl = false;
  bool shift = false;
};

// A message box that was shown. The title is one of its own.
struct Message {
  Text text;
  int style = 0;
  std::optional<Text> title;

  bool operator==(const Message&) const = default;
};

// Actions and their refusals are those of the widgets' user. Widgets are given as the form has
// them.
class TestForm {
 public:
  TestForm() = default;
  TestForm(const TestForm&) = delete;
  TestForm& operator=(const TestForm&) = delete;
  virtual ~TestForm() = default;

  // Lives as long as this object.
  virtual Form Widgets() = 0;

  virtual Refusal ClickCell(int row, int column, Keys held) = 0;
  virtual Refusal ClickAt(Twips x, Twips y, Keys held) = 0;
  virtual Refusal PressKey(char16_t key) = 0;
  virtual Refusal ClickHeader(int column) = 0;
  virtual Refusal ResizeColumn(int column, Twips width) = 0;
  virtual Refusal ScrollHorizontally(Twips distance) = 0;
  virtual Refusal ScrollVertically(Twips distance) = 0;
  virtual Refusal Pick(ComboBox& list, int index) = 0;
  virtual Refusal Type(Editor& editor, TextView text) = 0;
  virtual Refusal Paste(Editor& editor, TextView text) = 0;
  virtual Refusal Press(Button& button) = 0;

  virtual void QueueAnswer(MessageAnswer answer) = 0;
  // The boxes since the last call.
  virtual std::vector<Message> TakeMessages() = 0;

  virtual std::optional<std::string> FocusedWidget() = 0;
  virtual int DropDownWidth(ComboBox& list) = 0;
  virtual Text ColumnCaption(int column) = 0;
};

std::unique_ptr<TestForm> MakeTestForm();

// How far a length may be off the exact one: real windows lie on whole pixels.
Twips LengthTolerance();

}  // namespace rdv::test
