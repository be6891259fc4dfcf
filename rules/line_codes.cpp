#include "rules/line_codes.h"

#include <algorithm>

namespace rdv {

std::span<const int16_t> StartNodeTypesOf(int16_t given_line_type) {
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

bool Contains(std::span<const int16_t> codes, double code) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

TextView ImpedanceCodeToCaption(int16_t code) {
  for (const ImpedanceCode& entry : kImpedanceCodes) {
    if (entry.code == code) return entry.caption;
  }
  return u"UNKNOWN";
}

int16_t ImpedanceCaptionToCode(TextView impedance_caption) {
  for (const ImpedanceCode& entry : kImpedanceCodes) {
    if (entry.caption == impedance_caption) return entry.code;
  }
  return 0;
}

}  // namespace rdv
