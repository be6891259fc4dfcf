#include "tools/play/json_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>
#include <variant>

#include "runtime/json_text.h"

namespace rdv::play {
namespace {

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
  return Literal(JsonText(value));
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
