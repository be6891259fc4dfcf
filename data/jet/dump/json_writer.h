// JSON as dumps and tools print it, UTF-8: texts as JsonText writes them, amounts
// and decimals as strings with all their digits, dates as "YYYY-MM-DDThh:mm:ss" with milliseconds
// where there are any, GUIDs in braces, binary data as hexadecimal digits.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv::jet {

// Hands its text on in pieces; the caller flushes the last one.
class JsonWriter {
 public:
  // `write` must outlive the writer.
  explicit JsonWriter(const std::function<void(std::string_view)>& write) : write_(write) {}

  void Raw(std::string_view text);
  void Flush();

  void String(TextView text);
  void Bool(bool flag) { Raw(flag ? "true" : "false"); }
  template <typename Integer>
  void Number(Integer number) {
    Raw(std::to_string(number));
  }
  // The shortest that reads back as the same number of the same width; numbers that JSON does not
  // have as strings.
  void Real(float number);
  void Real(double number);
  void Date(DateTime date);
  void Field(const Value& value);

 private:
  const std::function<void(std::string_view)>& write_;
  std::string buffer_;
};

}  // namespace rdv::jet
