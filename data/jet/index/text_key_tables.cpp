// The code of each character in the keys of indexed texts, General sort order.
#include "data/jet/index/text_key_tables.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace rdv::jet {
namespace {

// clang-format off

// Jet 4, U+0000 to U+017F, sixteen to a row:
//   XX or XXYY  primary bytes
//   +DD         weight of its accent
//   ^DD         adds to the accent of the character before
//   ~CC         ignored at first, told apart last
//   .           ignored
constexpr std::string_view kLatinCodes =
    /* 0000 */ ". ~03 ~04 ~05 ~06 ~07 ~08 ~09 ~0A 0803 0804 0805 0806 0807 ~0B ~0C "
    /* 0010 */ "~0D ~0E ~0F ~10 ~11 ~12 ~13 ~14 ~15 ~16 ~17 ~18 ~19 ~1A ~1B ~1C "
    /* 0020 */ "07 09 0A 0C 0E 10 12 ~80 14 16 18 2C 1A ~82 1C 1E "
    /* 0030 */ "36 38 3A 3C 3E 40 42 44 46 48 20 22 2E 30 32 24 "
    /* 0040 */ "26 4A 4C 4D 4F 51 53 55 57 59 5B 5C 5E 60 62 64 "
    /* 0050 */ "66 68 69 6B 6D 6F 71 73 75 76 78 27 29 2A 2B02 2B03 "
    /* 0060 */ "2B07 4A 4C 4D 4F 51 53 55 57 59 5B 5C 5E 60 62 64 "
    /* 0070 */ "66 68 69 6B 6D 6F 71 73 75 76 78 2B09 2B0B 2B0D 2B0F ~1D "
    /* 0080 */ "~1E ~1F ~20 ~21 ~22 ~23 ~24 ~25 ~26 ~27 ~28 ~29 ~2A ~2B ~2C ~2D "
    /* 0090 */ "~2E ~2F ~30 ~31 ~32 ~33 ~34 ~35 ~36 ~37 ~38 ~39 ~3A ~3B ~3C ~3D "
    /* 00A0 */ "0802 2B10 34A6 34A7 34A8 34A9 2B11 34AA 2B12 34AB 4A+03 3305 34AC ~83 34AD 2B13 "
    /* 00B0 */ "34AE 3304 3A 3C 2B14 34AF 34B0 34B1 2B15 38 64+03 3307 3712 3716 371A 2B16 "
    /* 00C0 */ "4A+0F 4A+0E 4A+12 4A+19 4A+13 4A+1A 4A51 4D+1C 51+0F 51+0E 51+12 51+13 59+0F 59+0E 59+12 59+13 "
    /* 00D0 */ "4F+68 62+19 64+0F 64+0E 64+12 64+19 64+13 3309 64+21 6F+0F 6F+0E 6F+12 6F+13 76+0E 6D57 6B6B "
    /* 00E0 */ "4A+0F 4A+0E 4A+12 4A+19 4A+13 4A+1A 4A51 4D+1C 51+0F 51+0E 51+12 51+13 59+0F 59+0E 59+12 59+13 "
    /* 00F0 */ "4F+68 62+19 64+0F 64+0E 64+12 64+19 64+13 330A 64+21 6F+0F 6F+0E 6F+12 6F+13 76+0E 6D57 76+13 "
    /* 0100 */ "4A+17 4A+17 4A+15 4A+15 4A+1B 4A+1B 4D+0E 4D+0E 4D+12 4D+12 4D+10 4D+10 4D+14 4D+14 4F+14 4F+14 "
    /* 0110 */ "4F+1E 4F+1E 51+17 51+17 51+15 51+15 51+10 51+10 51+1B 51+1B 51+14 51+14 55+12 55+12 55+15 55+15 "
    /* 0120 */ "55+10 55+10 55+1C 55+1C 57+12 57+12 57+1E 57+1E 59+19 59+19 59+17 59+17 59+15 59+15 59+1B 59+1B "
    /* 0130 */ "59+10 59+03 595B 595B 5B+12 5B+12 5C+1C 5C+1C 5C+03 5E+0E 5E+0E 5E+1C 5E+1C 5E+14 5E+14 5E+11 "
    /* 0140 */ "5E+11 5E+1F 5E+1F 62+0E 62+0E 62+1C 62+1C 62+14 62+14 62+48 6305 6305 64+17 64+17 64+15 64+15 "
    /* 0150 */ "64+1D 64+1D 6451 6451 69+0E 69+0E 69+1C 69+1C 69+14 69+14 6B+0E 6B+0E 6B+12 6B+12 6B+1C 6B+1C "
    /* 0160 */ "6B+14 6B+14 6D+1C 6D+1C 6D+14 6D+14 6E06+1E 6E06+1E 6F+19 6F+19 6F+17 6F+17 6F+15 6F+15 6F+1A 6F+1A "
    /* 0170 */ "6F+1D 6F+1D 6F+1B 6F+1B 73+12 73+12 76+12 76+12 76+13 78+0E 78+0E 78+10 78+10 78+14 78+14 6C06 ";

// Jet 4, the characters beyond that are known. The rest of polytonic Greek is ignored (see the
// search below).
constexpr std::string_view kOtherCodes =
    "0192=53+7B 0218=. 0219=. 021A=. 021B=. 02C6=2B02+03 "
    "02C7=2B18 02D8=2B18+03 02D9=2B19 02DA=2B1A 02DB=2B1B 02DC=2B1C "
    "02DD=2B1D 0300=^0D 0301=^0C 0302=^10 0303=^17 0304=^15 "
    "0306=^13 0307=^0E 0308=^11 030A=^18 030B=^1B 030C=^12 "
    "0327=^1A 0328=^19 0386=790C+05 0388=7910+05 0389=7912+05 038A=7914+05 "
    "038C=791A+05 038E=791F+05 038F=7923+05 0390=7914+16 0391=790C 0392=790D "
    "0393=790E 0394=790F 0395=7910 0396=7911 0397=7912 0398=7913 "
    "0399=7914 039A=7915 039B=7916 039C=7917 039D=7918 039E=7919 "
    "039F=791A 03A0=791B 03A1=791C 03A3=791D 03A4=791E 03A5=791F "
    "03A6=7920 03A7=7921 03A8=7922 03A9=7923 03AA=7914+13 03AB=791F+13 "
    "03AC=790C+05 03AD=7910+05 03AE=7912+05 03AF=7914+05 03B0=791F+16 03B1=790C "
    "03B2=790D 03B3=790E 03B4=790F 03B5=7910 03B6=7911 03B7=7912 "
    "03B8=7913 03B9=7914 03BA=7915 03BB=7916 03BC=7917 03BD=7918 "
    "03BE=7919 03BF=791A 03C0=791B 03C1=791C 03C2=791D 03C3=791D "
    "03C4=791E 03C5=791F 03C6=7920 03C7=7921 03C8=7922 03C9=7923 "
    "03CA=7914+13 03CB=791F+13 03CC=791A+05 03CD=791F+05 03CE=7923+05 03F0=7915+03 0401=7936+13 "
    "0402=7935 0403=7932+0E 0404=7937 0405=793A 0406=793C 0407=793D "
    "0408=793F 0409=7942 040A=7945 040B=794B 040C=7940+0E 040E=794E "
    "040F=7954 0410=792F 0411=7930 0412=7931 0413=7932 0414=7933 "
    "0415=7936 0416=7938 0417=7939 0418=793B 0419=793E 041A=7940 "
    "041B=7941 041C=7943 041D=7944 041E=7946 041F=7947 0420=7948 "
    "0421=7949 0422=794A 0423=794D 0424=7950 0425=7951 0426=7952 "
    "0427=7953 0428=7955 0429=7956 042A=7957 042B=7958 042C=7959 "
    "042D=795A 042E=795B 042F=795C 0430=792F 0431=7930 0432=7931 "
    "0433=7932 0434=7933 0435=7936 0436=7938 0437=7939 0438=793B "
    "0439=793E 043A=7940 043B=7941 043C=7943 043D=7944 043E=7946 "
    "043F=7947 0440=7948 0441=7949 0442=794A 0443=794D 0444=7950 "
    "0445=7951 0446=7952 0447=7953 0448=7955 0449=7956 044A=7957 "
    "044B=7958 044C=7959 044D=795A 044E=795B 044F=795C 0451=7936+13 "
    "0452=7935 0453=7932+0E 0454=7937 0455=793A 0456=793C 0457=793D "
    "0458=793F 0459=7942 045A=7945 045B=794B 045C=7940+0E 045E=794E "
    "045F=7954 2010=~84 2011=~85 2012=~88 2013=~89 2014=~8B "
    "2015=~8C 2018=2B37 2019=2B38 201A=2B39 201C=2B3B 201D=2B3C "
    "201E=2B3D 2020=34B3 2021=34B4 2022=34B5 2026=34B9 2030=34BA "
    "2032=2B3F 2033=2B40 2039=2B46 203A=2B47 20AC=35A1 2122=6E04 ";

// Jet 3, by byte of code page 1252: one or two bytes, a "!" for each letter that can bear an accent
// and +N for the accent that one bears.
constexpr std::string_view kWesternCodes =
    /* 00 */ "10 10 10 10 10 10 10 10 10 11 10 10 10 10 10 10 "
    /* 10 */ "10 10 10 10 10 10 10 10 10 10 10 10 10 10 10 10 "
    /* 20 */ "11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 "
    /* 30 */ "56 57 58 59 5A 5B 5C 5D 5E 5F 21 22 23 24 25 26 "
    /* 40 */ "27 60! 61 62! 64 66! 67 68 69 6A! 6B 6C 6D 6F 70! 72! "
    /* 50 */ "73 74 75 76! 77 78! 7A 7B 7C 7D! 7E 28 29 2A 2B 2C "
    /* 60 */ "2D 60! 61 62! 64 66! 67 68 69 6A! 6B 6C 6D 6F 70! 72! "
    /* 70 */ "73 74 75 76! 77 78! 7A 7B 7C 7D! 7E 2E 2F 30 31 10 "
    /* 80 */ "10 10 18 32 13 33 34 35 36 37 76+A 18 7266!! 10 10 10 "
    /* 90 */ "10 18 18 13 13 38 1E 1E 39 3A 76+A 18 7266!! 10 10 7D+6 "
    /* A0 */ "11 3B 3C 3D 3E 3F 40 41 42 43 44 13 45 1E 46 47 "
    /* B0 */ "48 49 58 59 4A 4B 4C 4D 4E 57 4F 13 50 51 52 53 "
    /* C0 */ "60+3 60+4 60+5 60+7 60+6 60+8 6066!! 62+9 66+3 66+4 66+5 66+6 6A+3 6A+4 6A+5 6A+6 "
    /* D0 */ "65 70+7 72+3 72+4 72+5 72+7 72+6 54 81 78+3 78+4 78+5 78+6 7D+4 7F 7676!! "
    /* E0 */ "60+3 60+4 60+5 60+7 60+6 60+8 6066!! 62+9 66+3 66+4 66+5 66+6 6A+3 6A+4 6A+5 6A+6 "
    /* F0 */ "65 70+7 72+3 72+4 72+5 72+7 72+6 55 81 78+3 78+4 78+5 78+6 7D+4 7F 7D+6 ";

// clang-format on

constexpr char16_t kPolytonicFirst = 0x1F00;
constexpr char16_t kPolytonicLast = 0x1FFF;

// Takes the next word off a table's text.
constexpr std::string_view NextWord(std::string_view& text) {
  const size_t end = text.find(' ');
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end + 1);
  return word;
}

constexpr unsigned Hex(std::string_view digits) {
  unsigned number = 0;
  for (const char digit : digits) {
    number = number * 16 + static_cast<unsigned>(digit <= '9' ? digit - '0' : digit - 'A' + 10);
  }
  return number;
}

constexpr CharacterCode ParseCode(std::string_view word) {
  CharacterCode code;
  if (word == ".") {
    code.kind = CharacterKind::Ignored;
  } else if (word.front() == '^') {
    code.kind = CharacterKind::CombiningMark;
    code.weight = static_cast<uint8_t>(Hex(word.substr(1)));
  } else if (word.front() == '~') {
    code.kind = CharacterKind::Ignorable;
    code.primary = static_cast<uint16_t>(Hex(word.substr(1)));
  } else {
    code.kind = CharacterKind::Primary;
    const size_t plus = word.find('+');
    code.primary = static_cast<uint16_t>(Hex(word.substr(0, plus)));
    if (plus != std::string_view::npos)
      code.weight = static_cast<uint8_t>(Hex(word.substr(plus + 1)));
  }
  return code;
}

constexpr size_t kLatinCount = 0x180;

constexpr std::array<CharacterCode, kLatinCount> ParseLatin() {
  std::array<CharacterCode, kLatinCount> codes;
  std::string_view text = kLatinCodes;
  for (CharacterCode& code : codes) code = ParseCode(NextWord(text));
  return codes;
}

struct OtherCode {
  char16_t unit = 0;
  CharacterCode code;
};

constexpr size_t CountWords(std::string_view text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), ' '));
}

constexpr auto ParseOthers() {
  std::array<OtherCode, CountWords(kOtherCodes)> codes;
  std::string_view text = kOtherCodes;
  for (OtherCode& other : codes) {
    const std::string_view word = NextWord(text);
    const size_t equals = word.find('=');
    other.unit = static_cast<char16_t>(Hex(word.substr(0, equals)));
    other.code = ParseCode(word.substr(equals + 1));
  }
  return codes;
}

constexpr std::array<WesternCode, 256> ParseWestern() {
  std::array<WesternCode, 256> codes;
  std::string_view text = kWesternCodes;
  for (WesternCode& code : codes) {
    const std::string_view word = NextWord(text);
    const size_t mark = word.find_first_of("!+");
    code.primary = static_cast<uint16_t>(Hex(word.substr(0, mark)));
    if (mark == std::string_view::npos) continue;
    if (word[mark] == '+') {
      code.accent = static_cast<uint8_t>(Hex(word.substr(mark + 1)));
    } else {
      code.accentable = static_cast<uint8_t>(word.size() - mark);
    }
  }
  return codes;
}

constexpr auto kLatin = ParseLatin();
constexpr auto kOthers = ParseOthers();
constexpr auto kWestern = ParseWestern();

}  // namespace

CharacterCode CodeOf(char16_t unit) {
  if (unit < kLatin.size()) return kLatin[unit];
  const auto other =
      std::lower_bound(kOthers.begin(), kOthers.end(), unit,
                       [](const OtherCode& code, char16_t wanted) { return code.unit < wanted; });
  if (other != kOthers.end() && other->unit == unit) return other->code;
  CharacterCode code;
  if (unit >= kPolytonicFirst && unit <= kPolytonicLast) code.kind = CharacterKind::Ignored;
  return code;
}

WesternCode WesternCodeOf(uint8_t byte) {
  return kWestern[byte];
}

}  // namespace rdv::jet
