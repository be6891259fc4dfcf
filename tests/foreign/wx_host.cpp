// A host that uses the control as an author who knows wxWidgets would: with the ActiveX container
// of that library, which nobody here wrote. A user's hands are those that play the scenarios.
//
//   wx_host CONFIGURATION
//
// Says a line for each step that held. Exit status: 0 all held, 1 one did not (said on stderr).
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/frame.h>
#include <wx/msw/ole/activex.h>
// The library's headers include the platform's, and want to be first.
#include <commctrl.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>

#include "rules/grid_columns.h"
#include "tools/play/win32/com.h"
#include "tools/play/win32/control_windows.h"
#include "tools/play/win32/editor_user.h"
#include "tools/play/win32/grid_user.h"
#include "tools/play/win32/window_text.h"

namespace rdv::test {
namespace {

constexpr const wchar_t* kControlName = L"TLV_RDV_Line_Config.ucRDVLineConfig";
constexpr const wchar_t* kLibraryName = L"TLV_RDV_Line_Config.dll";
constexpr int kRow = 1;

void Hold(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error(what);
}

// The window of the program with the control in it, as long as it lives.
class Host {
 public:
  Host() : frame_(new wxFrame(nullptr, wxID_ANY, "wx_host", wxPoint(0, 0), wxSize(1000, 520))) {
    play::ComPtr<IUnknown> unknown;
    CLSID id = {};
    play::Check(CLSIDFromProgID(kControlName, &id), "CLSIDFromProgID");
    play::Check(
        CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, unknown.ReceiveAny()),
        "CoCreateInstance");
    play::Check(unknown->QueryInterface(IID_IDispatch, control_.ReceiveAny()), "QueryInterface");
    frame_->Show();
    container_ = new wxActiveXContainer(frame_, IID_IDispatch, unknown.get());
    container_->Bind(wxEVT_ACTIVEX, [this](wxActiveXEvent&) {
      ++removals;
      if (on_remove_me) on_remove_me();
    });
    // A container gives the control its size with its own.
    frame_->SendSizeEvent();
    Settle();
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  ~Host() {
    DestroyContainer();
    frame_->Destroy();
    Settle();
  }

  // Everything that waits goes through the program's own loop, which offers each key to the
  // control.
  static void Settle() { wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL); }

  bool ShowControl(int16_t configuration) {
    VARIANT argument = {};
    argument.vt = VT_I2;
    argument.iVal = configuration;
    std::wstring name = L"ShowControl";
    LPOLESTR names[] = {name.data()};
    DISPID member = 0;
    play::Check(control_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member),
                "GetIDsOfNames");
    DISPPARAMS parameters = {&argument, nullptr, 1, 0};
    VARIANT result = {};
    play::Check(control_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                 &parameters, &result, nullptr, nullptr),
                "ShowControl");
    Settle();
    return result.vt == VT_BOOL && result.boolVal != VARIANT_FALSE;
  }

  void DestroyContainer() {
    delete container_;
    container_ = nullptr;
  }

  HWND Window() const { return static_cast<HWND>(frame_->GetHWND()); }
  // The control's own window, in which all others of it lie.
  HWND ControlWindow() const { return GetParent(play::ControlWindows(Window()).Frame()); }
  IDispatch* Control() const { return control_.get(); }

  int removals = 0;
  std::function<void()> on_remove_me;

 private:
  wxFrame* const frame_;
  play::ComPtr<IDispatch> control_;
  wxActiveXContainer* container_ = nullptr;
};

void PressButton(const play::ControlWindows& windows, std::string_view name) {
  const HWND button = windows.Named(name);
  RECT area = {};
  GetClientRect(button, &area);
  play::Click(button, {area.right / 2, area.bottom / 2});
  Host::Settle();
}

void PressKey(WPARAM key) {
  PostMessageW(GetFocus(), WM_KEYDOWN, key, 1);
  PostMessageW(GetFocus(), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
  Host::Settle();
}

// A choice from a list goes into the grid, and Apply saves it.
void Choose(Host& host, int16_t configuration) {
  const play::ControlWindows windows(host.Window());
  play::GridUser grid(windows);
  const auto volume = [&] { return grid.Rows().at(kRow - 1).cells.at(column::kVolume - 1); };
  const Text before = volume();
  Hold(!grid.ClickCell(kRow, column::kVolume, {}), "the cell of the volume can be clicked");
  Host::Settle();
  play::EditorUser list(windows, "cmbVolume");
  const play::ListSeen entries = list.List();
  Hold(entries.entries.size() > 1, "the list of the volumes has entries");
  const int other = entries.index == 0 ? 1 : 0;
  Hold(!list.Pick(other), "an entry can be chosen");
  Host::Settle();
  Hold(volume() != before, "the choice shows in the grid");
  const Text chosen = volume();
  Hold(IsWindowEnabled(windows.Named("cmdApply")) != FALSE, "a choice makes Apply usable");
  PressButton(windows, "cmdApply");
  Hold(IsWindowEnabled(windows.Named("cmdApply")) == FALSE, "Apply has saved");
  Hold(host.ShowControl(configuration), "the lines can be loaded once more");
  Hold(volume() == chosen, "the choice was saved");
  std::puts("held: a choice shows, and Apply saves it");
}

// The container gives the focus to the control's own window; and keys come through the container.
void UseKeyboard(Host& host) {
  const play::ControlWindows windows(host.Window());
  SetFocus(host.ControlWindow());
  Host::Settle();
  Hold(GetFocus() == windows.Grid(), "the focus goes on to the grid");
  PressKey(VK_TAB);
  Hold(windows.Focused() == "cmbRDVType", "Tab leads to the unit type");
  SetFocus(windows.Grid());
  Host::Settle();
  PressKey(VK_DOWN);
  PressKey(VK_F2);
  Hold(windows.Focused() != "LVRDVLineConfig", "F2 opens a cell");
  PressKey(VK_ESCAPE);
  Hold(windows.Focused() == "LVRDVLineConfig", "Esc leads back to the grid");
  std::puts("held: focus and keys");
}

// The event comes once, and the host may end the container inside it.
void Cancel(Host& host) {
  host.on_remove_me = [&] { host.DestroyContainer(); };
  PressButton(play::ControlWindows(host.Window()), "cmdCancel");
  Hold(host.removals == 1, "Cancel raises RemoveME once");
  std::puts("held: Cancel, and the end of the container inside the event");
}

// The container has put a window procedure of its own in front of the control's window and never
// takes it away: the windows may not outlive the container, though somebody still holds the
// control.
void Outlive(int16_t configuration) {
  play::ComPtr<IDispatch> kept;
  {
    Host host;
    Hold(host.ShowControl(configuration), "the lines are loaded");
    const HWND window = host.ControlWindow();
    SetFocus(window);
    host.Control()->AddRef();
    *kept.Receive() = host.Control();
    host.DestroyContainer();
    Hold(IsWindow(window) == FALSE, "no window outlives the container");
    Host::Settle();
  }
  Host::Settle();
  std::puts("held: the control outlives its container");
}

void Use(int16_t configuration) {
  {
    Host host;
    Hold(host.ShowControl(configuration), "the lines are loaded");
    std::puts("held: made, shown and loaded");
    UseKeyboard(host);
    Choose(host, configuration);
    Cancel(host);
  }
  Outlive(configuration);
  CoFreeUnusedLibrariesEx(0, 0);
  Hold(GetModuleHandleW(kLibraryName) == nullptr, "the library can be unloaded");
  std::puts("held: nothing is left, and the library is unloaded");
}

class Program final : public wxApp {
 public:
  bool OnInit() override {
    SetExitOnFrameDelete(false);
    configuration_ = static_cast<int16_t>(argc > 1 ? std::atoi(wxString(argv[1]).utf8_str()) : 1);
    CallAfter([this] { UseAndEnd(); });
    return true;
  }
  int OnExit() override { return status_; }
  int OnRun() override {
    wxApp::OnRun();
    return status_;
  }

 private:
  void UseAndEnd() {
    try {
      Use(configuration_);
      status_ = 0;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "did not hold: %s\n", error.what());
    }
    std::fflush(stdout);
    ExitMainLoop();
  }

  int16_t configuration_ = 1;
  int status_ = 1;
};

}  // namespace
}  // namespace rdv::test

wxIMPLEMENT_APP_CONSOLE(rdv::test::Program);
