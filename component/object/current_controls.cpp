#include "component/object/current_controls.h"

#include "component/com/module.h"

namespace rdv {
namespace {

// The resource that the loader binds a library's own imports by, too: so the image lists that the
// library makes are of the same kind as the list view that gets them.
constexpr WORD kManifest = 2;

class Context {
 public:
  Context() {
    ACTCTXW description = {};
    description.cbSize = sizeof description;
    description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    description.hModule = ModuleInstance();
    description.lpResourceName = MAKEINTRESOURCEW(kManifest);
    handle_ = CreateActCtxW(&description);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context() {
    if (Made()) ReleaseActCtx(handle_);
  }
  bool Made() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Handle() const { return handle_; }

 private:
  HANDLE handle_;
};

}  // namespace

CurrentControls::CurrentControls() {
  static const Context context;
  if (context.Made() && !ActivateActCtx(context.Handle(), &cookie_)) cookie_ = 0;
}

CurrentControls::~CurrentControls() {
  if (cookie_ != 0) DeactivateActCtx(0, cookie_);
}

}  // namespace rdv
