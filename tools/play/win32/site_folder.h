// A folder in the place of the common application data folder.
#pragma once

#include <windows.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "runtime/text.h"

namespace rdv::play {

// A text value of this machine's registry that is another one for a while.
class RegistryText {
 public:
  RegistryText(const wchar_t* key, const wchar_t* name, const std::wstring& text);
  RegistryText(const RegistryText&) = delete;
  RegistryText& operator=(const RegistryText&) = delete;
  ~RegistryText();

 private:
  struct Content {
    DWORD type = REG_NONE;
    std::vector<BYTE> bytes;
  };

  HKEY key_ = nullptr;
  const std::wstring name_;
  std::optional<Content> before_;
};

// Both sources of the folder's lookup give it for as long as the object lives: the shell, which
// takes it from the one key, and the other key itself. Needs the right to change them.
class SiteFolder {
 public:
  explicit SiteFolder(const Text& folder);

 private:
  const std::wstring path_;
  const RegistryText for_the_shell_;
  const RegistryText itself_;
};

}  // namespace rdv::play
