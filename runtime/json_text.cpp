#include "runtime/json_text.h"

#include <array>
#include <cstdio>

namespace rdv {
namespace {

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

// By far the most.
bool IsPlain(char16_t unit) {
  return unit >= u' ' && unit < 0x7F && unit != u'"' && unit != u'\\';
}

std::string OfUnit(char16_t unit) {
  switch (unit) {
    case u'"':
      return "\\\"";
    case u'\\':
      return "\\\\";
    case u'\b':
      return "\\b";
    case u'\f':
      return "\\f";
    case u'\n':
      return "\\n";
    case u'\r':
      return "\\r";
    case u'\t':
      return "\\t";
    default:
      break;
  }
  if (unit >= u' ' && !IsHighSurrogate(unit) && !IsLowSurrogate(unit)) {
    return ToUtf8(TextView(&unit, 1));
  }
  std::array<char, 8> escape = {};
  std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(unit));
  return escape.data();
}

}  // namespace

std::string JsonText(TextView text) {
  std::string json = "\"";
  for (size_t at = 0; at < text.size(); ++at) {
    if (IsPlain(text[at])) {
      json += static_cast<char>(text[at]);
      continue;
    }
    const bool pair =
        IsHighSurrogate(text[at]) && at + 1 < text.size() && IsLowSurrogate(text[at + 1]);
    json += pair ? ToUtf8(text.substr(at++, 2)) : OfUnit(text[at]);
  }
  return json += '"';
}

}  // namespace rdv
