// The two sources of the common application data folder, each with a folder of its own for as long
// as the object lives: on Windows what the shell says and the machine's registry, both in this
// process only; elsewhere what stands for them. "" is a source that gives nothing.
#pragma once

#include "runtime/text.h"

#ifdef _WIN32
#include "tests/support/import_patch.h"
// The shell's headers need the platform's before them.
#include <shlobj.h>

#include <string>
#else
#include "tools/site_folder/site_folder.h"
#endif

namespace rdv::test {

#ifdef _WIN32

// An empty registry in the place of the machine's, and no folder in the environment.
class OwnMachineRegistry {
 public:
  OwnMachineRegistry() {
    named_.resize(GetEnvironmentVariableW(kVariable, nullptr, 0));
    named_.resize(
        GetEnvironmentVariableW(kVariable, named_.data(), static_cast<DWORD>(named_.size())));
    SetEnvironmentVariableW(kVariable, nullptr);
    RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                    nullptr, &root_, nullptr);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, root_);
  }
  OwnMachineRegistry(const OwnMachineRegistry&) = delete;
  OwnMachineRegistry& operator=(const OwnMachineRegistry&) = delete;
  ~OwnMachineRegistry() {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegCloseKey(root_);
    RegDeleteTreeW(HKEY_CURRENT_USER, kPath);
    RegDeleteKeyW(HKEY_CURRENT_USER, kPath);
    SetEnvironmentVariableW(kVariable, named_.empty() ? nullptr : named_.c_str());
  }

  // What is stored as the common application data folder, of any type.
  void SetFolder(DWORD type, const void* bytes, size_t size) const {
    HKEY key = nullptr;
    ASSERT_EQ(
        RegCreateKeyExW(HKEY_LOCAL_MACHINE,
                        L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", 0,
                        nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key, nullptr),
        ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, L"Common AppData", 0, type, static_cast<const BYTE*>(bytes),
                             static_cast<DWORD>(size)),
              ERROR_SUCCESS);
    RegCloseKey(key);
  }
  void SetFolder(const Text& folder) const {
    SetFolder(REG_SZ, folder.c_str(), (folder.size() + 1) * sizeof(char16_t));
  }

 private:
  static constexpr const wchar_t* kPath = L"Software\\TLV_RDV_Test.Machine";
  static constexpr const wchar_t* kVariable = L"RDV_COMMON_APPDATA";
  std::wstring named_;  // before
  HKEY root_ = nullptr;
};

class FolderSources {
 public:
  FolderSources(const Text& first, const Text& second)
      : location_(GetModuleHandleW(nullptr), "SHGetSpecialFolderLocation", &GiveLocation),
        path_(GetModuleHandleW(nullptr), "SHGetPathFromIDListA", &GivePath) {
    first_ = InCodePage(first);
    if (!second.empty()) registry_.SetFolder(second);
  }
  ~FolderSources() { first_.clear(); }
  FolderSources(const FolderSources&) = delete;
  FolderSources& operator=(const FolderSources&) = delete;

  const OwnMachineRegistry& Registry() const { return registry_; }

 private:
  static HRESULT WINAPI GiveLocation(HWND, int folder, PIDLIST_ABSOLUTE* items) {
    *items = nullptr;
    return folder == CSIDL_COMMON_APPDATA && !first_.empty() ? S_OK : E_FAIL;
  }
  static std::string InCodePage(const Text& text) {
    const auto* units = reinterpret_cast<const wchar_t*>(text.c_str());
    std::string bytes(text.size() * 4, '\0');
    const int size =
        WideCharToMultiByte(CP_ACP, 0, units, static_cast<int>(text.size()), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<size_t>(size));
    return bytes;
  }
  static BOOL WINAPI GivePath(PCIDLIST_ABSOLUTE, char* path) {
    first_.copy(path, MAX_PATH - 1);
    return TRUE;
  }

  static inline std::string first_;
  const ImportPatch<decltype(GiveLocation)> location_;
  const ImportPatch<decltype(GivePath)> path_;
  const OwnMachineRegistry registry_;
};

#else

using FolderSources = SiteFolder;

#endif

}  // namespace rdv::test
