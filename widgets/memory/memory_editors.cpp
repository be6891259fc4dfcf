#include "widgets/memory/memory_editors.h"

#include "runtime/error.h"

namespace rdv::memory {

void MemoryTextBox::SetText(TextView text) {
  if (text == line_.Text()) return;
  line_.Set(text);
  Notify(on_change);
}

Refusal MemoryTextBox::UserType(TextView text) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  SetFocus();
  line_.SelectAll();
  for (const char16_t unit : text) {
    if (line_.Type(unit)) Notify(on_change);
  }
  return std::nullopt;
}

Refusal MemoryTextBox::UserPaste(TextView text) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  SetFocus();
  line_.SelectAll();
  if (line_.Paste(text)) Notify(on_change);
  return std::nullopt;
}

void MemoryComboBox::SetText(TextView text) {
  if (entry_ == TextEntry::FromListOnly) {
    for (int index = 0; index < ListCount(); ++index) {
      if (At(index).caption == text) return SetListIndex(index);
    }
    return;
  }
  if (text == line_.Text()) return;
  list_index_ = -1;
  line_.Set(text);
  Notify(on_change);
}

void MemoryComboBox::Clear() {
  entries_.clear();
  Select(-1);
}

void MemoryComboBox::AddItem(TextView caption, int32_t item_data) {
  entries_.push_back({rdv::Text(caption), item_data});
}

void MemoryComboBox::SetListIndex(int index) {
  if (index < -1 || index >= ListCount()) Raise(LanguageError::InvalidPropertyValue);
  Select(index);
  if (index >= 0) Notify(on_click);
}

Refusal MemoryComboBox::UserPick(int index) {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  if (index < 0 || index >= ListCount()) return refusal::kNoSuchEntry;
  SetFocus();
  Select(index);
  Notify(on_click);
  return std::nullopt;
}

Refusal MemoryComboBox::UserType(TextView text) {
  if (const Refusal refused = WhyNotTypeable()) return refused;
  SetFocus();
  line_.SelectAll();
  for (const char16_t unit : text) {
    if (line_.Type(unit)) OnTyped();
  }
  return std::nullopt;
}

Refusal MemoryComboBox::UserPaste(TextView text) {
  if (const Refusal refused = WhyNotTypeable()) return refused;
  SetFocus();
  line_.SelectAll();
  if (line_.Paste(text)) OnTyped();
  return std::nullopt;
}

const MemoryComboBox::Entry& MemoryComboBox::At(int index) const {
  if (index < 0 || index >= ListCount()) Raise(LanguageError::InvalidPropertyArrayIndex);
  return entries_[static_cast<size_t>(index)];
}

void MemoryComboBox::Select(int index) {
  list_index_ = index;
  line_.Set(index == -1 ? TextView() : At(index).caption);
}

Refusal MemoryComboBox::WhyNotTypeable() const {
  if (entry_ == TextEntry::FromListOnly) return refusal::kNotTypeable;
  return WhyOutOfReach();
}

void MemoryComboBox::OnTyped() {
  list_index_ = -1;
  Notify(on_change);
}

}  // namespace rdv::memory
