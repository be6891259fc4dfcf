// The widgets of the form as a table: what each is called, made of and there for.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "widgets/control_ids.h"
#include "widgets/widget.h"

namespace rdv {

enum class WidgetKind { Frame, Grid, List, TypedList, TextBox, Button };
// The form itself or one of its frames.
enum class Within { Window, Configuration, Defaults };

struct WidgetEntry {
  std::string_view name;
  WidgetKind kind;
  Within within;
  int id;  // of its window
  // The caption of a frame or a button, whose letter after the ampersand presses it with Alt; what
  // a screen reader calls any other widget. Ends in a null character.
  TextView text;
  int drop_down_width = 0;  // of a list: at least, in pixels at 96 dots per inch

  constexpr bool IsList() const {
    return kind == WidgetKind::List || kind == WidgetKind::TypedList;
  }
  constexpr bool IsEditor() const { return IsList() || kind == WidgetKind::TextBox; }
  constexpr bool IsButton() const { return kind == WidgetKind::Button; }
  constexpr TextEntry Typing() const {
    return kind == WidgetKind::TypedList ? TextEntry::Typed : TextEntry::FromListOnly;
  }
  // Laid over a cell of the grid.
  constexpr bool IsInPlace() const { return within == Within::Configuration && IsEditor(); }
};

// In the order in which Tab walks them, windows are made (what comes first lies above what comes
// later) and editors are hidden when the grid moves.
// clang-format off
inline constexpr auto kFormTable = [] {
  using enum WidgetKind;
  using enum Within;
  namespace id = control_id;
  return std::to_array<WidgetEntry>({
      {"fraConfiguration",      Frame,     Window,        id::fraConfiguration,      u"RDV Line Configuration"},
      {"cmbPartition",          List,      Configuration, id::cmbPartition,          u"Partition",            200},
      {"cmbStartingNodeName",   List,      Configuration, id::cmbStartingNodeName,   u"Starting Node",        200},
      {"cmbStartingNodeNumber", TypedList, Configuration, id::cmbStartingNodeNumber, u"Starting Node Number", 50},
      {"cmbVolume",             List,      Configuration, id::cmbVolume,             u"Volume",               50},
      {"cmbModeType",           List,      Configuration, id::cmbModeType,           u"Mode",                 200},
      {"cmbModeNumber",         TypedList, Configuration, id::cmbModeNumber,         u"Mode Number",          50},
      {"cmbNISOption",          List,      Configuration, id::cmbNISOption,          u"NIS Option",           50},
      {"txtEWTOption",          TextBox,   Configuration, id::txtEWTOption,          u"EWT Option"},
      {"cmbLineType",           List,      Configuration, id::cmbLineType,           u"Line Type",            200},
      {"cmbImpedance",          List,      Configuration, id::cmbImpedance,          u"Impedance",            200},
      {"cmbSoftStop",           List,      Configuration, id::cmbSoftStop,           u"Soft Stop",            50},
      {"txtLabel",              TextBox,   Configuration, id::txtLabel,              u"Label"},
      {"LVRDVLineConfig",       Grid,      Configuration, id::LVRDVLineConfig,       u"Lines"},
      {"fraDefault",            Frame,     Window,        id::fraDefault,            u"Default values"},
      {"cmbRDVType",            TypedList, Defaults,      id::cmbRDVType,            u"Unit Type",            200},
      {"cmdShowDefaults",       Button,    Defaults,      id::cmdShowDefaults,       u"&Restore Default"},
      {"cmdOK",                 Button,    Window,        id::cmdOK,                 u"&OK"},
      {"cmdCancel",             Button,    Window,        id::cmdCancel,             u"&Cancel"},
      {"cmdApply",              Button,    Window,        id::cmdApply,              u"&Apply"},
  });
}();
// clang-format on

inline constexpr auto kInPlaceEditors =
    static_cast<size_t>(std::ranges::count_if(kFormTable, &WidgetEntry::IsInPlace));

// For a name that stands in the table.
constexpr const WidgetEntry& EntryOf(std::string_view name) {
  return *std::ranges::find(kFormTable, name, &WidgetEntry::name);
}

}  // namespace rdv
