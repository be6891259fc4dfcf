// The two switches that the control reads from the suite's settings file "ORVANTPlus.ini".
#pragma once

#include <functional>

#include "runtime/text.h"

namespace rdv {

// Shows one message to the user: an OK button, no icon, no title of its own.
using MessageReporter = std::function<void(TextView message)>;

// The caption to show for a volume on a music-on-hold line; the caption itself when the file does
// not list it. On a failure: reports it and returns "".
Text GetMOHVolumeCaptionfromINI(const Text& caption, const MessageReporter& report);

// False when the switch is absent or "N" in either case, true for anything else, an empty value
// included. On a failure: reports it and returns false.
bool GetHasImplementedImpedanceForChinaFromINI(const MessageReporter& report);

}  // namespace rdv
