// How the readers of the settings file report a failure to the user, and to the log of failures.
#pragma once

#include "data/settings_file.h"
#include "runtime/error.h"
#include "runtime/failure_log.h"
#include "runtime/text.h"

namespace rdv {

// Runs a procedure. When it raises, reports the procedure's name, always with three blanks behind
// it, and on a line of its own the error's description; gives `on_failure` then.
template <typename Result, typename Procedure>
Result ReportingFailure(TextView name, const MessageReporter& report, Result on_failure,
                        Procedure procedure) {
  try {
    return procedure();
  } catch (const RuntimeError& error) {
    const Text message =
        u"ERROR_Handler: " + Text(name) + u"   " + Text(kLineBreak) + error.Description();
    LogFailure(message);
    report(message);
    return on_failure;
  }
}

}  // namespace rdv
