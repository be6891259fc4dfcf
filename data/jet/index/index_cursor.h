// The entries of an index in order, and the rows that they lead to.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "data/jet/index/index_key.h"
#include "data/jet/index/index_page.h"
#include "data/jet/rows/row_codec.h"

namespace rdv::jet {

// Walks the entries of an index in order. A walk ends with the damaged file's error when pages
// lead in a circle or entries are out of order from one page to the next.
class IndexCursor {
 public:
  // `table` must outlive the cursor.
  IndexCursor(const FileReader& file, const TableDefinition& table, const RealIndex& index);

  // To the first entry of all.
  void SeekFirst();
  // To the first entry whose key is not below `key`, which may be the beginning of a key.
  void Seek(Bytes key);

  // Where an entry with the key of the last Seek would belong, before all that have it. Nothing
  // where only the nodes above can tell: behind all entries of a leaf that is not the last one.
  std::optional<EntryPlace> Sought() const { return sought_; }

  // Whether the cursor stands on an entry.
  bool Valid() const { return page_.has_value(); }
  void Next();

  // Of the current entry; the key is whole, valid until the cursor moves.
  Bytes Key() const { return Bytes(entry_).first(entry_.size() - kEntryRowSize); }
  RowId Row() const;
  bool KeyStartsWith(Bytes prefix) const;

  // The leaf that the cursor stands on.
  uint32_t PageNumber() const { return page_->Number(); }

 private:
  // Goes down from the root; `choose` picks the child of each node.
  template <typename Choose>
  void Descend(Choose choose);
  void StandOn(std::optional<EntryBounds> entry);  // moves on to the next page for none

  const FileReader* file_;
  const TableDefinition* table_;
  const RealIndex* index_;
  std::optional<IndexPageView> page_;  // the leaf; nothing when the cursor stands on no entry
  EntryBounds bounds_;
  std::optional<EntryPlace> sought_;
  uint32_t leaves_ = 0;  // visited
  std::vector<uint8_t> entry_;
  std::vector<uint8_t> last_;  // the last entry of the page before
};

// The key that a stored row has in the index, nothing when it has none there by right. Where no key
// is known of the row's text another program may have stored it all the same: then a walk through
// the index finds it. Raises the damaged file's error where it does not.
std::optional<Key> StoredKeyOfRow(const FileReader& file, const TableDefinition& table,
                                  const RealIndex& index, const RowView& row);

// The rows whose keys begin with the given leading columns' key, in index order, read from their
// pages as they are met.
class IndexSeek {
 public:
  IndexSeek(const FileReader& file, const TableDefinition& table, const RealIndex& index,
            std::vector<uint8_t> key_prefix);

  bool Next();
  const RowView& Row() const { return row_; }

 private:
  const FileReader* file_;
  const TableDefinition* table_;
  IndexCursor cursor_;
  std::vector<uint8_t> prefix_;
  RowView row_;
  bool started_ = false;
};

}  // namespace rdv::jet
