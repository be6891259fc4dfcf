// Which pages are in use, and by whom: taking pages, giving them back, and entering them in the
// maps of their owners.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "data/jet/file/write_context.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

// Whoever may have a page although the map of free pages says that nobody has it.
class PageUsers {
 public:
  PageUsers() = default;
  PageUsers(const PageUsers&) = delete;
  PageUsers& operator=(const PageUsers&) = delete;
  virtual ~PageUsers() = default;

  // Inside a statement. May read the page and what it takes to judge it.
  virtual bool Have(uint32_t page) = 0;
};

// The map of free pages. Keeps in mind below which page none is free, as long as the file's pages
// are changed by nobody else: one object serves until the pager's generation changes.
class PageAllocator {
 public:
  // `users`, which must outlive it, are asked before a page is taken on the word of the map; null
  // where all who have pages are known to have asked for them in the statement.
  explicit PageAllocator(const WriteContext& context, PageUsers* users = nullptr)
      : context_(context), users_(users) {}

  // A page that belongs to nobody, all zeros: the lowest free one or a new one at the end. It is
  // marked as used; entering it in its owner's map is the caller's. Raises the damaged file's error
  // when the lowest one that is said to be free is not.
  uint32_t Allocate();

  // Requires that no owner's map has the page any more.
  void Free(uint32_t page);

  // For a page that is in use already but not marked so.
  void MarkUsed(uint32_t page);

 private:
  std::optional<uint32_t> FindFree();
  std::optional<uint32_t> FindFreeIn(Bytes bits, uint64_t first_page);
  bool CoverInline(uint32_t page);
  void ConvertToReferences();
  void CoverByReference(uint32_t page);
  uint32_t AppendMapPage();

  const WriteContext& context_;
  PageUsers* users_;
  uint32_t lowest_ = 0;  // no page below this one is free
};

// An owner's map of pages: of a table, an index, a long-value column.
class PageSetWriter {
 public:
  PageSetWriter(const WriteContext& context, PageAllocator& allocator, RowId map)
      : context_(context), allocator_(allocator), map_(map) {}

  // False when there is no such map at all.
  explicit operator bool() const { return static_cast<bool>(map_); }

  void Add(uint32_t page);
  void Remove(uint32_t page);
  bool Contains(uint32_t page) const;
  // The highest page of the set that is below `limit`.
  std::optional<uint32_t> HighestBelow(uint32_t limit) const;

 private:
  Bytes Row() const;
  std::span<uint8_t> EditRow();
  bool AddInline(uint32_t page);
  void ConvertToReferences();
  void AddByReference(uint32_t page);

  const WriteContext& context_;
  PageAllocator& allocator_;
  RowId map_;
};

// The content of a new map with no pages.
std::vector<uint8_t> EmptyMap(const Format& format);

}  // namespace rdv::jet
