// The place of an in-place editor: kept in twips as it was set, so that arithmetic on it does not
// gather rounding errors, and shown in pixels.
#pragma once

#include <algorithm>
#include <functional>

#include "widgets/win32/window_widget.h"

namespace rdv::win32 {

template <class Contract>
class EditorWindow : public WindowWidget<Contract> {
 public:
  Twips Left() const override { return left_; }
  Twips Top() const override { return top_; }
  Twips Width() const override { return width_; }
  void SetLeft(Twips left) override {
    left_ = left;
    Place();
  }
  void SetTop(Twips top) override {
    top_ = top;
    Place();
  }
  void SetWidth(Twips width) override {
    width_ = width;
    Place();
  }

  void SetVisible(bool visible) override {
    if (visible && on_showing) on_showing();
    WindowWidget<Contract>::SetVisible(visible);
  }

  // The resolution of the window's screen, and the height of an editor in the form's font.
  void SetScale(Scale scale, Twips height = kEditorHeight) {
    scale_ = scale;
    height_ = height;
    Place();
  }

  // It has been placed and is about to be seen there.
  std::function<void()> on_showing;

 protected:
  Scale CurrentScale() const { return scale_; }
  virtual void PlaceAt(const RECT& place) { MoveTo(this->Handle(), place); }

 private:
  void Place() { PlaceAt(scale_.Pixels(Rectangle{left_, top_, std::max(width_, 0.0), height_})); }

  Scale scale_{96};
  Twips left_ = 0;
  Twips top_ = 0;
  Twips width_ = 0;
  Twips height_ = kEditorHeight;
};

// The text of a window.
Text WindowText(HWND window);

}  // namespace rdv::win32
