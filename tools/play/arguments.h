// The arguments of a command, read as what the command takes. Each raises ScriptError, naming the
// argument, for one that is something else.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/play/driver.h"
#include "tools/play/script.h"

namespace rdv::play {

// Positions count from 0, the command itself left out.
class Arguments {
 public:
  // `line` outlives the object; its first token is the command.
  explicit Arguments(const std::vector<Token>& line) : given_(std::span(line).subspan(1)) {}

  size_t Count() const { return given_.size(); }
  const Text& AsText(size_t position) const { return given_[position].text; }
  int AsWhole(size_t position, int least, int most) const;
  int16_t AsInteger(size_t position) const;
  double AsReal(size_t position) const;
  // Bare words only; the name as it stands in `names`.
  std::string_view AsOneOf(size_t position, std::span<const std::string_view> names) const;
  // From that position to the end: the words "ctrl" and "shift", and the name of a button other
  // than the left one.
  MousePress AsMousePress(size_t from) const;
  // f2, up or down; nothing for another key.
  std::optional<GridKey> AsGridKey(size_t position) const;
  // ctrl+a, or one character that has a picture. In UTF-16 units.
  Text AsKey(size_t position) const;
  // The index of an entry of the list, -1 when it has no such entry: "#INDEX", "=ITEMDATA", or a
  // text, which a quoted argument always is.
  int AsEntryOf(size_t position, const ListSeen& list) const;

 private:
  [[noreturn]] void Fail(size_t position, std::string_view wanted) const;

  std::span<const Token> given_;
};

}  // namespace rdv::play
