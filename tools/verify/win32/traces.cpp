#include "tools/verify/win32/traces.h"

#include <shlobj.h>

#include <filesystem>
#include <system_error>

#include "tools/verify/win32/process.h"

namespace rdv::verify {
namespace {

namespace fs = std::filesystem;

constexpr const wchar_t* kClasses = L"Software\\Classes";
constexpr const wchar_t* kControlName = L"TLV_RDV_Line_Config.ucRDVLineConfig";
// The shell's own notes: names of programs, sizes of windows.
constexpr std::wstring_view kShellsNotes = L"HKCU\\Software\\Classes\\Local Settings";
// Of the longest names that the registry takes.
constexpr DWORD kNameSize = 16384;

class Key {
 public:
  Key(HKEY parent, const wchar_t* path) {
    if (RegOpenKeyExW(parent, path, 0, KEY_READ | KEY_WOW64_64KEY, &key_) != ERROR_SUCCESS)
      key_ = nullptr;
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  ~Key() {
    if (key_) RegCloseKey(key_);
  }

  HKEY Handle() const { return key_; }

  std::vector<std::wstring> Names() const {
    std::vector<std::wstring> names;
    std::wstring name(kNameSize, L'\0');
    for (DWORD index = 0;; ++index) {
      DWORD size = kNameSize;
      if (!key_ || RegEnumKeyExW(key_, index, name.data(), &size, nullptr, nullptr, nullptr,
                                 nullptr) != ERROR_SUCCESS)
        return names;
      names.push_back(name.substr(0, size));
    }
  }

  uint64_t DigestOfValues() const {
    uint64_t all = kEmptyDigest;
    std::wstring name(kNameSize, L'\0');
    std::vector<BYTE> content;
    for (DWORD index = 0;; ++index) {
      DWORD name_size = kNameSize;
      DWORD type = REG_NONE;
      DWORD size = 0;
      if (RegEnumValueW(key_, index, name.data(), &name_size, nullptr, &type, nullptr, &size) !=
          ERROR_SUCCESS)
        return all;
      content.resize(size);
      name_size = kNameSize;
      RegEnumValueW(key_, index, name.data(), &name_size, nullptr, &type, content.data(), &size);
      uint64_t value = Digest(kEmptyDigest, name.data(), name_size * sizeof(wchar_t));
      value = Digest(value, &type, sizeof type);
      // A sum, as the order of values means nothing.
      all += Digest(value, content.data(), content.size());
    }
  }

 private:
  HKEY key_ = nullptr;
};

void AddKeysBelow(const Key& key, const std::wstring& path, Snapshot& snapshot) {
  for (const std::wstring& name : key.Names()) {
    const std::wstring below = path + L'\\' + name;
    if (below == kShellsNotes) continue;
    const Key child(key.Handle(), name.c_str());
    if (!child.Handle()) continue;  // nobody but the system may read it
    snapshot[Utf8(below)] = child.DigestOfValues();
    AddKeysBelow(child, below, snapshot);
  }
}

void AddNames(HKEY root, const wchar_t* path, const std::string& shown, Snapshot& snapshot) {
  for (const std::wstring& name : Key(root, path).Names())
    snapshot.emplace(shown + '\\' + Utf8(name), kEmptyDigest);
}

void AddFiles(const fs::path& folder, Snapshot& snapshot) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, error)) {
    uint64_t digest = kEmptyDigest;
    if (entry.is_regular_file(error)) {
      const std::uintmax_t size = entry.file_size(error);
      const auto time = entry.last_write_time(error).time_since_epoch().count();
      digest = Digest(Digest(digest, &size, sizeof size), &time, sizeof time);
    }
    snapshot[Utf8(entry.path().wstring())] = digest;
  }
}

}  // namespace

Snapshot TakeSnapshot() {
  Snapshot snapshot;
  AddKeysBelow(Key(HKEY_LOCAL_MACHINE, kClasses), L"HKLM\\Software\\Classes", snapshot);
  AddKeysBelow(Key(HKEY_CURRENT_USER, kClasses), L"HKCU\\Software\\Classes", snapshot);
  AddNames(HKEY_LOCAL_MACHINE, L"Software", "HKLM\\Software", snapshot);
  AddNames(HKEY_LOCAL_MACHINE, L"Software\\Wow6432Node", "HKLM\\Software\\Wow6432Node", snapshot);
  AddNames(HKEY_CURRENT_USER, L"Software", "HKCU\\Software", snapshot);
  wchar_t folder[MAX_PATH] = L"";
  if (SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder) == S_OK)
    AddFiles(fs::path(folder) / "Tolvane", snapshot);
  return snapshot;
}

bool IsRegistered() {
  for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
    if (Key(root, (std::wstring(kClasses) + L'\\' + kControlName).c_str()).Handle()) return true;
  }
  return false;
}

}  // namespace rdv::verify
