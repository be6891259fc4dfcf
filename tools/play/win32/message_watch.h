// Sees the message boxes of its thread, notes what they show and presses their buttons.
#pragma once

#include <windows.h>

#include <deque>
#include <string>
#include <vector>

#include "tools/play/driver.h"

namespace rdv::play {

// One at a time.
class MessageWatch {
 public:
  MessageWatch();
  MessageWatch(const MessageWatch&) = delete;
  MessageWatch& operator=(const MessageWatch&) = delete;
  ~MessageWatch();

  // The first answer not yet given goes to the next box. Without one: OK where it is the only
  // button, else Cancel.
  void QueueAnswer(MessageAnswer answer) { answers_.push_back(answer); }
  std::vector<MessageSeen> TakeMessages();

 private:
  static LRESULT CALLBACK OnWindowEvent(int code, WPARAM wparam, LPARAM lparam);
  void OnBox(HWND box);

  HHOOK hook_;
  std::deque<MessageAnswer> answers_;
  std::vector<MessageSeen> messages_;
};

}  // namespace rdv::play
