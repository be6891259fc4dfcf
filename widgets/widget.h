// The widgets that the control is made of, as contracts: widgets/memory implements them without
// windows, widgets/win32 on the platform's controls. All positions and sizes are twips in the
// container's coordinates. Everything runs on the one user-interface thread; handlers run nested
// inside the statement that raised them. A handler that is not set is not called.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <type_traits>

#include "runtime/text.h"

namespace rdv {

using Twips = double;

// Where every event ends, one that is answered inside another one too: whatever is thrown goes no
// further. Procedures that report what they fail with have done so; the others end where they
// failed, whoever raised the event goes on, and the host is never brought down.
template <typename Answer>
void AnswerEvent(Answer&& answer) noexcept {
  try {
    answer();
  } catch (...) {
    // No one to report to.
  }
}

// Runs the handler of an event where there is one and keeps it alive meanwhile: it may be replaced
// or taken away while it runs, as when the host removes the control in answer to an event.
template <typename... Arguments>
void Notify(const std::function<void(Arguments...)>& handler,
            std::type_identity_t<Arguments>... arguments) noexcept {
  AnswerEvent([&] {
    const std::function<void(Arguments...)> running = handler;
    if (running) running(arguments...);
  });
}

class Widget {
 public:
  Widget() = default;
  Widget(const Widget&) = delete;
  Widget& operator=(const Widget&) = delete;
  virtual ~Widget() = default;

  virtual bool Visible() const = 0;
  virtual void SetVisible(bool visible) = 0;
  virtual bool Enabled() const = 0;
  virtual void SetEnabled(bool enabled) = 0;
  // The keyboard goes to the widget or to a part of it.
  virtual bool Focused() const = 0;
  virtual void SetFocus() = 0;
};

// Groups other widgets; while it is disabled the user reaches none of them.
class Frame : public Widget {};

class Button : public Widget {
 public:
  std::function<void()> on_click;
};

// A widget that is laid over a cell of the grid.
class Editor : public Widget {
 public:
  virtual Twips Left() const = 0;
  virtual Twips Top() const = 0;
  virtual Twips Width() const = 0;
  virtual void SetLeft(Twips left) = 0;
  virtual void SetTop(Twips top) = 0;
  virtual void SetWidth(Twips width) = 0;

  virtual rdv::Text Text() const = 0;
  // Raises on_change when the text is another one than before. The caret goes to the start.
  virtual void SetText(TextView text) = 0;
  // Caret position in UTF-16 units from the start of the text. Setting it clears the selection.
  virtual size_t Caret() const = 0;
  virtual void SetCaret(size_t position) = 0;

  // The text was changed: typed, pasted or set. Selecting a list entry does not raise it.
  std::function<void()> on_change;
};

class TextBox : public Editor {};

// Whether a list takes text that is none of its entries.
enum class TextEntry { FromListOnly, Typed };

// A drop-down list. Every entry carries its code as item data beside its caption. Where it takes
// typed text, another text that is typed or set leaves no entry selected; the text
// that is shown already changes nothing.
class ComboBox : public Editor {
 public:
  // All entries go; nothing is selected, the shown text is empty, no handler runs.
  virtual void Clear() = 0;
  virtual void AddItem(TextView caption, int32_t item_data) = 0;
  virtual int ListCount() const = 0;
  // Index from 0; raise 381 outside the list (so also for the index -1 of "none selected").
  virtual rdv::Text List(int index) const = 0;
  virtual int32_t ItemData(int index) const = 0;

  // -1 = none.
  virtual int ListIndex() const = 0;
  // Shows the entry's caption as the text and raises on_click, also when the entry is selected
  // already. -1 selects nothing, empties the text and raises nothing. Raises 380 for an index
  // outside the list.
  virtual void SetListIndex(int index) = 0;

  // Smallest width of the dropped-down list, in pixels.
  virtual void SetDropDownWidth(int pixels) = 0;

  // An entry was selected, by the user or by code, the one that was selected before included.
  std::function<void()> on_click;
};

enum class MousePointer { Default = 0, Hourglass = 11 };

// The buttons value plus the icon value of a message box.
namespace message_style {
inline constexpr int kPlain = 0;
inline constexpr int kCritical = 16;
inline constexpr int kYesNoCancelQuestion = 35;
inline constexpr int kExclamation = 48;
inline constexpr int kInformation = 64;
}  // namespace message_style

enum class MessageAnswer { Ok = 1, Cancel = 2, Yes = 6, No = 7 };

// What lies around the control: message boxes and the mouse pointer.
class Screen {
 public:
  virtual ~Screen() = default;

  // Modal. Shows text and title as MessageText makes them. Without a title of its own the box shows
  // that of the host's window.
  virtual MessageAnswer ShowMessage(TextView text, int style, std::optional<TextView> title) = 0;
  virtual MousePointer Pointer() const = 0;
  virtual void SetPointer(MousePointer pointer) = 0;
};

}  // namespace rdv
