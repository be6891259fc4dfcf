#include "tests/component/support/registry_text.h"

#include <cstdio>
#include <vector>

namespace rdv::test {
namespace {

constexpr DWORD kLongestName = 16384;  // of a value, which may be longer than a key

std::string Narrow(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
  narrow.pop_back();
  return narrow;
}

std::string Shown(DWORD kind, const std::vector<BYTE>& bytes) {
  if (kind == REG_SZ || kind == REG_EXPAND_SZ) {
    std::vector<BYTE> ended = bytes;
    ended.resize(bytes.size() + sizeof(wchar_t));
    return '"' + Narrow(reinterpret_cast<const wchar_t*>(ended.data())) + '"';
  }
  std::string shown = "kind " + std::to_string(kind) + ":";
  for (const BYTE byte : bytes) {
    char digits[4] = "";
    std::snprintf(digits, sizeof digits, " %02x", byte);
    shown += digits;
  }
  return shown;
}

void AddValues(HKEY key, const std::string& path, RegistryText& text) {
  std::vector<wchar_t> name(kLongestName);
  for (DWORD index = 0;; ++index) {
    DWORD length = kLongestName;
    DWORD kind = REG_NONE;
    DWORD size = 0;
    if (RegEnumValueW(key, index, name.data(), &length, nullptr, &kind, nullptr, &size)) return;
    std::vector<BYTE> bytes(size);
    RegQueryValueExW(key, name.data(), nullptr, &kind, bytes.data(), &size);
    text.insert(path + " @" + Narrow(name.data()) + " = " + Shown(kind, bytes));
  }
}

void AddKey(HKEY root, const std::wstring& path, int depth, REGSAM view, RegistryText& text) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | view, &key) != ERROR_SUCCESS) return;
  const std::string shown = Narrow(path.c_str());
  text.insert(shown);
  AddValues(key, shown, text);
  wchar_t name[256] = L"";
  for (DWORD index = 0; depth > 0; ++index) {
    DWORD length = 256;
    if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr)) break;
    AddKey(root, path + L"\\" + name, depth - 1, view, text);
  }
  RegCloseKey(key);
}

}  // namespace

RegistryText ReadRegistry(HKEY root, const std::wstring& path, int depth, REGSAM view) {
  RegistryText text;
  AddKey(root, path, depth, view, text);
  return text;
}

std::string Difference(const RegistryText& before, const RegistryText& now) {
  std::string difference;
  for (const std::string& line : now) {
    if (!before.contains(line)) difference += "+ " + line + "\n";
  }
  for (const std::string& line : before) {
    if (!now.contains(line)) difference += "- " + line + "\n";
  }
  return difference;
}

bool MachineIsOpen() {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kClasses, 0, KEY_READ | KEY_WRITE, &key)) return false;
  RegCloseKey(key);
  return true;
}

RegistryText ReadMachinesClasses() {
  RegistryText all;
  for (const REGSAM view : {REGSAM{KEY_WOW64_64KEY}, REGSAM{KEY_WOW64_32KEY}}) {
    for (const wchar_t* below : {L"", L"\\CLSID", L"\\Interface", L"\\TypeLib"}) {
      const std::wstring path = std::wstring(kClasses) + below;
      for (const std::string& line : ReadRegistry(HKEY_LOCAL_MACHINE, path, 1, view)) {
        all.insert((view == KEY_WOW64_64KEY ? "64: " : "32: ") + line);
      }
    }
  }
  return all;
}

}  // namespace rdv::test
