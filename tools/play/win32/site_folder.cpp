#include "tools/play/win32/site_folder.h"

#include <stdexcept>

#include "tools/play/win32/window_text.h"

namespace rdv::play {
namespace {

constexpr const wchar_t* kShellsFolders =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr const wchar_t* kFolders =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const wchar_t* kCommonAppData = L"Common AppData";

std::wstring FullPath(const Text& path) {
  const DWORD size = GetFullPathNameW(Wide(path), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(GetFullPathNameW(Wide(path), size, full.data(), nullptr));
  return full;
}

}  // namespace

RegistryText::RegistryText(const wchar_t* key, const wchar_t* name, const std::wstring& text)
    : name_(name) {
  if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, key, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &key_,
                      nullptr) != ERROR_SUCCESS) {
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

RegistryText::~RegistryText() {
  if (before_) {
    RegSetValueExW(key_, name_.c_str(), 0, before_->type, before_->bytes.data(),
                   static_cast<DWORD>(before_->bytes.size()));
  } else {
    RegDeleteValueW(key_, name_.c_str());
  }
  RegCloseKey(key_);
}

SiteFolder::SiteFolder(const Text& folder)
    : path_(FullPath(folder)),
      for_the_shell_(kShellsFolders, kCommonAppData, path_),
      itself_(kFolders, kCommonAppData, path_) {}

}  // namespace rdv::play
