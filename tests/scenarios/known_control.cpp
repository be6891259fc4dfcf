// The component that the player creates, in the registry for as long as the tests run.
#include <gtest/gtest.h>

#include "tests/scenarios/playing.h"

#ifdef _WIN32

#include <cstdio>
#include <cstdlib>

#include "tests/support/sites/places.h"
#include "tests/support/window_probe.h"

namespace rdv::test {
namespace {

constexpr int kSkipped = 77;  // as CTest knows it

class Component : public ::testing::Environment {
 public:
  void Register() {
    if (library_) return;
    library_ = LoadLibraryW(sites::Place("component").make_preferred().c_str());
    ASSERT_NE(library_, nullptr);
    ASSERT_EQ(Call("DllRegisterServer"), S_OK);
  }
  void TearDown() override {
    if (!library_) return;
    EXPECT_EQ(Call("DllUnregisterServer"), S_OK);
    FreeLibrary(library_);
  }

 private:
  HRESULT Call(const char* name) const {
    const auto address = reinterpret_cast<void*>(GetProcAddress(library_, name));
    return address ? reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(address)() : E_NOTIMPL;
  }

  HMODULE library_ = nullptr;
};

Component& component = *new Component;
const auto* const environment = ::testing::AddGlobalTestEnvironment(&component);

}  // namespace

void MakeTheControlKnown() {
  if (!MakesDropDownLists()) {
    std::printf("skipped: %s\n", kNoDropDownLists);
    std::exit(kSkipped);
  }
  component.Register();
}

}  // namespace rdv::test

#else

void rdv::test::MakeTheControlKnown() {}

#endif
