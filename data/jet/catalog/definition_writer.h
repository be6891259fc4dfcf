// Writing definitions of tables: as bytes, and on their pages.
#pragma once

#include <cstdint>
#include <vector>

#include "data/jet/file/write_context.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/allocation.h"

namespace rdv::jet {

// Adds a column to a definition in the making: as the next number, behind the fixed columns or as
// the next variable one. All else it has already.
void AppendColumn(TableDefinition& table, Column column);
// Adds an index with a name to a definition in the making.
void AppendIndex(TableDefinition& table, RealIndex index, TextView name, bool primary);

// A Jet 4 definition, whole. The table's columns are by number; descriptors are written in the
// order of display (by name where the ordinals are equal), logical indexes by name. The free space
// of pages and links between them are not part of it.
std::vector<uint8_t> EncodeDefinition(const TableDefinition& table);

// Puts a definition on its pages: those that it has, the first in front, and new ones as needed.
// Pages that it no longer needs are freed. Returns its pages.
std::vector<uint32_t> StoreDefinition(const WriteContext& context, PageAllocator& allocator,
                                      Bytes definition, std::vector<uint32_t> pages);

// Adds a logical index and, where `real` is not null, the real index that it uses, to an encoded
// definition; all else stays byte for byte.
std::vector<uint8_t> AddIndexToDefinition(Bytes definition, const TableDefinition& table,
                                          const LogicalIndex& logical, const RealIndex* real);

}  // namespace rdv::jet
