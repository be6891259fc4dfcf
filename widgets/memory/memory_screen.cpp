#include "widgets/memory/memory_screen.h"

#include <utility>

#include "widgets/message_text.h"

namespace rdv::memory {
namespace {

constexpr int kButtonsMask = 0x0F;
constexpr int kOnlyOk = 0;

}  // namespace

MessageAnswer MemoryScreen::ShowMessage(TextView text, int style, std::optional<TextView> title) {
  MessageAnswer answer =
      (style & kButtonsMask) == kOnlyOk ? MessageAnswer::Ok : MessageAnswer::Cancel;
  if (!answers_.empty()) {
    answer = answers_.front();
    answers_.pop_front();
  }
  std::optional<Text> caption;
  if (title) caption = MessageText(*title);
  messages_.push_back({MessageText(text), std::move(caption), style, answer});
  return answer;
}

}  // namespace rdv::memory
