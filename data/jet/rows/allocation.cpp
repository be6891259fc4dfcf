#include "data/jet/rows/allocation.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "data/jet/format/bits.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/data_page_writer.h"
#include "data/jet/rows/usage_map.h"

namespace rdv::jet {
namespace {

constexpr size_t kGrowth = 4;  // bytes by which a map's row grows

bool TestBit(Bytes bits, size_t bit) {
  assert(bit / 8 < bits.size());
  return (bits[bit / 8] >> (bit % 8) & 1) != 0;
}
void SetBit(std::span<uint8_t> bits, size_t bit) {
  assert(bit / 8 < bits.size());
  bits[bit / 8] |= static_cast<uint8_t>(1u << (bit % 8));
}
void ClearBit(std::span<uint8_t> bits, size_t bit) {
  assert(bit / 8 < bits.size());
  bits[bit / 8] &= static_cast<uint8_t>(~(1u << (bit % 8)));
}

bool IsInline(Bytes row) {
  return row[0] == kMapInline;
}
void SetReference(std::span<uint8_t> row, size_t position, uint32_t page) {
  assert(row[0] == kMapReference && (position + 1) * kMapReferenceSize < row.size());
  Store32(row.data() + kMapReferences + position * kMapReferenceSize, page);
}

Bytes MapPageBits(const WriteContext& context, uint32_t page) {
  return context.file.Page(page, PageType::UsageMap).subspan(kMapPageBits);
}

std::span<uint8_t> EditMapPageBits(const WriteContext& context, uint32_t page) {
  MapPageBits(context, page);
  return {context.pager.Edit(page) + kMapPageBits, context.Layout().page_size - kMapPageBits};
}

void InitializeMapPage(const WriteContext& context, uint32_t page, uint8_t fill) {
  assert(page > kGlobalMapPage);
  uint8_t* bytes = context.pager.Edit(page);
  std::memset(bytes, fill, context.Layout().page_size);
  Store32(bytes, 0);
  bytes[0] = static_cast<uint8_t>(PageType::UsageMap);
  bytes[1] = kPageMark;
}

}  // namespace

std::vector<uint8_t> EmptyMap(const Format& format) {
  return std::vector<uint8_t>(kMapInlineBits + format.initial_map_bits, 0);
}

// --- Free pages: a bit that is set says "free" ---

uint32_t PageAllocator::Allocate() {
  if (const std::optional<uint32_t> free = FindFree()) {
    if (context_.pager.AskedFor(*free) || (users_ != nullptr && users_->Have(*free)))
      context_.file.DamagedPage(*free, u"is in use, but the map says that it is free");
    MarkUsed(*free);
    lowest_ = *free + 1;
    std::memset(context_.pager.Edit(*free), 0, context_.Layout().page_size);
    return *free;
  }
  const uint32_t page = context_.pager.Append();
  MarkUsed(page);
  lowest_ = context_.pager.PageCount();
  return page;
}

std::optional<uint32_t> PageAllocator::FindFree() {
  if (lowest_ >= context_.pager.PageCount()) return std::nullopt;
  const Bytes row = RequireMap(context_.file, kFreePages, kOwnerGlobalMaps);
  if (IsInline(row))
    return FindFreeIn(row.subspan(kMapInlineBits), Load32(row.data() + kMapFirstPage));
  const uint64_t pages_per_map = context_.Layout().PagesPerMapPage();
  for (size_t i = 0; i < MapReferenceCount(context_.Layout(), row); ++i) {
    if (MapReference(row, i) == 0) continue;
    const auto free = FindFreeIn(MapPageBits(context_, MapReference(row, i)), i * pages_per_map);
    if (free) return free;
  }
  return std::nullopt;
}

std::optional<uint32_t> PageAllocator::FindFreeIn(Bytes bits, uint64_t first_page) {
  const uint64_t count = context_.pager.PageCount();
  const UsageMap pending(context_.file, kPendingPages, kOwnerGlobalMaps);
  uint64_t from = std::max<uint64_t>(first_page, lowest_);
  while (from < count) {
    const std::optional<size_t> bit = LowestBit(bits, static_cast<size_t>(from - first_page));
    if (!bit || first_page + *bit >= count) return std::nullopt;
    const auto page = static_cast<uint32_t>(first_page + *bit);
    // The header and the map itself are never free, whatever a map says.
    if (page > kGlobalMapPage && !pending.Contains(page)) return page;
    from = uint64_t{page} + 1;
  }
  return std::nullopt;
}

void PageAllocator::MarkUsed(uint32_t page) {
  if (IsInline(RequireMap(context_.file, kFreePages, kOwnerGlobalMaps)) && !CoverInline(page))
    ConvertToReferences();
  const Bytes row = RequireMap(context_.file, kFreePages, kOwnerGlobalMaps);
  if (IsInline(row)) {
    DataPageWriter maps(context_, kGlobalMapPage, kOwnerGlobalMaps);
    const std::span<uint8_t> bits = maps.EditRow(kFreePagesRow).subspan(kMapInlineBits);
    ClearBit(bits, page - Load32(row.data() + kMapFirstPage));
    return;
  }
  CoverByReference(page);
  const uint32_t pages_per_map = context_.Layout().PagesPerMapPage();
  const uint32_t map_page =
      MapReference(RequireMap(context_.file, kFreePages, kOwnerGlobalMaps), page / pages_per_map);
  ClearBit(EditMapPageBits(context_, map_page), page % pages_per_map);
}

// Lets the row grow until it has a bit for the page; false when its page has no room for that.
bool PageAllocator::CoverInline(uint32_t page) {
  const Bytes row = RequireMap(context_.file, kFreePages, kOwnerGlobalMaps);
  const uint32_t first = Load32(row.data() + kMapFirstPage);
  if (page < first)
    context_.file.DamagedPage(kGlobalMapPage, u"has a map of free pages that starts too late");
  const size_t needed = (page - first) / 8 + 1;
  const size_t present = row.size() - kMapInlineBits;
  if (needed <= present) return true;
  const size_t extra = (needed - present + kGrowth - 1) / kGrowth * kGrowth;
  DataPageWriter maps(context_, kGlobalMapPage, kOwnerGlobalMaps);
  if (!maps.CanResize(kFreePagesRow, row.size() + extra)) return false;
  maps.Grow(kFreePagesRow, extra, 0xFF);
  return true;
}

// The bits move to pages of their own; the row, whose length stays, then leads to those.
void PageAllocator::ConvertToReferences() {
  const Bytes old_row = RequireMap(context_.file, kFreePages, kOwnerGlobalMaps);
  const std::vector<uint8_t> old(old_row.begin(), old_row.end());
  const Bytes bits = Bytes(old).subspan(kMapInlineBits);
  const uint32_t first = Load32(old.data() + kMapFirstPage);
  const uint32_t pages_per_map = context_.Layout().PagesPerMapPage();
  const size_t maps = (first + bits.size() * 8 + pages_per_map - 1) / pages_per_map;
  if (maps > MapReferenceCount(context_.Layout(), old))
    context_.file.DamagedPage(kGlobalMapPage, u"has a map of free pages that is too short");
  std::vector<uint8_t> row(old.size(), 0);
  row[0] = kMapReference;
  for (size_t i = 0; i < maps; ++i) SetReference(row, i, AppendMapPage());
  // Pages before the first that the row was about are not free either.
  for (uint32_t page = 0; page < first; ++page) {
    const uint32_t map_page = MapReference(row, page / pages_per_map);
    ClearBit(EditMapPageBits(context_, map_page), page % pages_per_map);
  }
  for (size_t bit = 0; bit < bits.size() * 8; ++bit) {
    const size_t page = first + bit;
    if (TestBit(bits, bit)) continue;
    const uint32_t map_page = MapReference(row, page / pages_per_map);
    ClearBit(EditMapPageBits(context_, map_page), page % pages_per_map);
  }
  DataPageWriter(context_, kGlobalMapPage, kOwnerGlobalMaps).Replace(kFreePagesRow, row);
  for (size_t i = 0; i < maps; ++i) MarkUsed(MapReference(row, i));
}

void PageAllocator::CoverByReference(uint32_t page) {
  const size_t position = page / context_.Layout().PagesPerMapPage();
  const Bytes row = RequireMap(context_.file, kFreePages, kOwnerGlobalMaps);
  if (position >= MapReferenceCount(context_.Layout(), row))
    context_.file.DamagedPage(kGlobalMapPage, u"has a map of free pages that is too short");
  if (MapReference(row, position) != 0) return;
  const uint32_t map_page = AppendMapPage();
  DataPageWriter maps(context_, kGlobalMapPage, kOwnerGlobalMaps);
  SetReference(maps.EditRow(kFreePagesRow), position, map_page);
  MarkUsed(map_page);
}

// A map of pages that are all free. It is not marked as used yet.
uint32_t PageAllocator::AppendMapPage() {
  const uint32_t page = context_.pager.Append();
  InitializeMapPage(context_, page, 0xFF);
  return page;
}

void PageAllocator::Free(uint32_t page) {
  const Bytes row = RequireMap(context_.file, kFreePages, kOwnerGlobalMaps);
  if (IsInline(row)) {
    const uint32_t first = Load32(row.data() + kMapFirstPage);
    if (page < first || (page - first) / 8 >= row.size() - kMapInlineBits) return;
    DataPageWriter maps(context_, kGlobalMapPage, kOwnerGlobalMaps);
    SetBit(maps.EditRow(kFreePagesRow).subspan(kMapInlineBits), page - first);
  } else {
    const uint32_t pages_per_map = context_.Layout().PagesPerMapPage();
    const size_t position = page / pages_per_map;
    if (position >= MapReferenceCount(context_.Layout(), row) || MapReference(row, position) == 0)
      return;
    SetBit(EditMapPageBits(context_, MapReference(row, position)), page % pages_per_map);
  }
  lowest_ = std::min(lowest_, page);
  context_.pager.GiveUp(page);
}

// --- Owners' maps: a bit that is set says "mine" ---

Bytes PageSetWriter::Row() const {
  return RequireMap(context_.file, map_);
}

std::span<uint8_t> PageSetWriter::EditRow() {
  return DataPageWriter(context_, map_.page, kOwnerUsageMaps).EditRow(map_.row);
}

void PageSetWriter::Add(uint32_t page) {
  if (!map_) return;
  if (IsInline(Row())) {
    if (AddInline(page)) return;
    ConvertToReferences();
  }
  AddByReference(page);
}

bool PageSetWriter::AddInline(uint32_t page) {
  const Bytes row = Row();
  const Bytes bits = row.subspan(kMapInlineBits);
  uint32_t first = Load32(row.data() + kMapFirstPage);
  if (!LowestBit(bits, 0) && (page < first || (page - first) / 8 >= bits.size())) {
    first = page & ~uint32_t{7};
    Store32(EditRow().data() + kMapFirstPage, first);
  }
  if (page < first) return false;
  const size_t bit = page - first;
  if (bit / 8 >= bits.size()) {
    const size_t extra = (bit / 8 + 1 - bits.size() + kGrowth - 1) / kGrowth * kGrowth;
    DataPageWriter maps(context_, map_.page, kOwnerUsageMaps);
    if (!maps.CanResize(map_.row, row.size() + extra)) return false;
    maps.Grow(map_.row, extra, 0);
  }
  SetBit(EditRow().subspan(kMapInlineBits), bit);
  return true;
}

void PageSetWriter::ConvertToReferences() {
  const std::vector<uint8_t> old(Row().begin(), Row().end());
  const Bytes bits = Bytes(old).subspan(kMapInlineBits);
  const uint32_t first = Load32(old.data() + kMapFirstPage);
  const std::span<uint8_t> row = EditRow();
  std::ranges::fill(row, uint8_t{0});
  row[0] = kMapReference;
  for (auto bit = LowestBit(bits, 0); bit; bit = LowestBit(bits, *bit + 1))
    AddByReference(static_cast<uint32_t>(first + *bit));
}

void PageSetWriter::AddByReference(uint32_t page) {
  const uint32_t pages_per_map = context_.Layout().PagesPerMapPage();
  const size_t position = page / pages_per_map;
  if (position >= MapReferenceCount(context_.Layout(), Row()))
    context_.file.DamagedPage(map_.page, u"holds a map of pages that is too short");
  if (MapReference(Row(), position) == 0) {
    const uint32_t map_page = allocator_.Allocate();
    InitializeMapPage(context_, map_page, 0);
    SetReference(EditRow(), position, map_page);
  }
  SetBit(EditMapPageBits(context_, MapReference(Row(), position)), page % pages_per_map);
}

void PageSetWriter::Remove(uint32_t page) {
  if (!Contains(page)) return;
  const Bytes row = Row();
  if (IsInline(row)) {
    const uint32_t first = Load32(row.data() + kMapFirstPage);
    ClearBit(EditRow().subspan(kMapInlineBits), page - first);
    return;
  }
  const uint32_t pages_per_map = context_.Layout().PagesPerMapPage();
  ClearBit(EditMapPageBits(context_, MapReference(row, page / pages_per_map)),
           page % pages_per_map);
}

bool PageSetWriter::Contains(uint32_t page) const {
  return map_ && UsageMap(context_.file, map_).Contains(page);
}

std::optional<uint32_t> PageSetWriter::HighestBelow(uint32_t limit) const {
  if (!map_) return std::nullopt;
  const Bytes row = Row();
  if (IsInline(row)) {
    const uint32_t first = Load32(row.data() + kMapFirstPage);
    if (limit <= first) return std::nullopt;
    const auto bit = HighestBit(row.subspan(kMapInlineBits), limit - first);
    if (!bit) return std::nullopt;
    return static_cast<uint32_t>(first + *bit);
  }
  const size_t pages_per_map = context_.Layout().PagesPerMapPage();
  for (size_t i = std::min(MapReferenceCount(context_.Layout(), row), limit / pages_per_map + 1);
       i-- > 0;) {
    if (MapReference(row, i) == 0) continue;
    const size_t limit_here = std::min(pages_per_map, limit - i * pages_per_map);
    const auto bit = HighestBit(MapPageBits(context_, MapReference(row, i)), limit_here);
    if (bit) return static_cast<uint32_t>(i * pages_per_map + *bit);
  }
  return std::nullopt;
}

}  // namespace rdv::jet
