// Making new things: databases, tables with their indexes, relationships.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "data/jet/catalog/catalog.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/file/file.h"
#include "data/jet/file/write_context.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/allocation.h"
#include "data/jet/table/table_writer.h"

namespace rdv::jet {

// What an empty database remembers of its making.
struct CreationStamp {
  double creation_date = 0;  // days since 1899-12-30, local time
  double row_date = 0;       // that of the catalog's rows
  uint32_t build = 9756;     // of the engine that the file looks like being made by
};

// The present time.
CreationStamp StampOfNow();

// A Jet 4 file with the four system tables, and with what `fill` adds to it under the name that it
// has until then. There is none under `path` until it is complete, and none at all when something
// raises. Raises when there is a file already.
void CreateDatabase(FileSystem& files, const Text& path, const CreationStamp& stamp,
                    const std::function<void(const Text& draft)>& fill = {});

// Inside a writing statement, which is to be rolled back when one of the calls raises.
class SchemaWriter {
 public:
  SchemaWriter(const WriteContext& context, PageAllocator& allocator, TableSource& tables,
               TableWriter& rows);

  void CreateTable(const TableSpec& spec);
  // Definitions of the two tables that were read before do not know of it.
  void CreateRelationship(const RelationshipSpec& spec);

 private:
  static TableDefinition DefineTable(const TableSpec& spec);
  static void DefineIndexes(const TableSpec& spec, TableDefinition& table);
  void AllocateMaps(TableDefinition& table);
  RowId NewMap(uint32_t& page);
  void AllocateRoot(RealIndex& index, uint32_t table_page, uint32_t& map_page);

  int32_t NextObjectId();
  void AddObject(int32_t id, int32_t parent, int16_t type, TextView name, Bytes properties);
  void InheritPermissions(int32_t id, int32_t container);
  uint32_t SidKey() const;

  void AddRelationshipRows(const RelationshipSpec& spec);
  void AddIndex(const TableDefinition& table, const LogicalIndex& logical, const RealIndex* real);
  void FillIndex(const TableDefinition& table, const RealIndex& index,
                 const TableDefinition& referenced, const RealIndex& referenced_index);

  const WriteContext& context_;
  PageAllocator& allocator_;
  TableSource& tables_;
  TableWriter& rows_;
};

}  // namespace rdv::jet
