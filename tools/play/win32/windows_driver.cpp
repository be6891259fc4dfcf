#include "tools/play/win32/windows_driver.h"

#include <stdexcept>
#include <utility>

#include "tools/play/win32/window_text.h"

namespace rdv::play {
namespace {

constexpr int kDefaultPointer = 0;
constexpr int kHourglass = 11;

// What an action has left for later belongs to it.
template <typename Result>
Result Settled(Result result) {
  HandlePendingMessages();
  return result;
}

}  // namespace

std::unique_ptr<Driver> MakeDriver() {
  return std::make_unique<WindowsDriver>();
}

void WindowsDriver::UseSite(const Text& folder) {
  site_.reset();
  site_.emplace(folder);
}

// Where no width was asked for yet, the platform answers with the box's own.
ListSeen WindowsDriver::ListState(std::string_view list) {
  ListSeen seen = At(list).List();
  if (!shown_) seen.drop_down_width = 0;
  return seen;
}

void WindowsDriver::Create() {
  shown_ = false;
  container_ = std::make_unique<Container>([this] { ++remove_me_count_; });
  windows_.emplace(container_->Window());
  HandlePendingMessages();
}

void WindowsDriver::Destroy() {
  windows_.reset();
  container_.reset();
  HandlePendingMessages();
}

bool WindowsDriver::ShowControl(int16_t config) {
  shown_ = true;
  const VARIANT result = container_->Call(L"ShowControl", {config});
  if (result.vt != VT_BOOL) throw std::runtime_error("ShowControl answers no Boolean");
  return Settled(result.boolVal != VARIANT_FALSE);
}

void WindowsDriver::AssignIndextoDefaultBox(int16_t line1, int16_t line5) {
  const VARIANT result = container_->Call(L"AssignIndextoDefaultBox", {line1, line5});
  if (result.vt != VT_EMPTY) throw std::runtime_error("AssignIndextoDefaultBox answers not Empty");
  HandlePendingMessages();
}

Refusal WindowsDriver::ClickCell(int row, int column, MousePress press) {
  return Settled(Grid().ClickCell(row, column, press));
}

Refusal WindowsDriver::ClickAt(Twips x, Twips y, MousePress press) {
  return Settled(Grid().ClickAt(x, y, press));
}

Refusal WindowsDriver::PressKey(char16_t key) {
  return Settled(Grid().PressKey(key));
}

Refusal WindowsDriver::PressGridKey(GridKey key) {
  return Settled(Grid().PressGridKey(key));
}

Refusal WindowsDriver::ClickHeader(int column) {
  return Settled(Grid().ClickHeader(column));
}

Refusal WindowsDriver::ResizeColumn(int column, Twips width) {
  return Settled(Grid().ResizeColumn(column, width));
}

Refusal WindowsDriver::ScrollHorizontally(Twips distance) {
  return Settled(Grid().ScrollHorizontally(distance));
}

Refusal WindowsDriver::ScrollVertically(Twips distance) {
  return Settled(Grid().ScrollVertically(distance));
}

Refusal WindowsDriver::Pick(std::string_view list, int index) {
  return Settled(At(list).Pick(index));
}

Refusal WindowsDriver::Type(std::string_view editor, TextView text) {
  return Settled(At(editor).Type(text));
}

Refusal WindowsDriver::Paste(std::string_view editor, TextView text) {
  return Settled(At(editor).Paste(text));
}

Refusal WindowsDriver::Press(std::string_view button) {
  const HWND window = windows_->Named(button);
  if (const Refusal refused = windows_->WhyOutOfReach(window)) return refused;
  RECT area = {};
  GetClientRect(window, &area);
  Click(window, {area.right / 2, area.bottom / 2});
  return Settled(Refusal());
}

StateSeen WindowsDriver::State() {
  return {.apply_enabled = IsWindowEnabled(windows_->Named("cmdApply")) != FALSE,
          .configuration_enabled = IsWindowEnabled(windows_->Frame()) != FALSE,
          .unit_type = TextOf(windows_->Named(kUnitTypeList)),
          .pointer = Pointer(),
          .focus = windows_->Focused()};
}

int WindowsDriver::TakeRemoveMeCount() {
  return std::exchange(remove_me_count_, 0);
}

// What the pointer would become over the control.
int WindowsDriver::Pointer() const {
  const HWND frame = windows_->Frame();
  SendMessageW(frame, WM_SETCURSOR, reinterpret_cast<WPARAM>(frame),
               MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
  return GetCursor() == LoadCursorW(nullptr, IDC_WAIT) ? kHourglass : kDefaultPointer;
}

}  // namespace rdv::play
