// A container to which every call of the control must have been announced.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "component/com/com_pointer.h"

namespace rdv::test {

// What a container has to offer. Whatever is not named is not there: its QueryInterface refuses it,
// its window context holds null for it, its ambient properties do not know it.
struct Offers {
  std::set<std::string> interfaces;  // of the site, by name
  std::map<DISPID, std::variant<std::monostate, bool, LONG, IDispatch*>> ambients = {};
  bool frame = true;
  bool document = false;
  RECT place = {0, 0, 940, 400};
};

// Calls have names: "IOleInPlaceSite.OnUIActivate", "frame.SetActiveObject(object)". Questions,
// which change nothing, have names too: "QueryInterface(IOleControlSite)", "Ambient(Font)". A call
// or question that was not announced fails the test, and so does an announced one that does not
// come. One thread. The control's references to it are counted; it lives as long as its owner
// wants.
class StrictContainer {
 public:
  explicit StrictContainer(Offers offers);
  StrictContainer(const StrictContainer&) = delete;
  StrictContainer& operator=(const StrictContainer&) = delete;
  ~StrictContainer();

  IOleClientSite* Site();
  IAdviseSink* ViewSink();
  IDispatch* EventSink();
  IPropertyNotifySink* PropertySink();
  HWND Window() const { return window_; }
  const Offers& Offered() const { return offers_; }
  IOleInPlaceActiveObject* ActiveObject() const { return active_object_; }
  ULONG ReferencesLeft() const { return references_ - 1; }

  // `calls` are to come in this order, each once; `questions` each once or more, in any order.
  void Announce(std::vector<std::string> calls, std::vector<std::string> questions);
  // Fails for what has not come. Nothing is announced any more.
  void CheckAllCame();

  // For containers that misbehave: nothing is announced, all is counted. Runs inside every call and
  // question; what it gives is the answer, and the call's usual work is left out.
  void Misbehave(std::function<std::optional<HRESULT>(const std::string& name)> inside);
  int Count(const std::string& name) const;
  // Calls that the control was told had succeeded.
  int Succeeded(const std::string& name) const;
  // The names of all that came, without those that belong to the end of the container's life.
  std::set<std::string> Names() const;

 private:
  template <class Interface>
  class SitePart;
  class ClientSite;
  class InPlaceSite;
  class ControlSite;
  class Ambients;
  class PropertyNotifySink;
  class ViewAdviseSink;
  class Events;
  class Surrounding;

  IUnknown* Find(REFIID iid);
  HRESULT Query(REFIID iid, void** object);
  // What the misbehaviour answers, or `usual`; notes success for Succeeded.
  HRESULT Call(const std::string& name, HRESULT usual = S_OK);
  HRESULT Question(const std::string& name, HRESULT usual);
  HRESULT Answer(const std::string& name, HRESULT usual);
  HRESULT GiveWindow(const std::string& who, HWND* window);

  const Offers offers_;
  HWND window_;
  ULONG references_ = 1;
  // Not counted: it would keep a control alive that the container has let go of too early.
  IOleInPlaceActiveObject* active_object_ = nullptr;
  std::unique_ptr<ClientSite> client_site_;
  std::unique_ptr<InPlaceSite> in_place_site_;
  std::unique_ptr<ControlSite> control_site_;
  std::unique_ptr<Ambients> ambients_;
  std::unique_ptr<PropertyNotifySink> property_sink_;
  std::unique_ptr<ViewAdviseSink> view_sink_;
  std::unique_ptr<Events> events_;
  std::unique_ptr<Surrounding> frame_;
  std::unique_ptr<Surrounding> document_;

  std::vector<std::string> announced_;
  size_t came_ = 0;  // of those announced
  std::set<std::string> announced_questions_;
  std::set<std::string> asked_;
  std::function<std::optional<HRESULT>(const std::string&)> misbehaviour_;
  std::map<std::string, int> counts_;
  std::map<std::string, int> successes_;
};

}  // namespace rdv::test
