// The catalog: which objects the file holds and how they are defined.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/row_codec.h"

namespace rdv::jet {

// Values of MSysObjects.Type.
inline constexpr int16_t kObjectTable = 1;
inline constexpr int16_t kObjectDatabase = 2;
inline constexpr int16_t kObjectContainer = 3;
inline constexpr int16_t kObjectLinkedOdbcTable = 4;
inline constexpr int16_t kObjectQuery = 5;
inline constexpr int16_t kObjectLinkedTable = 6;
inline constexpr int16_t kObjectRelationship = 8;

// Values of MSysObjects.Id.
inline constexpr int32_t kTablesContainer = 0x0F000001;
inline constexpr int32_t kDatabasesContainer = 0x0F000002;
inline constexpr int32_t kRelationshipsContainer = 0x0F000003;

// Bits of MSysObjects.Flags that mark an object of the engine or of Access itself.
inline constexpr uint32_t kSystemObjectFlags = 0x80000002;

// One row of MSysObjects.
struct CatalogObject {
  RowId row;
  int32_t id = 0;  // a local table's definition page
  int32_t parent = 0;
  Text name;
  int16_t type = 0;
  uint32_t flags = 0;

  bool IsLocalTable() const { return type == kObjectTable; }
  bool IsLink() const { return type == kObjectLinkedTable || type == kObjectLinkedOdbcTable; }
  bool IsUserObject() const { return (flags & kSystemObjectFlags) == 0; }
};

struct Relationship {
  Text name;
  Text table;  // the referencing one
  Text referenced_table;
  bool one_to_one = false;
  bool enforced = false;
  bool cascade_updates = false;
  bool cascade_deletes = false;
  bool left_join = false;
  bool right_join = false;
  std::vector<RelationshipColumn> columns;
};

// Reads from the file each time it is asked; making one reads the catalog's own definition only.
class Catalog {
 public:
  explicit Catalog(const FileReader& file);

  // The definition of MSysObjects itself.
  const TableDefinition& Objects() const { return objects_; }

  // An object of the container, by name without regard to case, through the index. The number of
  // pages read does not depend on the size of the file.
  std::optional<CatalogObject> Find(int32_t parent, TextView name) const;

  // A local table with its properties. Raises "cannot find the input table" for a name that is
  // none.
  TableDefinition Table(TextView name) const;
  TableDefinition Table(const CatalogObject& object) const;

  // The object's stored properties (see properties.h), empty when it has none.
  std::vector<uint8_t> Properties(const CatalogObject& object) const;

  // Every object, in the order of storage.
  std::vector<CatalogObject> All() const;
  // Local ones that are no system table, by name in the order of code points.
  std::vector<CatalogObject> UserTables() const;
  std::vector<LinkedTable> LinkedTables() const;
  // Where the table is that such an object stands for.
  LinkedTable Link(const CatalogObject& object) const;
  std::vector<Relationship> Relationships() const;

 private:
  CatalogObject ReadObject(const RowView& row) const;
  LinkedTable ReadLink(const RowView& row) const;
  std::optional<CatalogObject> FindByScan(int32_t parent, TextView name) const;

  const FileReader* file_;
  TableDefinition objects_;
};

// The definition that starts at the page; `name` goes into it. Properties are not read.
TableDefinition ReadTableDefinition(const FileReader& file, uint32_t page, TextView name);

// The bytes of a definition, from all its pages; `pages` receives their numbers.
std::vector<uint8_t> ReadDefinitionBytes(const FileReader& file, uint32_t page,
                                         std::vector<uint32_t>& pages);

// Takes a table's stored properties (MSysObjects.LvProp) over into its columns. Properties that
// are not understood are left alone; damaged ones raise the damaged file's error.
void ApplyProperties(const FileReader& file, Bytes properties, TableDefinition& table);

}  // namespace rdv::jet
