#include "tools/play/memory/memory_driver.h"

#include <stdexcept>
#include <type_traits>
#include <utility>

#include "rules/grid_columns.h"

namespace rdv::play {

std::unique_ptr<Driver> MakeDriver() {
  return std::make_unique<MemoryDriver>();
}

template <class Widget>
Widget* MemoryDriver::Named(std::string_view name) {
  Widget* found = nullptr;
  ForEachWidget(*form_, [&]<class Other>(Other& widget, const WidgetEntry& entry) {
    if constexpr (std::is_same_v<Other, Widget>) {
      if (entry.name == name) found = &widget;
    }
  });
  return found;
}

void MemoryDriver::UseSite(const Text& folder) {
  site_.reset();
  site_.emplace(folder);
}

void MemoryDriver::Create() {
  form_ = std::make_unique<memory::MemoryForm>(kGridContent);
  for (const MessageAnswer answer : std::exchange(answers_, {})) form_->screen.QueueAnswer(answer);
  control_ = std::make_unique<ucRDVLineConfig>(form_->Widgets());
  control_->RemoveME = [this] { ++remove_me_count_; };
}

void MemoryDriver::Destroy() {
  KeepMessages();
  answers_ = form_->screen.TakeAnswers();
  control_.reset();
  form_.reset();
}

// The grid answers a click of any button alike.
Refusal MemoryDriver::ClickCell(int row, int column, MousePress press) {
  return Grid().UserClickCell(row, column, {.ctrl = press.ctrl, .shift = press.shift});
}

Refusal MemoryDriver::ClickAt(Twips x, Twips y, MousePress press) {
  return Grid().UserClick(x, y, {.ctrl = press.ctrl, .shift = press.shift});
}

Refusal MemoryDriver::PressGridKey(GridKey key) {
  switch (key) {
    case GridKey::Edit:
      return Grid().UserEditKey();
    case GridKey::Up:
      return Grid().UserMoveRow(-1);
    case GridKey::Down:
      return Grid().UserMoveRow(1);
  }
  throw std::logic_error("unknown key");
}

Refusal MemoryDriver::Type(std::string_view editor, TextView text) {
  if (auto* box = Named<memory::MemoryTextBox>(editor)) return box->UserType(text);
  return List(editor).UserType(text);
}

Refusal MemoryDriver::Paste(std::string_view editor, TextView text) {
  if (auto* box = Named<memory::MemoryTextBox>(editor)) return box->UserPaste(text);
  return List(editor).UserPaste(text);
}

Refusal MemoryDriver::Press(std::string_view button) {
  if (auto* candidate = Named<memory::MemoryButton>(button)) return candidate->UserPress();
  throw std::logic_error("unknown button");
}

void MemoryDriver::QueueAnswer(MessageAnswer answer) {
  if (form_) {
    form_->screen.QueueAnswer(answer);
  } else {
    answers_.push_back(answer);
  }
}

StateSeen MemoryDriver::State() {
  return {.apply_enabled = form_->cmdApply.Enabled(),
          .configuration_enabled = form_->fraConfiguration.Enabled(),
          .unit_type = form_->cmbRDVType.Text(),
          .pointer = static_cast<int>(form_->screen.Pointer()),
          .focus = form_->FocusedWidget()};
}

int MemoryDriver::TakeRemoveMeCount() {
  return std::exchange(remove_me_count_, 0);
}

std::vector<MessageSeen> MemoryDriver::TakeMessages() {
  KeepMessages();
  return std::exchange(messages_, {});
}

void MemoryDriver::KeepMessages() {
  for (memory::ShownMessage& shown : form_->screen.TakeMessages()) {
    messages_.push_back({std::move(shown.text), std::move(shown.title), shown.style,
                         std::string(NameOf(shown.answer))});
  }
}

std::vector<RowSeen> MemoryDriver::Rows() {
  std::vector<RowSeen> rows;
  for (int row = 1; row <= Grid().RowCount(); ++row) {
    RowSeen& seen = rows.emplace_back();
    seen.selected = Grid().Selected(row);
    for (int column = 1; column <= Grid().ColumnCount(); ++column) {
      seen.cells.push_back(Grid().Cell(row, column));
    }
  }
  return rows;
}

EditorSeen MemoryDriver::EditorState(std::string_view editor) {
  EditorSeen seen;
  const auto look_at = [&seen](const Editor& widget) {
    seen.visible = widget.Visible();
    seen.left = widget.Left();
    seen.top = widget.Top();
    seen.width = widget.Width();
    seen.text = widget.Text();
  };
  if (const auto* box = Named<memory::MemoryTextBox>(editor)) {
    look_at(*box);
  } else {
    const memory::MemoryComboBox& list = List(editor);
    look_at(list);
    seen.index = list.ListIndex();
  }
  return seen;
}

ListSeen MemoryDriver::ListState(std::string_view list) {
  const memory::MemoryComboBox& widget = List(list);
  ListSeen seen;
  seen.index = widget.ListIndex();
  seen.text = widget.Text();
  seen.drop_down_width = widget.DropDownWidth();
  for (int index = 0; index < widget.ListCount(); ++index) {
    seen.entries.push_back({widget.List(index), widget.ItemData(index)});
  }
  return seen;
}

GeometrySeen MemoryDriver::Geometry() {
  const LineGrid& grid = Grid();
  GeometrySeen seen;
  seen.grid = {grid.Left(), grid.Top(), grid.Width(), grid.Height()};
  for (int row = 1; row <= grid.RowCount(); ++row) {
    seen.rows.push_back({grid.RowLeft(row), grid.RowTop(row), grid.RowHeight(row)});
  }
  for (int column = 1; column <= grid.ColumnCount(); ++column) {
    seen.columns.push_back({grid.ColumnLeft(column), grid.ColumnWidth(column)});
  }
  return seen;
}

memory::MemoryComboBox& MemoryDriver::List(std::string_view name) {
  if (auto* list = Named<memory::MemoryComboBox>(name)) return *list;
  throw std::logic_error("unknown list");
}

}  // namespace rdv::play
