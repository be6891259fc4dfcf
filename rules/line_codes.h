// The codes of a line record and their captions: what the database stores, what the grid keeps in
// its hidden columns and what it shows beside them.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "runtime/text.h"

namespace rdv {

namespace line_type {
inline constexpr int16_t kNotInstalled = 1;
inline constexpr int16_t kImpedance = 5;
inline constexpr int16_t kHybrid = 6;
inline constexpr int16_t kMusicOnHold = 8;
}  // namespace line_type

// The line types on offer, in the order of the list.
inline constexpr std::array<int16_t, 4> LineTypeCodes = {
    line_type::kNotInstalled, line_type::kHybrid, line_type::kMusicOnHold, line_type::kImpedance};

// What a hybrid line may use is stored under a card type of its own; the allowed volumes and modes
// of every other line type are stored under the line type's code.
inline constexpr int16_t kHybridLineCardType = 7;

constexpr int16_t CardTypeFor(int16_t given_line_type) {
  return given_line_type == line_type::kHybrid ? kHybridLineCardType : given_line_type;
}

namespace node_type {
inline constexpr int16_t kMusic = 11;
inline constexpr int16_t kNone = 999;  // the one that takes no node number
}  // namespace node_type

// The node types that a line may start at, in the order of the list.
inline constexpr std::array<int16_t, 12> StartNodeTypesType5 = {0, 1, 2, 3,  4,  6,
                                                                7, 8, 9, 13, 15, node_type::kNone};
inline constexpr std::array<int16_t, 13> StartNodeTypesType6 = {
    0, 1, 2, 3, 4, 6, 7, 8, 9, node_type::kMusic, 13, 15, node_type::kNone};
inline constexpr std::array<int16_t, 2> StartNodeTypesDefault = {node_type::kMusic,
                                                                 node_type::kNone};

// Those of impedance, hybrid and music-on-hold lines; empty for any other line type.
std::span<const int16_t> StartNodeTypesOf(int16_t given_line_type);

namespace mode_type {
inline constexpr int16_t kContinuous = 17;  // of a new music-on-hold line
}

// The modes that take a number while a line is edited.
inline constexpr std::array<int16_t, 8> ModeTypesWithNumber = {1, 2, 25, 26, 27, 28, 32, 33};
// The modes whose number is shown for a line as it is read from the database: mode 28 shows its
// bare name until somebody edits it.
inline constexpr std::array<int16_t, 7> kStoredModeTypesWithNumber = {1, 2, 25, 26, 27, 32, 33};

bool Contains(std::span<const int16_t> codes, double code);

namespace volume {
inline constexpr int16_t kLow = 0;
inline constexpr int16_t kHigh = 128;
inline constexpr int16_t kDefaultMusicOnHold = 6;
}  // namespace volume

namespace soft_stop {
inline constexpr int16_t kDisabled = 0;
inline constexpr int16_t kEnabled = 1;
}  // namespace soft_stop

namespace caption {
inline constexpr TextView kNotInstalled = u"Not Installed";
inline constexpr TextView kHigh = u"High";
inline constexpr TextView kLow = u"Low";
inline constexpr TextView kDisabled = u"Disabled";
inline constexpr TextView kEnabled = u"Enabled";
inline constexpr TextView kNotApplicable = u"N/A";
}  // namespace caption

struct ImpedanceCode {
  int16_t code;
  TextView caption;
};

// By country; the last one is offered only where the settings file says so.
inline constexpr std::array<ImpedanceCode, 6> kImpedanceCodes = {{
    {0, u"Use Country Code"},
    {1, u"PBX 600 ohm"},
    {2, u"North America"},
    {3, u"Europe"},
    {4, u"Australia"},
    {5, u"China"},
}};
inline constexpr int16_t kChinaImpedance = 5;

// The two are not each other's inverse: an unknown code shows as "UNKNOWN", while any unknown
// caption is code 0. Captions are compared exactly.
TextView ImpedanceCodeToCaption(int16_t code);
int16_t ImpedanceCaptionToCode(TextView impedance_caption);

inline constexpr int kLastNISOption = 99;
inline constexpr int kLastModeNumber = 10;
inline constexpr int kLastStartingNodeNumber = 999;

// The lines of the unit that music on hold is fitted to. Each occupies its own number and the next
// one, which is never shown.
inline constexpr std::array<int16_t, 2> kMusicOnHoldLines = {9, 11};

// Every line of the unit lies in this slot.
inline constexpr TextView kBaseSlotNo = u"1";
inline constexpr TextView kSlotOffset = u"1";

}  // namespace rdv
