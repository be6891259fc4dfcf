#include "widgets/memory/memory_widget.h"

namespace rdv::memory {

Refusal MemoryButton::UserPress() {
  if (const Refusal refused = WhyOutOfReach()) return refused;
  SetFocus();
  Notify(on_click);
  return std::nullopt;
}

}  // namespace rdv::memory
