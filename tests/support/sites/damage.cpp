#include "tests/support/sites/damage.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "data/jet/catalog/catalog.h"
#include "data/jet/file/file_reader.h"
#include "data/jet/file/page_source.h"
#include "data/jet/format/header.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/row_codec.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/rows/usage_map.h"
#include "runtime/error.h"

namespace rdv::sites {
namespace {

using jet::Bytes;
using jet::TableDefinition;

struct Spot {
  uint64_t start = 0;
  // Of a definition, which may go on on further pages: those pages; `start` counts from its
  // beginning then.
  std::vector<uint32_t> pages;
};

struct StoredRow {
  jet::RowId id;
  Bytes content;
};

// A table of the sound file, with what takes a walk to find out.
struct KnownTable {
  TableDefinition definition;
  std::vector<uint8_t> bytes;  // of the definition
  size_t columns = 0;          // where the descriptors begin there
  size_t real_indexes = 0;
  size_t logical_indexes = 0;
  std::vector<StoredRow> rows;
  std::map<std::string, std::vector<uint32_t>, std::less<>> leaves;  // of an index
};

class SoundFile {
 public:
  explicit SoundFile(const std::vector<uint8_t>& bytes)
      : pages_(bytes, jet::kJet4.page_size, u"sound.mdb"), file_(pages_), catalog_(file_) {}

  uint64_t OffsetOf(const Spot& place) const {
    if (place.pages.empty()) return place.start;
    const size_t head = file_.Layout().definition.continuation;
    uint64_t left = place.start;
    uint64_t room = file_.Layout().page_size;
    size_t page = 0;
    uint64_t in_page = 0;
    while (left >= room && page + 1 < place.pages.size()) {
      left -= room;
      room = file_.Layout().page_size - head;
      in_page = head;
      ++page;
    }
    return PageStart(place.pages[page]) + in_page + left;
  }

  Spot Read(LineReader& reader) {
    Spot place = ReadStart(reader);
    if (reader.Take("+")) place.start += static_cast<uint64_t>(reader.Number());
    return place;
  }

  // Where the units of a text lie that is not compressed, and how many bytes they are.
  std::pair<uint64_t, size_t> UnitsOf(const OverwrittenText& text) {
    const KnownTable& table = Table(ToUtf8(text.table));
    const jet::Column& column = Column(table, text.column);
    jet::RowView view(file_, table.definition);
    if (!jet::FetchRow(file_, table.definition, text.row, view)) throw TextError("no such row");
    const Bytes field = view.Field(column).value_or(Bytes());
    const size_t head = column.IsLongValue() ? jet::kLongValueDescriptorSize : 0;
    if (field.size() < head) throw TextError("there is no text");
    return {OfBytes(field).start + head, field.size() - head};
  }

  uint64_t PageNumber(const Spot& place) const {
    return OffsetOf(place) / file_.Layout().page_size;
  }

 private:
  Spot ReadStart(LineReader& reader) {
    if (reader.Take("page")) return OfPage(static_cast<uint32_t>(reader.Count()));
    if (reader.Take("free-pages")) return OfRow({jet::kGlobalMapPage, jet::kFreePagesRow});
    if (reader.Take("definition")) return OfDefinition(Table(reader.Name()), 0);
    if (reader.Take("column")) return OfColumn(reader.Name());
    if (reader.Take("index-map")) return OfRow(Index(reader.Name()).second->map);
    if (reader.Take("index")) return OfIndexBlock(reader.Name());
    if (reader.Take("logical")) return OfLogicalIndex(reader.Name());
    if (reader.Take("map")) return OfRow(Table(reader.Name()).definition.owned_map);
    if (reader.Take("free-map")) return OfRow(Table(reader.Name()).definition.free_map);
    if (reader.Take("root")) return OfPage(Index(reader.Name()).second->root);
    if (reader.Take("leaf")) return OfLeaf(reader);
    if (reader.Take("data")) return OfDataPage(reader);
    if (reader.Take("row")) return OfBytes(Row(Table(reader.Name()), reader).content);
    if (reader.Take("slot")) return OfSlot(Row(Table(reader.Name()), reader).id);
    if (reader.Take("value")) return OfValue(reader);
    return {static_cast<uint64_t>(reader.Count()), {}};
  }

  uint64_t PageStart(uint32_t page) const { return uint64_t{page} * file_.Layout().page_size; }
  Spot OfPage(uint32_t page) const { return {PageStart(page), {}}; }

  // Bytes that lie in the file.
  Spot OfBytes(Bytes bytes) const {
    return {static_cast<uint64_t>(bytes.data() - file_.RawPage(0).data()), {}};
  }

  Spot OfSlot(jet::RowId id) const {
    return {PageStart(id.page) + file_.Layout().data.slots + id.row * jet::kSlotSize, {}};
  }

  Spot OfRow(jet::RowId id) const {
    if (!id) throw TextError("there is no such map");
    const jet::DataPageView page(file_, id.page, file_.RawPage(id.page));
    if (id.row >= page.SlotCount()) throw TextError("there is no such map");
    return {PageStart(id.page) + page.At(id.row).start, {}};
  }

  static Spot OfDefinition(const KnownTable& table, size_t offset) {
    return {offset, table.definition.pages};
  }

  KnownTable& Table(const std::string& name) {
    if (const auto known = tables_.find(name); known != tables_.end()) return *known->second;
    auto table = std::make_unique<KnownTable>();
    table->definition = catalog_.Table(FromUtf8(name));
    std::vector<uint32_t> pages;
    table->bytes = jet::ReadDefinitionBytes(file_, table->definition.Page(), pages);
    FindBlocks(*table);
    jet::TableScan scan(file_, table->definition);
    while (scan.Next()) table->rows.push_back({scan.Row().Id(), scan.Row().Content()});
    return *tables_.emplace(name, std::move(table)).first->second;
  }

  void FindBlocks(KnownTable& table) const {
    const jet::Format& format = file_.Layout();
    const size_t real = table.definition.indexes.size();
    const size_t columns = table.definition.columns.size();
    table.columns = format.definition.statistics + real * format.definition.statistics_size;
    table.real_indexes = table.columns + columns * format.column.size;
    for (size_t i = 0; i < columns; ++i)
      table.real_indexes += size_t{2} + jet::Load16(&table.bytes[table.real_indexes]);
    table.logical_indexes = table.real_indexes + real * format.real_index.size;
  }

  // "Used_Lines.PrimaryKey": the table, and what stands behind the dot. A name may begin with one.
  std::pair<KnownTable*, Text> Part(const std::string& name) {
    const size_t dot = name.find('.');
    if (dot == std::string::npos) throw TextError(name + " has no part behind a dot");
    return {&Table(name.substr(0, dot)), FromUtf8(name.substr(dot + 1))};
  }

  Spot OfColumn(const std::string& name) {
    const auto [table, part] = Part(name);
    const jet::Format& format = file_.Layout();
    const jet::Column& column = Column(*table, part);
    for (size_t i = 0; i < table->definition.columns.size(); ++i) {
      const size_t at = table->columns + i * format.column.size;
      if (jet::Load16(&table->bytes[at + format.column.number]) == column.number)
        return OfDefinition(*table, at);
    }
    throw TextError("no descriptor of " + name);
  }

  static const jet::Column& Column(const KnownTable& table, TextView name) {
    const jet::Column* column = table.definition.FindColumn(name);
    if (!column) throw TextError("there is no column " + ToUtf8(name));
    return *column;
  }

  size_t LogicalPosition(const KnownTable& table, TextView name) const {
    const auto& indexes = table.definition.logical_indexes;
    const auto found =
        std::find_if(indexes.begin(), indexes.end(),
                     [&](const jet::LogicalIndex& index) { return index.name == name; });
    if (found == indexes.end()) throw TextError("there is no index " + ToUtf8(name));
    return static_cast<size_t>(found - indexes.begin());
  }

  std::pair<KnownTable*, const jet::RealIndex*> Index(const std::string& name) {
    const auto [table, part] = Part(name);
    const size_t logical = LogicalPosition(*table, part);
    return {table,
            &table->definition.indexes[table->definition.logical_indexes[logical].real_index]};
  }

  Spot OfIndexBlock(const std::string& name) {
    const auto [table, index] = Index(name);
    return OfDefinition(*table,
                        table->real_indexes + index->position * file_.Layout().real_index.size);
  }

  Spot OfLogicalIndex(const std::string& name) {
    const auto [table, part] = Part(name);
    const size_t position = LogicalPosition(*table, part);
    return OfDefinition(*table,
                        table->logical_indexes + position * file_.Layout().logical_index.size);
  }

  template <typename T>
  static const T& Nth(const std::vector<T>& all, LineReader& reader, const char* what) {
    const int64_t number = reader.Count();
    if (number < 1 || static_cast<uint64_t>(number) > all.size())
      throw TextError("there are " + std::to_string(all.size()) + " " + what);
    return all[static_cast<size_t>(number - 1)];
  }

  Spot OfLeaf(LineReader& reader) {
    const std::string name = reader.Name();
    const auto [table, index] = Index(name);
    std::vector<uint32_t>& leaves = table->leaves[name];
    if (leaves.empty()) {
      jet::IndexCursor cursor(file_, table->definition, *index);
      for (cursor.SeekFirst(); cursor.Valid(); cursor.Next()) {
        if (leaves.empty() || leaves.back() != cursor.PageNumber())
          leaves.push_back(cursor.PageNumber());
      }
    }
    return OfPage(Nth(leaves, reader, "leaves"));
  }

  Spot OfDataPage(LineReader& reader) {
    const KnownTable& table = Table(reader.Name());
    const std::vector<uint32_t> pages = jet::UsageMap(file_, table.definition.owned_map).Pages();
    return OfPage(Nth(pages, reader, "data pages"));
  }

  static const StoredRow& Row(const KnownTable& table, LineReader& reader) {
    return Nth(table.rows, reader, "rows");
  }

  Spot OfValue(LineReader& reader) {
    const auto [table, part] = Part(reader.Name());
    const StoredRow& row = Row(*table, reader);
    jet::RowView view(file_, table->definition);
    view.Reset(row.id, row.content);
    const std::optional<Bytes> field = view.Field(Column(*table, part));
    if (!field) throw TextError("the value is Null");
    return OfBytes(*field);
  }

  jet::BufferPageSource pages_;
  jet::FileReader file_;
  jet::Catalog catalog_;
  std::map<std::string, std::unique_ptr<KnownTable>, std::less<>> tables_;
};

struct NumberSize {
  std::string_view name;
  size_t bytes;
  bool big_endian;
};

constexpr NumberSize kSizes[] = {{"u8", 1, false},  {"u16", 2, false}, {"u24", 3, false},
                                 {"u32", 4, false}, {"b16", 2, true},  {"b24", 3, true},
                                 {"b32", 4, true}};

enum class Combine { Put, Or, And };

class DamageDoer {
 public:
  DamageDoer(const Site& site, std::vector<uint8_t> sound)
      : names_(site.names), sound_(sound), bytes_(std::move(sound)) {}

  void Do(const Line& line) {
    try {
      LineReader reader(line.text, names_);
      if (reader.Take("for")) return Repeat(line, reader);
      DoOne(reader);
    } catch (const TextError& error) {
      line.Fail(error.what());
    } catch (const RuntimeError& error) {
      line.Fail(ToUtf8(error.Description()));
    }
  }

  std::vector<uint8_t> Result() { return std::move(bytes_); }

 private:
  void Repeat(const Line& line, LineReader& reader) {
    const std::string counter = reader.Name();
    reader.Expect("=");
    const int64_t first = reader.Number();
    reader.Expect("..");
    const int64_t last = reader.Number();
    reader.Expect(":");
    Line each = line;
    each.text = line.text.substr(line.text.find(':') + 1);
    for (int64_t n = first; n <= last; ++n) {
      names_.numbers[counter] = n;
      Do(each);
    }
    names_.numbers.erase(counter);
  }

  void DoOne(LineReader& reader) {
    if (reader.Take("put"))
      Write(reader, Combine::Put);
    else if (reader.Take("or"))
      Write(reader, Combine::Or);
    else if (reader.Take("and"))
      Write(reader, Combine::And);
    else if (reader.Take("fill"))
      Fill(reader);
    else if (reader.Take("random"))
      Randomize(reader);
    else if (reader.Take("copy"))
      Copy(reader);
    else if (reader.Take("cut"))
      bytes_.resize(std::min(bytes_.size(), Offset(reader)));
    else if (reader.Take("text"))
      Replace(reader);
    else
      throw TextError("no such change");
    reader.ExpectEnd();
  }

  size_t Offset(LineReader& reader) {
    const Spot place = sound_file_.Read(reader);
    return static_cast<size_t>(sound_file_.OffsetOf(place));
  }

  uint8_t& At(size_t offset) {
    if (offset >= bytes_.size()) throw TextError("the place lies behind the end of the file");
    return bytes_[offset];
  }

  void Write(LineReader& reader, Combine how) {
    const Spot place = sound_file_.Read(reader);
    reader.Expect(":");
    // Each byte for itself: a definition's may lie on two pages.
    Spot next = place;
    do {
      for (const uint8_t byte : ReadBytes(reader)) {
        uint8_t& target = At(static_cast<size_t>(sound_file_.OffsetOf(next)));
        const uint8_t old = target;
        target = how == Combine::Put  ? byte
                 : how == Combine::Or ? static_cast<uint8_t>(old | byte)
                                      : static_cast<uint8_t>(old & byte);
        ++next.start;
      }
    } while (!reader.AtEnd());
  }

  std::vector<uint8_t> ReadBytes(LineReader& reader) {
    if (reader.Take("bytes")) {
      const Cell digits = reader.Expression();
      const Text* text = std::get_if<Text>(&digits);
      const std::string call = "hex(\"" + (text ? ToUtf8(*text) : "") + "\")";
      LineReader inner(call, names_);
      return std::get<Binary>(inner.Expression());
    }
    for (const NumberSize& size : kSizes) {
      if (!reader.Take(size.name)) continue;
      uint64_t number = ReadNumber(reader);
      std::vector<uint8_t> bytes;
      for (size_t i = 0; i < size.bytes; ++i, number >>= 8)
        bytes.push_back(static_cast<uint8_t>(number));
      if (size.big_endian) std::reverse(bytes.begin(), bytes.end());
      return bytes;
    }
    throw TextError("u8, u16, u24, u32, b16, b24, b32 or bytes is missing");
  }

  uint64_t ReadNumber(LineReader& reader) {
    if (!reader.Take("number-of")) return static_cast<uint64_t>(reader.Number());
    reader.Expect("(");
    const Spot place = sound_file_.Read(reader);
    reader.Expect(")");
    return sound_file_.PageNumber(place);
  }

  void Fill(LineReader& reader) {
    const size_t start = Offset(reader);
    reader.Expect(":");
    const auto count = static_cast<size_t>(reader.Number());
    reader.Expect(",");
    const auto byte = static_cast<uint8_t>(reader.Number());
    for (size_t i = 0; i < count; ++i) At(start + i) = byte;
  }

  void Randomize(LineReader& reader) {
    const size_t start = Offset(reader);
    reader.Expect(":");
    const auto count = static_cast<size_t>(reader.Number());
    reader.Expect(",");
    std::mt19937 random(static_cast<uint32_t>(reader.Number()));
    for (size_t i = 0; i < count; ++i) At(start + i) = static_cast<uint8_t>(random());
  }

  void Copy(LineReader& reader) {
    const size_t to = Offset(reader);
    reader.Expect(":");
    const auto count = static_cast<size_t>(reader.Number());
    reader.Expect("from");
    const size_t from = Offset(reader);
    if (from + count > sound_.size()) throw TextError("there is not so much to copy");
    for (size_t i = 0; i < count; ++i) At(to + i) = sound_[from + i];
  }

  void Replace(LineReader& reader) {
    const Cell text = reader.Expression();
    if (!std::holds_alternative<Text>(text)) throw TextError("a text is needed");
    const std::string utf8 = ToUtf8(std::get<Text>(text));
    bytes_.assign(utf8.begin(), utf8.end());
  }

  Names names_;
  const std::vector<uint8_t> sound_;
  std::vector<uint8_t> bytes_;
  SoundFile sound_file_{sound_};
};

}  // namespace

void OverwriteTexts(const std::vector<OverwrittenText>& texts, std::vector<uint8_t>& database) {
  SoundFile file(database);
  for (const OverwrittenText& text : texts) {
    const auto [start, size] = file.UnitsOf(text);
    if (size != 2 * text.text.size()) throw TextError("a text of another length");
    for (size_t i = 0; i < text.text.size(); ++i)
      jet::Store16(&database[static_cast<size_t>(start) + 2 * i], text.text[i]);
  }
}

std::vector<uint8_t> Damaged(const Site& site, std::vector<uint8_t> sound) {
  DamageDoer doer(site, std::move(sound));
  for (const Line& line : site.damage) doer.Do(line);
  return doer.Result();
}

}  // namespace rdv::sites
