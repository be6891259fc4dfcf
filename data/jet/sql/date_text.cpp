#include "data/jet/sql/date_text.h"

#include <chrono>
#include <cstdint>
#include <utility>

namespace rdv::jet::sql {
namespace {

constexpr double kFirstDay = -657434;  // 100-01-01
constexpr double kLastDay = 2958465;   // 9999-12-31

struct Number {
  int value = 0;
  size_t digits = 0;
};

class DateParser {
 public:
  explicit DateParser(TextView text) : text_(Trim(text)) {}

  std::optional<double> Parse() {
    const auto first = TakeNumber();
    if (!first) return std::nullopt;
    std::optional<double> days = 0;
    std::optional<double> time = 0;
    if (Peek() == u':') {
      time = Time(*first);
    } else {
      days = Date(*first);
      if (!AtEnd()) time = TimeBehindDate();
    }
    if (!days || !time || !AtEnd()) return std::nullopt;
    return *days < 0 ? *days - *time : *days + *time;
  }

 private:
  bool AtEnd() const { return position_ >= text_.size(); }
  char16_t Peek() const { return AtEnd() ? u'\0' : text_[position_]; }
  bool Take(char16_t unit) {
    if (AtEnd() || UpperCase(Peek()) != unit) return false;
    ++position_;
    return true;
  }

  std::optional<Number> TakeNumber() {
    Number number;
    for (; IsDigit(Peek()) && number.digits < 4; ++number.digits)
      number.value = number.value * 10 + (text_[position_++] - u'0');
    if (number.digits == 0) return std::nullopt;
    return number;
  }

  std::optional<double> Date(Number first) {
    const char16_t separator = Peek();
    if (separator != u'-' && separator != u'/') return std::nullopt;
    ++position_;
    const auto second = TakeNumber();
    if (!second || !Take(separator)) return std::nullopt;
    const auto third = TakeNumber();
    if (!third) return std::nullopt;
    if (first.digits > 2) return Days(first.value, second->value, third->value);
    int month = first.value;
    int day = second->value;
    if (month > 12) std::swap(month, day);
    return Days(FullYear(*third), month, day);
  }

  static int FullYear(Number year) {
    if (year.digits > 2) return year.value;
    return year.value + (year.value < 30 ? 2000 : 1900);
  }

  static std::optional<double> Days(int year, int month, int day) {
    namespace calendar = std::chrono;
    const calendar::year_month_day date = calendar::year(year) /
                                          calendar::month(static_cast<unsigned>(month)) /
                                          calendar::day(static_cast<unsigned>(day));
    if (!date.ok()) return std::nullopt;
    constexpr calendar::sys_days kEpoch = calendar::year(1899) / calendar::December / 30;
    const auto days = static_cast<double>((calendar::sys_days{date} - kEpoch).count());
    if (!IsDateInRange(days)) return std::nullopt;
    return days;
  }

  std::optional<double> TimeBehindDate() {
    if (!Take(u' ') && !Take(u'T')) return std::nullopt;
    while (Take(u' ')) continue;
    const auto hour = TakeNumber();
    return hour && Peek() == u':' ? Time(*hour) : std::nullopt;
  }

  std::optional<double> Time(Number first) {
    int hour = first.value;
    const auto minute = Take(u':') ? TakeNumber() : std::nullopt;
    if (!minute) return std::nullopt;
    Number second;
    double fraction = 0;
    if (Take(u':')) {
      const auto given = TakeNumber();
      if (!given) return std::nullopt;
      second = *given;
      if (Take(u'.')) fraction = Fraction();
    }
    while (Take(u' ')) continue;
    if (Peek() != u'\0' && !TakeHalfOfDay(hour)) return std::nullopt;
    if (hour > 23 || minute->value > 59 || second.value > 59) return std::nullopt;
    return ((hour * 60 + minute->value) * 60 + second.value + fraction) / 86400.0;
  }

  double Fraction() {
    double fraction = 0;
    for (double place = 0.1; IsDigit(Peek()); place /= 10)
      fraction += place * (text_[position_++] - u'0');
    return fraction;
  }

  // AM or PM, which go with the hours 1 to 12.
  bool TakeHalfOfDay(int& hour) {
    const bool afternoon = Take(u'P');
    if (!afternoon && !Take(u'A')) return false;
    if (!Take(u'M') || hour < 1 || hour > 12) return false;
    hour = hour % 12 + (afternoon ? 12 : 0);
    return true;
  }

  TextView text_;
  size_t position_ = 0;
};

}  // namespace

std::optional<double> ParseDateText(TextView text) {
  return DateParser(text).Parse();
}

bool IsDateInRange(double days) {
  return days >= kFirstDay && days < kLastDay + 1;
}

}  // namespace rdv::jet::sql
