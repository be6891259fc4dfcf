#include <windows.h>

#include <string>

#include "tools/site_folder/site_folder.h"

namespace rdv {
namespace {

constexpr const wchar_t* kVariable = L"RDV_COMMON_APPDATA";

std::wstring FullPath(const Text& path) {
  const auto* wide = reinterpret_cast<const wchar_t*>(path.c_str());
  const DWORD size = GetFullPathNameW(wide, 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(GetFullPathNameW(wide, size, full.data(), nullptr));
  return full;
}

}  // namespace

// The variable stands for both sources.
class SiteFolder::Sources {
 public:
  explicit Sources(const std::wstring& folder) {
    before_.resize(GetEnvironmentVariableW(kVariable, nullptr, 0));
    before_.resize(
        GetEnvironmentVariableW(kVariable, before_.data(), static_cast<DWORD>(before_.size())));
    SetEnvironmentVariableW(kVariable, folder.c_str());
  }
  Sources(const Sources&) = delete;
  Sources& operator=(const Sources&) = delete;
  ~Sources() { SetEnvironmentVariableW(kVariable, before_.empty() ? nullptr : before_.c_str()); }

 private:
  std::wstring before_;
};

SiteFolder::SiteFolder(const Text& folder)
    : sources_(std::make_unique<Sources>(FullPath(folder))) {}

SiteFolder::~SiteFolder() = default;

}  // namespace rdv
