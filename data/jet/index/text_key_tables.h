// The code of each character in the keys of indexed texts, General sort order.
#pragma once

#include <cstdint>

namespace rdv::jet {

enum class CharacterKind : uint8_t {
  Unknown,
  Primary,        // takes a position in the key; `weight` tells its accent
  CombiningMark,  // adds `weight` to the accent of the position before
  Ignorable,      // `primary` is its code among the ignorable characters
  Ignored,
};

// Jet 4.
struct CharacterCode {
  CharacterKind kind = CharacterKind::Unknown;
  uint8_t weight = 0;    // 0: that of a character without an accent
  uint16_t primary = 0;  // one byte, or two where above 0xFF
};

CharacterCode CodeOf(char16_t unit);

// Jet 3, by byte of code page 1252.
struct WesternCode {
  uint8_t accent = 0;      // of an accented letter
  uint8_t accentable = 0;  // letters without an accent that could bear one
  uint16_t primary = 0;    // one byte, or two where above 0xFF
};

WesternCode WesternCodeOf(uint8_t byte);

}  // namespace rdv::jet
