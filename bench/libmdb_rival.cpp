#include "bench/libmdb_rival.h"

#include <mdbtools.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace rdv::bench {
namespace {

struct BoundColumn {
  std::vector<char> text = std::vector<char>(MDB_BIND_SIZE);
  int length = 0;
};

}  // namespace

ScanTotals ScanWithLibmdb(const std::filesystem::path& file, const std::string& table_name) {
  MdbHandle* database = mdb_open(file.c_str(), MDB_NOFLAGS);
  std::string name = table_name;
  MdbTableDef* table =
      database == nullptr ? nullptr : mdb_read_table_by_name(database, name.data(), MDB_TABLE);
  if (table == nullptr) {
    std::fprintf(stderr, "libmdb does not read %s\n", file.c_str());
    std::exit(1);
  }
  mdb_read_columns(table);
  mdb_rewind_table(table);
  std::vector<BoundColumn> columns(table->num_cols);
  for (size_t i = 0; i < columns.size(); ++i) {
    mdb_bind_column(table, static_cast<int>(i) + 1, columns[i].text.data(), &columns[i].length);
  }
  ScanTotals totals;
  while (mdb_fetch_row(table) != 0) {
    ++totals.rows;
    for (const BoundColumn& column : columns) totals.bytes += static_cast<size_t>(column.length);
  }
  mdb_free_tabledef(table);
  mdb_close(database);
  return totals;
}

}  // namespace rdv::bench
