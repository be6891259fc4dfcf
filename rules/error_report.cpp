#include "rules/error_report.h"

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
  state.LoadErrorText.append(ErrorBlock(error, procedure));
}

void ShowPlainMessage(Screen& screen, TextView text) {
  screen.ShowMessage(text, message_style::kPlain, std::nullopt);
}

void ShowErrorBlock(Screen& screen, const RuntimeError& error, TextView procedure) {
  ShowPlainMessage(screen, ErrorBlock(error, procedure));
}

MessageReporter PlainReporter(Screen& screen) {
  return [&screen](TextView message) { ShowPlainMessage(screen, message); };
}

}  // namespace rdv
