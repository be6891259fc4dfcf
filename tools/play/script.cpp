#include "tools/play/script.h"

#include <algorithm>

namespace rdv::play {
namespace {

constexpr std::string_view kBlanks = " \t";

bool IsBlank(char byte) {
  return kBlanks.find(byte) != std::string_view::npos;
}

// Reads the JSON string that begins at `rest` and takes it off.
class JsonString {
 public:
  explicit JsonString(std::string_view& rest) : rest_(rest) {}

  Text Read() {
    Take();  // the opening quote
    Text text;
    for (;;) {
      const size_t plain = std::min(rest_.find_first_of("\"\\"), rest_.size());
      const std::string_view stretch = rest_.substr(0, plain);
      if (std::any_of(stretch.begin(), stretch.end(),
                      [](char byte) { return static_cast<unsigned char>(byte) < 0x20; })) {
        throw ScriptError("control character in a string");
      }
      text += FromUtf8(stretch);
      rest_.remove_prefix(plain);
      if (Take() == '"') return text;
      text += Escaped();
    }
  }

 private:
  char Take() {
    if (rest_.empty()) throw ScriptError("string without its closing quote");
    const char byte = rest_.front();
    rest_.remove_prefix(1);
    return byte;
  }

  char16_t Escaped() {
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr TextView kMeanings = u"\"\\/\b\f\n\r\t";
    const char letter = Take();
    if (letter == 'u') return CodeUnit();
    const size_t known = kLetters.find(letter);
    if (known == std::string_view::npos) throw ScriptError("unknown escape in a string");
    return kMeanings[known];
  }

  char16_t CodeUnit() {
    constexpr std::string_view kHexadecimal = "0123456789abcdef";
    unsigned unit = 0;
    for (int place = 0; place < 4; ++place) {
      const char given = Take();
      const char lower =
          given >= 'A' && given <= 'F' ? static_cast<char>(given - 'A' + 'a') : given;
      const size_t digit = kHexadecimal.find(lower);
      if (digit == std::string_view::npos) throw ScriptError("unknown escape in a string");
      unit = unit * 16 + static_cast<unsigned>(digit);
    }
    return static_cast<char16_t>(unit);
  }

  std::string_view& rest_;
};

void SkipBlanks(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
}

}  // namespace

std::vector<Token> Tokenize(std::string_view line) {
  std::vector<Token> tokens;
  if (line.ends_with('\r')) line.remove_suffix(1);
  SkipBlanks(line);
  if (line.starts_with('#')) return tokens;
  while (!line.empty()) {
    if (line.front() == '"') {
      tokens.push_back({JsonString(line).Read(), true});
      if (!line.empty() && !IsBlank(line.front())) {
        throw ScriptError("no blank after the closing quote of a string");
      }
    } else {
      const size_t length = std::min(line.find_first_of(kBlanks), line.size());
      tokens.push_back({FromUtf8(line.substr(0, length)), false});
      line.remove_prefix(length);
    }
    SkipBlanks(line);
  }
  return tokens;
}

}  // namespace rdv::play
