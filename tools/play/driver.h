// What plays a scenario: something that has a control, its host and its user.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tools/play/snapshot.h"
#include "widgets/form_table.h"
#include "widgets/refusal.h"

namespace rdv::play {

// The names of widgets that scripts know, in the order of the form's table.
std::vector<std::string_view> NamesOf(bool (WidgetEntry::*belongs)() const);
inline constexpr std::string_view kUnitTypeList = "cmbRDVType";

// The answers to message boxes, as scripts and their answers call them.
inline constexpr std::array<std::string_view, 4> kAnswerNames = {"ok", "yes", "no", "cancel"};
inline constexpr std::array<MessageAnswer, 4> kAnswers = {MessageAnswer::Ok, MessageAnswer::Yes,
                                                          MessageAnswer::No, MessageAnswer::Cancel};

MessageAnswer AnswerNamed(std::string_view name);
std::string_view NameOf(MessageAnswer answer);

// Further is the first of the buttons beside the usual three.
enum class MouseButton { Left, Right, Middle, Further };

struct MousePress {
  MouseButton button = MouseButton::Left;
  bool ctrl = false;
  bool shift = false;
};

// Keys of the grid that are no characters.
enum class GridKey { Edit, Up, Down };

// Widgets are given by a name of the lists above. An action that cannot be done returns why and has
// done nothing. Points are twips from the grid's top left corner. Everything but UseSite, Create
// and QueueAnswer needs a control.
class Driver {
 public:
  Driver() = default;
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;
  virtual ~Driver() = default;

  // The folder that is found as the common application data folder from now on.
  virtual void UseSite(const Text& folder) = 0;
  virtual bool HasControl() const = 0;
  virtual void Create() = 0;
  virtual void Destroy() = 0;

  virtual bool ShowControl(int16_t config) = 0;
  virtual void AssignIndextoDefaultBox(int16_t line1, int16_t line5) = 0;

  virtual Refusal ClickCell(int row, int column, MousePress press) = 0;
  virtual Refusal ClickAt(Twips x, Twips y, MousePress press) = 0;
  virtual Refusal PressKey(char16_t key) = 0;  // ctrl+a is 1
  virtual Refusal PressGridKey(GridKey key) = 0;
  virtual Refusal ClickHeader(int column) = 0;
  virtual Refusal ResizeColumn(int column, Twips width) = 0;
  virtual Refusal ScrollHorizontally(Twips distance) = 0;
  virtual Refusal ScrollVertically(Twips distance) = 0;

  // `index` is -1 for an entry that the list does not have.
  virtual Refusal Pick(std::string_view list, int index) = 0;
  virtual Refusal Type(std::string_view editor, TextView text) = 0;
  virtual Refusal Paste(std::string_view editor, TextView text) = 0;
  virtual Refusal Press(std::string_view button) = 0;

  // Answers are given to the message boxes in their order, also to those of a later control.
  virtual void QueueAnswer(MessageAnswer answer) = 0;

  virtual StateSeen State() = 0;
  // Since the last call of each, also of controls that are gone.
  virtual int TakeRemoveMeCount() = 0;
  virtual std::vector<MessageSeen> TakeMessages() = 0;

  virtual std::vector<RowSeen> Rows() = 0;
  virtual EditorSeen EditorState(std::string_view editor) = 0;
  virtual ListSeen ListState(std::string_view list) = 0;
  virtual GeometrySeen Geometry() = 0;
};

// Of this program. Each script is played by a driver of its own.
std::unique_ptr<Driver> MakeDriver();

}  // namespace rdv::play
