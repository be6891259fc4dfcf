// Changing the rows of one data page, whatever they are: rows of a table, long values, usage maps.
#pragma once

#include <cstdint>
#include <span>

#include "data/jet/file/write_context.h"
#include "data/jet/format/bytes.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

// An editable data page. Rows lie in slot order from the end of the page downwards without gaps, so
// a row that changes its size moves all rows of higher slots; their slot numbers stay.
class DataPageWriter {
 public:
  // Raises the damaged file's error for a page that is no data page of the owner, or whose slots
  // are out of order. The page is marked as changed by the first call that changes it.
  DataPageWriter(const WriteContext& context, uint32_t number, uint32_t owner);

  // Makes an empty data page of a page that is in use for nothing.
  static void Initialize(const WriteContext& context, uint32_t number, uint32_t owner);

  size_t SlotCount() const;
  size_t FreeBytes() const;
  bool HasRoomFor(size_t row_size) const;
  bool HasLiveRows() const;

  // The slot's flags; kSlotDeleted for a slot that does not exist. All others that take a row raise
  // the damaged file's error for one that does not exist.
  uint16_t Flags(uint8_t row) const;
  Bytes Row(uint8_t row) const;
  bool CanResize(uint8_t row, size_t size) const;

  // Requires HasRoomFor. `flags` as in the slot.
  uint8_t Insert(Bytes content, uint16_t flags = 0);
  // Require CanResize.
  void Replace(uint8_t row, Bytes content, uint16_t flags = 0);
  // The new bytes at the end of a row that grows.
  void Grow(uint8_t row, size_t extra, uint8_t fill);
  // The row's bytes for changing in place.
  std::span<uint8_t> EditRow(uint8_t row);
  // Deleted slots at the end of the slot table are given up.
  void Delete(uint8_t row);

 private:
  uint8_t* Edit();
  size_t Start(size_t row) const;
  size_t End(size_t row) const;
  size_t LowestStart() const;
  void SetSlot(size_t row, size_t start, uint16_t flags);
  void Resize(uint8_t row, size_t size, uint16_t flags);
  void StoreFreeBytes();
  void RequireOrder() const;
  void RequireSlot(uint8_t row) const;

  const WriteContext& context_;
  const Format& format_;
  uint32_t number_;
  const uint8_t* page_;
  uint8_t* editable_ = nullptr;
};

}  // namespace rdv::jet
