// The drop-down list on a combo box.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "widgets/win32/editor_window.h"
#include "widgets/win32/window_hook.h"

namespace rdv::win32 {

// The selected entry is kept here beside the platform's: the platform forgets or guesses it while
// text is typed, and tells of user picks in more than one message.
class ComboBoxWindow : public EditorWindow<ComboBox>, private WindowWatcher {
 public:
  ComboBoxWindow(HWND parent, int id, TextEntry entry);

  bool DroppedDown() const;
  // Closes the open list as if its highlighted entry had been pressed.
  void TakeHighlighted();

  void SetVisible(bool visible) override;
  void SetScale(Scale scale, Twips height = kEditorHeight);

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
  void SetFocus() override;

  void OnCommand(WORD code) override;
  FocusCodes CodesOfFocus() const override { return {CBN_SETFOCUS, CBN_KILLFOCUS}; }

  // Left or Right in a closed list whose text is not typed: they choose nothing.
  std::function<void(bool backward)> on_step;

  void Remember() override;
  void MakeAnew(HWND parent) override;

 protected:
  void OnMade() override;
  void PlaceAt(const RECT& place) override;

 private:
  std::optional<LRESULT> Before(const HookedMessage& message) override;
  std::optional<LRESULT> BeforeList(const HookedMessage& message);
  void ApplyDropDownWidth();
  void CenterText() const;
  void FillAroundText() const;
  void CheckIndex(int index) const;
  int PlatformIndex() const;
  void OnPicked();
  void OnTyped();
  void SelectInPlatform() const;

  struct Entry {
    rdv::Text caption;
    int32_t item_data;
  };

  const TextEntry entry_;
  std::unique_ptr<WindowHook> hook_;
  int list_index_ = -1;
  rdv::Text known_text_;  // shown text that the last on_change or selection told of
  std::optional<LRESULT> drop_down_width_;  // pixels, as last set by whomever
  int wished_width_ = 0;                    // at 96 dots per inch; 0 before any was set
  bool dropped_ = false;
  std::vector<Entry> kept_entries_;
  rdv::Text kept_text_;
  bool setting_ = false;  // messages now come from a setter, which tells of its change itself
};

}  // namespace rdv::win32
