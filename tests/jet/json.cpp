#include "tests/jet/json.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace rdv::jet {
namespace {

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  Json ParseAll() {
    Json json = ParseValue();
    SkipBlanks();
    if (position_ != text_.size()) Fail("text behind the end");
    return json;
  }

 private:
  [[noreturn]] void Fail(const std::string& reason) const {
    throw std::runtime_error("JSON at " + std::to_string(position_) + ": " + reason);
  }

  void SkipBlanks() {
    position_ = std::min(text_.find_first_not_of(" \t\r\n", position_), text_.size());
  }

  bool Accept(std::string_view word) {
    SkipBlanks();
    if (text_.substr(position_, word.size()) != word) return false;
    position_ += word.size();
    return true;
  }
  void Expect(std::string_view word) {
    if (!Accept(word)) Fail("expected " + std::string(word));
  }

  Json ParseValue() {
    if (Accept("null")) return {nullptr};
    if (Accept("true")) return {true};
    if (Accept("false")) return {false};
    if (Accept("[")) return {ParseArray()};
    if (Accept("{")) return {ParseObject()};
    if (Accept("\"")) return {ParseString()};
    return {ParseNumber()};
  }

  Json::Array ParseArray() {
    Json::Array array;
    if (Accept("]")) return array;
    do {
      array.push_back(ParseValue());
    } while (Accept(","));
    Expect("]");
    return array;
  }

  Json::Object ParseObject() {
    Json::Object object;
    if (Accept("}")) return object;
    do {
      Expect("\"");
      std::string name = ParseString();
      Expect(":");
      object.emplace_back(std::move(name), ParseValue());
    } while (Accept(","));
    Expect("}");
    return object;
  }

  char Take() {
    if (position_ == text_.size()) Fail("unexpected end");
    return text_[position_++];
  }

  // Characters in UTF-8, also where the text escapes them; a lone surrogate in its three bytes.
  std::string ParseString() {
    std::string string;
    for (char next = Take(); next != '"'; next = Take()) {
      if (next == '\\') {
        AppendEscape(string);
      } else {
        string.push_back(next);
      }
    }
    return string;
  }

  void AppendEscape(std::string& string) {
    const char kind = Take();
    if (kind == 'u') return AppendUnit(ParseUnit(), string);
    constexpr std::string_view kinds = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    const size_t known = kinds.find(kind);
    if (known == kinds.npos) Fail("unknown escape");
    string.push_back(meanings[known]);
  }

  unsigned ParseUnit() {
    unsigned unit = 0;
    const std::string_view digits = text_.substr(position_, 4);
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    if (result.ptr != digits.data() + 4) Fail("bad escape");
    position_ += 4;
    return unit;
  }

  void AppendUnit(unsigned unit, std::string& string) {
    const bool high = unit >= 0xD800 && unit < 0xDC00;
    if (high && text_.substr(position_, 2) == "\\u") {
      position_ += 2;
      const unsigned low = ParseUnit();
      const unsigned character = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
      string.push_back(static_cast<char>(0xF0 | (character >> 18)));
      string.push_back(static_cast<char>(0x80 | ((character >> 12) & 0x3F)));
      string.push_back(static_cast<char>(0x80 | ((character >> 6) & 0x3F)));
      string.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    } else if (unit < 0x80) {
      string.push_back(static_cast<char>(unit));
    } else if (unit < 0x800) {
      string.push_back(static_cast<char>(0xC0 | (unit >> 6)));
      string.push_back(static_cast<char>(0x80 | (unit & 0x3F)));
    } else {
      string.push_back(static_cast<char>(0xE0 | (unit >> 12)));
      string.push_back(static_cast<char>(0x80 | ((unit >> 6) & 0x3F)));
      string.push_back(static_cast<char>(0x80 | (unit & 0x3F)));
    }
  }

  double ParseNumber() {
    double number = 0;
    const auto result =
        std::from_chars(text_.data() + position_, text_.data() + text_.size(), number);
    if (result.ec != std::errc()) Fail("no value");
    position_ = static_cast<size_t>(result.ptr - text_.data());
    return number;
  }

  std::string_view text_;
  size_t position_ = 0;
};

std::string Describe(const Json& json) {
  if (const auto* flag = std::get_if<bool>(&json.value)) return *flag ? "true" : "false";
  if (const auto* number = std::get_if<double>(&json.value)) return std::to_string(*number);
  if (const auto* string = std::get_if<std::string>(&json.value)) return '"' + *string + '"';
  if (const auto* array = std::get_if<Json::Array>(&json.value)) {
    return "a list of " + std::to_string(array->size());
  }
  if (const auto* object = std::get_if<Json::Object>(&json.value)) {
    return "an object of " + std::to_string(object->size());
  }
  return "null";
}

std::string Difference(const Json::Array& expected, const Json::Array& actual,
                       const std::string& path) {
  for (size_t i = 0; i < std::min(expected.size(), actual.size()); ++i) {
    const std::string difference =
        FirstDifference(expected[i], actual[i], path + "/" + std::to_string(i));
    if (!difference.empty()) return difference;
  }
  if (expected.size() == actual.size()) return "";
  return path + ": " + std::to_string(actual.size()) + " elements instead of " +
         std::to_string(expected.size());
}

std::string Difference(const Json::Object& expected, const Json::Object& actual,
                       const std::string& path) {
  for (size_t i = 0; i < std::min(expected.size(), actual.size()); ++i) {
    if (expected[i].first != actual[i].first) {
      return path + ": member " + actual[i].first + " instead of " + expected[i].first;
    }
    const std::string difference =
        FirstDifference(expected[i].second, actual[i].second, path + "/" + expected[i].first);
    if (!difference.empty()) return difference;
  }
  if (expected.size() == actual.size()) return "";
  return path + ": other members";
}

}  // namespace

Json ParseJson(std::string_view text) {
  return Parser(text).ParseAll();
}

std::string FirstDifference(const Json& expected, const Json& actual, const std::string& path) {
  if (expected.value.index() == actual.value.index()) {
    if (const auto* array = std::get_if<Json::Array>(&expected.value)) {
      return Difference(*array, std::get<Json::Array>(actual.value), path);
    }
    if (const auto* object = std::get_if<Json::Object>(&expected.value)) {
      return Difference(*object, std::get<Json::Object>(actual.value), path);
    }
    const bool same = std::visit(
        [&actual](const auto& value) -> bool {
          using T = std::decay_t<decltype(value)>;
          if constexpr (std::is_same_v<T, Json::Array> || std::is_same_v<T, Json::Object>) {
            return false;
          } else {
            return value == std::get<T>(actual.value);
          }
        },
        expected.value);
    if (same) return "";
  }
  return path + ": " + Describe(actual) + " instead of " + Describe(expected);
}

}  // namespace rdv::jet
