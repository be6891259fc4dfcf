#include "data/jet/check/check.h"

#include <algorithm>
#include <set>

#include "data/jet/catalog/catalog.h"
#include "data/jet/check/check_parts.h"
#include "data/jet/rows/memory_budget.h"
#include "runtime/error.h"

namespace rdv::jet {
namespace {

constexpr size_t kMostFindings = 10000;

std::vector<TableDefinition> ReadTables(const FileReader& file, CheckReport& report) {
  std::vector<TableDefinition> tables;
  std::set<uint32_t> pages;
  MemoryBudget budget(file);
  const Catalog catalog(file);
  for (const CatalogObject& object : catalog.All()) {
    if (!object.IsLocalTable()) continue;
    const auto page = static_cast<uint32_t>(object.id);
    const Finding damaged{
        .kind = FindingKind::DamagedStructure, .page = page, .table = page, .text = {}};
    if (!pages.insert(page).second) {
      Finding twice = damaged;
      twice.text = u"The table " + object.name + u" has the definition of another one";
      Report(report, std::move(twice));
      continue;
    }
    Guarded(report, damaged, [&] {
      TableDefinition table = catalog.Table(object);
      budget.Take(HeldBytes(table));
      tables.push_back(std::move(table));
    });
  }
  return tables;
}

void ClaimPages(const TableDefinition& table, PageOwners& owners) {
  const uint32_t id = table.Page();
  for (const uint32_t page : table.pages) owners.ClaimPage(page, id);
  std::vector<RowId> maps = {table.owned_map};
  std::vector<RowId> hints = {table.free_map};
  for (const Column& column : table.columns) {
    if (!column.IsLongValue()) continue;
    maps.push_back(column.owned_map);
    hints.push_back(column.free_map);
  }
  for (const RealIndex& index : table.indexes) maps.push_back(index.map);
  for (const RowId map : maps) {
    owners.ClaimMapRows(map, id);
    owners.ClaimMap(map, id);
  }
  // Maps of pages with room list pages that the owned maps list, too.
  for (const RowId map : hints) owners.ClaimMapRows(map, id);
}

void CheckTable(const FileReader& file, const TableDefinition& table, CheckReport& report) {
  const TableContents contents = CheckRows(file, table, report);
  report.rows += contents.rows;
  CheckLongValues(file, table, contents, report);
  for (const RealIndex& index : table.indexes) {
    Guarded(report,
            {.kind = FindingKind::Index,
             .page = index.root,
             .table = table.Page(),
             .position = index.position,
             .text = u"An index of " + table.name + u" cannot be followed: "},
            [&] { CheckIndex(file, table, index, contents, report); });
  }
  if (contents.rows != table.row_count) {
    Report(report, {.kind = FindingKind::RowCount,
                    .page = table.Page(),
                    .table = table.Page(),
                    .text = table.name + u" has " + Decimal(contents.rows) +
                            u" rows, but says that it has " + Decimal(table.row_count)});
  }
  if (contents.largest_autonumber > table.last_autonumber) {
    Report(report,
           {.kind = FindingKind::Autonumber,
            .page = table.Page(),
            .table = table.Page(),
            .text = table.name + u" has the number " + Decimal(contents.largest_autonumber) +
                    u", but says that the last one was " + Decimal(table.last_autonumber)});
  }
}

}  // namespace

void Report(CheckReport& report, Finding finding) {
  if (report.findings.size() < kMostFindings) report.findings.push_back(std::move(finding));
}

void Guarded(CheckReport& report, Finding finding, const std::function<void()>& part) {
  try {
    part();
  } catch (const RuntimeError& error) {
    finding.text += error.Description();
    Report(report, std::move(finding));
  }
}

CheckReport CheckFile(const FileReader& file) {
  CheckReport report;
  report.pages = file.PageCount();
  const Format& format = file.Layout();
  const Bytes words =
      file.RawPage(0).subspan(format.header.commit_words, kCommitWordCount * sizeof(uint16_t));
  if (const std::optional<Text> state = SuspectState(words))
    Report(report, {.kind = FindingKind::CommitWords, .text = *state});

  const std::vector<TableDefinition> tables = ReadTables(file, report);
  report.tables = static_cast<uint32_t>(tables.size());
  PageOwners owners(file, report);
  for (const TableDefinition& table : tables) {
    const Finding damaged{
        .kind = FindingKind::DamagedStructure, .page = table.Page(), .table = table.Page()};
    Guarded(report, damaged, [&] { ClaimPages(table, owners); });
    Guarded(report, damaged, [&] { CheckTable(file, table, report); });
  }
  owners.CompareWithFreeMap();
  return report;
}

Text KindName(FindingKind kind) {
  switch (kind) {
    case FindingKind::CommitWords:
      return u"interrupted";
    case FindingKind::LeakedPage:
      return u"leaked page";
    case FindingKind::OwnedPageFree:
      return u"page in use marked as free";
    case FindingKind::OwnedTwice:
      return u"page with two owners";
    case FindingKind::DamagedStructure:
      return u"damaged";
    case FindingKind::WrongPage:
      return u"page of another kind";
    case FindingKind::DamagedPage:
      return u"damaged page";
    case FindingKind::FreeBytes:
      return u"free space";
    case FindingKind::OrphanRow:
      return u"moved row without pointer";
    case FindingKind::LostRow:
      return u"pointer without row";
    case FindingKind::DamagedRow:
      return u"damaged row";
    case FindingKind::Index:
      return u"index";
    case FindingKind::RowCount:
      return u"row count";
    case FindingKind::Autonumber:
      return u"autonumber";
    case FindingKind::LeakedLongValue:
      return u"leaked long value";
    case FindingKind::DamagedLongValue:
      return u"damaged long value";
  }
  return {};
}

}  // namespace rdv::jet
