// Why the user cannot do something to the form as it stands. Whatever the widgets are made of, the
// same action is refused for the same reason.
#pragma once

#include <optional>

#include "runtime/text.h"

namespace rdv {

// Nothing = the action was done.
using Refusal = std::optional<TextView>;

namespace refusal {
inline constexpr TextView kHidden = u"not visible";
inline constexpr TextView kDisabled = u"disabled";
inline constexpr TextView kNoSuchEntry = u"no such entry";
inline constexpr TextView kNotTypeable = u"takes no typed text";
inline constexpr TextView kNoSuchRow = u"no such row";
inline constexpr TextView kNoSuchColumn = u"no such column";
inline constexpr TextView kOutsideGrid = u"outside the visible grid";
}  // namespace refusal

}  // namespace rdv
