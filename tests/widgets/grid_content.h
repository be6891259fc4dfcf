// The grid of the forms that these tests make.
#pragma once

#include "widgets/layout.h"

namespace rdv::memory {

inline constexpr GridContent kContent = {13000, 11};

}  // namespace rdv::memory
