// A grid row as the line record that the database stores.
#pragma once

#include "data/database.h"
#include "rules/grid_rows.h"

namespace rdv {

// The arguments of Update_All_Lines and Insert_All_Lines for a row: codes from the hidden columns,
// names from the captions. An option whose caption is "Disabled" or "N/A", in any case of letters,
// is stored as 0, and so are the reserved fields.
LineArguments LineArgumentsOf(const RowCells& cells, int16_t ConfigID, TextView ACD_Option);

}  // namespace rdv
