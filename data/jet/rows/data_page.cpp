#include "data/jet/rows/data_page.h"

namespace rdv::jet {
namespace {

Bytes Target(const FileReader& file, uint32_t owner, RowId id) {
  const DataPageView page(file, id.page, file.DataPage(id.page, owner));
  if (id.row >= page.SlotCount()) file.DamagedPage(id.page, u"has fewer rows than is pointed to");
  const Slot slot = page.At(id.row);
  const bool moved_row = slot.Hidden() && !slot.Deleted();
  if (!moved_row) file.DamagedPage(id.page, u"does not hold the moved row that is pointed to");
  return page.Content(slot);
}

}  // namespace

DataPageView::DataPageView(const FileReader& file, uint32_t number, Bytes page)
    : file_(&file),
      number_(number),
      page_(page),
      slot_count_(Load16(&page[file.Layout().data.slot_count])),
      slots_(file.Layout().data.slots),
      slots_end_(slots_ + slot_count_ * kSlotSize) {
  if (slot_count_ > kRowNumbers || slots_end_ > page_.size()) {
    file.DamagedPage(number, u"says that it has more rows than fit a page");
  }
}

void DataPageView::DamagedSlot(size_t row) const {
  file_->DamagedPage(number_, u"says that row " + Decimal(static_cast<int64_t>(row)) +
                                  u" lies outside of the page or of its order");
}

RowId ReadRowPointer(const FileReader& file, Bytes content) {
  if (content.size() < kRowPointerSize) file.Damaged(u"The pointer of a moved row is cut off");
  return LoadRowPointer(content.data());
}

Bytes FollowPointer(const FileReader& file, uint32_t table_page, Bytes content) {
  return Target(file, table_page, ReadRowPointer(file, content));
}

std::optional<Bytes> FindRow(const FileReader& file, uint32_t table_page, RowId id) {
  const DataPageView page(file, id.page, file.DataPage(id.page, table_page));
  if (id.row >= page.SlotCount()) return std::nullopt;
  const Slot slot = page.At(id.row);
  if (slot.Hidden()) return std::nullopt;
  if (slot.Pointer()) return FollowPointer(file, table_page, page.Content(slot));
  return page.Content(slot);
}

Bytes RequireRow(const FileReader& file, uint32_t owner, RowId id) {
  const DataPageView page(file, id.page, file.DataPage(id.page, owner));
  if (id.row >= page.SlotCount()) file.DamagedPage(id.page, u"has fewer rows than is pointed to");
  const Slot slot = page.At(id.row);
  if (slot.flags & kSlotDeleted) file.DamagedPage(id.page, u"holds no row where one is pointed to");
  return page.Content(slot);
}

}  // namespace rdv::jet
