#include "data/jet/rows/usage_map.h"

#include <algorithm>

#include "data/jet/format/bits.h"
#include "data/jet/rows/data_page.h"

namespace rdv::jet {

UsageMap::UsageMap(const FileReader& file, RowId row, uint32_t owner) : file_(&file) {
  if (!row) return;
  row_ = RequireRow(file, owner, row);
  const bool is_inline = row_.size() >= kMapInlineBits && row_[0] == kMapInline;
  const bool is_reference = !row_.empty() && row_[0] == kMapReference;
  if (!is_inline && !is_reference) {
    file.DamagedPage(row.page, u"holds a map of pages of an unknown kind");
  }
}

size_t UsageMap::ReferenceCount() const {
  return (row_.size() - kMapReferences) / kMapReferenceSize;
}

uint32_t UsageMap::Reference(size_t position) const {
  return Load32(&row_[kMapReferences + position * kMapReferenceSize]);
}

std::optional<uint32_t> UsageMap::NextIn(Bytes bits, uint32_t first_page, uint32_t from) const {
  const size_t bit = from > first_page ? from - first_page : 0;
  const auto found = LowestBit(bits, bit);
  if (!found || uint64_t{first_page} + *found >= file_->PageCount()) return std::nullopt;
  return static_cast<uint32_t>(first_page + *found);
}

std::optional<uint32_t> UsageMap::Next(uint32_t from) const {
  if (row_.empty()) return std::nullopt;
  if (row_[0] == kMapInline) {
    return NextIn(row_.subspan(kMapInlineBits), Load32(&row_[kMapFirstPage]), from);
  }
  const uint32_t covered = file_->Layout().PagesPerMapPage();
  for (size_t i = from / covered; i < ReferenceCount(); ++i) {
    const uint64_t first_page = uint64_t{i} * covered;
    if (first_page >= file_->PageCount()) break;
    const uint32_t map_page = Reference(i);
    if (map_page == 0) continue;
    const Bytes bits = file_->Page(map_page, PageType::UsageMap).subspan(kMapPageBits);
    if (const auto page = NextIn(bits, static_cast<uint32_t>(first_page), from)) return page;
  }
  return std::nullopt;
}

bool UsageMap::Contains(uint32_t page) const {
  return Next(page) == page;
}

std::vector<uint32_t> UsageMap::Pages() const {
  std::vector<uint32_t> pages;
  for (auto page = Next(0); page; page = Next(*page + 1)) pages.push_back(*page);
  return pages;
}

std::vector<uint32_t> UsageMap::MapPages() const {
  std::vector<uint32_t> pages;
  if (row_.empty() || row_[0] != kMapReference) return pages;
  for (size_t i = 0; i < ReferenceCount(); ++i) {
    if (Reference(i) != 0) pages.push_back(Reference(i));
  }
  return pages;
}

}  // namespace rdv::jet
