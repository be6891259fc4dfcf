#include "data/jet/rows/usage_map.h"

#include <algorithm>

#include "data/jet/format/bits.h"
#include "data/jet/rows/data_page.h"

namespace rdv::jet {

size_t MapReferenceCount(const Format& format, Bytes row) {
  const size_t covered = format.PagesPerMapPage();
  const size_t most = (format.PagesOfLargestFile() + covered - 1) / covered;
  return std::min(most, (row.size() - kMapReferences) / kMapReferenceSize);
}

uint32_t MapReference(Bytes row, size_t position) {
  return Load32(&row[kMapReferences + position * kMapReferenceSize]);
}

Bytes RequireMap(const FileReader& file, RowId map, uint32_t owner) {
  const Bytes row = RequireRow(file, owner, map);
  const auto fail = [&](TextView what) { file.DamagedPage(map.page, what); };
  if (row.size() <= kMapInlineBits || (row[0] != kMapInline && row[0] != kMapReference))
    fail(u"holds a map of pages of an unknown kind");
  if (row[0] == kMapInline) {
    if (Load32(&row[kMapFirstPage]) > file.Layout().PagesOfLargestFile())
      fail(u"holds a map of pages that no file has");
    return row;
  }
  for (size_t i = 0; i < MapReferenceCount(file.Layout(), row); ++i) {
    const uint32_t page = MapReference(row, i);
    if (page == 0) continue;
    if (page >= file.PageCount()) fail(u"holds a map whose pages are outside of the file");
    for (size_t before = 0; before < i; ++before) {
      if (MapReference(row, before) == page) fail(u"holds a map with one page in two places");
    }
  }
  return row;
}

UsageMap::UsageMap(const FileReader& file, RowId row, uint32_t owner) : file_(&file) {
  if (row) row_ = RequireMap(file, row, owner);
}

size_t UsageMap::ReferenceCount() const {
  return MapReferenceCount(file_->Layout(), row_);
}

uint32_t UsageMap::Reference(size_t position) const {
  return MapReference(row_, position);
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
