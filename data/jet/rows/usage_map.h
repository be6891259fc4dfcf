// Sets of pages, as the file keeps them for tables, indexes, long values and free space.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/bytes.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

// The maps of the file as a whole, on a page that nothing else owns.
inline constexpr RowId kFreePages{kGlobalMapPage, kFreePagesRow};
inline constexpr RowId kPendingPages{kGlobalMapPage, kPendingPagesRow};

// The row of a map, judged: what readers and writers rely on holds. Raises the damaged file's error
// for others. `owner` is that of the page the row lies on.
Bytes RequireMap(const FileReader& file, RowId map, uint32_t owner = kOwnerUsageMaps);

// Of a row with references: how many matter, and one of them.
size_t MapReferenceCount(const Format& format, Bytes row);
uint32_t MapReference(Bytes row, size_t position);

// A view of a map's row; read page by page as it is asked. Holds for the statement, as pages do.
class UsageMap {
 public:
  // An empty set where `row` points nowhere. `owner` is that of the page the row lies on.
  UsageMap(const FileReader& file, RowId row, uint32_t owner = kOwnerUsageMaps);

  // The lowest page of the set that is not below `from` and lies within the file.
  std::optional<uint32_t> Next(uint32_t from) const;
  bool Contains(uint32_t page) const;
  std::vector<uint32_t> Pages() const;

  // The pages that hold the bits of a map by reference.
  std::vector<uint32_t> MapPages() const;

 private:
  std::optional<uint32_t> NextIn(Bytes bits, uint32_t first_page, uint32_t from) const;
  size_t ReferenceCount() const;
  uint32_t Reference(size_t position) const;

  const FileReader* file_;
  Bytes row_;  // empty: the empty set
};

}  // namespace rdv::jet
