// A whole form without windows: for tests and for playing scenarios.
#pragma once

#include <utility>

#include "widgets/form.h"
#include "widgets/layout.h"
#include "widgets/memory/memory_editors.h"
#include "widgets/memory/memory_line_grid.h"
#include "widgets/memory/memory_screen.h"

namespace rdv::memory {

struct MemoryParts {
  using Frame = MemoryFrame;
  using Grid = MemoryLineGrid;
  using List = MemoryComboBox;
  using TextBox = MemoryTextBox;
  using Button = MemoryButton;
};

struct FocusOfForm {
  Focus focus{"LVRDVLineConfig"};
};

// Owns the widgets. They stand as before the control is loaded.
class MemoryForm : private FocusOfForm, public FormWidgets<MemoryParts> {
 public:
  // Of the design size.
  explicit MemoryForm(const GridContent& content);
  MemoryForm(const GridContent& content, Size size);

  // Lives as long as this object.
  Form Widgets() { return FormOf(*this, screen); }

  const std::optional<std::string>& FocusedWidget() const { return focus.Holder(); }

  MemoryScreen screen;

 private:
  template <size_t... i>
  MemoryForm(const Rectangle& grid, std::index_sequence<i...>);
};

}  // namespace rdv::memory
