// A table whose rows change their pages, their long values and their indexes, for tests of what is
// left when writing is cut off.
#pragma once

#include <optional>
#include <vector>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/engine.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"

namespace rdv::jet {

inline TableSpec IndexedThings() {
  return {.name = u"Things",
          .columns = {{.name = u"ID", .type = ColumnType::Long},
                      {.name = u"Name", .type = ColumnType::Text, .length = 200},
                      {.name = u"Notes", .type = ColumnType::Memo},
                      {.name = u"Counter", .type = ColumnType::Long}},
          .indexes = {{.name = u"PrimaryKey", .columns = {{u"ID"}}, .primary = true},
                      {.name = u"Name", .columns = {{u"Name"}}}}};
}

inline std::vector<Assignment> Thing(int32_t id, size_t name_length, size_t notes_length) {
  return {{0, id},
          {1, Text(name_length, static_cast<char16_t>(u'a' + id % 26))},
          {2, Text(notes_length, u'n')},
          {3, int32_t{0}}};
}

// Nothing where there is none.
inline std::optional<RowId> FindThing(Engine& engine, int32_t id) {
  const TableDefinition& table = engine.Table(u"Things");
  const Value value = id;
  IndexSeek seek(engine.File(), table, table.indexes[0],
                 BuildKey(engine.File(), table, table.indexes[0], {&value, 1}));
  if (!seek.Next()) return std::nullopt;
  return seek.Row().Id();
}

}  // namespace rdv::jet
