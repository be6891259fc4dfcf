#include "data/jet/check/repair.h"

#include <algorithm>
#include <initializer_list>
#include <set>

#include "data/jet/catalog/catalog.h"
#include "data/jet/check/check_parts.h"
#include "data/jet/file/pager.h"
#include "data/jet/file/write_context.h"
#include "data/jet/index/index_writer.h"
#include "data/jet/rows/allocation.h"
#include "data/jet/rows/data_page_writer.h"
#include "data/jet/rows/row_store.h"
#include "runtime/error.h"

namespace rdv::jet {
namespace {

constexpr size_t kPagesInMemory = 1024;

using Kinds = std::initializer_list<FindingKind>;

// What is mended in one go. Each stage may bring to light, or settle, what a later one is about, so
// the file is checked before each. Pages are taken only when those in use are marked so.
const std::vector<std::vector<FindingKind>>& Stages() {
  using enum FindingKind;
  static const std::vector<std::vector<FindingKind>> stages = {
      {CommitWords, WrongPage, FreeBytes}, {OwnedPageFree}, {OrphanRow, LostRow}, {LeakedLongValue},
      {Index, RowCount, Autonumber},       {LeakedPage},
  };
  return stages;
}

bool Has(const CheckReport& report, Kinds kinds) {
  return std::ranges::any_of(report.findings, [&](const Finding& finding) {
    return std::ranges::find(kinds, finding.kind) != kinds.end();
  });
}

class Repair {
 public:
  explicit Repair(Pager& pager)
      : pager_(pager),
        file_(pager, pager.FileHeader()),
        context_{pager, file_},
        allocator_(context_) {}

  RepairReport Run() {
    RepairReport report;
    Judge(CheckFile(file_));
    for (const std::vector<FindingKind>& stage : Stages()) {
      const CheckReport found = CheckFile(file_);
      if (Has(found, {FindingKind::OwnedTwice})) break;
      for (const Finding& finding : found.findings) {
        if (std::ranges::find(stage, finding.kind) == stage.end() || IsGuess(finding)) continue;
        if (Mend(finding)) report.mended.push_back(finding);
      }
    }
    report.remaining = CheckFile(file_);
    return report;
  }

 private:
  // What cannot be read may be what seems to be missing elsewhere: the pointer to a row, the row of
  // a value, the owner of a page. The first look decides, before anything was mended.
  void Judge(const CheckReport& found) {
    using enum FindingKind;
    for (const Finding& finding : found.findings) {
      const bool unreadable = finding.kind == DamagedStructure || finding.kind == DamagedPage ||
                              finding.kind == DamagedRow || finding.kind == DamagedLongValue;
      if (unreadable) unreadable_tables_.insert(finding.table);
    }
    pages_are_lost_ = Has(found, {DamagedStructure, DamagedPage, DamagedRow, WrongPage});
  }

  bool IsGuess(const Finding& finding) const {
    switch (finding.kind) {
      case FindingKind::OrphanRow:
      case FindingKind::LostRow:
      case FindingKind::LeakedLongValue:
      case FindingKind::Index:
      case FindingKind::RowCount:
      case FindingKind::Autonumber:
        return unreadable_tables_.contains(finding.table);
      case FindingKind::LeakedPage:
        return pages_are_lost_ && !IsBlank(finding.page);
      default:
        return false;
    }
  }
  bool IsBlank(uint32_t page) const {
    return std::ranges::all_of(file_.RawPage(page), [](uint8_t byte) { return byte == 0; });
  }

  // False where it cannot be done.
  bool Mend(const Finding& finding) {
    try {
      return MendKnown(finding);
    } catch (const RuntimeError&) {
      return false;
    }
  }

  bool MendKnown(const Finding& finding) {
    switch (finding.kind) {
      case FindingKind::CommitWords:
        pager_.MendCommitWords();
        return true;
      case FindingKind::WrongPage:
        PageSetWriter(context_, allocator_, finding.map).Remove(finding.page);
        return true;
      case FindingKind::FreeBytes:
        return MendFreeBytes(finding);
      case FindingKind::OrphanRow:
      case FindingKind::LostRow:
        return DeleteSlot(finding);
      case FindingKind::LeakedLongValue:
        return DropLongValue(finding);
      case FindingKind::Index:
        return RebuildIndex(finding);
      case FindingKind::RowCount:
      case FindingKind::Autonumber:
        return MendCounters(finding);
      case FindingKind::OwnedPageFree:
        allocator_.MarkUsed(finding.page);
        return true;
      case FindingKind::LeakedPage:
        allocator_.Free(finding.page);
        return true;
      default:
        return false;
    }
  }

  TableDefinition Table(const Finding& finding) const {
    return ReadTableDefinition(file_, finding.table, {});
  }

  bool DeleteSlot(const Finding& finding) {
    DataPageWriter page(context_, finding.page, finding.table);
    const auto row = static_cast<uint8_t>(finding.position);
    if (page.Flags(row) == kSlotDeleted) return false;
    page.Delete(row);
    return true;
  }

  bool MendFreeBytes(const Finding& finding) {
    const DataPageWriter page(context_, finding.page, finding.table);
    Store16(pager_.Edit(finding.page) + kPageFreeBytes, static_cast<uint16_t>(page.FreeBytes()));
    return true;
  }

  bool DropLongValue(const Finding& finding) {
    const std::vector<Column> columns = Table(finding).columns;
    const auto column = std::ranges::find_if(columns, [&](const Column& one) {
      return one.IsLongValue() && one.owned_map == finding.map;
    });
    if (column == columns.end()) return false;
    RowStore(context_, allocator_, kOwnerLongValues, column->owned_map, column->free_map)
        .RemoveWithPage({finding.page, static_cast<uint8_t>(finding.position)});
    return true;
  }

  bool RebuildIndex(const Finding& finding) {
    const TableDefinition table = Table(finding);
    const RealIndex& index = table.indexes.at(finding.position);
    CheckReport ignored;
    const TableContents contents = CheckRows(file_, table, ignored);
    if (contents.keyless[index.position]) return false;
    IndexWriter(context_, allocator_, table.Page(), index).Rebuild(contents.keys[index.position]);
    return true;
  }

  bool MendCounters(const Finding& finding) {
    const TableDefinition table = Table(finding);
    CheckReport ignored;
    const TableContents contents = CheckRows(file_, table, ignored);
    const auto& layout = context_.Layout().definition;
    uint8_t* page = pager_.Edit(table.Page());
    Store32(page + layout.row_count, contents.rows);
    if (contents.largest_autonumber > table.last_autonumber)
      Store32(page + layout.last_autonumber, contents.largest_autonumber);
    return true;
  }

  Pager& pager_;
  FileReader file_;
  WriteContext context_;
  PageAllocator allocator_;
  std::set<uint32_t> unreadable_tables_;  // by the page of their definitions
  bool pages_are_lost_ = false;           // there may be pages whose owners were not found
};

}  // namespace

RepairReport RepairDatabase(FileSystem& files, const Text& path,
                            std::chrono::milliseconds lock_wait) {
  Pager pager(files, path, lock_wait, kPagesInMemory, Suspects::Mended);
  pager.BeginWrite();
  RepairReport report;
  try {
    report = Repair(pager).Run();
  } catch (...) {
    pager.Rollback();
    throw;
  }
  pager.Commit();
  pager.Close();
  return report;
}

}  // namespace rdv::jet
