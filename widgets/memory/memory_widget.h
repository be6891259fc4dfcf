// What all widgets without windows share: being shown, being enabled, and having the focus.
#pragma once

#include <string>
#include <utility>

#include "widgets/refusal.h"
#include "widgets/widget.h"

namespace rdv::memory {

// Which widget of a form the keyboard goes to, by name.
class Focus {
 public:
  // `heir`: the widget that has it after one that is hidden.
  explicit Focus(std::string heir) : heir_(std::move(heir)) {}

  const std::optional<std::string>& Holder() const { return holder_; }
  void Give(const std::string& widget) { holder_ = widget; }
  void TakeFrom(const std::string& widget) {
    if (holder_ == widget) holder_.reset();
  }
  void LeaveHidden(const std::string& widget) {
    if (holder_ == widget) holder_ = heir_;
  }

 private:
  const std::string heir_;
  std::optional<std::string> holder_;
};

// `Contract` is the widget's interface. A widget that is hidden leaves the focus to the grid, one
// that is disabled loses it; one whose frame is disabled keeps it, but the user reaches it no more.
template <class Contract>
class MemoryWidget : public Contract {
 public:
  // `focus` and `frame` (null for a widget outside all frames) outlive the widget.
  MemoryWidget(std::string name, Focus& focus, const Widget* frame)
      : name_(std::move(name)), focus_(focus), frame_(frame) {}

  const std::string& Name() const { return name_; }

  bool Visible() const override { return visible_; }
  void SetVisible(bool visible) override {
    visible_ = visible;
    if (!visible) focus_.LeaveHidden(name_);
  }
  bool Enabled() const override { return enabled_; }
  void SetEnabled(bool enabled) override {
    enabled_ = enabled;
    if (!enabled) focus_.TakeFrom(name_);
  }
  bool Focused() const override { return focus_.Holder() == name_; }
  // Nothing happens where the keyboard cannot go.
  void SetFocus() override {
    if (!WhyOutOfReach()) focus_.Give(name_);
  }

 protected:
  Refusal WhyOutOfReach() const {
    if (!visible_) return refusal::kHidden;
    if (!enabled_ || (frame_ && !frame_->Enabled())) return refusal::kDisabled;
    return std::nullopt;
  }

 private:
  const std::string name_;
  Focus& focus_;
  const Widget* const frame_;
  bool visible_ = true;
  bool enabled_ = true;
};

class MemoryFrame : public MemoryWidget<Frame> {
 public:
  using MemoryWidget::MemoryWidget;
};

class MemoryButton : public MemoryWidget<Button> {
 public:
  using MemoryWidget::MemoryWidget;

  // The button takes the focus, then its handler runs; the handler may destroy the form.
  Refusal UserPress();
};

}  // namespace rdv::memory
