// What tables have of a file's pages, for whoever is about to take one that is said to be free.
#pragma once

#include <cstdint>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/rows/allocation.h"
#include "data/jet/table/constraints.h"

namespace rdv::jet {

// All tables of a file.
class AllTables : public TableSource {
 public:
  // Null where no table's definition begins.
  virtual const TableDefinition* FindTableAt(uint32_t page) = 0;
  // Where the definitions of all begin.
  virtual std::vector<uint32_t> TablePages() = 0;
};

// A page says itself what it is and, most kinds, of which table; nobody can read it as anything
// else. So the tables that it may belong to are asked: one for rows and index entries, all for long
// values, maps and definitions. Definitions are read once for the life of the source's.
class TablesAsPageUsers : public PageUsers {
 public:
  // Both must outlive it.
  TablesAsPageUsers(const FileReader& file, AllTables& tables) : file_(file), tables_(tables) {}

  bool Have(uint32_t page) override;

 private:
  bool IsDataOf(uint32_t owner, uint32_t page);
  bool IsIndexOf(uint32_t owner, uint32_t page);
  template <typename HasPage>
  bool AnyTable(HasPage has_page);

  const FileReader& file_;
  AllTables& tables_;
};

}  // namespace rdv::jet
