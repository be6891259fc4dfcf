// How a failing procedure tells the user: either its block is collected while the control loads
// and shown with all others at the end, or it is shown at once. The log of failures has both.
#pragma once

#include "data/settings_file.h"
#include "rules/control_state.h"
#include "runtime/error.h"
#include "widgets/widget.h"

namespace rdv {

inline constexpr TextView kErrorTitle = u"Error";

// "Error Description:" DESCRIPTION, a line break, "Error Source: " SOURCE " - " PROCEDURE.
Text ErrorBlock(const RuntimeError& error, TextView procedure);

// Where the block of a loading step starts: some begin a line, the others run on from the block
// before.
enum class BlockStart { RunOn, OnALineOfItsOwn };

// The block of a loading step, appended to the text that ShowControl shows.
void AppendErrorBlock(ControlState& state, const RuntimeError& error, TextView procedure,
                      BlockStart start);

// One plain box, with nothing but OK and without a title of its own.
void ShowPlainMessage(Screen& screen, TextView text);
void ShowErrorBlock(Screen& screen, const RuntimeError& error, TextView procedure);

// For the readers of the settings file.
MessageReporter PlainReporter(Screen& screen);

// Runs a loading step: true when it finished, false when an error stopped it and is on record.
template <typename Body>
bool RunLoader(ControlState& state, TextView procedure, BlockStart start, Body&& body) {
  try {
    body();
    return true;
  } catch (const RuntimeError& error) {
    AppendErrorBlock(state, error, procedure, start);
    return false;
  }
}

template <typename Body>
bool RunLoader(ControlState& state, TextView procedure, Body&& body) {
  return RunLoader(state, procedure, BlockStart::RunOn, body);
}

// Runs a procedure that reports at once: true when it finished.
template <typename Body>
bool RunReporting(Screen& screen, TextView procedure, Body&& body) {
  try {
    body();
    return true;
  } catch (const RuntimeError& error) {
    ShowErrorBlock(screen, error, procedure);
    return false;
  }
}

// Runs a procedure whose failures nobody is told of: what it had not yet done stays undone.
template <typename Body>
void EndSilently(Body&& body) {
  try {
    body();
  } catch (const RuntimeError&) {
    // Nothing: the procedure is over, whoever raised its event goes on.
  }
}

}  // namespace rdv
