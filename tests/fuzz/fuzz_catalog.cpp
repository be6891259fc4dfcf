// A file of any bytes: header, catalog, definitions, properties, relationships.
#include "data/jet/catalog/catalog.h"
#include "data/jet/index/index_key.h"
#include "tests/fuzz/fuzz_support.h"

namespace rdv::jet::fuzz {
namespace {

void ReadCatalog(const FileReader& file) {
  const Catalog catalog(file);
  for (const CatalogObject& object : catalog.All()) {
    try {
      if (object.IsLocalTable()) catalog.Table(object);
      const auto found = catalog.Find(object.parent, object.name);
      Require(!found || CompareTexts(found->name, object.name) == 0,
              "a search in the catalog gives another object");
    } catch (const RuntimeError& error) {
      RequireGoodError(error);
    }
  }
  catalog.UserTables();
  catalog.LinkedTables();
  catalog.Relationships();
}

}  // namespace
}  // namespace rdv::jet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace rdv::jet;
  fuzz::Input input(data, size);
  fuzz::TryFile(fuzz::FileFrom(input), fuzz::ReadCatalog);
  return 0;
}
