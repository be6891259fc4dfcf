#include "tools/lines/unit_editor.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "rules/line_codes.h"
#include "rules/volume_captions.h"
#include "runtime/conversion.h"
#include "runtime/error.h"
#include "tools/lines/columns.h"
#include "tools/lines/text_table.h"
#include "tools/lines/unit.h"

namespace rdv::lines {
namespace {

// All rows of any unit and all columns are in sight.
constexpr Size kRoom = {60000, 20'000'000};

// "the list has A, B, C", the longest lists by their ends.
Text Entries(const memory::MemoryComboBox& list) {
  constexpr int kAll = 16;
  constexpr int kBeginning = 3;
  if (list.ListCount() == 0) return u"the list is empty";
  Text text = u"the list has ";
  for (int entry = 0; entry < list.ListCount(); ++entry) {
    const bool skips = list.ListCount() > kAll && entry == kBeginning;
    if (skips) entry = list.ListCount() - 1;
    if (entry > 0) text += skips ? u" ... " : u", ";
    text += list.List(entry);
  }
  return text;
}

std::optional<int> EntryOf(const memory::MemoryComboBox& list, TextView caption) {
  for (int entry = 0; entry < list.ListCount(); ++entry) {
    if (list.List(entry) == caption) return entry;
  }
  return std::nullopt;
}

bool IsWholeNumber(TextView text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

constexpr int16_t kLargestStoredNumber = std::numeric_limits<int16_t>::max();

bool FitsAStoredNumber(const Text& digits) {
  try {
    return CInt(digits) <= kLargestStoredNumber;
  } catch (const RuntimeError&) {
    return false;
  }
}

// A cell of two lists: a name with its separator before the number.
struct Pair {
  memory::MemoryComboBox& names;
  memory::MemoryComboBox& numbers;
  int name_code;  // columns
  int number_code;
  char16_t separator;
};

struct NameAndNumber {
  std::optional<Text> name;
  std::optional<Text> number;
};

NameAndNumber Split(const Pair& pair, const Text& value) {
  if (EntryOf(pair.names, value)) return {value, std::nullopt};
  if (IsWholeNumber(value)) return {std::nullopt, value};
  const size_t at = value.rfind(pair.separator);
  if (at != Text::npos && IsWholeNumber(TextView(value).substr(at + 1))) {
    return {value.substr(0, at), value.substr(at + 1)};
  }
  return {value, std::nullopt};
}

}  // namespace

UnitEditor::UnitEditor(size_t longest_label)
    : longest_label_(longest_label), form_(kGridContent, kRoom), control_(form_.Widgets()) {}

void UnitEditor::Show(int16_t config) {
  const bool shown = control_.ShowControl(config);
  const Text messages = TakeMessages();
  if (!shown || !messages.empty()) throw std::runtime_error(ToUtf8(messages));
}

Text UnitEditor::TakeMessages() {
  return InOneLine(form_.screen.TakeMessages());
}

std::vector<RowCells> UnitEditor::Rows() const {
  std::vector<RowCells> rows;
  for (int row = 1; row <= form_.LVRDVLineConfig.RowCount(); ++row) rows.push_back(Cells(row));
  return rows;
}

std::optional<int> UnitEditor::RowOf(int line) const {
  const Text wanted = Decimal(line);
  for (int row = 1; row <= form_.LVRDVLineConfig.RowCount(); ++row) {
    if (Cell(row, column::kLine) == wanted) return row;
  }
  return std::nullopt;
}

WhyRefused UnitEditor::Choose(int row, int column, const Text& value) {
  if (column == column::kLine) return Text(u"the number of a line does not change");
  if (column == column::kLineType) {
    return Text(u"the type of a line is never chosen in place; restore the unit to another type");
  }
  const RowCells before = Cells(row);
  if (before[column::kLineTypeCode] == Decimal(line_type::kNotInstalled)) {
    return Text(u"the line is not installed");
  }
  if (const Refusal refused = form_.LVRDVLineConfig.UserClickCell(row, column)) {
    return Text(*refused);
  }
  WhyRefused why = ChooseOpened(row, column, value);
  TakeMessages();
  // Opening the editor may already have written what it offers first.
  if (why) OverwriteRow(form_.LVRDVLineConfig, row, before);
  return why;
}

WhyRefused UnitEditor::ChooseOpened(int row, int column, const Text& value) {
  switch (column) {
    case column::kPartition:
      return Pick(row, column, form_.cmbPartition, value);
    case column::kVolume:
      return Pick(row, column, form_.cmbVolume, ListedVolume(row, value).value_or(value));
    case column::kNISOption:
      return Pick(row, column, form_.cmbNISOption, value);
    case column::kImpedance:
      return Pick(row, column, form_.cmbImpedance, value);
    case column::kSoftStop:
      return Pick(row, column, form_.cmbSoftStop, value);
    case column::kEWTOption:
      return Write(row, column, form_.txtEWTOption, value);
    case column::kLabel:
      return Write(row, column, form_.txtLabel, value);
    default:
      return PickPair(row, column, value);
  }
}

bool UnitEditor::Shows(int row, int column, const Text& value) {
  if (Cell(row, column) == value) return true;
  return column == column::kVolume &&
         StoredVolumeCaption(Code{CLng(Cell(row, column::kVolumeCode))},
                             Code{CLng(Cell(row, column::kLineTypeCode))}, form_.screen) == value;
}

std::optional<Text> UnitEditor::ListedVolume(int row, const Text& shown) {
  const memory::MemoryComboBox& list = form_.cmbVolume;
  if (EntryOf(list, shown)) return std::nullopt;
  for (int entry = 0; entry < list.ListCount(); ++entry) {
    const Code volume{list.ItemData(entry)};
    if (StoredVolumeCaption(volume, Code{CLng(Cell(row, column::kLineTypeCode))}, form_.screen) ==
        shown)
      return list.List(entry);
  }
  return std::nullopt;
}

WhyRefused UnitEditor::Pick(int row, int column, memory::MemoryComboBox& list, const Text& value) {
  if (!list.Visible())
    return u"lines of type " + InQuotes(Cell(row, column::kLineType)) + u" have none";
  bool found = false;
  // Two entries may have one caption: the one that the cell then shows is meant.
  for (int entry = 0; entry < list.ListCount(); ++entry) {
    if (list.List(entry) != value) continue;
    found = true;
    if (const Refusal refused = list.UserPick(entry)) return Text(*refused);
    if (Cell(row, column) == value) return std::nullopt;
  }
  if (found) return u"lines of type " + InQuotes(Cell(row, column::kLineType)) + u" do not take it";
  return Entries(list);
}

WhyRefused UnitEditor::Write(int row, int column, memory::MemoryTextBox& box, const Text& value) {
  if (!box.Visible())
    return u"lines of type " + InQuotes(Cell(row, column::kLineType)) + u" have none";
  const bool disables =
      column == column::kEWTOption && EqualsIgnoringCase(value, caption::kDisabled);
  if (const Refusal refused = box.UserPaste(disables ? TextView(u"0") : TextView(value))) {
    return Text(*refused);
  }
  const Text shown = Cell(row, column);
  // The control would find it out when it saves, and then save no line of the unit.
  if (column == column::kEWTOption && IsWholeNumber(shown) && !FitsAStoredNumber(shown))
    return u"it is beyond " + Decimal(kLargestStoredNumber) +
           u", the largest that a line can store";
  if (column == column::kLabel && shown.size() > longest_label_)
    return u"it is longer than the " + Decimal(static_cast<int64_t>(longest_label_)) +
           u" characters that a line can store";
  const bool means_disabled = column == column::kEWTOption && value == u"0";
  if (shown == value || (disables || means_disabled ? shown == caption::kDisabled : false)) {
    return std::nullopt;
  }
  return u"the rules make " + InQuotes(shown) + u" of it";
}

WhyRefused UnitEditor::PickPair(int row, int column, const Text& value) {
  const Pair pair = column == column::kMode
                        ? Pair{form_.cmbModeType, form_.cmbModeNumber, column::kModeType,
                               column::kModeNumber, u'='}
                        : Pair{form_.cmbStartingNodeName, form_.cmbStartingNodeNumber,
                               column::kStartingNodeType, column::kStartingNodeNumber, u' '};
  const auto [name, number] = Split(pair, value);
  if (name) {
    const auto entry = EntryOf(pair.names, *name);
    if (!entry) return Entries(pair.names);
    if (const Refusal refused = pair.names.UserPick(*entry)) return Text(*refused);
    if (Cell(row, pair.name_code) != Decimal(pair.names.ItemData(*entry))) {
      return u"lines of type " + InQuotes(Cell(row, column::kLineType)) + u" do not take it";
    }
  }
  // A number that is there already needs no choice: where there is no list for it, it stays.
  if (number && Cell(row, column) != value) {
    if (!pair.numbers.Visible()) return u"it takes no number that could be chosen";
    const auto entry = EntryOf(pair.numbers, *number);
    if (!entry) return Entries(pair.numbers);
    if (const Refusal refused = pair.numbers.UserPick(*entry)) return Text(*refused);
    if (Cell(row, pair.number_code) != *number) {
      return u"lines of type " + InQuotes(Cell(row, column::kLineType)) + u" take no such number";
    }
  }
  return std::nullopt;
}

std::vector<Text> UnitEditor::UnitTypes() const {
  std::vector<Text> types;
  for (int entry = 0; entry < form_.cmbRDVType.ListCount(); ++entry) {
    types.push_back(form_.cmbRDVType.List(entry));
  }
  return types;
}

void UnitEditor::RestoreDefault(const Text& unit_type) {
  if (const auto entry = EntryOf(form_.cmbRDVType, unit_type)) form_.cmbRDVType.UserPick(*entry);
  form_.cmdShowDefaults.UserPress();
  const Text messages = TakeMessages();
  if (!messages.empty()) throw std::runtime_error(ToUtf8(messages));
}

void UnitEditor::Apply() {
  if (const Refusal refused = form_.cmdApply.UserPress()) {
    throw std::runtime_error("the lines cannot be saved: " + ToUtf8(*refused));
  }
  const Text messages = TakeMessages();
  if (!messages.empty() || form_.cmdApply.Enabled()) throw std::runtime_error(ToUtf8(messages));
}

}  // namespace rdv::lines
