// The log of failures, for whoever looks into why something failed on a machine. It is the system's
// own: on Windows what OutputDebugString gets, which a debugger or a viewer of such lines shows;
// elsewhere that of syslog, as a warning of the user's programs. Users are told elsewhere.
#pragma once

#include "runtime/text.h"

namespace rdv {

// Takes one line without a line break. Never raises.
using FailureLog = void (*)(TextView line);

// One line: "TLV_RDV_Line_Config: " and the failure, line breaks as blanks; behind it, in round
// brackets, which variables of the environment change what the product does. Called on any thread.
void LogFailure(TextView failure);

// Has the lines go to another log, null for the system's; gives the one before. For tests, on one
// thread.
FailureLog ReplaceFailureLog(FailureLog log);

}  // namespace rdv
