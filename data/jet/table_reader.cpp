#include "data/jet/table_reader.h"

#include <utility>

namespace rdv::jet {

TableScan::TableScan(const FileReader& file, const TableDefinition& table)
    : file_(&file), table_(&table), map_(file, table.owned_map), row_(file, table) {}

bool TableScan::NextPage() {
  const auto number = map_.Next(page_number_ + 1);
  if (!number) return false;
  page_number_ = *number;
  page_.emplace(*file_, page_number_, file_->DataPage(page_number_, table_->Page()));
  slot_ = 0;
  return true;
}

bool TableScan::Next() {
  for (;;) {
    while (!page_ || slot_ >= page_->SlotCount()) {
      if (!NextPage()) {
        page_.reset();
        return false;
      }
    }
    const Slot slot = page_->At(slot_);
    const RowId id{page_number_, static_cast<uint8_t>(slot_)};
    ++slot_;
    if (slot.Hidden()) continue;
    const Bytes content = page_->Content(slot);
    row_.Reset(id, slot.Pointer() ? FollowPointer(*file_, table_->Page(), content) : content);
    return true;
  }
}

bool FetchRow(const FileReader& file, const TableDefinition& table, RowId id, RowView& row) {
  const std::optional<Bytes> content = FindRow(file, table.Page(), id);
  if (content) row.Reset(id, *content);
  return content.has_value();
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
