// Each kind of damage is found under its name and, where that can be, mended.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "data/jet/catalog/catalog.h"
#include "data/jet/check/check.h"
#include "data/jet/check/repair.h"
#include "data/jet/file/pager.h"
#include "data/jet/file/write_context.h"
#include "data/jet/index/index_page_writer.h"
#include "data/jet/rows/allocation.h"
#include "data/jet/rows/data_page_writer.h"
#include "data/jet/rows/usage_map.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

constexpr std::chrono::milliseconds kWait{100};
const std::string kSite = "sites/indexed/NewDB.mdb";

// What the damage is done with.
struct Tools {
  const WriteContext& context;
  const TableDefinition& lines;  // has moved rows and a memo
  const TableDefinition& cards;

  uint32_t FirstPage(RowId map) const { return UsageMap(context.file, map).Next(0).value(); }
  uint8_t* Edit(uint32_t page) const { return context.pager.Edit(page); }
};

struct Damage {
  const char* name;
  FindingKind kind;
  bool can_be_mended;
  void (*inflict)(const Tools&);
};

void LeakAPage(const Tools& tools) {
  PageAllocator allocator(tools.context);
  allocator.Allocate();
}
void FreeAPageInUse(const Tools& tools) {
  PageAllocator allocator(tools.context);
  allocator.Free(tools.FirstPage(tools.cards.owned_map));
}
void GiveAPageTwoOwners(const Tools& tools) {
  PageAllocator allocator(tools.context);
  PageSetWriter(tools.context, allocator, tools.lines.owned_map)
      .Add(tools.FirstPage(tools.cards.owned_map));
}
void MapAPageOfAnotherKind(const Tools& tools) {
  PageAllocator allocator(tools.context);
  PageSetWriter(tools.context, allocator, tools.lines.owned_map).Add(allocator.Allocate());
}
void MiscountFreeBytes(const Tools& tools) {
  Store16(tools.Edit(tools.FirstPage(tools.cards.owned_map)) + kPageFreeBytes, 1);
}
void MiscountRows(const Tools& tools) {
  Store32(tools.Edit(tools.cards.Page()) + kJet4.definition.row_count, 99);
}
void LowerTheAutonumber(const Tools& tools) {
  Store32(tools.Edit(tools.cards.Page()) + kJet4.definition.last_autonumber, 1);
}

// The first slot of a table's pages with the flags.
RowId FindSlot(const Tools& tools, const TableDefinition& table, uint16_t flags) {
  for (const uint32_t page : UsageMap(tools.context.file, table.owned_map).Pages()) {
    const DataPageWriter rows(tools.context, page, table.Page());
    for (size_t row = 0; row < rows.SlotCount(); ++row) {
      const auto number = static_cast<uint8_t>(row);
      if (rows.Flags(number) == flags) return {page, number};
    }
  }
  ADD_FAILURE() << "no such slot";
  return {};
}
void LosePointer(const Tools& tools) {
  const RowId row = FindSlot(tools, tools.lines, kSlotPointer);
  DataPageWriter(tools.context, row.page, tools.lines.Page()).Delete(row.row);
}
void LoseMovedRow(const Tools& tools) {
  const RowId row = FindSlot(tools, tools.lines, kSlotHidden);
  DataPageWriter(tools.context, row.page, tools.lines.Page()).Delete(row.row);
}
void LoseRow(const Tools& tools) {
  const RowId row = FindSlot(tools, tools.cards, 0);
  DataPageWriter(tools.context, row.page, tools.cards.Page()).Delete(row.row);
}
void ChangeIndexEntry(const Tools& tools) {
  uint8_t* page = tools.Edit(tools.cards.indexes[0].root);
  page[kJet4.index.entries + 1] ^= 0x01;
}
void LeakLongValue(const Tools& tools) {
  for (const Column& column : tools.lines.columns) {
    if (!column.IsLongValue()) continue;
    PageAllocator allocator(tools.context);
    const uint32_t page = allocator.Allocate();
    DataPageWriter::Initialize(tools.context, page, kOwnerLongValues);
    const std::vector<uint8_t> value(100, 'x');
    DataPageWriter(tools.context, page, kOwnerLongValues).Insert(value);
    PageSetWriter(tools.context, allocator, column.owned_map).Add(page);
  }
}
void LengthenInlineLongValue(const Tools& tools) {
  RowView view(tools.context.file, tools.lines);
  for (const uint32_t page : UsageMap(tools.context.file, tools.lines.owned_map).Pages()) {
    DataPageWriter rows(tools.context, page, tools.lines.Page());
    for (size_t row = 0; row < rows.SlotCount(); ++row) {
      const auto number = static_cast<uint8_t>(row);
      if (rows.Flags(number) != 0) continue;
      view.Reset({page, number}, rows.Row(number));
      for (const Column& column : tools.lines.columns) {
        const auto field = column.IsLongValue() ? view.Field(column) : std::nullopt;
        if (!field || (Load32(field->data()) & kLongValueKindMask) != kLongValueInline) continue;
        const auto place = static_cast<size_t>(field->data() - rows.Row(number).data());
        uint8_t* length = &rows.EditRow(number)[place];
        Store32(length, Load32(length) + 1);
        return;
      }
    }
  }
  ADD_FAILURE() << "no such value";
}
void SpoilRowOf(const Tools& tools, const TableDefinition& table) {
  const RowId row = FindSlot(tools, table, 0);
  const std::span<uint8_t> bytes =
      DataPageWriter(tools.context, row.page, table.Page()).EditRow(row.row);
  Store16(bytes.data(), 0xFFFF);
}
void SpoilRow(const Tools& tools) {
  SpoilRowOf(tools, tools.cards);
}
void SpoilRowWithMemo(const Tools& tools) {
  SpoilRowOf(tools, tools.lines);
}
// The page's second row then begins where no row can.
void SpoilSlotOf(const Tools& tools, uint32_t page) {
  Store16(tools.Edit(page) + kJet4.data.slots + kSlotSize, kSlotStartMask);
}
void SpoilSlot(const Tools& tools) {
  SpoilSlotOf(tools, tools.FirstPage(tools.lines.owned_map));
}
void SpoilSlotOfLongValues(const Tools& tools) {
  for (const Column& column : tools.lines.columns) {
    if (column.IsLongValue()) return SpoilSlotOf(tools, tools.FirstPage(column.owned_map));
  }
  ADD_FAILURE() << "no such column";
}

class CheckRepairTest : public testing::TestWithParam<Damage> {};

std::vector<FindingKind> Kinds(const CheckReport& report) {
  std::vector<FindingKind> kinds;
  for (const Finding& finding : report.findings) kinds.push_back(finding.kind);
  return kinds;
}

// What a check finds after it.
CheckReport InflictOn(const std::filesystem::path& path, void (*inflict)(const Tools&)) {
  Pager pager(NativeFileSystem(), PathText(path), kWait, 100);
  const FileReader file(pager, pager.FileHeader());
  const WriteContext context{pager, file};
  pager.BeginWrite();
  const Catalog catalog(file);
  const TableDefinition lines = catalog.Table(u"Used_Lines");
  const TableDefinition cards = catalog.Table(u"Used_Cards");
  inflict({context, lines, cards});
  pager.Commit();
  pager.BeginRead();
  CheckReport report = CheckFile(file);
  pager.EndRead();
  return report;
}

TEST_P(CheckRepairTest, IsFoundAndMendedWherePossible) {
  const TemporaryFolder folder;
  const auto path = folder.Copy(SamplePath(kSite));
  EXPECT_THAT(Kinds(InflictOn(path, GetParam().inflict)), testing::Contains(GetParam().kind));
  const RepairReport report = RepairDatabase(NativeFileSystem(), PathText(path), kWait);
  EXPECT_EQ(report.remaining.Clean(), GetParam().can_be_mended);
  if (GetParam().can_be_mended) {
    EXPECT_FALSE(report.mended.empty());
  } else {
    EXPECT_THAT(Kinds(report.remaining), testing::Contains(GetParam().kind));
  }
  // A second repair finds nothing more to do.
  EXPECT_TRUE(RepairDatabase(NativeFileSystem(), PathText(path), kWait).mended.empty());
}

using Kind = FindingKind;
INSTANTIATE_TEST_SUITE_P(
    Every, CheckRepairTest,
    testing::Values(Damage{"LeakedPage", Kind::LeakedPage, true, LeakAPage},
                    Damage{"OwnedPageFree", Kind::OwnedPageFree, true, FreeAPageInUse},
                    Damage{"OwnedTwice", Kind::OwnedTwice, false, GiveAPageTwoOwners},
                    Damage{"WrongPage", Kind::WrongPage, true, MapAPageOfAnotherKind},
                    Damage{"FreeBytes", Kind::FreeBytes, true, MiscountFreeBytes},
                    Damage{"RowCount", Kind::RowCount, true, MiscountRows},
                    Damage{"Autonumber", Kind::Autonumber, true, LowerTheAutonumber},
                    Damage{"OrphanRow", Kind::OrphanRow, true, LosePointer},
                    Damage{"LostRow", Kind::LostRow, true, LoseMovedRow},
                    Damage{"EntryWithoutRow", Kind::Index, true, LoseRow},
                    Damage{"WrongEntry", Kind::Index, true, ChangeIndexEntry},
                    Damage{"LeakedLongValue", Kind::LeakedLongValue, true, LeakLongValue},
                    Damage{"DamagedLongValue", Kind::DamagedLongValue, false,
                           LengthenInlineLongValue},
                    Damage{"DamagedRow", Kind::DamagedRow, false, SpoilRow},
                    Damage{"DamagedPage", Kind::DamagedPage, false, SpoilSlot}),
    [](const testing::TestParamInfo<Damage>& param) { return std::string(param.param.name); });

struct Unreadable {
  const char* name;
  void (*inflict)(const Tools&);
};

class RepairOfTheUnreadable : public testing::TestWithParam<Unreadable> {};

// What cannot be read can be what seems to be missing elsewhere, and somebody else may be able to
// read more of it: nothing is taken away for its sake.
TEST_P(RepairOfTheUnreadable, LeavesTheTablesPagesAsTheyAre) {
  const TemporaryFolder folder;
  const auto path = folder.Copy(SamplePath(kSite));
  InflictOn(path, GetParam().inflict);
  const std::vector<uint8_t> before = ReadWholeFile(path);
  const RepairReport report = RepairDatabase(NativeFileSystem(), PathText(path), kWait);
  EXPECT_FALSE(report.remaining.Clean());
  EXPECT_TRUE(report.mended.empty());
  const std::vector<uint8_t> after = ReadWholeFile(path);
  ASSERT_EQ(after.size(), before.size());
  EXPECT_TRUE(std::ranges::equal(Bytes(before).subspan(kJet4.page_size),
                                 Bytes(after).subspan(kJet4.page_size)));
}

INSTANTIATE_TEST_SUITE_P(Every, RepairOfTheUnreadable,
                         testing::Values(Unreadable{"Row", SpoilRowWithMemo},
                                         Unreadable{"Page", SpoilSlot},
                                         Unreadable{"PageOfLongValues", SpoilSlotOfLongValues},
                                         Unreadable{"LongValue", LengthenInlineLongValue}),
                         [](const testing::TestParamInfo<Unreadable>& param) {
                           return std::string(param.param.name);
                         });

TEST(CheckRepair, AFileLeftInTheMiddleOfAWriteIsMended) {
  const TemporaryFolder folder;
  const auto path = folder.Copy(SamplePath(kSite));
  std::vector<uint8_t> bytes = ReadWholeFile(path);
  Store16(bytes.data() + kJet4.header.commit_words + 6, kCommitCorrupt);
  WriteWholeFile(path, bytes);
  const RepairReport report = RepairDatabase(NativeFileSystem(), PathText(path), kWait);
  EXPECT_TRUE(report.remaining.Clean());
  ASSERT_EQ(report.mended.size(), 1u);
  EXPECT_EQ(report.mended[0].kind, Kind::CommitWords);
}

}  // namespace
}  // namespace rdv::jet
