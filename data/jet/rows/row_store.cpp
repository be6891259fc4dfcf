#include "data/jet/rows/row_store.h"

#include <array>
#include <optional>

#include "data/jet/rows/data_page.h"
#include "data/jet/rows/data_page_writer.h"

namespace rdv::jet {
namespace {

// A page that has no room for a row up to this size is not tried again for others.
constexpr size_t kTypicalRow = 1024;
// Pages that are tried for a larger one.
constexpr int kTries = 8;

}  // namespace

RowStore::RowStore(const WriteContext& context, PageAllocator& allocator, uint32_t owner,
                   RowId owned_map, RowId free_map)
    : context_(context),
      allocator_(allocator),
      owner_(owner),
      owned_(context, allocator, owned_map),
      free_(context, allocator, free_map) {}

RowId RowStore::Insert(Bytes content, uint16_t flags) {
  RowId row;
  uint32_t limit = context_.pager.PageCount();
  for (int tries = 0; tries < kTries;) {
    const std::optional<uint32_t> page = free_.HighestBelow(limit);
    if (!page) break;
    // Who takes a row from another page must not wait for a third.
    if (flags == kSlotHidden && context_.pager.Order().Waits(*page)) {
      ++tries;
      limit = *page;
      continue;
    }
    if (InsertInPage(*page, content, flags, row)) return row;
    if (content.size() <= kTypicalRow) {
      free_.Remove(*page);
    } else {
      ++tries;
    }
    limit = *page;
  }
  const uint32_t page = NewPage();
  free_.Add(page);
  if (!InsertInPage(page, content, flags, row))
    context_.file.DamagedPage(page, u"does not stay in the map of its owner's pages");
  return row;
}

// The map of pages with room is a hint: what it says about others' pages does not count.
bool RowStore::InsertInPage(uint32_t page, Bytes content, uint16_t flags, RowId& row) {
  if (!owned_.Contains(page)) return false;
  DataPageWriter writer(context_, page, owner_);
  if (!writer.HasRoomFor(content.size())) return false;
  row = {.page = page, .row = writer.Insert(content, flags)};
  return true;
}

uint32_t RowStore::NewPage() {
  if (!owned_) context_.file.Damaged(u"What is to take a page has no map of its pages");
  const uint32_t page = allocator_.Allocate();
  DataPageWriter::Initialize(context_, page, owner_);
  owned_.Add(page);
  // Without it the row would be nobody's.
  if (!owned_.Contains(page)) context_.file.Damaged(u"A table or a column has no map of its pages");
  return page;
}

RowId RowStore::InsertAlone(Bytes content) {
  const uint32_t page = NewPage();
  return {.page = page, .row = DataPageWriter(context_, page, owner_).Insert(content)};
}

void RowStore::Replace(RowId row, Bytes content) {
  PageOrder& order = context_.pager.Order();
  DataPageWriter page(context_, row.page, owner_);
  std::optional<RowId> left;  // where the row was moved to before and is no longer
  if (page.Flags(row.row) == kSlotPointer) {
    const RowId moved = ReadRowPointer(context_.file, page.Row(row.row));
    DataPageWriter moved_page(context_, moved.page, owner_);
    if (moved_page.Flags(moved.row) != kSlotHidden)
      context_.file.DamagedPage(moved.page, u"does not hold the moved row that is pointed to");
    if (moved_page.CanResize(moved.row, content.size())) {
      moved_page.Replace(moved.row, content, kSlotHidden);
      return;
    }
    RemoveSlot(moved);
    left = moved;
  }
  if (page.CanResize(row.row, content.size()) && !(left && order.Waits(row.page))) {
    page.Replace(row.row, content);
    if (left) order.LetWait(left->page, row.page);
    return;
  }
  const RowId taker = Insert(content, kSlotHidden);
  if (left) order.LetWait(left->page, taker.page);
  order.LetWait(row.page, taker.page);
  std::array<uint8_t, kRowPointerSize> pointer{};
  StoreRowPointer(pointer.data(), taker);
  if (!page.CanResize(row.row, pointer.size()))
    context_.file.DamagedPage(row.page, u"holds a row that is too short to be moved");
  page.Replace(row.row, pointer, kSlotPointer);
}

void RowStore::Remove(RowId row) {
  const DataPageWriter page(context_, row.page, owner_);
  if (page.Flags(row.row) == kSlotPointer)
    RemoveSlot(ReadRowPointer(context_.file, page.Row(row.row)));
  RemoveSlot(row);
}

void RowStore::RemoveSlot(RowId row) {
  DataPageWriter page(context_, row.page, owner_);
  if (page.Flags(row.row) == kSlotDeleted)
    context_.file.DamagedPage(row.page, u"holds no row where one is pointed to");
  page.Delete(row.row);
  if (page.SlotCount() < kMaxSlots) free_.Add(row.page);
}

void RowStore::RemoveWithPage(RowId row) {
  if (owned_ && !owned_.Contains(row.page))
    context_.file.DamagedPage(row.page, u"holds a value of a column that it does not belong to");
  DataPageWriter page(context_, row.page, owner_);
  if (page.Flags(row.row) == kSlotDeleted)
    context_.file.DamagedPage(row.page, u"holds no row where one is pointed to");
  page.Delete(row.row);
  if (page.HasLiveRows()) {
    if (free_.Contains(row.page)) return;
    // A page that was filled by one value only stays out of the map until it is given back.
    if (page.SlotCount() < kMaxSlots) free_.Add(row.page);
    return;
  }
  free_.Remove(row.page);
  owned_.Remove(row.page);
  allocator_.Free(row.page);
}

}  // namespace rdv::jet
