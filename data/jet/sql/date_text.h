// Dates written as text.
#pragma once

#include <optional>

#include "runtime/text.h"

namespace rdv::jet::sql {

// Days since 1899-12-30 (see DateTime), for
//
//   2011-03-14, 2011-03-14 15:09, 2011-03-14T15:09:26, 2011-03-14 15:09:26.250
//   3/14/2011, 3/14/2011 3:09:26 PM   month first, unless that is no month
//   15:09, 15:09:26, 3:09 PM          the time alone
//
// Years of two digits are 1930 to 2029. Nothing for any other text and for dates outside the years
// 100 to 9999.
std::optional<double> ParseDateText(TextView text);

// Whether the days lie in the years 100 to 9999.
bool IsDateInRange(double days);

}  // namespace rdv::jet::sql
