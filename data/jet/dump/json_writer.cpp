#include "data/jet/dump/json_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "data/jet/rows/row_codec.h"
#include "runtime/json_text.h"

namespace rdv::jet {
namespace {

constexpr size_t kBufferSize = size_t{64} * 1024;

// The year, month and day of the Gregorian calendar, from days since 1899-12-30.
struct Day {
  int64_t year;
  unsigned month;
  unsigned day;
};

Day CalendarDay(int64_t days) {
  // Counted in cycles of 400 years from the first of March of the year 0, so that the leap day
  // comes last.
  constexpr int64_t first_march_0_to_1899_12_30 = 693899;
  constexpr int64_t days_of_400_years = 146097;
  const int64_t shifted = days + first_march_0_to_1899_12_30;
  const int64_t cycle =
      (shifted >= 0 ? shifted : shifted - days_of_400_years + 1) / days_of_400_years;
  const int64_t day_of_cycle = shifted - cycle * days_of_400_years;
  const int64_t year_of_cycle = (day_of_cycle - day_of_cycle / 1460 + day_of_cycle / 36524 -
                                 day_of_cycle / (days_of_400_years - 1)) /
                                365;
  const int64_t day_of_year =
      day_of_cycle - (365 * year_of_cycle + year_of_cycle / 4 - year_of_cycle / 100);
  const int64_t month_from_march = (5 * day_of_year + 2) / 153;
  const int64_t day = day_of_year - (153 * month_from_march + 2) / 5 + 1;
  const int64_t month = month_from_march < 10 ? month_from_march + 3 : month_from_march - 9;
  const int64_t year = year_of_cycle + cycle * 400 + (month <= 2 ? 1 : 0);
  return {year, static_cast<unsigned>(month), static_cast<unsigned>(day)};
}

template <typename RealNumber>
std::string RealText(RealNumber number) {
  // Written out in full, a large number would have more digits than it needs.
  constexpr int bits = std::numeric_limits<RealNumber>::digits;
  const bool large = std::abs(number) >= static_cast<RealNumber>(uint64_t{1} << bits);
  std::array<char, 64> text;
  char* const start = text.data();
  char* const limit = start + text.size();
  const auto end = large ? std::to_chars(start, limit, number, std::chars_format::scientific).ptr
                         : std::to_chars(start, limit, number).ptr;
  const std::string digits(start, end);
  return std::isfinite(number) ? digits : '"' + digits + '"';
}

struct FieldWriter {
  JsonWriter& json;

  void operator()(Null) const { json.Raw("null"); }
  void operator()(bool flag) const { json.Bool(flag); }
  void operator()(float number) const { json.Real(number); }
  void operator()(double number) const { json.Real(number); }
  void operator()(Currency amount) const { json.String(ToDigits(amount)); }
  void operator()(DateTime date) const { json.Date(date); }
  void operator()(const DecimalNumber& number) const { json.String(ToDigits(number)); }
  void operator()(const Text& text) const { json.String(text); }
  void operator()(const Guid& guid) const {
    Text text;
    AppendGuid(guid.bytes.data(), text);
    json.String(text);
  }
  void operator()(const Binary& bytes) const {
    Text text;
    AppendBinary(bytes, text);
    json.String(text);
  }
  template <typename Integer>
  void operator()(Integer number) const {
    json.Number(number);
  }
};

}  // namespace

void JsonWriter::Raw(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() >= kBufferSize) Flush();
}

void JsonWriter::Flush() {
  write_(buffer_);
  buffer_.clear();
}

void JsonWriter::String(TextView text) {
  Raw(JsonText(text));
}

void JsonWriter::Real(float number) {
  Raw(RealText(number));
}

void JsonWriter::Real(double number) {
  Raw(RealText(number));
}

void JsonWriter::Date(DateTime date) {
  constexpr int64_t ms_per_day = 86400000;
  constexpr double last_day = 1e9;  // far beyond every calendar; keeps the arithmetic in range
  if (!(std::abs(date.days) < last_day)) return Real(date.days);
  const double whole = std::trunc(date.days);
  auto day = static_cast<int64_t>(whole);
  int64_t ms = std::llround(std::abs(date.days - whole) * ms_per_day);
  if (ms == ms_per_day) {
    ms = 0;
    ++day;
  }
  const Day calendar = CalendarDay(day);
  const auto part = [ms](int64_t size, int64_t count) {
    return static_cast<int>(ms / size % count);
  };
  std::array<char, 64> text;
  int length = std::snprintf(text.data(), text.size(), "\"%04lld-%02u-%02uT%02d:%02d:%02d",
                             static_cast<long long>(calendar.year), calendar.month, calendar.day,
                             part(3600000, 24), part(60000, 60), part(1000, 60));
  Raw(std::string_view(text.data(), static_cast<size_t>(length)));
  if (ms % 1000 != 0) {
    length = std::snprintf(text.data(), text.size(), ".%03d", part(1, 1000));
    Raw(std::string_view(text.data(), static_cast<size_t>(length)));
  }
  Raw("\"");
}

void JsonWriter::Field(const Value& value) {
  std::visit(FieldWriter{*this}, value);
}

}  // namespace rdv::jet
