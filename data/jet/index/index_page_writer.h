// Changing one page of an index: in place where that is enough, else by decoding it, changing its
// entries and encoding it anew.
#pragma once

#include <cassert>
#include <cstdint>
#include <span>
#include <vector>

#include "data/jet/file/write_context.h"
#include "data/jet/index/index_page.h"

namespace rdv::jet {

// The child that a node's entry leads to.
inline uint32_t ChildOf(const EntryBytes& entry) {
  assert(entry.size() > kEntryChildSize);
  return Load32BigEndian(&entry.back() - (kEntryChildSize - 1));
}

struct IndexPageImage {
  bool leaf = true;
  uint8_t level = 0;
  uint32_t previous = 0;
  uint32_t next = 0;
  uint32_t tail = 0;
  size_t prefix = 0;  // that the page had; one that is raised once is kept
  std::vector<EntryBytes> entries;

  size_t ChildSize() const { return leaf ? 0 : kEntryChildSize; }
  Bytes WithoutChild(size_t entry) const {
    return Bytes(entries[entry]).first(entries[entry].size() - ChildSize());
  }
  uint32_t Child(size_t entry) const { return ChildOf(entries[entry]); }
  void SetChild(size_t entry, uint32_t child) {
    assert(!leaf && entries[entry].size() > kEntryChildSize);
    Store32BigEndian(&entries[entry].back() - (kEntryChildSize - 1), child);
  }
};

EntryBytes MakeNodeEntry(Bytes key_and_row, uint32_t child);

// Raises the damaged file's error for entries out of order.
IndexPageImage LoadIndexPage(const WriteContext& context, uint32_t table_page, uint32_t number);

// False, and nothing is changed, when the entries do not fit the page. Raises the damaged file's
// error for entries out of order.
bool StoreIndexPage(const WriteContext& context, uint32_t table_page, uint32_t number,
                    const IndexPageImage& image);

// Whether the entries from `first` up to `last` would fit a page of their own.
bool FitsIndexPage(const Format& format, const IndexPageImage& image, size_t first, size_t last);

// Inserts a leaf's entry at an offset where an entry starts or the last one ends. False, and
// nothing is changed, when the page has to be encoded anew for that.
bool InsertEntryInPlace(const WriteContext& context, uint32_t table_page, uint32_t number,
                        size_t offset, Bytes entry);
// Likewise, for one of the page's entries.
bool RemoveEntryInPlace(const WriteContext& context, uint32_t table_page, uint32_t number,
                        EntryBounds entry);

}  // namespace rdv::jet
