// Another function in the place of one that the library imports, as long as it lives.
#pragma once

#include "tests/component/support/library.h"
#include "tests/support/import_patch.h"

namespace rdv::test {

template <class Function>
class PatchedImport : public ImportPatch<Function> {
 public:
  PatchedImport(const char* name, Function* function)
      : ImportPatch<Function>(GetModuleHandleW(Library::Path().c_str()), name, function) {}
};

}  // namespace rdv::test
