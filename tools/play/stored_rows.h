// What the site's database holds of a configuration at this moment, whatever the control shows.
#pragma once

#include <cstdint>

#include "data/connection.h"

namespace rdv::play {

// Of every slot, ordered by base slot and slot offset, lines by their number too; without rows when
// the database cannot be read. The columns are always the same, in a fixed order.
RowTable StoredLines(int16_t config);
RowTable StoredCards(int16_t config);

}  // namespace rdv::play
