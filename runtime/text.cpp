#include "runtime/text.h"

#include <algorithm>
#include <array>

namespace rdv {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

// Code page 1252, bytes 0x80 to 0x9F; the rest equals Latin-1.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr bool IsHighSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

void AppendUtf8(std::string& out, char32_t c) {
  const auto byte = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
  if (c < 0x80) {
    byte(c);
  } else if (c < 0x800) {
    byte(0xC0 | (c >> 6));
    byte(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    byte(0xE0 | (c >> 12));
    byte(0x80 | ((c >> 6) & 0x3F));
    byte(0x80 | (c & 0x3F));
  } else {
    byte(0xF0 | (c >> 18));
    byte(0x80 | ((c >> 12) & 0x3F));
    byte(0x80 | ((c >> 6) & 0x3F));
    byte(0x80 | (c & 0x3F));
  }
}

void AppendUtf16(Text& out, char32_t c) {
  if (c < 0x10000) {
    out.push_back(static_cast<char16_t>(c));
  } else {
    out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
  }
}

struct Decoded {
  char32_t character;
  size_t length;
};

// One character of UTF-8 from `rest`, which is not empty.
Decoded DecodeUtf8(std::string_view rest) {
  const auto at = [&rest](size_t i) { return static_cast<uint8_t>(rest[i]); };
  const uint8_t lead = at(0);
  if (lead < 0x80) return {lead, 1};
  const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || rest.size() < length) return {kReplacement, 1};
  char32_t c = lead & (0x7Fu >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return {kReplacement, 1};
    c = (c << 6) | (at(i) & 0x3Fu);
  }
  const char32_t smallest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
  if (c < smallest || c > 0x10FFFF) return {kReplacement, 1};
  return {c, length};
}

}  // namespace

bool IsUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const Decoded next = DecodeUtf8(bytes);
    // What stands for a byte that cannot be read is longer where it was written itself.
    if (next.character == kReplacement && next.length == 1) return false;
    bytes.remove_prefix(next.length);
  }
  return true;
}

Text FromUtf8(std::string_view bytes) {
  Text out;
  out.reserve(bytes.size());
  while (!bytes.empty()) {
    const Decoded next = DecodeUtf8(bytes);
    AppendUtf16(out, next.character);
    bytes.remove_prefix(next.length);
  }
  return out;
}

std::string ToUtf8(TextView text) {
  constexpr char16_t kFirstOfTwoBytes = 0x80;
  const auto plain =
      std::ranges::find_if(text, [](char16_t unit) { return unit >= kFirstOfTwoBytes; });
  std::string out(text.begin(), plain);
  for (size_t i = out.size(); i < text.size(); ++i) {
    char32_t c = text[i];
    if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00u);
    }
    AppendUtf8(out, c);
  }
  return out;
}

Text FromWindows1252(std::string_view bytes) {
  Text out;
  out.reserve(bytes.size());
  for (const char byte : bytes) {
    const auto b = static_cast<uint8_t>(byte);
    out.push_back(b >= 0x80 && b <= 0x9F ? kWindows1252[b - 0x80] : char16_t{b});
  }
  return out;
}

std::string ToWindows1252(TextView text) {
  std::string out;
  out.reserve(text.size());
  for (const char16_t unit : text) {
    const auto special = std::find(kWindows1252.begin(), kWindows1252.end(), unit);
    if (special != kWindows1252.end()) {
      out.push_back(static_cast<char>(0x80 + (special - kWindows1252.begin())));
    } else if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
      out.push_back(static_cast<char>(unit));
    } else {
      out.push_back('?');
    }
  }
  return out;
}

Text Decimal(int64_t number) {
  const std::string digits = std::to_string(number);
  return Text(digits.begin(), digits.end());
}

char16_t UpperCase(char16_t unit) {
  const auto less = [unit](unsigned distance) { return static_cast<char16_t>(unit - distance); };
  if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? less(32) : unit;
  if (unit == 0x00FF) return 0x0178;
  if (unit >= 0x00E0 && unit <= 0x00FE && unit != 0x00F7) return less(32);
  // Latin Extended-A pairs a capital with the small letter behind it; the two runs that begin on
  // an odd code are shifted by one. Dotless i, kra, 'n and long s have no capital here.
  if ((unit >= 0x0100 && unit <= 0x0137 && unit != 0x0131) || (unit >= 0x014A && unit <= 0x0177)) {
    return unit % 2 == 1 ? less(1) : unit;
  }
  if ((unit >= 0x0139 && unit <= 0x0148) || (unit >= 0x0179 && unit <= 0x017E)) {
    return unit % 2 == 0 ? less(1) : unit;
  }
  if (unit == 0x03AC) return 0x0386;
  if (unit >= 0x03AD && unit <= 0x03AF) return less(37);
  if (unit == 0x03C2) return 0x03A3;
  if (unit >= 0x03B1 && unit <= 0x03CB) return less(32);
  if (unit == 0x03CC) return 0x038C;
  if (unit == 0x03CD || unit == 0x03CE) return less(63);
  if (unit >= 0x0430 && unit <= 0x044F) return less(32);
  if (unit >= 0x0450 && unit <= 0x045F) return less(80);
  return unit;
}

Text UpperCase(TextView text) {
  Text out(text);
  for (char16_t& unit : out) unit = UpperCase(unit);
  return out;
}

bool EqualsIgnoringCase(TextView left, TextView right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char16_t a, char16_t b) { return a == b || UpperCase(a) == UpperCase(b); });
}

TextView Trim(TextView text) {
  const size_t first = text.find_first_not_of(u' ');
  if (first == TextView::npos) return {};
  return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

}  // namespace rdv
