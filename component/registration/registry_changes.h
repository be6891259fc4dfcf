// Changes to the registry that are made completely or not at all.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "component/com/ole_headers.h"

namespace rdv {

// Records what every write replaces. Unless Commit is called, destruction puts everything back as
// it was: values to what they held, keys that were not there away again.
class RegistryChanges {
 public:
  // `base` is the key that all paths start at; it stays the caller's.
  explicit RegistryChanges(HKEY base) : base_(base) {}
  RegistryChanges(const RegistryChanges&) = delete;
  RegistryChanges& operator=(const RegistryChanges&) = delete;
  ~RegistryChanges();

  // An empty name is the key's default value.
  HRESULT SetValue(const std::wstring& path, const std::wstring& name, const std::wstring& value);
  HRESULT CreateKey(const std::wstring& path);
  void Commit() { undo_.clear(); }

 private:
  // As it was, of whatever kind.
  struct Value {
    DWORD kind = REG_NONE;
    std::vector<BYTE> bytes;
  };
  struct Undo {
    std::wstring path;
    bool created_key = false;
    std::wstring name;
    std::optional<Value> before;  // none if there was none
  };

  static std::optional<Value> Read(HKEY key, const std::wstring& name);

  HKEY base_;
  std::vector<Undo> undo_;
};

}  // namespace rdv
