// A damaged file: everything in it can be walked, and where the checker finds nothing wrong with a
// table, each of its indexes leads to the rows that a scan gives, in the order of their keys.
#include <algorithm>
#include <string>

#include "data/jet/catalog/catalog.h"
#include "data/jet/check/check.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "data/jet/rows/table_scan.h"
#include "tests/fuzz/fuzz_support.h"

namespace rdv::jet::fuzz {
namespace {

std::vector<RowId> Scan(const FileReader& file, const TableDefinition& table,
                        const RealIndex& index) {
  std::vector<RowId> rows;
  Text text;
  for (TableScan scan(file, table); scan.Next();) {
    for (const Column& column : table.columns) scan.Row().AppendText(column, text);
    text.clear();
    if (HasEntry(index, IndexValuesOfRow(table, index, scan.Row())))
      rows.push_back(scan.Row().Id());
  }
  return rows;
}

std::vector<RowId> Walk(const FileReader& file, const TableDefinition& table,
                        const RealIndex& index) {
  std::vector<RowId> rows;
  Key last;
  IndexCursor cursor(file, table, index);
  for (cursor.SeekFirst(); cursor.Valid(); cursor.Next()) {
    const Key key(cursor.Key().begin(), cursor.Key().end());
    Require(rows.empty() || last <= key, "an index that was found sound is out of order");
    last = key;
    rows.push_back(cursor.Row());
    IndexCursor seek(file, table, index);
    seek.Seek(key);
    Require(seek.Valid() && std::ranges::equal(seek.Key(), key),
            "a key is not found by seeking it");
  }
  return rows;
}

void CompareIndex(const FileReader& file, const TableDefinition& table, const RealIndex& index) {
  std::vector<RowId> scanned = Scan(file, table, index);
  std::vector<RowId> walked = Walk(file, table, index);
  std::ranges::sort(scanned);
  std::ranges::sort(walked);
  Require(scanned == walked, "an index that was found sound leads to other rows than a scan");
}

// Whatever is wrong, everything ends, in the end of the walk or in an error.
void WalkAnyway(const FileReader& file, const TableDefinition& table, const RealIndex& index) {
  try {
    IndexCursor cursor(file, table, index);
    for (cursor.SeekFirst(); cursor.Valid(); cursor.Next()) {
      IndexCursor(file, table, index).Seek(cursor.Key());
    }
  } catch (const RuntimeError& error) {
    RequireGoodError(error);
  }
}

void CompareIndexes(const FileReader& file) {
  const CheckReport report = CheckFile(file);
  const Catalog catalog(file);
  for (const CatalogObject& object : catalog.All()) {
    if (!object.IsLocalTable()) continue;
    try {
      const TableDefinition table = catalog.Table(object);
      for (const RealIndex& index : table.indexes) {
        if (report.Clean()) {
          CompareIndex(file, table, index);
        } else {
          WalkAnyway(file, table, index);
        }
      }
    } catch (const RuntimeError& error) {
      RequireGoodError(error);
      if (report.Clean()) {
        const std::string what = error.what();
        Fail(("a file that was found sound cannot be read: " + what).c_str());
      }
    }
  }
}

}  // namespace
}  // namespace rdv::jet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace rdv::jet;
  fuzz::Input input(data, size);
  fuzz::TryFile(fuzz::FileFrom(input), fuzz::CompareIndexes);
  return 0;
}
