#include "data/jet/catalog/properties.h"

#include <algorithm>
#include <array>
#include <optional>

#include "data/jet/catalog/catalog.h"
#include "data/jet/rows/memory_budget.h"

namespace rdv::jet {
namespace {

constexpr std::array<uint8_t, 4> kMarkJet4 = {'M', 'R', '2', 0};
constexpr std::array<uint8_t, 4> kMarkJet3 = {'K', 'K', 'D', 0};

constexpr uint16_t kBlockNames = 0x0080;
constexpr uint16_t kBlockObject = 0x0000;
constexpr uint16_t kBlockColumn = 0x0001;
constexpr size_t kBlockHeaderSize = 6;  // u32 size of the block, u16 kind
constexpr size_t kOwnerSizeSize = 4;    // u32 size of the owner's name with all that tells it
constexpr size_t kValueHeaderSize = 8;  // u16 size, u8 schema, u8 type, u16 name, u16 value size
constexpr uint8_t kPartOfSchema = 1;
constexpr uint8_t kYes = 0xFF;

// A block's or value's content, from the number of bytes that it says it has as a whole.
Bytes TakeRest(ByteReader& reader, size_t size, size_t header_size) {
  return size < header_size ? reader.Take(reader.Left() + 1)  // fails
                            : reader.Take(size - header_size);
}

class PropertyParser {
 public:
  PropertyParser(const FileReader& file, Bytes bytes)
      : file_(file), reader_(bytes), budget_(file) {}

  std::vector<Property> Parse() {
    const Bytes mark = reader_.Take(kMarkJet4.size());
    const auto& expected = file_.Layout().IsJet4() ? kMarkJet4 : kMarkJet3;
    if (!std::equal(mark.begin(), mark.end(), expected.begin(), expected.end())) Fail();
    while (reader_.Left() > 0 && !reader_.Failed()) ParseBlock();
    if (reader_.Failed()) Fail();
    return std::move(properties_);
  }

 private:
  [[noreturn]] void Fail() const {
    file_.Damaged(u"The stored properties of an object cannot be read");
  }

  Text Name(ByteReader& reader) {
    const uint16_t size = reader.U16();
    if (size > kMaxNameUnits * file_.Layout().UnitSize()) Fail();
    Text name = file_.DecodeName(reader.Take(size));
    Keep(name);
    return name;
  }

  void Keep(const Text& name) { budget_.Take(sizeof name + name.size() * sizeof(char16_t)); }

  void ParseBlock() {
    const size_t size = reader_.U32();
    const uint16_t kind = reader_.U16();
    ByteReader block(TakeRest(reader_, size, kBlockHeaderSize));
    if (kind == kBlockNames) {
      while (block.Left() > 0) names_.push_back(Name(block));
    } else if (kind == kBlockObject || kind == kBlockColumn) {
      ParseOwner(block);
    }
    if (block.Failed()) Fail();
  }

  // The name of what the values belong to, then the values.
  void ParseOwner(ByteReader& block) {
    const size_t size = block.U32();
    ByteReader header(TakeRest(block, size, kOwnerSizeSize));
    const Text owner = Name(header);
    if (header.Failed()) Fail();
    while (block.Left() > 0) ParseValue(block, owner);
  }

  void ParseValue(ByteReader& block, const Text& owner) {
    const size_t size = block.U16();
    block.Skip(1);
    Property property;
    property.owner = owner;
    property.type = static_cast<ColumnType>(block.U8());
    const size_t name = block.U16();
    const size_t value_size = block.U16();
    const Bytes value = TakeRest(block, size, kValueHeaderSize);
    if (block.Failed() || name >= names_.size() || value_size > value.size()) Fail();
    property.name = names_[name];
    budget_.Take(sizeof property + value_size);
    Keep(property.owner);
    Keep(property.name);
    property.value.assign(value.begin(), value.begin() + static_cast<std::ptrdiff_t>(value_size));
    properties_.push_back(std::move(property));
  }

  const FileReader& file_;
  ByteReader reader_;
  MemoryBudget budget_;
  std::vector<Text> names_;
  std::vector<Property> properties_;
};

class PropertyEncoder {
 public:
  std::vector<uint8_t> Encode(std::span<const Property> properties) {
    if (properties.empty()) return {};
    while (!properties.empty()) {
      const Text& owner = properties.front().owner;
      const auto end = std::ranges::find_if(
          properties, [&](const Property& property) { return property.owner != owner; });
      const auto count = static_cast<size_t>(end - properties.begin());
      AddOwner(owner, properties.first(count));
      properties = properties.subspan(count);
    }
    std::vector<uint8_t> names;
    for (const TextView name : names_) AppendName(names, name);
    std::vector<uint8_t> bytes(kMarkJet4.begin(), kMarkJet4.end());
    AppendBlock(bytes, kBlockNames, names);
    bytes.insert(bytes.end(), owners_.begin(), owners_.end());
    return bytes;
  }

 private:
  static void Append16(std::vector<uint8_t>& to, size_t value) {
    to.resize(to.size() + sizeof(uint16_t));
    Store16(&to[to.size() - sizeof(uint16_t)], static_cast<uint16_t>(value));
  }
  static void Append32(std::vector<uint8_t>& to, size_t value) {
    to.resize(to.size() + sizeof(uint32_t));
    Store32(&to[to.size() - sizeof(uint32_t)], static_cast<uint32_t>(value));
  }
  static void AppendName(std::vector<uint8_t>& to, TextView name) {
    Append16(to, name.size() * sizeof(char16_t));
    for (const char16_t unit : name) Append16(to, unit);
  }
  static void AppendBlock(std::vector<uint8_t>& to, uint16_t kind, Bytes content) {
    Append32(to, kBlockHeaderSize + content.size());
    Append16(to, kind);
    to.insert(to.end(), content.begin(), content.end());
  }

  size_t NumberOf(TextView name) {
    const auto known = std::ranges::find(names_, name);
    const auto number = static_cast<size_t>(known - names_.begin());
    if (known == names_.end()) names_.push_back(name);
    return number;
  }

  void AddOwner(TextView owner, std::span<const Property> properties) {
    std::vector<uint8_t> name;
    AppendName(name, owner);
    std::vector<uint8_t> content;
    Append32(content, kOwnerSizeSize + name.size());
    content.insert(content.end(), name.begin(), name.end());
    for (const Property& property : properties) {
      Append16(content, kValueHeaderSize + property.value.size());
      content.push_back(kPartOfSchema);
      content.push_back(static_cast<uint8_t>(property.type));
      Append16(content, NumberOf(property.name));
      Append16(content, property.value.size());
      content.insert(content.end(), property.value.begin(), property.value.end());
    }
    AppendBlock(owners_, kBlockColumn, content);
  }

  std::vector<TextView> names_;
  std::vector<uint8_t> owners_;
};

bool IsSet(const Property& property) {
  return std::any_of(property.value.begin(), property.value.end(),
                     [](uint8_t byte) { return byte != 0; });
}

// A definition lives on from statement to statement, so nothing in it is longer than it can be.
Text Expression(const FileReader& file, const Property& property) {
  if (property.value.size() > kMaxExpressionUnits * file.Layout().UnitSize())
    file.Damaged(u"A default or a rule of a column is too long");
  return file.DecodeName(property.value);
}

}  // namespace

std::vector<Property> ParseProperties(const FileReader& file, Bytes bytes) {
  return PropertyParser(file, bytes).Parse();
}

std::vector<uint8_t> EncodeProperties(std::span<const Property> properties) {
  return PropertyEncoder().Encode(properties);
}

Property YesOrNo(TextView owner, TextView name, bool value) {
  return {.owner = Text(owner),
          .name = Text(name),
          .type = ColumnType::Boolean,
          .value = {value ? kYes : uint8_t{0}}};
}

void ApplyProperties(const FileReader& file, Bytes properties, TableDefinition& table) {
  for (const Property& property : ParseProperties(file, properties)) {
    const auto column =
        std::find_if(table.columns.begin(), table.columns.end(),
                     [&](const Column& candidate) { return candidate.name == property.owner; });
    if (column == table.columns.end()) continue;
    if (property.name == kPropertyRequired) column->required = IsSet(property);
    if (property.name == kPropertyAllowZeroLength) column->allow_zero_length = IsSet(property);
    if (property.name == kPropertyDefaultValue) column->default_value = Expression(file, property);
    if (property.name == kPropertyValidationRule)
      column->validation_rule = Expression(file, property);
  }
}

}  // namespace rdv::jet
