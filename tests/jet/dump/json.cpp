#include "tests/jet/dump/json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace rdv::jet {
namespace {

Json Converted(const nlohmann::ordered_json& json) {
  switch (json.type()) {
    case nlohmann::ordered_json::value_t::null:
      return {nullptr};
    case nlohmann::ordered_json::value_t::boolean:
      return {json.get<bool>()};
    case nlohmann::ordered_json::value_t::string:
      return {json.get<std::string>()};
    case nlohmann::ordered_json::value_t::array: {
      Json::Array array;
      for (const auto& element : json) array.push_back(Converted(element));
      return {std::move(array)};
    }
    case nlohmann::ordered_json::value_t::object: {
      Json::Object object;
      for (const auto& [name, member] : json.items()) object.emplace_back(name, Converted(member));
      return {std::move(object)};
    }
    default:
      return {json.get<double>()};
  }
}

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
  try {
    return Converted(nlohmann::ordered_json::parse(text));
  } catch (const nlohmann::ordered_json::parse_error& error) {
    throw std::runtime_error(error.what());
  }
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
