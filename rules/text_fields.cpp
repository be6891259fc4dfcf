#include "rules/text_fields.h"

#include <algorithm>
#include <utility>

#include "rules/error_report.h"
#include "rules/grid_rows.h"

namespace rdv {
namespace {

Text DigitsOf(TextView text) {
  Text digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits), IsDigit);
  return digits.empty() ? Text(u"0") : digits;
}

}  // namespace

TextFields::TextFields(const Form& form, const ControlState& state,
                       LabelValidatorFactory make_label_validator)
    : form_(form), state_(state), make_label_validator_(std::move(make_label_validator)) {}

void TextFields::txtEWTOption_Change() {
  if (state_.OpensByKeyboard) return;
  MarkChanged(form_, state_);
  LineGrid& grid = form_.LVRDVLineConfig;
  TextBox& box = form_.txtEWTOption;
  if (!grid.SelectedItem()) return;

  const Text digits = DigitsOf(box.Text());
  if (digits != box.Text()) box.SetText(digits);

  ForEachSelectedRow(grid, kLinesWithoutOptions, [&](int row) {
    const Text option = box.Text();
    grid.SetCell(row, column::kEWTOption,
                 CLng(option) != 0 ? TextView{option} : caption::kDisabled);
  });
}

void TextFields::txtLabel_Change() {
  if (state_.OpensByKeyboard) return;
  EndSilently([&] {
    MarkChanged(form_, state_);
    LineGrid& grid = form_.LVRDVLineConfig;
    if (!grid.SelectedItem()) return;

    // Kept to the end: an outside component may go with the last of its objects, in the middle of
    // the change that rejecting the label raises.
    const std::unique_ptr<LabelValidator> validator = make_label_validator_();
    if (!validator->IsAcceptable(form_.txtLabel.Text())) RejectLabel();

    ForEachSelectedRow(grid, kNotInstalledLines,
                       [&](int row) { grid.SetCell(row, column::kLabel, form_.txtLabel.Text()); });
  });
}

void TextFields::RejectLabel() {
  form_.screen.ShowMessage(
      u"Double quotes and continuous single quotes are not allowed in the Label field",
      message_style::kInformation, u"Information");
  TextBox& box = form_.txtLabel;
  const Text rejected = box.Text();
  const Text cleaned = CleanLabel(rejected);
  if (cleaned == rejected) return;
  const Text kept_before_caret = CleanLabel(TextView{rejected}.substr(0, box.Caret()));
  box.SetText(cleaned);
  box.SetCaret(kept_before_caret.size());
}

Text CleanLabel(TextView label) {
  Text cleaned;
  int run = 0;
  for (const char16_t unit : label) {
    if (unit == u'"') continue;
    if (unit == u'\'') {
      if (run + 1 >= 2) continue;
      ++run;
    } else if (run > 0) {
      --run;
    }
    cleaned.push_back(unit);
  }
  return cleaned;
}

}  // namespace rdv
