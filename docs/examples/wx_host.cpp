// A window of wxWidgets (3.2, Windows only) whose container class holds the control. The container
// makes the control, places it, passes keys on and hands its events over.
//   cl /std:c++20 /EHsc wx_host.cpp with the options of your wxWidgets build (wxUSE_ACTIVEX is 1)
#include <wx/wx.h>

// These declare nothing where they come first.
#include <wx/msw/ole/activex.h>
#include <wx/msw/ole/automtn.h>

namespace {

constexpr const wchar_t* kControl = L"TLV_RDV_Line_Config.ucRDVLineConfig";
constexpr DISPID kRemoveMe = 1;
constexpr short kConfiguration = 1;

class LineFrame : public wxFrame {
 public:
  explicit LineFrame(IDispatch* control)
      : wxFrame(nullptr, wxID_ANY, "Lines of configuration 1", wxDefaultPosition,
                wxSize(960, 500)) {
    auto* const place = new wxActiveXContainer(this, IID_IDispatch, control);
    place->Bind(wxEVT_ACTIVEX, &LineFrame::OnEvent, this);
    methods_.SetDispatchPtr(control);
    CallAfter([this] {
      // False: the control has told the user why.
      if (!methods_.CallMethod("ShowControl", wxVariant(long{kConfiguration})).GetBool()) Close();
    });
  }

 private:
  void OnEvent(wxActiveXEvent& event) {
    // The control is still at work in here: the window goes when it has returned.
    if (event.GetDispatchId() == kRemoveMe) CallAfter([this] { Close(); });
  }

  wxAutomationObject methods_;
};

class LineApplication : public wxApp {
 public:
  bool OnInit() override {
    CLSID id = {};
    IDispatch* control = nullptr;
    HRESULT result = CLSIDFromProgID(kControl, &id);
    if (SUCCEEDED(result))
      result = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                reinterpret_cast<void**>(&control));
    if (FAILED(result)) {
      wxLogSysError(static_cast<unsigned long>(result), "The control cannot be created");
      return false;
    }
    (new LineFrame(control))->Show();
    return true;
  }
};

}  // namespace

wxIMPLEMENT_APP(LineApplication);
