// Use without registration: a program whose manifest names the library's assembly.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "component/com/identifiers.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/test_container.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"

namespace rdv::test {
namespace {

#ifdef _WIN64
constexpr const char* kArchitecture = "amd64";
#else
constexpr const char* kArchitecture = "x86";
#endif

// The manifest of a program that lies where this one does, beside the library and no other file of
// it. It says that the program depends on an assembly.
class HostManifest {
 public:
  explicit HostManifest(const std::string& assembly) {
    const std::string architecture = kArchitecture;
    std::ofstream(Path()) << R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">
  <assemblyIdentity type="win32" name="Host" version="1.0.0.0" processorArchitecture=")"
                          << architecture << R"("/>
  <dependency>
    <dependentAssembly>
      <assemblyIdentity type="win32" name=")"
                          << assembly << R"(" version="1.0.0.0"
                        processorArchitecture=")"
                          << architecture << R"("/>
    </dependentAssembly>
  </dependency>
</assembly>
)";
  }

  // As the system makes it when such a program starts.
  HANDLE MakeContext() const {
    const std::wstring manifest = Path().wstring();
    const std::wstring folder = std::filesystem::path(Library::Path()).parent_path().wstring();
    ACTCTXW description = {};
    description.cbSize = sizeof description;
    description.dwFlags = ACTCTX_FLAG_ASSEMBLY_DIRECTORY_VALID;
    description.lpSource = manifest.c_str();
    description.lpAssemblyDirectory = folder.c_str();
    return CreateActCtxW(&description);
  }

 private:
  std::filesystem::path Path() const { return folder_.Path() / "host.exe.manifest"; }

  const TemporaryFolder folder_;
};

class Isolation : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    Library().Unregister();
    // Else the system might take the file in the place of the library's resource.
    std::filesystem::remove(std::filesystem::path(Library::Path()).replace_extension(".manifest"));
  }

  static void UseIn(TestContainer& container, IOleObject& object) {
    EXPECT_EQ(object.SetClientSite(container.Site()), S_OK);
    EXPECT_EQ(object.DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, container.Site(), 0,
                            container.Window(), &container.place),
              S_OK);
    ComPointer<IEnumOLEVERB> verbs;
    EXPECT_EQ(object.EnumVerbs(verbs.Receive()), S_OK);
    OLEVERB verb = {};
    EXPECT_TRUE(verbs && verbs->Next(1, &verb, nullptr) == S_OK);
    CoTaskMemFree(verb.lpszVerbName);
    const TemporaryFolder nothing;
    const SiteFolder found(nothing.Path().u16string());
    const BoxAnswerer boxes;  // without a database, loading ends with a message
    const auto methods = ComPointer<LineConfigInterface>::From(&object, kLineConfigInterfaceId);
    ASSERT_TRUE(methods);
    VARIANT_BOOL shown = VARIANT_TRUE;
    EXPECT_EQ(methods->ShowControl(1, &shown), S_OK);
    EXPECT_EQ(shown, VARIANT_FALSE);
    std::wstring name = L"ShowControl";
    LPOLESTR names[] = {name.data()};
    DISPID method = 0;
    EXPECT_EQ(methods->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &method), S_OK);
    VARIANT argument = {};
    argument.vt = VT_I2;
    argument.iVal = 1;
    DISPPARAMS parameters = {&argument, nullptr, 1, 0};
    VARIANT result = {};
    EXPECT_EQ(methods->Invoke(method, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                              &result, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(result.vt, VT_BOOL);
    EXPECT_EQ(boxes.Texts().size(), 2u);
    EXPECT_EQ(object.Close(OLECLOSE_NOSAVE), S_OK);
    EXPECT_EQ(object.SetClientSite(nullptr), S_OK);
  }
};

TEST_F(Isolation, NeedsTheLibraryAloneBesideTheProgram) {
  const HostManifest program("TLV_RDV_Line_Config");
  const HANDLE context = program.MakeContext();
  ASSERT_NE(context, INVALID_HANDLE_VALUE) << GetLastError();
  ULONG_PTR cookie = 0;
  ASSERT_TRUE(ActivateActCtx(context, &cookie));
  CLSID class_id = {};
  EXPECT_EQ(CLSIDFromProgID(L"TLV_RDV_Line_Config.ucRDVLineConfig", &class_id), S_OK);
  {
    // The system may lend the name another identifier; it leads to the same class.
    ComPointer<IDispatch> control;
    EXPECT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                               control.ReceiveUntyped()),
              S_OK);
  }
  DWORD status = 0;
  EXPECT_EQ(OleRegGetMiscStatus(kLineConfigClassId, DVASPECT_CONTENT, &status), S_OK);
  EXPECT_EQ(status, kMiscStatus);
  DeactivateActCtx(0, cookie);
  ReleaseActCtx(context);
  CoFreeUnusedLibrariesEx(0, 0);
}

// In a container, as with registration: placed, loaded by either way of calling, its verbs listed.
TEST_F(Isolation, LetsTheControlDoItsWork) {
  const HostManifest program("TLV_RDV_Line_Config");
  const HANDLE context = program.MakeContext();
  ASSERT_NE(context, INVALID_HANDLE_VALUE) << GetLastError();
  ULONG_PTR cookie = 0;
  ASSERT_TRUE(ActivateActCtx(context, &cookie));
  {
    TestContainer container({});
    ComPointer<IOleObject> object;
    EXPECT_EQ(CoCreateInstance(kLineConfigClassId, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject,
                               object.ReceiveUntyped()),
              S_OK);
    if (object) UseIn(container, *object.Get());
  }
  DeactivateActCtx(0, cookie);
  ReleaseActCtx(context);
  CoFreeUnusedLibrariesEx(0, 0);
}

TEST_F(Isolation, FailsWhereTheAssemblyIsNotFound) {
  EXPECT_EQ(HostManifest("TLV_RDV_Line_Config.Other").MakeContext(), INVALID_HANDLE_VALUE);
}

TEST_F(Isolation, EndsWithTheContext) {
  CLSID class_id = {};
  EXPECT_EQ(CLSIDFromProgID(L"TLV_RDV_Line_Config.ucRDVLineConfig", &class_id), CO_E_CLASSSTRING);
}

}  // namespace
}  // namespace rdv::test
