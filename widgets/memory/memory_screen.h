// Message boxes that are answered beforehand and kept, and the mouse pointer.
#pragma once

#include <deque>
#include <utility>
#include <vector>

#include "widgets/widget.h"

namespace rdv::memory {

struct ShownMessage {
  Text text;
  std::optional<Text> title;  // nothing: the box shows that of the host's window
  int style = 0;
  MessageAnswer answer = MessageAnswer::Ok;

  bool operator==(const ShownMessage&) const = default;
};

class MemoryScreen : public Screen {
 public:
  // The first answer not yet given. Without one: OK where it is the only button, else Cancel.
  MessageAnswer ShowMessage(TextView text, int style, std::optional<TextView> title) override;
  MousePointer Pointer() const override { return pointer_; }
  void SetPointer(MousePointer pointer) override { pointer_ = pointer; }

  void QueueAnswer(MessageAnswer answer) { answers_.push_back(answer); }
  // Those that no box has asked for.
  std::deque<MessageAnswer> TakeAnswers() { return std::exchange(answers_, {}); }

  // All boxes since the last TakeMessages.
  const std::vector<ShownMessage>& Messages() const { return messages_; }
  std::vector<ShownMessage> TakeMessages() { return std::exchange(messages_, {}); }

 private:
  std::deque<MessageAnswer> answers_;
  std::vector<ShownMessage> messages_;
  MousePointer pointer_ = MousePointer::Default;
};

}  // namespace rdv::memory
