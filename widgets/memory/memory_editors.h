// The in-place editors without windows: what code does to them through their contract, and what the
// user does to them. An action that the user cannot do is refused and changes nothing.
#pragma once

#include <vector>

#include "widgets/memory/edit_line.h"
#include "widgets/memory/memory_widget.h"

namespace rdv::memory {

// A place over the grid and a line of text.
template <class Contract>
class MemoryEditor : public MemoryWidget<Contract> {
 public:
  using MemoryWidget<Contract>::MemoryWidget;

  Twips Left() const override { return left_; }
  Twips Top() const override { return top_; }
  Twips Width() const override { return width_; }
  void SetLeft(Twips left) override { left_ = left; }
  void SetTop(Twips top) override { top_ = top; }
  void SetWidth(Twips width) override { width_ = width; }

  rdv::Text Text() const override { return line_.Text(); }
  size_t Caret() const override { return line_.Caret(); }
  void SetCaret(size_t position) override { line_.SetCaret(position); }

 protected:
  EditLine line_;

 private:
  Twips left_ = 0;
  Twips top_ = 0;
  Twips width_ = 0;
};

class MemoryTextBox : public MemoryEditor<TextBox> {
 public:
  using MemoryEditor::MemoryEditor;

  void SetText(TextView text) override;

  // The whole text is selected, then the characters come one by one, each where the rule that ran
  // for the one before has left the caret. Empty text types nothing.
  Refusal UserType(TextView text);
  // In place of the whole text, at once.
  Refusal UserPaste(TextView text);
};

class MemoryComboBox : public MemoryEditor<ComboBox> {
 public:
  MemoryComboBox(std::string name, Focus& focus, const Widget* frame, TextEntry entry)
      : MemoryEditor(std::move(name), focus, frame), entry_(entry) {}

  // Where no text is typed, selects the entry of that text; without one nothing changes.
  void SetText(TextView text) override;

  void Clear() override;
  void AddItem(TextView caption, int32_t item_data) override;
  int ListCount() const override { return static_cast<int>(entries_.size()); }
  rdv::Text List(int index) const override { return At(index).caption; }
  int32_t ItemData(int index) const override { return At(index).item_data; }
  int ListIndex() const override { return list_index_; }
  void SetListIndex(int index) override;
  void SetDropDownWidth(int pixels) override { drop_down_width_ = pixels; }
  int DropDownWidth() const { return drop_down_width_; }

  // Runs the rule even when the entry is the one shown.
  Refusal UserPick(int index);
  // As those of a text box; only where text is typed.
  Refusal UserType(TextView text);
  Refusal UserPaste(TextView text);

 private:
  struct Entry {
    rdv::Text caption;
    int32_t item_data;
  };

  const Entry& At(int index) const;
  void Select(int index);
  Refusal WhyNotTypeable() const;
  void OnTyped();

  const TextEntry entry_;
  std::vector<Entry> entries_;
  int list_index_ = -1;
  int drop_down_width_ = 0;
};

}  // namespace rdv::memory
