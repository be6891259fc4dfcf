// Another function in the place of one that a module of this process imports, as long as it lives:
// for what the system cannot be brought to do, or does not tell of. Windows only.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>

namespace rdv::test {

template <class Function>
class ImportPatch {
 public:
  ImportPatch(HMODULE module, const char* name, Function* function) : slot_(Find(module, name)) {
    EXPECT_NE(slot_, nullptr) << "the module does not import " << name;
    if (!slot_) return;
    std::memcpy(&original, slot_, sizeof original);
    Write(function);
  }
  ImportPatch(const ImportPatch&) = delete;
  ImportPatch& operator=(const ImportPatch&) = delete;
  ~ImportPatch() {
    if (slot_) Write(original);
  }

  static inline Function* original = nullptr;

 private:
  template <class Part>
  static const Part* At(HMODULE module, size_t offset) {
    return reinterpret_cast<const Part*>(reinterpret_cast<INT_PTR>(module) +
                                         static_cast<INT_PTR>(offset));
  }

  // Where the loader has put the function's address.
  static void* Find(HMODULE module, const char* name) {
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS>(module, static_cast<size_t>(dos->e_lfanew));
    const auto& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
    for (; library->Name != 0; ++library) {
      const auto* names = At<IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
      const auto* slots = At<IMAGE_THUNK_DATA>(module, library->FirstThunk);
      for (; names->u1.AddressOfData != 0; ++names, ++slots) {
        if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
        const auto* import = At<IMAGE_IMPORT_BY_NAME>(module, names->u1.AddressOfData);
        if (std::strcmp(reinterpret_cast<const char*>(import->Name), name) == 0) {
          return const_cast<IMAGE_THUNK_DATA*>(slots);
        }
      }
    }
    return nullptr;
  }

  void Write(Function* function) {
    DWORD protection = 0;
    ASSERT_TRUE(VirtualProtect(slot_, sizeof function, PAGE_READWRITE, &protection));
    std::memcpy(slot_, &function, sizeof function);
    VirtualProtect(slot_, sizeof function, protection, &protection);
  }

  void* const slot_;
};

}  // namespace rdv::test
