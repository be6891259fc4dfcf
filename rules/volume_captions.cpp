#include "rules/volume_captions.h"

#include <algorithm>
#include <cstdint>

#include "data/settings_file.h"
#include "rules/error_report.h"

namespace rdv {
namespace {

enum class Lines { MusicOnHold, ImpedanceAndHybrid, Others };
enum class Shown { High, Low, Number, OfSettings };
// "Low" and the zero that only lines of music on hold are offered have the same code.
enum class Taken { AsChosen, AsNumber, UnlessZero, Refused };

struct Volumes {
  Code first;
  Code last;
};

constexpr Volumes kHigh = {volume::kHigh, volume::kHigh};
constexpr Volumes kLow = {volume::kLow, volume::kLow};
constexpr Volumes k1To9 = {Code{1}, Code{9}};
constexpr Volumes kAny = {Code{INT32_MIN}, Code{INT32_MAX}};

struct VolumeRule {
  Lines lines;
  Volumes volumes;
  Shown offered;
  Shown stored;
  Taken chosen;
};

// The first one that a line type and a volume meet counts.
// clang-format off
constexpr VolumeRule kRules[] = {
    // lines                     volume  offered            stored             chosen
    {Lines::MusicOnHold,         kHigh,  Shown::High,       Shown::High,       Taken::Refused},
    {Lines::MusicOnHold,         kLow,   Shown::Low,        Shown::OfSettings, Taken::AsNumber},
    {Lines::MusicOnHold,         k1To9,  Shown::OfSettings, Shown::OfSettings, Taken::AsChosen},
    {Lines::MusicOnHold,         kAny,   Shown::OfSettings, Shown::OfSettings, Taken::Refused},
    {Lines::ImpedanceAndHybrid,  kHigh,  Shown::High,       Shown::High,       Taken::AsChosen},
    {Lines::ImpedanceAndHybrid,  kLow,   Shown::Low,        Shown::Low,        Taken::UnlessZero},
    {Lines::ImpedanceAndHybrid,  kAny,   Shown::Number,     Shown::Number,     Taken::Refused},
    {Lines::Others,              kHigh,  Shown::High,       Shown::High,       Taken::AsChosen},
    {Lines::Others,              kLow,   Shown::Low,        Shown::Number,     Taken::AsChosen},
    {Lines::Others,              kAny,   Shown::Number,     Shown::Number,     Taken::AsChosen},
};
// clang-format on

Lines LinesOf(Code line_type) {
  switch (line_type) {
    case line_type::kMusicOnHold:
      return Lines::MusicOnHold;
    case line_type::kImpedance:
    case line_type::kHybrid:
      return Lines::ImpedanceAndHybrid;
    default:
      return Lines::Others;
  }
}

const VolumeRule& RuleFor(Code volume, Code line_type) {
  return *std::ranges::find_if(kRules, [&](const VolumeRule& rule) {
    return rule.lines == LinesOf(line_type) && rule.volumes.first <= volume &&
           volume <= rule.volumes.last;
  });
}

Text CaptionOf(Code volume, Shown shown, Screen& screen) {
  switch (shown) {
    case Shown::High:
      return Text(caption::kHigh);
    case Shown::Low:
      return Text(caption::kLow);
    case Shown::OfSettings:
      return GetMOHVolumeCaptionfromINI(Decimal(volume), PlainReporter(screen));
    case Shown::Number:
      break;
  }
  return Decimal(volume);
}

}  // namespace

Text OfferedVolumeCaption(Code volume, Code line_type, Screen& screen) {
  return CaptionOf(volume, RuleFor(volume, line_type).offered, screen);
}

Text StoredVolumeCaption(Code volume, Code line_type, Screen& screen) {
  return CaptionOf(volume, RuleFor(volume, line_type).stored, screen);
}

std::optional<Text> AcceptedVolume(Code line_type, const Choice& volume) {
  switch (RuleFor(volume.code, line_type).chosen) {
    case Taken::AsChosen:
      return volume.caption;
    case Taken::AsNumber:
      return Decimal(volume.code);
    case Taken::UnlessZero:
      if (volume.caption != caption::kZeroVolume) return volume.caption;
      break;
    case Taken::Refused:
      break;
  }
  return std::nullopt;
}

}  // namespace rdv
