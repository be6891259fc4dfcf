// The widgets of the line configuration form, by name.
#pragma once

#include <array>
#include <tuple>
#include <type_traits>
#include <utility>

#include "widgets/form_table.h"
#include "widgets/line_grid.h"
#include "widgets/widget.h"

namespace rdv {

// In the order of kFormTable. Parts says what the widgets are made of.
template <class Parts>
struct FormWidgets {
  typename Parts::Frame fraConfiguration;
  typename Parts::List cmbPartition;
  typename Parts::List cmbStartingNodeName;
  typename Parts::List cmbStartingNodeNumber;
  typename Parts::List cmbVolume;
  typename Parts::List cmbModeType;
  typename Parts::List cmbModeNumber;
  typename Parts::List cmbNISOption;
  typename Parts::TextBox txtEWTOption;
  typename Parts::List cmbLineType;
  typename Parts::List cmbImpedance;
  typename Parts::List cmbSoftStop;
  typename Parts::TextBox txtLabel;
  typename Parts::Grid LVRDVLineConfig;
  typename Parts::Frame fraDefault;
  typename Parts::List cmbRDVType;
  typename Parts::Button cmdShowDefaults;
  typename Parts::Button cmdOK;
  typename Parts::Button cmdCancel;
  typename Parts::Button cmdApply;
};

// Each is what make<i>() gives for the i-th entry of the table; they are made one after the other.
template <class Parts, class Make>
FormWidgets<Parts> MakeWidgets(const Make& make) {
  return [&]<size_t... i>(std::index_sequence<i...>) {
    return FormWidgets<Parts>{make.template operator()<i>()...};
  }
  (std::make_index_sequence<kFormTable.size()>());
}

// All widgets of a FormWidgets, in their order.
template <class Widgets>
constexpr auto Tie(Widgets& of) {
  return std::tie(of.fraConfiguration, of.cmbPartition, of.cmbStartingNodeName,
                  of.cmbStartingNodeNumber, of.cmbVolume, of.cmbModeType, of.cmbModeNumber,
                  of.cmbNISOption, of.txtEWTOption, of.cmbLineType, of.cmbImpedance, of.cmbSoftStop,
                  of.txtLabel, of.LVRDVLineConfig, of.fraDefault, of.cmbRDVType, of.cmdShowDefaults,
                  of.cmdOK, of.cmdCancel, of.cmdApply);
}

// Calls visit(widget, entry of the table) for each.
template <class Widgets, class Visit>
void ForEachWidget(Widgets& widgets, Visit&& visit) {
  std::apply(
      [&](auto&... each) {
        auto entry = kFormTable.begin();
        (visit(each, *entry++), ...);
      },
      Tie(widgets));
}

struct Contracts {
  using Frame = rdv::Frame&;
  using Grid = LineGrid&;
  using List = ComboBox&;
  using TextBox = rdv::TextBox&;
  using Button = rdv::Button&;
};

// References to the widgets of one form; whoever builds the form owns them and outlives its users.
// The lists that take typed text are those that the table says. Before the control is loaded the
// in-place editors are hidden with empty texts, cmdApply is disabled and everything else enabled.
struct Form : FormWidgets<Contracts> {
  Screen& screen;

  // Those that are laid over cells, in the order of the table.
  std::array<Editor*, kInPlaceEditors> Editors() const {
    std::array<Editor*, kInPlaceEditors> editors = {};
    auto next = editors.begin();
    ForEachWidget(*this, [&]<class Widget>(Widget& widget, const WidgetEntry& entry) {
      if constexpr (std::is_base_of_v<Editor, Widget>) {
        if (entry.IsInPlace()) *next++ = &widget;
      }
    });
    return editors;
  }
};

template <class Parts>
Form FormOf(FormWidgets<Parts>& widgets, Screen& screen) {
  return std::apply([&](auto&... each) { return Form{{each...}, screen}; }, Tie(widgets));
}

static_assert(std::tuple_size_v<decltype(Tie(std::declval<const Form&>()))> == kFormTable.size());

}  // namespace rdv
