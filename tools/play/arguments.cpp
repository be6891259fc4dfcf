#include "tools/play/arguments.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include "runtime/conversion.h"

namespace rdv::play {
namespace {

constexpr char16_t kCtrlA = 1;

// Decimal digits with an optional sign, and nothing else.
std::optional<int64_t> ParseWhole(TextView text) {
  const std::string digits = ToUtf8(text);
  int64_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stopped, error] = std::from_chars(digits.data(), end, number);
  if (error != std::errc() || stopped != end) return std::nullopt;
  return number;
}

bool IsOneCharacter(TextView text) {
  if (text.size() == 1) return text[0] >= u' ' && text[0] != 0x7F;
  return text.size() == 2 && text[0] >= 0xD800 && text[0] < 0xDC00 && text[1] >= 0xDC00 &&
         text[1] < 0xE000;
}

}  // namespace

int Arguments::AsWhole(size_t position, int least, int most) const {
  const std::optional<int64_t> number = ParseWhole(AsText(position));
  if (!number) Fail(position, "a whole number");
  if (*number < least || *number > most) {
    Fail(position, "a number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  return static_cast<int>(*number);
}

int16_t Arguments::AsInteger(size_t position) const {
  using Limits = std::numeric_limits<int16_t>;
  return static_cast<int16_t>(AsWhole(position, Limits::min(), Limits::max()));
}

double Arguments::AsReal(size_t position) const {
  const std::optional<double> number = ParseNumber(AsText(position));
  constexpr double kMost = 1e9;
  if (!number || *number < -kMost || *number > kMost) Fail(position, "a number");
  return *number;
}

std::string_view Arguments::AsOneOf(size_t position,
                                    std::span<const std::string_view> names) const {
  const std::string given = ToUtf8(AsText(position));
  const auto found = std::find(names.begin(), names.end(), given);
  if (found == names.end()) {
    std::string wanted = "one of";
    for (const std::string_view name : names) wanted.append(" ").append(name);
    Fail(position, wanted);
  }
  return *found;
}

MousePress Arguments::AsMousePress(size_t from) const {
  using enum MouseButton;
  constexpr std::array<std::string_view, 5> kWords = {"ctrl", "shift", "right", "middle",
                                                      "further"};
  MousePress press;
  for (size_t position = from; position < Count(); ++position) {
    const std::string_view word = AsOneOf(position, kWords);
    if (word == "ctrl") {
      press.ctrl = true;
    } else if (word == "shift") {
      press.shift = true;
    } else {
      press.button = word == "right" ? Right : word == "middle" ? Middle : Further;
    }
  }
  return press;
}

std::optional<GridKey> Arguments::AsGridKey(size_t position) const {
  const TextView key = AsText(position);
  if (key == u"f2") return GridKey::Edit;
  if (key == u"up") return GridKey::Up;
  if (key == u"down") return GridKey::Down;
  return std::nullopt;
}

Text Arguments::AsKey(size_t position) const {
  const Token& key = given_[position];
  if (key.text == u"ctrl+a") return Text(1, kCtrlA);
  if (!IsOneCharacter(key.text)) Fail(position, "ctrl+a, f2, up, down or one printable character");
  return key.text;
}

int Arguments::AsEntryOf(size_t position, const ListSeen& list) const {
  const Token& entry = given_[position];
  const bool by_index = !entry.quoted && entry.text.starts_with(u'#');
  const bool by_code = !entry.quoted && entry.text.starts_with(u'=');
  std::optional<int64_t> number;
  if (by_index || by_code) {
    number = ParseWhole(TextView(entry.text).substr(1));
    if (!number) Fail(position, "a whole number after its first character");
  }
  for (size_t index = 0; index < list.entries.size(); ++index) {
    const ListSeen::Entry& candidate = list.entries[index];
    const bool matches = by_index  ? static_cast<int64_t>(index) == *number
                         : by_code ? candidate.item_data == *number
                                   : candidate.caption == entry.text;
    if (matches) return static_cast<int>(index);
  }
  return -1;
}

void Arguments::Fail(size_t position, std::string_view wanted) const {
  throw ScriptError("'" + ToUtf8(AsText(position)) + "' is not " + std::string(wanted));
}

}  // namespace rdv::play
