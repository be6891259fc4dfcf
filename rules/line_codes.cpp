#include "rules/line_codes.h"

#include "runtime/conversion.h"

namespace rdv {

Text Decimal(Code code) {
  return Decimal(NumberOf(code));
}

Code CodeIn(TextView cell) {
  return Code{CLng(cell)};
}

std::span<const Code> StartNodeTypesOf(Code given_line_type) {
  switch (given_line_type) {
    case line_type::kImpedance:
      return StartNodeTypesType5;
    case line_type::kHybrid:
      return StartNodeTypesType6;
    case line_type::kMusicOnHold:
      return StartNodeTypesDefault;
    default:
      return {};
  }
}

TextView ImpedanceCodeToCaption(Code code) {
  for (const ImpedanceCode& entry : kImpedanceCodes) {
    if (entry.code == code) return entry.caption;
  }
  return u"UNKNOWN";
}

Code ImpedanceCaptionToCode(TextView impedance_caption) {
  for (const ImpedanceCode& entry : kImpedanceCodes) {
    if (entry.caption == impedance_caption) return entry.code;
  }
  return Code{0};
}

}  // namespace rdv
