// The drop-down list on a combo box.
#pragma once

#include <optional>

#include "widgets/win32/editor_window.h"

namespace rdv::win32 {

enum class TextEntry { FromListOnly, Typed };

// The selected entry is kept here beside the platform's: the platform forgets or guesses it while
// text is typed, and tells of user picks in more than one message.
class ComboBoxWindow : public EditorWindow<ComboBox> {
 public:
  ComboBoxWindow(HWND parent, int id, TextEntry entry);
  ~ComboBoxWindow() override;

  bool DroppedDown() const;

  void SetVisible(bool visible) override;

  rdv::Text Text() const override;
  // Where no text is typed, selects the entry of that text; without one nothing changes.
  void SetText(TextView text) override;
  size_t Caret() const override;
  void SetCaret(size_t position) override;

  void Clear() override;
  void AddItem(TextView caption, int32_t item_data) override;
  int ListCount() const override;
  rdv::Text List(int index) const override;
  int32_t ItemData(int index) const override;
  int ListIndex() const override { return list_index_; }
  void SetListIndex(int index) override;
  void SetDropDownWidth(int pixels) override;

  void OnCommand(WORD code) override;

 protected:
  void PlaceAt(const RECT& place) override;

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  void CenterText() const;
  void CheckIndex(int index) const;
  int PlatformIndex() const;
  void OnPicked();
  void OnTyped();

  const TextEntry entry_;
  WNDPROC platform_procedure_ = nullptr;
  int list_index_ = -1;
  rdv::Text known_text_;  // shown text that the last on_change or selection told of
  std::optional<LRESULT> drop_down_width_;  // pixels
  bool dropped_ = false;
  bool setting_ = false;  // messages now come from a setter, which tells of its change itself
};

}  // namespace rdv::win32
