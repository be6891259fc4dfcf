#include "rules/dependent_choices.h"

#include <algorithm>
#include <limits>

#include "data/database.h"
#include "rules/error_report.h"
#include "rules/volume_captions.h"

namespace rdv {
namespace {

// A line stores its node's number as an Integer: a list goes no further, whatever the file says.
constexpr int32_t kHighestNumber = std::numeric_limits<int16_t>::max();

bool ModeIsAllowed(DataBase& database, Code given_line_type, Code mode_type) {
  database.Get_Line_Type_Allowed_Modes(Decimal(CardTypeFor(given_line_type)));
  Recordset& modes = database.rsGet_Line_Type_Allowed_Modes;
  bool allowed = false;
  for (; !allowed && !modes.EndOfFile(); modes.MoveNext()) {
    const Value& stored = modes.Field(u"Mode_Type_ID");
    allowed = !IsNull(stored) && Code{ToLong(stored)} == mode_type;
  }
  modes.Close();
  return allowed;
}

}  // namespace

template <typename Rule>
void DependentChoices::Choose(const ComboBox& editor, LineTypes refused, Rule&& rule) {
  MarkChanged(form_, state_);
  if (!form_.LVRDVLineConfig.SelectedItem()) return;
  const Choice choice = SelectedEntry(editor);
  ForEachWrittenRow(form_, state_, refused, [&](int row) { rule(row, choice); });
}

void DependentChoices::Write(int row, int code_column, int caption_column, const Choice& choice) {
  form_.LVRDVLineConfig.SetCell(row, code_column, Decimal(choice.code));
  form_.LVRDVLineConfig.SetCell(row, caption_column, choice.caption);
}

void DependentChoices::cmbPartition_Click() {
  Choose(form_.cmbPartition, kNotInstalledLines, [&](int row, const Choice& partition) {
    Write(row, column::kPartitionCode, column::kPartition, partition);
  });
}

void DependentChoices::cmbImpedance_Click() {
  Choose(form_.cmbImpedance, kLinesWithoutOptions, [&](int row, const Choice& impedance) {
    Write(row, column::kImpedanceCode, column::kImpedance, impedance);
  });
}

void DependentChoices::cmbSoftStop_Click() {
  Choose(form_.cmbSoftStop, kLinesWithoutOptions, [&](int row, const Choice& soft_stop) {
    Write(row, column::kSoftStopCode, column::kSoftStop, soft_stop);
  });
}

void DependentChoices::cmbNISOption_Click() {
  Choose(form_.cmbNISOption, kLinesWithoutOptions, [&](int row, const Choice& option) {
    form_.LVRDVLineConfig.SetCell(row, column::kNISOption, option.caption);
  });
}

void DependentChoices::cmbVolume_Click() {
  Choose(form_.cmbVolume, kNotInstalledLines, [&](int row, const Choice& volume) {
    if (const auto shown = AcceptedVolume(LineTypeOf(form_.LVRDVLineConfig, row), volume)) {
      Write(row, column::kVolumeCode, column::kVolume, {volume.code, *shown});
    }
  });
}

void DependentChoices::cmbLineType_Click() {
  Choose(form_.cmbLineType, kNoLineTypes, [&](int row, const Choice& chosen) {
    if (LineTypeOf(form_.LVRDVLineConfig, row) == chosen.code) return;
    // The templates are given the row's position, also where the line's own number is another.
    // There is none for an impedance line: such a row keeps its line type.
    const auto position = static_cast<int16_t>(row);
    switch (chosen.code) {
      case line_type::kNotInstalled:
        templates_.LoadDefaultNotInstalledLine(position, Target::ExistingRow);
        break;
      case line_type::kHybrid:
        templates_.LoadDefaultHybrideLine(position, Target::ExistingRow, Store::No);
        break;
      case line_type::kMusicOnHold:
        templates_.LoadDefaultMOHLine(position, Target::ExistingRow, Store::No);
        break;
    }
  });
}

void DependentChoices::ShowModeNumberFor(Code mode_type) {
  ComboBox& mode = form_.cmbModeType;
  ComboBox& number = form_.cmbModeNumber;
  const bool takes_number = Contains(ModeTypesWithNumber, mode_type);
  if (takes_number && !number.Visible()) {
    mode.SetWidth(number.Width());
    number.SetVisible(true);
  } else if (!takes_number && number.Visible()) {
    if (mode.Width() > number.Width()) {
      const int32_t half = RoundToInt32(mode.Width()) / 2;
      mode.SetWidth(half);
    } else {
      mode.SetWidth(mode.Width() + number.Width());
    }
    number.SetVisible(false);
  }
}

// Goes on without a selected row, for the sake of the editors.
void DependentChoices::cmbModeType_Click() {
  EndSilently([&] {
    MarkChanged(form_, state_);
    LineGrid& grid = form_.LVRDVLineConfig;
    const Choice mode = SelectedEntry(form_.cmbModeType);
    ShowModeNumberFor(mode.code);
    DataBase database;
    ForEachWrittenRow(form_, state_, kNotInstalledLines, [&](int row) {
      if (!ModeIsAllowed(database, LineTypeOf(grid, row), mode.code)) return;
      const Text shown = form_.cmbModeNumber.Visible()
                             ? mode.caption + u"=" + grid.Cell(row, column::kModeNumber)
                             : mode.caption;
      Write(row, column::kModeType, column::kMode, {mode.code, shown});
    });
  });
}

void DependentChoices::cmbModeNumber_Click() {
  LineGrid& grid = form_.LVRDVLineConfig;
  Choose(form_.cmbModeNumber, kLinesWithoutOptions, [&](int row, const Choice& number) {
    // Whether there is a number is asked of the editor, which mode it belongs to of the row.
    if (!Contains(ModeTypesWithNumber, SelectedEntry(form_.cmbModeType).code)) return;
    grid.SetCell(row, column::kModeNumber, Decimal(number.code));
    const Text& mode = state_.ModeNames.Item(grid.Cell(row, column::kModeType));
    grid.SetCell(row, column::kMode, mode + u"=" + number.caption);
  });
}

void DependentChoices::cmbStartingNodeNumber_Click() {
  LineGrid& grid = form_.LVRDVLineConfig;
  Choose(form_.cmbStartingNodeNumber, kNotInstalledLines, [&](int row, const Choice& number) {
    const Text node_type = grid.Cell(row, column::kStartingNodeType);
    if (CodeIn(node_type) == node_type::kNone) return;
    grid.SetCell(row, column::kStartingNodeNumber, Decimal(number.code));
    const Text& node = state_.NodeNames.Item(node_type);
    grid.SetCell(row, column::kStartingNode, node + u" " + number.caption);
  });
}

void DependentChoices::cmbStartingNodeName_Click() {
  EndSilently([&] {
    MarkChanged(form_, state_);
    LineGrid& grid = form_.LVRDVLineConfig;
    if (!grid.SelectedItem()) return;
    const Choice node = SelectedEntry(form_.cmbStartingNodeName);
    OfferNodeNumbersFor(node.code);
    ForEachWrittenRow(form_, state_, kNotInstalledLines, [&](int row) {
      if (!Contains(StartNodeTypesOf(LineTypeOf(grid, row)), node.code)) return;
      const Text shown = node.code == node_type::kNone
                             ? node.caption
                             : node.caption + u" " + grid.Cell(row, column::kStartingNodeNumber);
      Write(row, column::kStartingNodeType, column::kStartingNode, {node.code, shown});
    });
  });
}

// Asks for the partition that the host works in, whatever partition the line is given.
void DependentChoices::OfferNodeNumbersFor(Code node_type) {
  ComboBox& name = form_.cmbStartingNodeName;
  ComboBox& number = form_.cmbStartingNodeNumber;
  DataBase database;
  database.Get_Max_NodeNumber(Decimal(state_.BusinessRules.ConfigID),
                              Decimal(state_.BusinessRules.PartitionID), Decimal(node_type));
  Recordset& record = database.rsGet_Max_NodeNumber;
  if (!record.EndOfFile()) {
    if (!number.Visible()) {
      name.SetWidth(number.Width());
      number.SetVisible(true);
    }
    const int32_t maximum = std::min(ToLong(record.Field(u"Max_Number")), kHighestNumber);
    if (number.ListCount() != maximum) {
      number.Clear();
      for (int entry = 1; entry <= maximum; ++entry) number.AddItem(Decimal(entry), entry);
      SelectNodeNumber();
    }
  } else if (number.Visible()) {
    name.SetWidth(name.Width() + number.Width());
    number.SetVisible(false);
  }
  record.Close();
}

// The number is compared with the last one as text, so "9" counts as beyond "16".
void DependentChoices::SelectNodeNumber() {
  LineGrid& grid = form_.LVRDVLineConfig;
  ComboBox& list = form_.cmbStartingNodeNumber;
  const int last = list.ListCount() - 1;
  const Text last_number = list.List(last);
  const Text current = grid.Cell(grid.SelectedItem().value(), column::kStartingNodeNumber);
  if (CDbl(current) > 0 && current <= last_number) {
    list.SetListIndex(CLng(current) - 1);
  } else {
    list.SetListIndex(last);
  }
}

void DependentChoices::cmbModeNumber_Change() {
  FilterTypedNumber(form_.cmbModeNumber);
}

void DependentChoices::cmbStartingNodeNumber_Change() {
  FilterTypedNumber(form_.cmbStartingNodeNumber);
}

namespace {

struct NumberRange {
  double first;
  double last;
  bool Holds(double number) const { return first <= number && number <= last; }
};

// Of a list's captions; a list without entries has room for no number.
NumberRange RangeOf(const ComboBox& list) {
  if (list.ListCount() == 0) return {1, 0};
  return {CDbl(list.List(0)), CDbl(list.List(list.ListCount() - 1))};
}

// The digits that `text` begins with, up to the one that would leave the range.
int64_t LeadingNumber(TextView text, const NumberRange& range) {
  int64_t value = 0;
  for (const char16_t unit : text) {
    if (!IsDigit(unit)) break;
    const int64_t next = value * 10 + (unit - u'0');
    if (!range.Holds(static_cast<double>(next))) break;
    value = next;
  }
  return value == 0 ? 1 : value;
}

}  // namespace

void DependentChoices::FilterTypedNumber(ComboBox& editor) {
  MarkChanged(form_, state_);
  const NumberRange range = RangeOf(editor);
  const int64_t value = LeadingNumber(editor.Text(), range);
  const Text cleaned = Decimal(value);
  if (cleaned != editor.Text()) editor.SetText(cleaned);
  if (editor.ListCount() > 0) {
    // The entries count from 1 without a gap.
    editor.SetListIndex(range.Holds(static_cast<double>(value)) ? static_cast<int>(value - 1) : 0);
  }
  editor.SetCaret(editor.Text().size());
}

}  // namespace rdv
