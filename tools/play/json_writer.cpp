#include "tools/play/json_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>
#include <variant>

namespace rdv::play {
namespace {

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

std::string UnicodeEscape(char16_t unit) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string escape = "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) {
    escape += kDigits[static_cast<size_t>((unit >> shift) & 0xF)];
  }
  return escape;
}

std::string EscapedControl(char16_t unit) {
  switch (unit) {
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
      return UnicodeEscape(unit);
  }
}

std::string Escaped(TextView text) {
  std::string escaped;
  for (size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (unit == u'"' || unit == u'\\') {
      escaped += '\\';
      escaped += static_cast<char>(unit);
    } else if (unit < 0x20) {
      escaped += EscapedControl(unit);
    } else if (IsHighSurrogate(unit) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
      escaped += ToUtf8(text.substr(at, 2));
      ++at;
    } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
      escaped += UnicodeEscape(unit);
    } else {
      escaped += ToUtf8(text.substr(at, 1));
    }
  }
  return escaped;
}

// The shortest form that reads back as the same number.
std::string Shortest(double number) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), end};
}

}  // namespace

JsonWriter& JsonWriter::Key(std::string_view name) {
  String(name);
  out_ += ':';
  return *this;
}

JsonWriter& JsonWriter::Rounded(double value) {
  return Number(std::llround(value));
}

JsonWriter& JsonWriter::String(TextView value) {
  return Literal('"' + Escaped(value) + '"');
}

JsonWriter& JsonWriter::String(std::string_view ascii) {
  return String(TextView(FromUtf8(ascii)));
}

JsonWriter& JsonWriter::Field(const Value& value) {
  return std::visit(
      [this](const auto& held) -> JsonWriter& {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, rdv::Null>) {
          return Null();
        } else if constexpr (std::is_same_v<Held, bool>) {
          return Bool(held);
        } else if constexpr (std::is_integral_v<Held>) {
          return Number(held);
        } else if constexpr (std::is_floating_point_v<Held>) {
          return Literal(Shortest(held));
        } else if constexpr (std::is_same_v<Held, Currency> ||
                             std::is_same_v<Held, DecimalNumber>) {
          return Literal(ToUtf8(ToDigits(held)));
        } else {
          return String(TextView(ToText(held)));
        }
      },
      value);
}

JsonWriter& JsonWriter::Open(char bracket) {
  Separate();
  out_ += bracket;
  return *this;
}

JsonWriter& JsonWriter::Close(char bracket) {
  out_ += bracket;
  return *this;
}

JsonWriter& JsonWriter::Literal(std::string_view text) {
  Separate();
  out_ += text;
  return *this;
}

// A comma, except where a value is the first one or belongs to a key.
void JsonWriter::Separate() {
  if (!out_.empty() && std::string_view("{[:").find(out_.back()) == std::string_view::npos) {
    out_ += ',';
  }
}

}  // namespace rdv::play
