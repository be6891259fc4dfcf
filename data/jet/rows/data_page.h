// The rows of one data page.
#pragma once

#include <optional>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/bytes.h"
#include "data/jet/format/format.h"

namespace rdv::jet {

// A slot whose bounds have been checked.
struct Slot {
  uint16_t start = 0;
  uint16_t end = 0;
  uint16_t flags = 0;

  bool Deleted() const { return (flags & kSlotDeleted) == kSlotDeleted; }
  bool Hidden() const { return (flags & kSlotHidden) != 0; }
  bool Pointer() const { return (flags & kSlotDeleted) == kSlotPointer; }
};

// A view of a page that outlives it. Raises the damaged file's error for slots that lie outside
// the page or out of order.
class DataPageView {
 public:
  DataPageView(const FileReader& file, uint32_t number, Bytes page);

  size_t SlotCount() const { return slot_count_; }
  Slot At(size_t row) const {
    const uint8_t* slots = &page_[slots_];
    const uint16_t word = Load16(slots + row * kSlotSize);
    Slot slot;
    slot.flags = word & static_cast<uint16_t>(~kSlotStartMask);
    slot.start = word & kSlotStartMask;
    slot.end = row == 0 ? static_cast<uint16_t>(page_.size())
                        : Load16(slots + (row - 1) * kSlotSize) & kSlotStartMask;
    if (slot.start > slot.end || slot.end > page_.size() || slot.start < slots_end_)
      DamagedSlot(row);
    return slot;
  }
  // The first row from `row` on that is not certain to have another number than `number` at its
  // byte `at`, where `mask` has its bits. Rows that were moved or are damaged are not certain.
  size_t FirstThatMayHave(uint32_t number, uint32_t mask, size_t at, size_t row) const {
    const uint8_t* slots = &page_[slots_];
    size_t end = row == 0 ? page_.size() : Load16(slots + (row - 1) * kSlotSize) & kSlotStartMask;
    for (; row < slot_count_; ++row) {
      const size_t start = Load16(slots + row * kSlotSize);  // larger than a page with any flag
      const size_t behind = start + at + sizeof number;
      if (behind > end || behind > page_.size() || start < slots_end_) break;
      if (((Load32(&page_[start + at]) ^ number) & mask) == 0) break;
      end = start;
    }
    return row;
  }
  Bytes Content(const Slot& slot) const {
    return page_.subspan(slot.start, size_t{slot.end} - slot.start);
  }

 private:
  [[noreturn]] void DamagedSlot(size_t row) const;

  const FileReader* file_;
  uint32_t number_;
  Bytes page_;
  size_t slot_count_;
  size_t slots_;  // where they begin and end
  size_t slots_end_;
};

// Where a pointer slot's row is. Raises the damaged file's error for content that is too short.
RowId ReadRowPointer(const FileReader& file, Bytes content);

// The row that a table's pointer slot with this content stands for. Raises the damaged file's error
// when it is not there.
Bytes FollowPointer(const FileReader& file, uint32_t table_page, Bytes content);

// The bytes of a row of a table, through its pointer if it was moved. Empty when the slot is
// deleted, does not exist or is hidden (and so not a row's own identity).
std::optional<Bytes> FindRow(const FileReader& file, uint32_t table_page, RowId id);

// A row that a pointer of another structure leads to (usage maps, long values), on a page with the
// given owner. Raises the damaged file's error when it is not there.
Bytes RequireRow(const FileReader& file, uint32_t owner, RowId id);

}  // namespace rdv::jet
