#include "widgets/memory/edit_line.h"

#include <algorithm>

namespace rdv::memory {
namespace {

constexpr char16_t kBackspace = 8;
constexpr char16_t kDelete = 127;

TextView FirstLine(TextView text) {
  const size_t line_feed = text.find(u'\n');
  if (line_feed == TextView::npos) return text;
  text = text.substr(0, line_feed);
  if (text.ends_with(u'\r')) text.remove_suffix(1);
  return text;
}

}  // namespace

void EditLine::Set(TextView text) {
  text_ = text;
  SetCaret(0);
}

void EditLine::SetCaret(size_t position) {
  caret_ = selection_ = std::min(position, text_.size());
}

void EditLine::SelectAll() {
  selection_ = 0;
  caret_ = text_.size();
}

bool EditLine::Type(char16_t unit) {
  if (unit == kBackspace) {
    const bool nothing_selected = selection_ == caret_;
    if (nothing_selected && caret_ == 0) return false;
    return Replace(nothing_selected ? caret_ - 1 : selection_, caret_, {});
  }
  if (unit < u' ' || unit == kDelete) return false;
  return Replace(selection_, caret_, TextView(&unit, 1));
}

bool EditLine::Paste(TextView text) {
  return Replace(selection_, caret_, FirstLine(text));
}

bool EditLine::Replace(size_t begin, size_t end, TextView with) {
  const bool changes = TextView(text_).substr(begin, end - begin) != with;
  text_.replace(begin, end - begin, with);
  SetCaret(begin + with.size());
  return changes;
}

}  // namespace rdv::memory
