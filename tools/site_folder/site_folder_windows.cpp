#include <windows.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/site_folder/site_folder.h"

namespace rdv {
namespace {

// The shell takes the folder from the one key; the other is a source of its own.
constexpr const wchar_t* kShellsFolders =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr const wchar_t* kFolders =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const wchar_t* kCommonAppData = L"Common AppData";

std::wstring FullPath(const Text& path) {
  const auto* wide = reinterpret_cast<const wchar_t*>(path.c_str());
  const DWORD size = GetFullPathNameW(wide, 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(GetFullPathNameW(wide, size, full.data(), nullptr));
  return full;
}

// Held by the one process that has changed the folders. A process that ended with it leaves it
// free.
class Turn {
 public:
  Turn() : mutex_(CreateMutexW(nullptr, FALSE, L"TLV_RDV_Line_Config.SiteFolder")) {
    if (mutex_) WaitForSingleObject(mutex_, INFINITE);
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    if (!mutex_) return;
    ReleaseMutex(mutex_);
    CloseHandle(mutex_);
  }

 private:
  const HANDLE mutex_;
};

// A text value of the machine's registry that is another one for a while.
class RegistryText {
 public:
  RegistryText(const wchar_t* key, const wchar_t* name, const std::wstring& text) : name_(name) {
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, key, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr,
                        &key_, nullptr) != ERROR_SUCCESS) {
      throw std::runtime_error("the registry's folder names cannot be changed");
    }
    Content content;
    DWORD size = 0;
    if (RegQueryValueExW(key_, name, nullptr, &content.type, nullptr, &size) == ERROR_SUCCESS) {
      content.bytes.resize(size);
      RegQueryValueExW(key_, name, nullptr, nullptr, content.bytes.data(), &size);
      before_ = std::move(content);
    }
    RegSetValueExW(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
  }
  RegistryText(const RegistryText&) = delete;
  RegistryText& operator=(const RegistryText&) = delete;
  ~RegistryText() {
    if (before_) {
      RegSetValueExW(key_, name_.c_str(), 0, before_->type, before_->bytes.data(),
                     static_cast<DWORD>(before_->bytes.size()));
    } else {
      RegDeleteValueW(key_, name_.c_str());
    }
    RegCloseKey(key_);
  }

 private:
  struct Content {
    DWORD type = REG_NONE;
    std::vector<BYTE> bytes;
  };

  HKEY key_ = nullptr;
  const std::wstring name_;
  std::optional<Content> before_;
};

}  // namespace

class SiteFolder::Sources {
 public:
  Sources(const std::wstring& first_source, const std::wstring& second_source)
      : for_the_shell_(kShellsFolders, kCommonAppData, first_source),
        itself_(kFolders, kCommonAppData, second_source) {}

 private:
  const Turn turn_;
  const RegistryText for_the_shell_;
  const RegistryText itself_;
};

SiteFolder::SiteFolder(const Text& folder) : SiteFolder(folder, folder) {}

SiteFolder::SiteFolder(const Text& first_source, const Text& second_source)
    : sources_(std::make_unique<Sources>(FullPath(first_source), FullPath(second_source))) {}

SiteFolder::~SiteFolder() = default;

}  // namespace rdv
