// Writes one JSON value, member by member, without blanks.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv::play {

// Strings are written by JsonText.
class JsonWriter {
 public:
  JsonWriter& BeginObject() { return Open('{'); }
  JsonWriter& EndObject() { return Close('}'); }
  JsonWriter& BeginArray() { return Open('['); }
  JsonWriter& EndArray() { return Close(']'); }
  JsonWriter& Key(std::string_view name);

  JsonWriter& Null() { return Literal("null"); }
  JsonWriter& Bool(bool value) { return Literal(value ? "true" : "false"); }
  JsonWriter& Number(int64_t value) { return Literal(std::to_string(value)); }
  // To the nearest whole number.
  JsonWriter& Rounded(double value);
  JsonWriter& String(TextView value);
  JsonWriter& String(std::string_view ascii);
  // A field of a database row.
  JsonWriter& Field(const Value& value);

  const std::string& Written() const { return out_; }

 private:
  JsonWriter& Open(char bracket);
  JsonWriter& Close(char bracket);
  JsonWriter& Literal(std::string_view text);
  void Separate();

  std::string out_;
};

}  // namespace rdv::play
