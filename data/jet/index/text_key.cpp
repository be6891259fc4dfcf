#include <algorithm>

#include "data/jet/format/format.h"
#include "data/jet/index/index_key.h"
#include "data/jet/index/text_key_tables.h"

namespace rdv::jet {
namespace {

constexpr uint8_t kFieldEnd = 0x01;
constexpr uint8_t kKeyEnd = 0x00;
constexpr uint8_t kPlainWeight = 0x02;
constexpr size_t kMaxWeight = 0xFF;

// An ignorable character: its position (as a number with these two constants), a mark, its code.
constexpr size_t kIgnorableBase = 0x8007;
constexpr size_t kIgnorableStep = 4;
constexpr uint8_t kIgnorableMark = 0x06;

// Sorts characters without a code behind all others; never part of a stored key.
constexpr uint8_t kUnknownPrimary = 0xFF;

constexpr char16_t kBlank = u' ';

constexpr uint8_t kNibblePlain = 0x2;
constexpr uint8_t kNibbleEnd = 0x0;

TextView WithoutTrailingBlanks(TextView text) {
  while (!text.empty() && text.back() == kBlank) text.remove_suffix(1);
  return text;
}

// What an index takes into account of a text.
TextView Significant(TextView text) {
  return WithoutTrailingBlanks(text.substr(0, kMaxTextUnits));
}

void AppendPrimary(uint16_t primary, Key& key) {
  if (primary > 0xFF) key.push_back(static_cast<uint8_t>(primary >> 8));
  key.push_back(static_cast<uint8_t>(primary));
}

// The three fields of a Jet 4 key that have contents.
class FieldsJet4 {
 public:
  // `place_size`: the bytes of a place among the characters. Two are stored; more serve texts of
  // any length.
  explicit FieldsJet4(size_t place_size = sizeof(uint16_t)) : place_size_(place_size) {}

  // False for a character that has no code.
  bool Add(char16_t unit) {
    const CharacterCode code = CodeOf(unit);
    switch (code.kind) {
      case CharacterKind::Primary:
        AppendPrimary(code.primary, primary_);
        weights_.push_back(code.weight == 0 ? kPlainWeight : code.weight);
        ++positions_;
        return true;
      case CharacterKind::CombiningMark:
        return AddWeight(code.weight);
      case CharacterKind::Ignorable:
        AddIgnorable(static_cast<uint8_t>(code.primary));
        return true;
      case CharacterKind::Ignored:
        return true;
      case CharacterKind::Unknown:
        break;
    }
    return false;
  }

  void AddUnknown(char16_t unit) {
    primary_.push_back(kUnknownPrimary);
    primary_.push_back(static_cast<uint8_t>(unit >> 8));
    primary_.push_back(static_cast<uint8_t>(unit));
    weights_.push_back(kPlainWeight);
    ++positions_;
  }

  // Fields are parted by kFieldEnd; empty ones at the end are left out.
  Key Finish() && {
    while (!weights_.empty() && weights_.back() <= kPlainWeight) weights_.pop_back();
    Key key = std::move(primary_);
    key.push_back(kFieldEnd);
    key.insert(key.end(), weights_.begin(), weights_.end());
    if (!ignorables_.empty()) {
      key.insert(key.end(), 3, kFieldEnd);  // over the fields of case and of Japanese kana
      key.insert(key.end(), ignorables_.begin(), ignorables_.end());
    }
    key.push_back(kKeyEnd);
    return key;
  }

 private:
  // A mark without a character before it has a weight of its own that is no position.
  bool AddWeight(uint8_t weight) {
    if (weights_.empty()) weights_.push_back(0);
    const size_t sum = size_t{weights_.back()} + weight;
    weights_.back() = static_cast<uint8_t>(sum);
    return sum <= kMaxWeight;
  }

  void AddIgnorable(uint8_t code) {
    const size_t place = kIgnorableBase + kIgnorableStep * positions_;
    for (size_t byte = place_size_; byte-- > 0;)
      ignorables_.push_back(static_cast<uint8_t>(place >> (byte * 8)));
    ignorables_.push_back(kIgnorableMark);
    ignorables_.push_back(code);
  }

  size_t place_size_;
  Key primary_;
  Key weights_;
  Key ignorables_;
  size_t positions_ = 0;
};

// The key by which texts are compared in memory: defined for every text.
Key ComparisonKey(TextView text) {
  FieldsJet4 fields(sizeof(uint32_t));
  for (const char16_t unit : WithoutTrailingBlanks(text)) {
    if (!fields.Add(unit)) fields.AddUnknown(unit);
  }
  return std::move(fields).Finish();
}

// Half bytes, the higher one first.
class Nibbles {
 public:
  void Add(uint8_t nibble) {
    if (half_) {
      bytes_.back() = static_cast<uint8_t>(bytes_.back() | nibble);
    } else {
      bytes_.push_back(static_cast<uint8_t>(nibble << 4));
    }
    half_ = !half_;
  }
  const Key& Bytes() const { return bytes_; }

 private:
  Key bytes_;
  bool half_ = false;
};

void Complement(Key& key, size_t from) {
  for (size_t i = from; i < key.size(); ++i) key[i] = static_cast<uint8_t>(~key[i]);
}

}  // namespace

bool AppendTextKeyJet4(TextView text, bool descending, Key& key, char16_t& unsupported) {
  FieldsJet4 fields;
  for (const char16_t unit : Significant(text)) {
    if (fields.Add(unit)) continue;
    unsupported = unit;
    return false;
  }
  const size_t start = key.size();
  const Key bytes = std::move(fields).Finish();
  key.insert(key.end(), bytes.begin(), bytes.end());
  if (descending) {
    Complement(key, start);
    key.push_back(kKeyEnd);
  }
  return true;
}

void AppendTextKeyJet3(TextView text, bool descending, Key& key) {
  const size_t start = key.size();
  Nibbles accents;
  accents.Add(kNibbleEnd);
  size_t plain = 0;  // letters without an accent since the last one with one
  bool accented = false;
  for (const char16_t unit : Significant(text)) {
    const std::string byte = ToWindows1252(TextView(&unit, 1));
    if (byte == "?" && unit != u'?') continue;  // not in the code page
    const WesternCode code = WesternCodeOf(static_cast<uint8_t>(byte.front()));
    AppendPrimary(code.primary, key);
    plain += code.accentable;
    if (code.accent == 0) continue;
    for (; plain > 0; --plain) accents.Add(kNibblePlain);
    accents.Add(code.accent);
    accented = true;
  }
  if (accented) {
    accents.Add(kNibbleEnd);
    key.insert(key.end(), accents.Bytes().begin(), accents.Bytes().end());
  } else {
    key.push_back(kKeyEnd);
  }
  if (descending) Complement(key, start);
}

int CompareTexts(TextView left, TextView right) {
  const Key left_key = ComparisonKey(left);
  const Key right_key = ComparisonKey(right);
  return left_key < right_key ? -1 : left_key == right_key ? 0 : 1;
}

}  // namespace rdv::jet
