#include "tools/play/driver.h"

#include <algorithm>

namespace rdv::play {

std::vector<std::string_view> NamesOf(bool (WidgetEntry::*belongs)() const) {
  std::vector<std::string_view> names;
  for (const WidgetEntry& entry : kFormTable) {
    if ((entry.*belongs)()) names.push_back(entry.name);
  }
  return names;
}

MessageAnswer AnswerNamed(std::string_view name) {
  const auto found = std::find(kAnswerNames.begin(), kAnswerNames.end(), name);
  return kAnswers.at(static_cast<size_t>(found - kAnswerNames.begin()));
}

std::string_view NameOf(MessageAnswer answer) {
  const auto found = std::find(kAnswers.begin(), kAnswers.end(), answer);
  return kAnswerNames.at(static_cast<size_t>(found - kAnswers.begin()));
}

}  // namespace rdv::play
