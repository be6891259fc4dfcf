#include "data/jet/table/page_users.h"

#include <algorithm>
#include <vector>

#include "data/jet/format/format.h"
#include "data/jet/rows/usage_map.h"

namespace rdv::jet {
namespace {

bool Lists(const FileReader& file, RowId map, uint32_t page) {
  return map && UsageMap(file, map).Contains(page);
}

bool HasLongValues(const FileReader& file, const TableDefinition& table, uint32_t page) {
  return std::ranges::any_of(
      table.columns, [&](const Column& column) { return Lists(file, column.owned_map, page); });
}

bool HasIndexEntries(const FileReader& file, const TableDefinition& table, uint32_t page) {
  return std::ranges::any_of(table.indexes, [&](const RealIndex& index) {
    return index.root == page || Lists(file, index.map, page);
  });
}

bool HasDefinition(const TableDefinition& table, uint32_t page) {
  return std::ranges::find(table.pages, page) != table.pages.end();
}

std::vector<RowId> MapsOf(const TableDefinition& table) {
  std::vector<RowId> maps = {table.owned_map, table.free_map};
  for (const Column& column : table.columns) {
    maps.push_back(column.owned_map);
    maps.push_back(column.free_map);
  }
  for (const RealIndex& index : table.indexes) maps.push_back(index.map);
  return maps;
}

bool HasMapRows(const TableDefinition& table, uint32_t page) {
  return std::ranges::any_of(MapsOf(table), [&](RowId map) { return map.page == page; });
}

bool IsPageOfMap(const FileReader& file, RowId map, uint32_t page,
                 uint32_t owner = kOwnerUsageMaps) {
  const std::vector<uint32_t> pages = UsageMap(file, map, owner).MapPages();
  return std::ranges::find(pages, page) != pages.end();
}

bool HasMapPages(const FileReader& file, const TableDefinition& table, uint32_t page) {
  return std::ranges::any_of(MapsOf(table),
                             [&](RowId map) { return IsPageOfMap(file, map, page); });
}

bool IsPageOfGlobalMap(const FileReader& file, uint32_t page) {
  return IsPageOfMap(file, kFreePages, page, kOwnerGlobalMaps) ||
         IsPageOfMap(file, kPendingPages, page, kOwnerGlobalMaps);
}

}  // namespace

bool TablesAsPageUsers::Have(uint32_t page) {
  const Bytes content = file_.RawPage(page);
  if (content[1] != kPageMark) return false;
  const uint32_t owner = Load32(&content[kPageOwner]);
  switch (static_cast<PageType>(content[0])) {
    case PageType::Data:
      return IsDataOf(owner, page);
    case PageType::IndexNode:
    case PageType::IndexLeaf:
      return IsIndexOf(owner, page);
    case PageType::Definition:
      return AnyTable([&](const TableDefinition& table) { return HasDefinition(table, page); });
    case PageType::UsageMap:
      return IsPageOfGlobalMap(file_, page) || AnyTable([&](const TableDefinition& table) {
               return HasMapPages(file_, table, page);
             });
    case PageType::Header:
      return false;
  }
  return false;
}

bool TablesAsPageUsers::IsDataOf(uint32_t owner, uint32_t page) {
  if (owner == kOwnerLongValues)
    return AnyTable(
        [&](const TableDefinition& table) { return HasLongValues(file_, table, page); });
  if (owner == kOwnerUsageMaps)
    return AnyTable([&](const TableDefinition& table) { return HasMapRows(table, page); });
  const TableDefinition* table = tables_.FindTableAt(owner);
  return table != nullptr && Lists(file_, table->owned_map, page);
}

bool TablesAsPageUsers::IsIndexOf(uint32_t owner, uint32_t page) {
  const TableDefinition* table = tables_.FindTableAt(owner);
  return table != nullptr && HasIndexEntries(file_, *table, page);
}

template <typename HasPage>
bool TablesAsPageUsers::AnyTable(HasPage has_page) {
  return std::ranges::any_of(tables_.TablePages(),
                             [&](uint32_t page) { return has_page(tables_.TableAt(page)); });
}

}  // namespace rdv::jet
