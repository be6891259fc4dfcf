#include "data/jet/rows/table_scan.h"

namespace rdv::jet {
namespace {

// So many pages are known to the page source before they are read.
constexpr size_t kPagesAhead = 16;

}  // namespace

TableScan::TableScan(const FileReader& file, const TableDefinition& table)
    : file_(&file), table_(&table), map_(file, table.owned_map), row_(file, table) {}

void TableScan::SkipOtherThan(const Column& column, const Value& value) {
  const auto* integer = std::get_if<int16_t>(&value);
  const auto* long_integer = std::get_if<int32_t>(&value);
  if (!column.fixed || (!integer && !long_integer)) return;
  skip_at_ = file_->Layout().row.count_size + size_t{column.fixed_offset};
  skip_number_ = static_cast<uint32_t>(integer ? *integer : *long_integer);
  skip_mask_ = integer ? 0xFFFF : 0xFFFFFFFF;
}

bool TableScan::NextPage() {
  if (page_) file_->GiveBack(page_number_);
  page_.reset();
  if (++place_ >= pages_.size()) LookAhead();
  if (pages_.empty()) return false;
  page_number_ = pages_[place_];
  const auto next = std::span(pages_).subspan(place_ + 1);
  page_.emplace(*file_, page_number_, file_->DataPageInPassing(page_number_, table_->Page(), next));
  slot_ = 0;
  return true;
}

void TableScan::LookAhead() {
  pages_.clear();
  place_ = 0;
  for (uint32_t from = page_number_ + 1; pages_.size() < kPagesAhead; from = pages_.back() + 1) {
    const auto number = map_.Next(from);
    if (!number) return;
    pages_.push_back(*number);
  }
}

bool TableScan::NextSlot() {
  for (;;) {
    if (page_ && skip_mask_ != 0)
      slot_ = page_->FirstThatMayHave(skip_number_, skip_mask_, skip_at_, slot_);
    if (page_ && slot_ < page_->SlotCount()) return true;
    if (!NextPage()) return false;
  }
}

bool TableScan::Next() {
  while (NextSlot()) {
    // Whoever goes on after an error goes on behind this row.
    const size_t place = slot_++;
    const Slot slot = page_->At(place);
    const RowId id{page_number_, static_cast<uint8_t>(place)};
    if (slot.Hidden()) continue;
    Bytes content = page_->Content(slot);
    if (slot.Pointer()) content = FollowPointer(*file_, table_->Page(), content);
    row_.Reset(id, content);
    return true;
  }
  return false;
}

bool FetchRow(const FileReader& file, const TableDefinition& table, RowId id, RowView& row) {
  const std::optional<Bytes> content = FindRow(file, table.Page(), id);
  if (content) row.Reset(id, *content);
  return content.has_value();
}

}  // namespace rdv::jet
