#include "data/jet/index/index_cursor.h"

#include <algorithm>
#include <utility>

#include "data/jet/index/index_key.h"
#include "data/jet/rows/table_scan.h"

namespace rdv::jet {

IndexCursor::IndexCursor(const FileReader& file, const TableDefinition& table,
                         const RealIndex& index)
    : file_(&file), table_(&table), index_(&index) {}

template <typename Choose>
void IndexCursor::Descend(Choose choose) {
  leaves_ = 0;
  entry_.clear();
  last_.clear();
  page_.emplace(*file_, table_->Page(), index_->root);
  for (int level = 0; !page_->IsLeaf(); ++level) {
    if (level > kDeepestIndex) file_->DamagedPage(index_->root, u"is the root of an endless index");
    const std::optional<EntryBounds> entry = choose(*page_);
    const uint32_t child = entry ? page_->Child(*entry) : page_->Tail();
    page_.emplace(*file_, table_->Page(), child);
  }
}

void IndexCursor::SeekFirst() {
  Descend([](const IndexPageView& node) { return node.EntryAt(0); });
  StandOn(page_->EntryAt(0));
}

void IndexCursor::Seek(Bytes key) {
  Descend([key](const IndexPageView& node) { return node.WayTo(key); });
  const std::optional<EntryBounds> found = page_->LowerBound(key);
  sought_.reset();
  if (found) sought_ = {page_->Number(), found->start};
  if (!found && page_->Next() == 0) sought_ = {page_->Number(), page_->Used()};
  StandOn(found);
}

void IndexCursor::Next() {
  StandOn(page_->EntryAt(bounds_.end));
}

void IndexCursor::StandOn(std::optional<EntryBounds> entry) {
  while (!entry) {
    const uint32_t next = page_->Next();
    if (next == 0) {
      page_.reset();
      return;
    }
    if (++leaves_ > file_->PageCount()) {
      file_->DamagedPage(next, u"is met twice on the way through an index");
    }
    // Pages without entries are as quickly left as come to, and as many as the file has.
    file_->Charge(file_->Layout().page_size);
    std::swap(last_, entry_);
    page_.emplace(*file_, table_->Page(), next);
    if (!page_->IsLeaf()) file_->DamagedPage(next, u"follows a leaf of an index but is none");
    entry = page_->EntryAt(0);
    entry_.clear();
    if (entry) page_->Restore(*entry, entry_);
    if (entry && CompareEntries(entry_, last_) <= 0) {
      file_->DamagedPage(next,
                         u"holds index entries that belong before those of the page that "
                         u"leads to it");
    }
    if (!entry) std::swap(last_, entry_);
  }
  bounds_ = *entry;
  page_->Restore(bounds_, entry_);
  // What all entries of a page share may be thousands of times what each has of its own.
  file_->Charge(entry_.size());
}

RowId IndexCursor::Row() const {
  return LoadEntryRow(&entry_[entry_.size() - kEntryRowSize]);
}

bool IndexCursor::KeyStartsWith(Bytes prefix) const {
  const Bytes key = Key();
  return key.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), key.begin());
}

std::optional<Key> StoredKeyOfRow(const FileReader& file, const TableDefinition& table,
                                  const RealIndex& index, const RowView& row) {
  const std::vector<Value> values = IndexValuesOfRow(table, index, row);
  if (!HasEntry(index, values)) return std::nullopt;
  if (auto key = TryBuildKey(file, table, index, values)) return key;
  IndexCursor cursor(file, table, index);
  for (cursor.SeekFirst(); cursor.Valid(); cursor.Next()) {
    if (cursor.Row() == row.Id()) return Key(cursor.Key().begin(), cursor.Key().end());
  }
  file.DamagedPage(index.root, u"is the root of an index that lacks the entry of a row");
}

IndexSeek::IndexSeek(const FileReader& file, const TableDefinition& table, const RealIndex& index,
                     std::vector<uint8_t> key_prefix)
    : file_(&file),
      table_(&table),
      cursor_(file, table, index),
      prefix_(std::move(key_prefix)),
      row_(file, table) {}

bool IndexSeek::Next() {
  if (!started_) {
    cursor_.Seek(prefix_);
    started_ = true;
  } else if (cursor_.Valid()) {
    cursor_.Next();
  }
  if (!cursor_.Valid() || !cursor_.KeyStartsWith(prefix_)) return false;
  if (!FetchRow(*file_, *table_, cursor_.Row(), row_)) {
    file_->DamagedPage(cursor_.PageNumber(), u"holds an index entry of a row that is not there");
  }
  return true;
}

}  // namespace rdv::jet
