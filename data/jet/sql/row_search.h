// Finds the rows that a condition selects.
#pragma once

#include <functional>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/row_codec.h"
#include "data/jet/sql/predicate.h"

namespace rdv::jet::sql {

// Visits the matching rows in the order of storage: by page, then by slot. Uses the index whose
// leading columns the condition gives values for, the one with the most of them; without any it
// reads the whole table.
void ForEachMatch(const FileReader& file, const TableDefinition& table, const Predicate& predicate,
                  const std::function<void(const RowView&)>& visit);

// The same rows, by their places.
std::vector<RowId> FindMatches(const FileReader& file, const TableDefinition& table,
                               const Predicate& predicate);

// The rows whose keys, in the index through which those are found, are like theirs but for the last
// column, some of them: whoever changes one line of a unit often goes on with its others. Nothing
// where no index is used.
std::vector<RowId> Siblings(const FileReader& file, const TableDefinition& table,
                            const Predicate& predicate);

}  // namespace rdv::jet::sql
