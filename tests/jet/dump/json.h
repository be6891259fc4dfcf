// Just enough of JSON to compare two dumps by what they say.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace rdv::jet {

struct Json {
  using Array = std::vector<Json>;
  using Object = std::vector<std::pair<std::string, Json>>;  // in the order of the text
  std::variant<std::nullptr_t, bool, double, std::string, Array, Object> value = nullptr;
};

// Throws std::runtime_error with the place for text that is not JSON.
Json ParseJson(std::string_view text);

// Where and how the two differ first: "/tables/0/rows/3/1: ...". Empty when they say the same.
// Numbers are compared as numbers; the order of an object's members counts.
std::string FirstDifference(const Json& expected, const Json& actual, const std::string& path = "");

}  // namespace rdv::jet
