#include "component/registration/registry_changes.h"

namespace rdv {
namespace {

LSTATUS WriteText(HKEY key, const std::wstring& name, const std::wstring& value) {
  return RegSetValueExW(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

}  // namespace

std::optional<RegistryChanges::Value> RegistryChanges::Read(HKEY key, const std::wstring& name) {
  Value value;
  DWORD size = 0;
  if (RegQueryValueExW(key, name.c_str(), nullptr, &value.kind, nullptr, &size)) return {};
  value.bytes.resize(size);
  if (RegQueryValueExW(key, name.c_str(), nullptr, &value.kind, value.bytes.data(), &size)) {
    return {};
  }
  value.bytes.resize(size);
  return value;
}

HRESULT RegistryChanges::CreateKey(const std::wstring& path) {
  // Level by level, so that each key that was not there is known.
  for (size_t end = path.find(L'\\');; end = path.find(L'\\', end + 1)) {
    const std::wstring part = path.substr(0, end);
    HKEY key = nullptr;
    DWORD disposition = 0;
    const LSTATUS status =
        RegCreateKeyExW(base_, part.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, &disposition);
    if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    RegCloseKey(key);
    if (disposition == REG_CREATED_NEW_KEY) {
      undo_.push_back({.path = part, .created_key = true, .name = {}, .before = {}});
    }
    if (end == std::wstring::npos) return S_OK;
  }
}

HRESULT RegistryChanges::SetValue(const std::wstring& path, const std::wstring& name,
                                  const std::wstring& value) {
  const HRESULT created = CreateKey(path);
  if (FAILED(created)) return created;
  HKEY key = nullptr;
  LSTATUS status = RegOpenKeyExW(base_, path.c_str(), 0, KEY_READ | KEY_WRITE, &key);
  if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
  std::optional<Value> before = Read(key, name);
  status = WriteText(key, name, value);
  RegCloseKey(key);
  if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
  undo_.push_back({.path = path, .created_key = false, .name = name, .before = std::move(before)});
  return S_OK;
}

RegistryChanges::~RegistryChanges() {
  for (auto undo = undo_.rbegin(); undo != undo_.rend(); ++undo) {
    if (undo->created_key) {
      RegDeleteKeyExW(base_, undo->path.c_str(), 0, 0);
      continue;
    }
    HKEY key = nullptr;
    if (RegOpenKeyExW(base_, undo->path.c_str(), 0, KEY_WRITE, &key) != ERROR_SUCCESS) continue;
    if (undo->before) {
      RegSetValueExW(key, undo->name.c_str(), 0, undo->before->kind, undo->before->bytes.data(),
                     static_cast<DWORD>(undo->before->bytes.size()));
    } else {
      RegDeleteValueW(key, undo->name.c_str());
    }
    RegCloseKey(key);
  }
}

}  // namespace rdv
