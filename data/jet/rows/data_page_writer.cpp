#include "data/jet/rows/data_page_writer.h"

#include <cassert>
#include <cstring>

namespace rdv::jet {

DataPageWriter::DataPageWriter(const WriteContext& context, uint32_t number, uint32_t owner)
    : context_(context),
      format_(context.Layout()),
      number_(number),
      page_(context.file.DataPage(number, owner).data()) {
  RequireOrder();
}

void DataPageWriter::RequireOrder() const {
  const size_t count = SlotCount();
  size_t above = format_.page_size;
  bool ordered = count <= kRowNumbers;
  for (size_t row = 0; ordered && row < count; ++row) {
    const size_t start = Start(row);
    ordered = start <= above;
    above = start;
  }
  if (!ordered || above < format_.data.slots + count * kSlotSize)
    context_.file.DamagedPage(number_, u"its rows overlap");
}

void DataPageWriter::Initialize(const WriteContext& context, uint32_t number, uint32_t owner) {
  assert(number > kGlobalMapPage);
  const Format& format = context.Layout();
  uint8_t* page = context.pager.Edit(number);
  std::memset(page, 0, format.page_size);
  page[0] = static_cast<uint8_t>(PageType::Data);
  page[1] = kPageMark;
  Store16(page + kPageFreeBytes, static_cast<uint16_t>(format.page_size - format.data.slots));
  Store32(page + kPageOwner, owner);
}

size_t DataPageWriter::SlotCount() const {
  return Load16(page_ + format_.data.slot_count);
}

size_t DataPageWriter::Start(size_t row) const {
  return Load16(page_ + format_.data.slots + row * kSlotSize) & kSlotStartMask;
}

size_t DataPageWriter::End(size_t row) const {
  return row == 0 ? format_.page_size : Start(row - 1);
}

size_t DataPageWriter::LowestStart() const {
  return End(SlotCount());
}

size_t DataPageWriter::FreeBytes() const {
  return LowestStart() - (format_.data.slots + SlotCount() * kSlotSize);
}

bool DataPageWriter::HasRoomFor(size_t row_size) const {
  return SlotCount() < kMaxSlots && row_size + kSlotSize <= FreeBytes();
}

bool DataPageWriter::HasLiveRows() const {
  for (size_t row = 0; row < SlotCount(); ++row) {
    if (Flags(static_cast<uint8_t>(row)) != kSlotDeleted) return true;
  }
  return false;
}

uint16_t DataPageWriter::Flags(uint8_t row) const {
  if (row >= SlotCount()) return kSlotDeleted;
  return Load16(page_ + format_.data.slots + row * kSlotSize) & kSlotDeleted;
}

void DataPageWriter::RequireSlot(uint8_t row) const {
  if (row >= SlotCount()) context_.file.DamagedPage(number_, u"has fewer rows than is pointed to");
}

Bytes DataPageWriter::Row(uint8_t row) const {
  RequireSlot(row);
  return Bytes(page_ + Start(row), End(row) - Start(row));
}

bool DataPageWriter::CanResize(uint8_t row, size_t size) const {
  RequireSlot(row);
  const size_t old_size = End(row) - Start(row);
  return size <= old_size || size - old_size <= FreeBytes();
}

// The page keeps its place in memory when it is marked as changed.
uint8_t* DataPageWriter::Edit() {
  if (!editable_) editable_ = context_.pager.Edit(number_);
  return editable_;
}

void DataPageWriter::SetSlot(size_t row, size_t start, uint16_t flags) {
  assert(start <= format_.page_size && (flags & kSlotStartMask) == 0);
  Store16(Edit() + format_.data.slots + row * kSlotSize, static_cast<uint16_t>(start | flags));
}

void DataPageWriter::StoreFreeBytes() {
  Store16(Edit() + kPageFreeBytes, static_cast<uint16_t>(FreeBytes()));
}

uint8_t DataPageWriter::Insert(Bytes content, uint16_t flags) {
  assert(HasRoomFor(content.size()));
  uint8_t* page = Edit();
  const size_t row = SlotCount();
  const size_t start = LowestStart() - content.size();
  std::memcpy(page + start, content.data(), content.size());
  SetSlot(row, start, flags);
  Store16(page + format_.data.slot_count, static_cast<uint16_t>(row + 1));
  StoreFreeBytes();
  return static_cast<uint8_t>(row);
}

// The row's bytes are to be written afterwards.
void DataPageWriter::Resize(uint8_t row, size_t size, uint16_t flags) {
  RequireSlot(row);
  assert(CanResize(row, size));
  uint8_t* page = Edit();
  const size_t old_start = Start(row);
  const size_t new_start = End(row) - size;
  if (new_start != old_start) {
    const size_t lowest = LowestStart();
    std::memmove(page + lowest + new_start - old_start, page + lowest, old_start - lowest);
    for (size_t higher = row + size_t{1}; higher < SlotCount(); ++higher) {
      SetSlot(higher, Start(higher) + new_start - old_start, Flags(static_cast<uint8_t>(higher)));
    }
  }
  SetSlot(row, new_start, flags);
  StoreFreeBytes();
}

void DataPageWriter::Replace(uint8_t row, Bytes content, uint16_t flags) {
  Resize(row, content.size(), flags);
  if (!content.empty()) std::memcpy(Edit() + Start(row), content.data(), content.size());
}

void DataPageWriter::Grow(uint8_t row, size_t extra, uint8_t fill) {
  const Bytes old = Row(row);
  std::vector<uint8_t> content(old.begin(), old.end());
  content.resize(content.size() + extra, fill);
  Replace(row, content, Flags(row));
}

std::span<uint8_t> DataPageWriter::EditRow(uint8_t row) {
  RequireSlot(row);
  return {Edit() + Start(row), End(row) - Start(row)};
}

void DataPageWriter::Delete(uint8_t row) {
  Resize(row, 0, kSlotDeleted);
  size_t count = SlotCount();
  while (count > 0 && Flags(static_cast<uint8_t>(count - 1)) == kSlotDeleted) {
    // Deleted rows that kept their bytes give them up here.
    Store16(Edit() + format_.data.slots + (count - 1) * kSlotSize, 0);
    --count;
  }
  Store16(Edit() + format_.data.slot_count, static_cast<uint16_t>(count));
  StoreFreeBytes();
}

}  // namespace rdv::jet
