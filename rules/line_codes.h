// The codes of a line record and their captions: what the database stores, what the grid keeps in
// its hidden columns and what it shows beside them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <ranges>
#include <span>

#include "runtime/text.h"

namespace rdv {

// A whole number that stands for something: a line type, a node type, a volume. Codes are compared
// and looked up, never calculated with, and no other number is taken for one.
enum class Code : int32_t {};

constexpr int32_t NumberOf(Code code) {
  return static_cast<int32_t>(code);
}
Text Decimal(Code code);

// That of a hidden column. Raises 13 for a text that is no number.
Code CodeIn(TextView cell);

template <std::same_as<int>... Numbers>
constexpr std::array<Code, sizeof...(Numbers)> Codes(Numbers... numbers) {
  return {Code{numbers}...};
}

template <std::ranges::range Values>
bool Contains(const Values& values, std::ranges::range_value_t<Values> wanted) {
  return std::ranges::find(values, wanted) != std::ranges::end(values);
}

namespace line_type {
inline constexpr Code kNotInstalled{1};
inline constexpr Code kImpedance{5};
inline constexpr Code kHybrid{6};
inline constexpr Code kMusicOnHold{8};
}  // namespace line_type

// The line types on offer, in the order of the list.
inline constexpr std::array LineTypeCodes = {line_type::kNotInstalled, line_type::kHybrid,
                                             line_type::kMusicOnHold, line_type::kImpedance};

// What a hybrid line may use is stored under a card type of its own; the allowed volumes and modes
// of every other line type are stored under the line type's code.
inline constexpr Code kHybridLineCardType{7};

constexpr Code CardTypeFor(Code given_line_type) {
  return given_line_type == line_type::kHybrid ? kHybridLineCardType : given_line_type;
}

namespace node_type {
inline constexpr Code kMusic{11};
inline constexpr Code kNone{999};  // the one that takes no node number
}  // namespace node_type

// The node types that a line may start at, in the order of the list.
inline constexpr auto StartNodeTypesType5 = Codes(0, 1, 2, 3, 4, 6, 7, 8, 9, 13, 15, 999);
inline constexpr auto StartNodeTypesType6 = Codes(0, 1, 2, 3, 4, 6, 7, 8, 9, 11, 13, 15, 999);
inline constexpr auto StartNodeTypesDefault = Codes(11, 999);

// Those of impedance, hybrid and music-on-hold lines; empty for any other line type.
std::span<const Code> StartNodeTypesOf(Code given_line_type);

namespace mode_type {
inline constexpr Code kContinuous{17};  // of a new music-on-hold line
}

// The modes that take a number while a line is edited.
inline constexpr auto ModeTypesWithNumber = Codes(1, 2, 25, 26, 27, 28, 32, 33);
// The modes whose number is shown for a line as it is read from the database: mode 28 shows its
// bare name until somebody edits it.
inline constexpr auto kStoredModeTypesWithNumber = Codes(1, 2, 25, 26, 27, 32, 33);

namespace volume {
inline constexpr Code kLow{0};
inline constexpr Code kHigh{128};
inline constexpr Code kDefaultMusicOnHold{6};
}  // namespace volume

namespace soft_stop {
inline constexpr Code kDisabled{0};
inline constexpr Code kEnabled{1};
}  // namespace soft_stop

namespace caption {
inline constexpr TextView kNotInstalled = u"Not Installed";
inline constexpr TextView kHigh = u"High";
inline constexpr TextView kLow = u"Low";
inline constexpr TextView kDisabled = u"Disabled";
inline constexpr TextView kEnabled = u"Enabled";
inline constexpr TextView kNotApplicable = u"N/A";
// The first volume that lines of music on hold are offered; its code is that of "Low".
inline constexpr TextView kZeroVolume = u"0";
}  // namespace caption

struct ImpedanceCode {
  Code code;
  TextView caption;
};

// By country; the last one is offered only where the settings file says so.
inline constexpr std::array<ImpedanceCode, 6> kImpedanceCodes = {{
    {Code{0}, u"Use Country Code"},
    {Code{1}, u"PBX 600 ohm"},
    {Code{2}, u"North America"},
    {Code{3}, u"Europe"},
    {Code{4}, u"Australia"},
    {Code{5}, u"China"},
}};
inline constexpr Code kChinaImpedance{5};

// The two are not each other's inverse: an unknown code shows as "UNKNOWN", while any unknown
// caption is code 0. Captions are compared exactly.
TextView ImpedanceCodeToCaption(Code code);
Code ImpedanceCaptionToCode(TextView impedance_caption);

inline constexpr int kLastNISOption = 99;
inline constexpr int kLastModeNumber = 10;
inline constexpr int kLastStartingNodeNumber = 999;

// The numbers of the unit's lines that music on hold is fitted to. Each occupies its own number and
// the next one, which is never shown.
inline constexpr std::array<int16_t, 2> kMusicOnHoldLines = {9, 11};

// Every line of the unit lies in this slot.
inline constexpr TextView kBaseSlotNo = u"1";
inline constexpr TextView kSlotOffset = u"1";

}  // namespace rdv
