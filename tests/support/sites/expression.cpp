#include "tests/support/sites/expression.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "data/jet/sql/date_text.h"
#include "runtime/conversion.h"

namespace rdv::sites {
namespace {

constexpr int kDeepest = 20;

bool IsNameStart(char character) {
  return std::isalpha(static_cast<unsigned char>(character)) != 0 || character == '_';
}

bool IsNamePart(char character) {
  return IsNameStart(character) || std::isdigit(static_cast<unsigned char>(character)) != 0;
}

int64_t ToNumber(const Cell& cell) {
  if (const int64_t* number = std::get_if<int64_t>(&cell)) return *number;
  throw TextError("a whole number is needed");
}

Text ToText(const Cell& cell) {
  if (const Text* text = std::get_if<Text>(&cell)) return *text;
  return Decimal(ToNumber(cell));
}

int HexDigit(char16_t digit) {
  if (digit >= u'0' && digit <= u'9') return digit - u'0';
  if (digit >= u'a' && digit <= u'f') return digit - u'a' + 10;
  if (digit >= u'A' && digit <= u'F') return digit - u'A' + 10;
  throw TextError("a hexadecimal digit is needed");
}

Binary FromHex(TextView digits) {
  if (digits.size() % 2 != 0) throw TextError("two hexadecimal digits make a byte");
  Binary bytes;
  for (size_t i = 0; i < digits.size(); i += 2)
    bytes.push_back(static_cast<uint8_t>(HexDigit(digits[i]) * 16 + HexDigit(digits[i + 1])));
  return bytes;
}

// "{00112233-4455-6677-8899-AABBCCDDEEFF}": the first three groups lie in reverse.
Guid ToGuid(TextView text) {
  Text digits;
  for (const char16_t unit : text) {
    if (unit != u'{' && unit != u'}' && unit != u'-') digits.push_back(unit);
  }
  const Binary bytes = FromHex(digits);
  Guid guid;
  if (bytes.size() != guid.bytes.size()) throw TextError("a GUID has 16 bytes");
  constexpr size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  for (size_t i = 0; i < guid.bytes.size(); ++i) guid.bytes[i] = bytes[kOrder[i]];
  return guid;
}

Text Counted(const Text& word, size_t length) {
  Text text;
  for (int64_t i = 1; text.size() < length; ++i)
    text += (text.empty() ? Text() : Text(u"; ")) + word + u" " + Decimal(i);
  return text.substr(0, length);
}

Text Filled(const Text& piece, size_t length) {
  if (piece.empty()) throw TextError("nothing to fill with");
  Text text;
  while (text.size() < length) text += piece;
  return text.substr(0, length);
}

int64_t Digit(const Text& digits, int64_t place) {
  if (place < 0 || static_cast<size_t>(place) >= digits.size()) throw TextError("no such digit");
  return digits[static_cast<size_t>(place)] - u'0';
}

size_t ToLength(const Cell& cell) {
  const int64_t length = ToNumber(cell);
  if (length < 0 || length > 1'000'000) throw TextError("a length out of range");
  return static_cast<size_t>(length);
}

int64_t Divide(int64_t left, int64_t right, bool remainder) {
  if (right == 0) throw TextError("a division by zero");
  return remainder ? left % right : left / right;
}

}  // namespace

void LineReader::SkipBlanks() {
  while (!rest_.empty() && rest_.front() == ' ') rest_.remove_prefix(1);
}

bool LineReader::AtEnd() {
  SkipBlanks();
  return rest_.empty();
}

bool LineReader::Take(std::string_view token) {
  SkipBlanks();
  if (!rest_.starts_with(token)) return false;
  const bool cuts_name =
      IsNamePart(token.back()) && rest_.size() > token.size() && IsNamePart(rest_[token.size()]);
  if (cuts_name) return false;
  rest_.remove_prefix(token.size());
  return true;
}

void LineReader::Expect(std::string_view token) {
  if (!Take(token)) throw TextError("'" + std::string(token) + "' is missing");
}

std::string LineReader::Name() {
  SkipBlanks();
  if (rest_.empty() || (!IsNameStart(rest_.front()) && rest_.front() != '.'))
    throw TextError("a name is missing");
  size_t size = 1;
  while (size < rest_.size() && (IsNamePart(rest_[size]) || rest_[size] == '.')) ++size;
  const std::string name(rest_.substr(0, size));
  rest_.remove_prefix(size);
  return name;
}

void LineReader::ExpectEnd() {
  if (!AtEnd()) throw TextError("too much: '" + std::string(rest_) + "'");
}

std::string LineReader::NumberText() {
  int depth = 0;
  size_t size = 0;
  for (; size < rest_.size(); ++size) {
    const char character = rest_[size];
    if (character == '(') ++depth;
    if (character == ')') --depth;
    if (depth > 0) continue;
    if (character == ',' || character == ':' || rest_.substr(size).starts_with(" choosing ")) break;
  }
  const std::string text(rest_.substr(0, size));
  rest_.remove_prefix(size);
  return text;
}

Cell LineReader::Expression() {
  Cell left = Sum();
  while (Take("&")) left = ToText(left) + ToText(Sum());
  return left;
}

int64_t LineReader::Number() {
  return ToNumber(Sum());
}

int64_t LineReader::Count() {
  return ToNumber(Factor());
}

std::vector<Cell> LineReader::List() {
  std::vector<Cell> cells;
  do cells.push_back(Expression());
  while (Take(","));
  return cells;
}

Cell LineReader::Sum() {
  Cell left = Product();
  while (true) {
    if (Take("+"))
      left = ToNumber(left) + ToNumber(Product());
    else if (Take("-"))
      left = ToNumber(left) - ToNumber(Product());
    else
      return left;
  }
}

Cell LineReader::Product() {
  Cell left = Factor();
  while (true) {
    if (Take("*"))
      left = ToNumber(left) * ToNumber(Factor());
    else if (Take("/"))
      left = Divide(ToNumber(left), ToNumber(Factor()), false);
    else if (Take("%"))
      left = Divide(ToNumber(left), ToNumber(Factor()), true);
    else
      return left;
  }
}

Cell LineReader::Factor() {
  if (!Take("(")) return Literal();
  Cell inner = Expression();
  Expect(")");
  return inner;
}

Cell LineReader::Literal() {
  SkipBlanks();
  if (rest_.empty()) throw TextError("a value is missing");
  if (rest_.front() == '"') return TextLiteral();
  if (!IsNameStart(rest_.front())) return NumberLiteral();
  if (Take("null")) return Null();
  if (Take("yes")) return true;
  if (Take("no")) return false;
  const std::string name = Name();
  if (Take("(")) return Call(name);
  if (const auto number = names_->numbers.find(name); number != names_->numbers.end())
    return number->second;
  const auto definition = names_->definitions.find(name);
  if (definition == names_->definitions.end()) throw TextError("unknown: " + name);
  LineReader inner(definition->second, *names_);
  inner.depth_ = depth_ + 1;
  if (inner.depth_ > kDeepest) throw TextError(name + " is defined by itself");
  Cell value = inner.Expression();
  inner.ExpectEnd();
  return value;
}

Cell LineReader::Call(const std::string& name) {
  const std::vector<Cell> given = List();
  Expect(")");
  const auto needs = [&](size_t count) {
    if (given.size() != count) throw TextError(name + " takes another number of values");
  };
  if (name == "pick") {
    if (given.size() < 2 || ToNumber(given[0]) < 0) throw TextError("nothing to pick from");
    return given[1 + static_cast<size_t>(ToNumber(given[0])) % (given.size() - 1)];
  }
  needs(name == "counted" || name == "filled" || name == "digit" ? 2 : 1);
  if (name == "digit") return Digit(ToText(given[0]), ToNumber(given[1]));
  if (name == "counted") return Counted(ToText(given[0]), ToLength(given[1]));
  if (name == "filled") return Filled(ToText(given[0]), ToLength(given[1]));
  if (name == "hex") return FromHex(ToText(given[0]));
  if (name == "guid") return ToGuid(ToText(given[0]));
  if (name != "date") throw TextError("unknown: " + name);
  const std::optional<double> days = jet::sql::ParseDateText(ToText(given[0]));
  if (!days) throw TextError("no date");
  return DateTime{*days};
}

Cell LineReader::NumberLiteral() {
  size_t size = rest_.front() == '-' ? 1 : 0;
  while (size < rest_.size() &&
         (IsNamePart(rest_[size]) || rest_[size] == '.' ||
          (rest_[size] == '-' && (rest_[size - 1] == 'e' && !rest_.starts_with("0x"))))) {
    // "0 .. 9" has blanks, "0..9" would be one number otherwise.
    if (rest_.substr(size).starts_with("..")) break;
    ++size;
  }
  const std::string_view digits = rest_.substr(0, size);
  rest_.remove_prefix(size);
  const bool hex = digits.starts_with("0x");
  int64_t whole = 0;
  const char* end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data() + (hex ? 2 : 0), end, whole, hex ? 16 : 10);
  if (read.ec == std::errc() && read.ptr == end && !digits.empty()) return whole;
  const std::optional<double> number = ParseNumber(FromUtf8(digits));
  if (!number) throw TextError("no value: '" + std::string(digits) + std::string(rest_) + "'");
  return *number;
}

Text LineReader::TextLiteral() {
  Text text;
  size_t at = 1;
  size_t plain = 1;  // where what has no escapes begins
  const auto take_plain = [&] { text += FromUtf8(rest_.substr(plain, at - plain)); };
  for (;; ++at) {
    if (at >= rest_.size()) throw TextError("a text without an end");
    if (rest_[at] == '"') break;
    if (rest_[at] != '\\') continue;
    take_plain();
    constexpr std::string_view kEscapes = "n\nr\rt\t\"\"\\\\";
    const char kind = at + 1 < rest_.size() ? rest_[at + 1] : '\0';
    if (kind == 'u' && at + 5 < rest_.size()) {
      int unit = 0;
      for (size_t i = 2; i < 6; ++i)
        unit = unit * 16 + HexDigit(static_cast<unsigned char>(rest_[at + i]));
      text.push_back(static_cast<char16_t>(unit));
      at += 5;
    } else {
      size_t known = 0;
      while (known < kEscapes.size() && kEscapes[known] != kind) known += 2;
      if (known >= kEscapes.size()) throw TextError("an unknown sign behind \\");
      text.push_back(static_cast<unsigned char>(kEscapes[known + 1]));
      ++at;
    }
    plain = at + 1;
  }
  take_plain();
  rest_.remove_prefix(at + 1);
  return text;
}

std::string_view WithoutComment(std::string_view line) {
  bool in_text = false;
  for (size_t i = 0; i < line.size(); ++i) {
    if (in_text && line[i] == '\\') {
      ++i;
    } else if (line[i] == '"') {
      in_text = !in_text;
    } else if (line[i] == '#' && !in_text) {
      line = line.substr(0, i);
    }
  }
  while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.remove_suffix(1);
  return line;
}

}  // namespace rdv::sites
