#include "rules/error_report.h"

#include <algorithm>
#include <array>

namespace rdv {
namespace {

constexpr std::array<TextView, 4> kProceduresOnALineOfTheirOwn = {
    u"FormatLVControl",
    u"Load_List_of_All_Card_Types",
    u"Load_List_of_All_Node_Names",
    u"Load_List_of_All_mode_Names",
};

}  // namespace

Text ErrorBlock(const RuntimeError& error, TextView procedure) {
  return Text(u"Error Description:")
      .append(error.Description())
      .append(kLineBreak)
      .append(u"Error Source: ")
      .append(error.Source())
      .append(u" - ")
      .append(procedure);
}

void AppendErrorBlock(ControlState& state, const RuntimeError& error, TextView procedure) {
  if (std::find(kProceduresOnALineOfTheirOwn.begin(), kProceduresOnALineOfTheirOwn.end(),
                procedure) != kProceduresOnALineOfTheirOwn.end()) {
    state.LoadErrorText.append(kLineBreak);
  }
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
