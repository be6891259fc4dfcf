// A stored line record as the grid shows it.
#pragma once

#include <cstdint>
#include <optional>

#include "rules/control_state.h"
#include "rules/grid_rows.h"
#include "widgets/widget.h"

namespace rdv {

class Recordset;

// The line type of the current record; nothing for one that is none of those on offer: such a line
// is shown as one of the line before it.
std::optional<Code> StoredLineType(const Recordset& line);

// The row of the current record as a line of that type, which is not the one of a line that is not
// installed. Raises 5 for a code that has no name and 94 for a number that is Null; failures of the
// settings file are shown on the screen.
RowCells CellsOfStoredLine(const Recordset& line, Code line_type, const ControlState& state,
                           Screen& screen);

// What the grid shows for stored codes. Raise 5 for a code without a name.
Text StoredStartingNodeCaption(Code node_type, int16_t number, const ControlState& state);
Text StoredModeCaption(Code mode_type, int16_t number, const ControlState& state);

}  // namespace rdv
