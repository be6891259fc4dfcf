#include "rules/unit_types.h"

#include <algorithm>
#include <array>

#include "rules/editors.h"
#include "rules/error_report.h"

namespace rdv {
namespace {

enum class Fitting { NotInstalled, Hybrid, LowImpedance };

constexpr TextView kEightHybridLines = u"8 Hybrid Lines 2 MOH Lines";
constexpr TextView kFourHybridLines = u"4 Hybrid Lines 2 MOH Lines";
constexpr TextView kEightImpedanceLines = u"8 Impedance Lines 2 MOH Lines";

// Lines 9 and 11 are music on hold in all of them.
struct UnitType {
  TextView text;
  Fitting lines_1_to_4;
  Fitting lines_5_to_8;
};

constexpr std::array<UnitType, 3> kUnitTypes = {{
    {kEightHybridLines, Fitting::Hybrid, Fitting::Hybrid},
    {kFourHybridLines, Fitting::Hybrid, Fitting::NotInstalled},
    {kEightImpedanceLines, Fitting::LowImpedance, Fitting::LowImpedance},
}};

void AddLine(LineTemplates& templates, Fitting fitting, int16_t line) {
  switch (fitting) {
    case Fitting::NotInstalled:
      templates.LoadDefaultNotInstalledLine(line, Target::NewRow);
      break;
    case Fitting::Hybrid:
      templates.LoadDefaultHybrideLine(line, Target::NewRow, Store::No);
      break;
    case Fitting::LowImpedance:
      templates.LoadDefaultLowImpedanceLine(line, Target::NewRow, Store::No);
      break;
  }
}

void AddUnit(LineTemplates& templates, const UnitType& unit) {
  for (int16_t line = 1; line <= 4; ++line) AddLine(templates, unit.lines_1_to_4, line);
  for (int16_t line = 5; line <= 8; ++line) AddLine(templates, unit.lines_5_to_8, line);
  for (const int16_t line : kMusicOnHoldLines) {
    templates.LoadDefaultMOHLine(line, Target::NewRow, Store::No);
  }
}

}  // namespace

bool UnitTypes::LoadDefaultRDVType() {
  return RunLoader(state_, u"LoadDefaultRDVType", [&] {
    form_.cmbRDVType.Clear();
    for (const UnitType& unit : kUnitTypes) form_.cmbRDVType.AddItem(unit.text, 0);
    form_.cmbRDVType.SetListIndex(0);
  });
}

void UnitTypes::AssignIndextoDefaultBox(int16_t Line1LineType, int16_t Line5LineType) {
  const Code line1{Line1LineType};
  const Code line5{Line5LineType};
  // Hybrid lines in the first half settle the unit type by themselves, impedance lines do not.
  if (line1 == line_type::kImpedance && line5 == line_type::kImpedance) {
    SelectByText(form_.cmbRDVType, kEightImpedanceLines);
  } else if (line1 == line_type::kHybrid && line5 == line_type::kHybrid) {
    SelectByText(form_.cmbRDVType, kEightHybridLines);
  } else if (line1 == line_type::kHybrid) {
    SelectByText(form_.cmbRDVType, kFourHybridLines);
  }
}

void UnitTypes::cmdShowDefaults_Click() {
  form_.cmdApply.SetEnabled(true);
  ShowEditors(form_, false);
  form_.LVRDVLineConfig.RemoveRows();
  const Text chosen = form_.cmbRDVType.Text();
  const auto unit = std::find_if(kUnitTypes.begin(), kUnitTypes.end(),
                                 [&](const UnitType& type) { return type.text == chosen; });
  if (unit != kUnitTypes.end()) {
    AddUnit(templates_, *unit);
    return;
  }
  // An unknown text gives eleven empty positions, the first of them numbered 0.
  for (int16_t line = 0; line <= 10; ++line) {
    templates_.LoadDefaultNotInstalledLine(line, Target::NewRow);
  }
}

}  // namespace rdv
