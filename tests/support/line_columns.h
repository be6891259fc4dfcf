// The columns of a stored line, in the order of the parameters of Insert_All_Lines and
// Update_All_Lines: as the control needs them, those by which a line is found behind the others.
#pragma once

#include <algorithm>
#include <array>

#include "data/needed_tables.h"
#include "runtime/text.h"

namespace rdv {

inline const std::array<TextView, 24> kLineColumns = [] {
  constexpr size_t kKeys = 4;
  std::array<TextView, 24> columns;
  const std::span<const TextView> needed = ColumnsOf(u"Used_Lines");
  std::rotate_copy(needed.begin(), needed.begin() + kKeys, needed.end(), columns.begin());
  return columns;
}();

}  // namespace rdv
