// The registry's classes as a test lays them out: for the life of an object this process sees these
// and no others. Nothing of the machine's own classes is touched. Windows only.
#pragma once

#ifdef _WIN32

#include <windows.h>

#include <string>

namespace rdv::test {

class ClassLayout {
 public:
  ClassLayout()
      : path_(L"Software\\TLV_RDV_Test_Classes_" + std::to_wstring(GetCurrentProcessId())) {
    RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                    KEY_ALL_ACCESS, nullptr, &classes_, nullptr);
    RegOverridePredefKey(HKEY_CLASSES_ROOT, classes_);
  }
  ClassLayout(const ClassLayout&) = delete;
  ClassLayout& operator=(const ClassLayout&) = delete;
  ~ClassLayout() {
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    RegCloseKey(classes_);
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  }

  // A name and the class it leads to, as programs of both word sizes see it.
  void AddName(const std::wstring& name, const std::wstring& class_id) const {
    Set(name, L"");
    Set(name + L"\\CLSID", class_id);
  }
  // The class itself, with its server: in the view of this process's word size.
  void AddClass(const std::wstring& class_id, const std::wstring& server) const {
    Set(L"CLSID\\" + class_id, L"");
    Set(L"CLSID\\" + class_id + L"\\InprocServer32", server);
  }

 private:
  void Set(const std::wstring& key, const std::wstring& text) const {
    HKEY made = nullptr;
    RegCreateKeyExW(classes_, key.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr,
                    &made, nullptr);
    RegSetValueExW(made, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(made);
  }

  std::wstring path_;
  HKEY classes_ = nullptr;
};

}  // namespace rdv::test

#endif
