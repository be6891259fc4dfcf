#include <algorithm>

#include "data/jet/check/check_parts.h"

namespace rdv::jet {
PageOwners::PageOwners(const FileReader& file, CheckReport& report)
    : file_(file), report_(report), claims_(file.PageCount(), Claim::Nobody) {
  ClaimPage(0, 0);
  ClaimPage(kGlobalMapPage, 0);
  for (const RowId map : {kFreePages, kPendingPages}) {
    for (const uint32_t page : UsageMap(file, map, kOwnerGlobalMaps).MapPages()) ClaimPage(page, 0);
  }
}

void PageOwners::ClaimPage(uint32_t page, uint32_t table) {
  if (page >= claims_.size()) {
    Report(report_, {.kind = FindingKind::DamagedStructure,
                     .page = page,
                     .table = table,
                     .text = u"Page " + Decimal(page) + u" is behind the end of the file"});
    return;
  }
  if (claims_[page] != Claim::Nobody) {
    Report(report_, {.kind = FindingKind::OwnedTwice,
                     .page = page,
                     .table = table,
                     .text = u"Page " + Decimal(page) + u" is used for two purposes"});
  }
  claims_[page] = Claim::Owned;
}

void PageOwners::ClaimMapRows(RowId map, uint32_t table) {
  if (!map) return;
  for (const uint32_t page : UsageMap(file_, map).MapPages()) ClaimPage(page, table);
  if (map.page < claims_.size() && claims_[map.page] == Claim::MapRows) return;
  ClaimPage(map.page, table);
  if (map.page < claims_.size()) claims_[map.page] = Claim::MapRows;
}

void PageOwners::ClaimMap(RowId map, uint32_t table) {
  if (!map) return;
  for (const uint32_t page : UsageMap(file_, map).Pages()) ClaimPage(page, table);
}

void PageOwners::CompareWithFreeMap() {
  const UsageMap free(file_, kFreePages, kOwnerGlobalMaps);
  const UsageMap pending(file_, kPendingPages, kOwnerGlobalMaps);
  const Bytes row = RequireMap(file_, kFreePages, kOwnerGlobalMaps);
  // Pages that the file grows by come right behind its end, and need a place in the map.
  if (row[0] == kMapInline && Load32(row.data() + kMapFirstPage) > claims_.size()) {
    Report(report_, {.kind = FindingKind::DamagedStructure,
                     .page = kGlobalMapPage,
                     .text = u"The map of free pages starts behind the end of the file"});
  }
  std::vector<bool> marked(claims_.size(), false);
  for (const uint32_t page : free.Pages()) marked[page] = true;
  for (uint32_t page = 0; page < claims_.size(); ++page) {
    const bool owned = claims_[page] != Claim::Nobody;
    if (marked[page] && !owned) ++report_.free_pages;
    if (marked[page] && owned) {
      Report(report_, {.kind = FindingKind::OwnedPageFree,
                       .page = page,
                       .text = u"Page " + Decimal(page) + u" is in use but marked as free"});
    }
    if (!marked[page] && !owned && !pending.Contains(page)) {
      Report(report_, {.kind = FindingKind::LeakedPage,
                       .page = page,
                       .text = u"Page " + Decimal(page) + u" is marked as used but nobody's"});
    }
  }
}

}  // namespace rdv::jet
