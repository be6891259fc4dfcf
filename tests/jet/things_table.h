// A small table, and what tests of whole files do with it.
#pragma once

#include <set>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/engine.h"
#include "data/jet/rows/table_scan.h"
#include "tests/jet/findings.h"
#include "tests/jet/what_raises.h"

namespace rdv::jet::things {

inline const TableSpec kTable = {
    .name = u"Things",
    .columns = {{.name = u"ID", .type = ColumnType::Long},
                {.name = u"Notes", .type = ColumnType::Memo}},
    .indexes = {{.name = u"PrimaryKey", .columns = {{u"ID"}}, .primary = true}}};

inline void Insert(Engine& engine, int32_t id, size_t length = 3000) {
  Engine::WriteScope scope(engine);
  const Assignment values[] = {{0, id}, {1, Text(length, u'n')}};
  engine.Insert(engine.Table(u"Things"), values);
  scope.Commit();
}

inline void Create(const Text& path, int32_t count, size_t length, FileSystem* files = nullptr) {
  Engine::Create(path, {.files = files}, [&](Engine& engine) {
    {
      Engine::WriteScope scope(engine);
      engine.CreateTable(kTable);
      scope.Commit();
    }
    for (int32_t id = 0; id < count; ++id) Insert(engine, id, length);
  });
}

inline RowId Find(Engine& engine, int32_t id) {
  const TableDefinition& table = engine.Table(u"Things");
  for (TableScan scan(engine.File(), table); scan.Next();) {
    if (std::get<int32_t>(scan.Row().Get(table.columns[0])) == id) return scan.Row().Id();
  }
  return {};
}

// Takes the place of what the row's notes were.
inline void Update(Engine& engine, int32_t id, const Text& notes) {
  Engine::WriteScope scope(engine);
  const Assignment values[] = {{1, notes}};
  engine.Update(engine.Table(u"Things"), Find(engine, id), values);
  scope.Commit();
}

inline void Delete(Engine& engine, int32_t id) {
  Engine::WriteScope scope(engine);
  engine.Delete(engine.Table(u"Things"), Find(engine, id));
  scope.Commit();
}

inline std::set<int32_t> Ids(Engine& engine) {
  const Engine::ReadScope scope(engine);
  const TableDefinition& table = engine.Table(u"Things");
  std::set<int32_t> ids;
  for (TableScan scan(engine.File(), table); scan.Next();)
    ids.insert(std::get<int32_t>(scan.Row().Get(table.columns[0])));
  return ids;
}

inline int Count(Engine& engine) {
  return static_cast<int>(Ids(engine).size());
}

}  // namespace rdv::jet::things
