// A host with one window and the registered control in it.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "tools/play/win32/com.h"
#include "tools/play/win32/host_site.h"

namespace rdv::play {

// The window's title, which a message box without a title of its own takes over.
inline constexpr const wchar_t* kHostTitle = L"rdvplay";

class HostWindow {
 public:
  HostWindow();
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;
  ~HostWindow() { DestroyWindow(window_); }

  HWND Handle() const { return window_; }

 private:
  HWND window_;
};

// Creates the control through its class factory and shows it in its design size. Throws when the
// component is not registered or a step fails. One thread, with OLE initialised.
class Container {
 public:
  explicit Container(std::function<void()> on_remove_me);
  Container(const Container&) = delete;
  Container& operator=(const Container&) = delete;
  ~Container();

  HWND Window() const { return window_.Handle(); }

  // A method of the control's dispatch interface, arguments in their order. The result is the
  // caller's to clear.
  VARIANT Call(const wchar_t* method, const std::vector<int16_t>& arguments);

 private:
  void CreateControl();
  void ListenTo(std::function<void()> on_remove_me);

  HostWindow window_;
  HostSite site_;
  std::unique_ptr<EventSink> sink_;
  ComPtr<IOleObject> control_;
  ComPtr<IConnectionPoint> events_;
  DWORD connection_ = 0;
};

}  // namespace rdv::play
