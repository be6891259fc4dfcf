// What is shown for the volume of a line. It depends on where the volume comes from.
#pragma once

#include <optional>

#include "rules/editors.h"
#include "widgets/widget.h"

namespace rdv {

// Offered in the list of an editor.
Text OfferedVolumeCaption(Code volume, Code line_type, Screen& screen);

// In the grid, as read from the database or given to a new line.
Text StoredVolumeCaption(Code volume, Code line_type, Screen& screen);

// In the grid, chosen in the editor; nothing where a line of that type does not take it.
std::optional<Text> AcceptedVolume(Code line_type, const Choice& volume);

}  // namespace rdv
