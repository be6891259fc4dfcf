#include "rules/error_report.h"

#include "runtime/failure_log.h"

namespace rdv {

Text ErrorBlock(const RuntimeError& error, TextView procedure) {
  return Text(u"Error Description:")
      .append(error.Description())
      .append(kLineBreak)
      .append(u"Error Source: ")
      .append(error.Source())
      .append(u" - ")
      .append(procedure);
}

void AppendErrorBlock(ControlState& state, const RuntimeError& error, TextView procedure,
                      BlockStart start) {
  if (start == BlockStart::OnALineOfItsOwn) state.LoadErrorText.append(kLineBreak);
  const Text block = ErrorBlock(error, procedure);
  state.LoadErrorText.append(block);
  LogFailure(block);
}

void ShowPlainMessage(Screen& screen, TextView text) {
  screen.ShowMessage(text, message_style::kPlain, std::nullopt);
}

void ShowErrorBlock(Screen& screen, const RuntimeError& error, TextView procedure) {
  const Text block = ErrorBlock(error, procedure);
  LogFailure(block);
  ShowPlainMessage(screen, block);
}

MessageReporter PlainReporter(Screen& screen) {
  return [&screen](TextView message) { ShowPlainMessage(screen, message); };
}

}  // namespace rdv
