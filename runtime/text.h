// Text as the control, the database and Windows hold it: UTF-16 code units. The conversions here
// never fail: what cannot be expressed in the target is replaced as each function says.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rdv {

using Text = std::u16string;
using TextView = std::u16string_view;

// The line break of every message and report.
inline constexpr TextView kLineBreak = u"\r\n";

// Without overlong forms; a half of a pair of units that stands alone is let through.
bool IsUtf8(std::string_view bytes);

// Malformed UTF-8 becomes U+FFFD. A lone surrogate survives both ways in its three-byte form, so
// text that a database holds but no encoding allows is not changed by being carried around.
Text FromUtf8(std::string_view bytes);
std::string ToUtf8(TextView text);

// Bytes that code page 1252 leaves undefined map to the control character of the same number;
// characters outside the code page become "?".
Text FromWindows1252(std::string_view bytes);
std::string ToWindows1252(TextView text);

// Plain decimal digits without padding, with "-" for negative numbers.
Text Decimal(int64_t number);

// Simple upper-casing, one unit to one unit: ASCII, Latin-1, Latin Extended-A, Greek, Cyrillic.
char16_t UpperCase(char16_t unit);
Text UpperCase(TextView text);
bool EqualsIgnoringCase(TextView left, TextView right);

// A digit is "0" to "9" and nothing else.
constexpr bool IsDigit(char16_t unit) {
  return unit >= u'0' && unit <= u'9';
}

// Without the blanks at both ends.
TextView Trim(TextView text);

}  // namespace rdv
