// One page of an index: its entries, in order, with the bytes that they share put back.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/bytes.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

// Key and row; in nodes followed by the child.
using EntryBytes = std::vector<uint8_t>;

// The order of entries: that of their bytes, a beginning before what goes on.
int CompareEntries(Bytes left, Bytes right);
struct EntryLess {
  bool operator()(Bytes left, Bytes right) const { return CompareEntries(left, right) < 0; }
};

EntryBytes MakeEntry(Bytes key, RowId row);
// Makes the key an entry.
void AppendRow(std::vector<uint8_t>& key, RowId row);
// An entry's row, from the first byte behind its key.
RowId LoadEntryRow(const uint8_t* from);

// Of an index page: where its last entry ends.
size_t UsedEntryBytes(const Format& format, Bytes page);

// Where an entry lies in the entry area, as stored: all but the page's first lack the prefix.
struct EntryBounds {
  size_t start = 0;
  size_t end = 0;
};

// Far more levels than an index of the largest file can have: deeper, and the nodes lead in a
// circle, or are made to use up the stack.
inline constexpr int kDeepestIndex = 32;

// Where in a leaf an entry belongs: at this offset of its entry area.
struct EntryPlace {
  uint32_t leaf = 0;
  size_t offset = 0;
};

// A view of one index page, entry by entry, that outlives it. Raises the damaged file's error for
// entries that cannot be.
class IndexPageView {
 public:
  IndexPageView(const FileReader& file, uint32_t table_page, uint32_t number);

  bool IsLeaf() const;
  uint32_t Previous() const;
  uint32_t Next() const;
  uint32_t Tail() const;  // a node's last child, 0 for none
  uint8_t Level() const;
  size_t Prefix() const { return prefix_; }
  uint32_t Number() const { return number_; }

  // The entry that starts at the offset; nothing when it is behind the last one.
  std::optional<EntryBounds> EntryAt(size_t start) const;
  // The first entry (key and row) that is not below `key`; nothing when all are.
  std::optional<EntryBounds> LowerBound(Bytes key) const;

  // Where the last entry ends.
  size_t Used() const;
  // Whether an entry starts there, or the last one ends.
  bool IsBoundary(size_t offset) const;
  // Of a node: the entry that leads on to `key`; nothing when the tail does. A node without a tail
  // leads everything beyond its entries to its last child.
  std::optional<EntryBounds> WayTo(Bytes key) const;

  // The entry as it would be without a prefix, with its row and child.
  void Restore(EntryBounds entry, std::vector<uint8_t>& to) const;
  // The child of a node's entry.
  uint32_t Child(EntryBounds entry) const;

 private:
  std::optional<EntryBounds> LowerBoundBehindFirst(Bytes rest) const;
  Bytes WithoutChild(EntryBounds entry) const {
    return entries_.subspan(entry.start, entry.end - entry.start - child_size_);
  }

  const FileReader* file_;
  uint32_t number_;
  Bytes page_;
  Bytes mask_;
  Bytes entries_;
  size_t child_size_ = 0;  // of an entry's last part: none in a leaf
  size_t prefix_ = 0;
  EntryBounds first_;  // empty where the page has no entries
};

}  // namespace rdv::jet
