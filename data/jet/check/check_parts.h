// The parts of a check, for check.cpp and the tests of the parts.
#pragma once

#include <functional>
#include <unordered_map>
#include <vector>

#include "data/jet/check/check.h"
#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "data/jet/index/index_page_writer.h"
#include "data/jet/rows/usage_map.h"

namespace rdv::jet {

// Whose is each page? Every page in use has one owner.
class PageOwners {
 public:
  PageOwners(const FileReader& file, CheckReport& report);

  // A page of usage maps, which tables share.
  void ClaimMapRows(RowId map, uint32_t table);
  // The pages of the map, and those that it takes itself.
  void ClaimMap(RowId map, uint32_t table);
  void ClaimPage(uint32_t page, uint32_t table);

  // When all have claimed theirs: compares with the map of free pages.
  void CompareWithFreeMap();

 private:
  const FileReader& file_;
  CheckReport& report_;
  enum class Claim : uint8_t { Nobody, MapRows, Owned };
  std::vector<Claim> claims_;
};

// What the walk over a table's rows finds out for the checks that follow.
struct TableContents {
  uint32_t rows = 0;
  uint32_t largest_autonumber = 0;
  std::vector<std::vector<EntryBytes>> keys;  // per index, of all rows, in order; see `keyless`
  std::vector<bool> keyless;                  // per index: no keys can be built for it here
  std::unordered_map<uint32_t, std::vector<bool>> long_values;  // per page: slots referred to
};

TableContents CheckRows(const FileReader& file, const TableDefinition& table, CheckReport& report);
void CheckLongValues(const FileReader& file, const TableDefinition& table,
                     const TableContents& contents, CheckReport& report);
void CheckIndex(const FileReader& file, const TableDefinition& table, const RealIndex& index,
                const TableContents& contents, CheckReport& report);

// Runs `visit` with each page of the map that is a data page of that owner; others are findings.
// What `visit` raises makes the page a damaged one.
void ForEachDataPage(const FileReader& file, const TableDefinition& table, RowId map,
                     uint32_t owner, CheckReport& report,
                     const std::function<void(uint32_t)>& visit);

// Runs a part; what it raises becomes a finding of the kind.
void Guarded(CheckReport& report, Finding finding, const std::function<void()>& part);

// Findings beyond a number that people can take in are not collected.
void Report(CheckReport& report, Finding finding);

}  // namespace rdv::jet
