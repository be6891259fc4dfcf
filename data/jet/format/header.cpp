#include "data/jet/format/header.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <numeric>
#include <string_view>
#include <utility>

#include "data/jet/format/errors.h"

namespace rdv::jet {
namespace {

// The masked part of page 0 is covered with the RC4 stream of this key.
constexpr std::array<uint8_t, 4> kHeaderMaskKey = {0xC7, 0xDA, 0x39, 0x6B};

constexpr std::string_view kNameJet = "Standard Jet DB";
constexpr std::string_view kNameAce = "Standard ACE DB";
constexpr std::string_view kNameMoney = "MSISAM Database";

// The words that the key of the encrypted columns is mixed from: all from the password on.
constexpr size_t kSidWords = 28;
constexpr size_t kSidPasswordWords = 20;
constexpr size_t kSidWordShifts = 24;

bool IsAce(std::string_view name, uint32_t version) {
  return name == kNameAce || version == 2 || version == 3 || version == 5 || version == 6;
}

// Why a file is refused. What is certainly a database of another kind says so in its error, too.
struct Mismatch {
  Text reason;
  bool is_database = false;
};

const Format& FormatOf(uint32_t version) {
  return version == static_cast<uint32_t>(Version::Jet4) ? kJet4 : kJet3;
}

std::optional<Mismatch> TooShort(uint64_t file_size, const Format& format) {
  const uint64_t least = 2 * uint64_t{format.page_size};
  if (file_size >= least) return std::nullopt;
  if (file_size == 0) return Mismatch{u"The file is empty"};
  return Mismatch{u"The file is cut off at " + Decimal(static_cast<int64_t>(file_size)) +
                  u" bytes; the smallest database has " + Decimal(static_cast<int64_t>(least))};
}

// By the fixed part of the header that needs no uncovering: what tells a database of this engine
// from everything else.
std::optional<Mismatch> MismatchOf(Bytes start, uint64_t file_size) {
  if (file_size == 0) return TooShort(file_size, kJet3);
  const auto* engine = reinterpret_cast<const char*>(start.data() + kHeaderEngineName);
  const bool has_name = start.size() >= kHeaderEngineName + kHeaderEngineNameSize;
  const std::string_view name(engine, has_name ? strnlen(engine, kHeaderEngineNameSize) : 0);
  if (!has_name || !std::equal(kHeaderMark.begin(), kHeaderMark.end(), start.begin()) ||
      (name != kNameJet && name != kNameAce && name != kNameMoney)) {
    return Mismatch{u"The file has no such signature: it does not begin as a Jet database does"};
  }
  if (auto too_short = TooShort(file_size, kJet3)) return too_short;
  if (start.size() < kHeaderSize) return Mismatch{u"Its first page is cut off"};
  if (name == kNameMoney) return Mismatch{u"Files of Microsoft Money are not supported", true};
  const uint32_t version = Load32(start.data() + kHeaderVersion);
  if (IsAce(name, version)) {
    return Mismatch{u"It was made by Access 2007 or later; save it in the Access 2000-2003 format",
                    true};
  }
  if (version > static_cast<uint32_t>(Version::Jet4)) {
    return Mismatch{u"Version " + Decimal(version) + u" of the format is not known", true};
  }
  if (auto too_short = TooShort(file_size, FormatOf(version))) return too_short;
  if (file_size % kJet3.page_size != 0) {
    return Mismatch{u"The file is cut off in the middle of a page, at " +
                    Decimal(static_cast<int64_t>(file_size)) + u" bytes"};
  }
  std::array<uint8_t, kHeaderSize> page;
  std::copy_n(start.begin(), page.size(), page.begin());
  ApplyHeaderMask(page, FormatOf(version));
  if (Load32(&page[kHeaderDatabaseKey]) != 0)
    return Mismatch{u"The database is encoded; save it without encoding", true};
  return std::nullopt;
}

Text ReadPassword(Bytes page, const Format& format, double creation_date) {
  const Bytes field = page.subspan(kHeaderPassword, format.header.password_size);
  if (!format.IsJet4()) {
    const std::string_view bytes(reinterpret_cast<const char*>(field.data()), field.size());
    return FromWindows1252(bytes.substr(0, bytes.find('\0')));
  }
  const std::array<uint8_t, 4> mask = DateMask(creation_date);
  Text password;
  for (size_t i = 0; i + 1 < field.size(); i += 2) {
    const int low = field[i] ^ mask[i % mask.size()];
    const int high = field[i + 1] ^ mask[(i + 1) % mask.size()];
    const auto unit = static_cast<char16_t>(low | (high << 8));
    if (unit == 0) break;
    password.push_back(unit);
  }
  return password;
}

Header ParseFields(Bytes page, Version version) {
  Header header;
  header.version = version;
  const Format& format = header.Layout();
  header.code_page = Load16(&page[kHeaderCodePage]);
  header.sort_order = Load16(&page[format.header.sort_order]);
  header.build = Load32(&page[format.header.build]);
  if (format.IsJet4()) {
    header.sort_version = page[format.header.sort_version];
    header.creation_date = LoadDouble(&page[format.header.creation_date]);
    header.sid_key = ComputeSidKey(page);
  }
  header.password = ReadPassword(page, format, header.creation_date);
  return header;
}

}  // namespace

Header ReadHeader(Bytes start, uint64_t file_size, TextView path, TextView password) {
  if (const std::optional<Mismatch> mismatch = MismatchOf(start, file_size)) {
    if (mismatch->is_database) RaiseUnsupportedFormat(path, mismatch->reason);
    RaiseUnrecognizedFormat(path);
  }
  const auto version = static_cast<Version>(Load32(start.data() + kHeaderVersion));
  std::array<uint8_t, kHeaderSize> page;
  std::copy_n(start.begin(), page.size(), page.begin());
  ApplyHeaderMask(page, version == Version::Jet4 ? kJet4 : kJet3);
  Header header = ParseFields(page, version);
  if (!header.password.empty() && header.password != password) RaiseWrongPassword();
  return header;
}

std::optional<Text> WhyNotRecognized(Bytes start, uint64_t file_size) {
  const std::optional<Mismatch> mismatch = MismatchOf(start, file_size);
  return mismatch ? std::optional<Text>(mismatch->reason) : std::nullopt;
}

// The stream of the mask is the same for every file.
void ApplyHeaderMask(std::span<uint8_t> page, const Format& format) {
  assert(page.size() >= kHeaderSize);
  static const auto mask = [] {
    std::array<uint8_t, kHeaderSize - kHeaderMaskStart> stream{};
    ApplyRc4(kHeaderMaskKey, stream);
    return stream;
  }();
  const std::span<uint8_t> masked = page.subspan(kHeaderMaskStart, format.header.masked_size);
  std::ranges::transform(masked, mask, masked.begin(), std::bit_xor<>());
}

std::array<uint8_t, 4> DateMask(double creation_date) {
  int32_t day = 0;
  if (std::abs(creation_date) < std::numeric_limits<int32_t>::max()) {
    day = static_cast<int32_t>(creation_date);
  }
  std::array<uint8_t, 4> mask;
  Store32(mask.data(), static_cast<uint32_t>(day));
  return mask;
}

uint32_t ComputeSidKey(Bytes uncovered_page) {
  const double date = LoadDouble(&uncovered_page[kJet4.header.creation_date]);
  const std::array<uint8_t, 4> mask = DateMask(date);
  uint32_t hash = 0;
  for (size_t i = 0; i < kSidWords; ++i) {
    uint32_t low = uncovered_page[kHeaderPassword + 2 * i];
    if (i < kSidPasswordWords) low ^= mask[(2 * i) % mask.size()];
    hash ^= low << (i % kSidWordShifts);
  }
  return Load32(&uncovered_page[kJet4.header.creation_date]) ^ hash;
}

void ApplySidKey(uint32_t sid_key, std::span<uint8_t> bytes) {
  std::array<uint8_t, 4> key;
  Store32(key.data(), sid_key);
  ApplyRc4(key, bytes);
}

void ApplyRc4(Bytes key, std::span<uint8_t> bytes) {
  std::array<uint8_t, 256> state;
  std::iota(state.begin(), state.end(), uint8_t{0});
  uint8_t j = 0;
  for (size_t i = 0; i < state.size(); ++i) {
    j = static_cast<uint8_t>(j + state[i] + key[i % key.size()]);
    std::swap(state[i], state[j]);
  }
  uint8_t i = 0;
  j = 0;
  for (uint8_t& byte : bytes) {
    i = static_cast<uint8_t>(i + 1);
    j = static_cast<uint8_t>(j + state[i]);
    std::swap(state[i], state[j]);
    byte ^= state[static_cast<uint8_t>(state[i] + state[j])];
  }
}

std::optional<Text> SuspectState(Bytes commit_words) {
  for (size_t slot = 0; 2 * slot + 1 < commit_words.size(); ++slot) {
    const uint16_t word = Load16(&commit_words[2 * slot]);
    if (word == kCommitWriting) {
      return u"Session " + Decimal(static_cast<int64_t>(slot)) + u" was ended while it wrote";
    }
    if (word == kCommitCorrupt) {
      return u"Session " + Decimal(static_cast<int64_t>(slot)) + u" met a damaged page";
    }
  }
  return std::nullopt;
}

}  // namespace rdv::jet
