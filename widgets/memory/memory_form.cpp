#include "widgets/memory/memory_form.h"

namespace rdv::memory {
namespace {

// The widget of the table's i-th entry. Those before it are made already.
template <size_t i>
auto Make(const FormWidgets<MemoryParts>& widgets, Focus& focus, const Rectangle& grid) {
  constexpr const WidgetEntry& entry = kFormTable[i];
  const Widget* frame = entry.within == Within::Configuration ? &widgets.fraConfiguration
                        : entry.within == Within::Defaults    ? &widgets.fraDefault
                                                              : nullptr;
  std::string name(entry.name);
  if constexpr (entry.kind == WidgetKind::Frame) {
    return MemoryFrame(std::move(name), focus, frame);
  } else if constexpr (entry.kind == WidgetKind::Grid) {
    return MemoryLineGrid(std::move(name), focus, frame, grid);
  } else if constexpr (entry.kind == WidgetKind::TextBox) {
    return MemoryTextBox(std::move(name), focus, frame);
  } else if constexpr (entry.kind == WidgetKind::Button) {
    return MemoryButton(std::move(name), focus, frame);
  } else {
    return MemoryComboBox(std::move(name), focus, frame, entry.Typing());
  }
}

}  // namespace

MemoryForm::MemoryForm(const GridContent& content) : MemoryForm(content, DesignSize(content)) {}

MemoryForm::MemoryForm(const GridContent& content, Size size)
    : MemoryForm(LayOut(size, content).grid, std::make_index_sequence<kFormTable.size()>()) {}

template <size_t... i>
MemoryForm::MemoryForm(const Rectangle& grid, std::index_sequence<i...>)
    : FocusOfForm(), FormWidgets<MemoryParts>{Make<i>(*this, focus, grid)...} {
  for (Editor* editor : Widgets().Editors()) editor->SetVisible(false);
  cmdApply.SetEnabled(false);
}

}  // namespace rdv::memory
