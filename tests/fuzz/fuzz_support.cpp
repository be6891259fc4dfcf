#include "tests/fuzz/fuzz_support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "data/jet/catalog/table_spec.h"

namespace rdv::jet::fuzz {
namespace {

constexpr size_t kLongestFile = size_t{8} << 20;
constexpr size_t kLongestText = 300;

std::vector<uint8_t> Copy(Bytes bytes) {
  return {bytes.begin(), bytes.end()};
}

std::vector<ColumnSpec> SampleColumns() {
  return {{.name = u"Id", .type = ColumnType::Long, .autonumber = true},
          {.name = u"Name", .type = ColumnType::Text, .length = 60},
          {.name = u"Small", .type = ColumnType::Byte},
          {.name = u"Number", .type = ColumnType::Integer},
          {.name = u"Amount", .type = ColumnType::Currency},
          {.name = u"Factor", .type = ColumnType::Double},
          {.name = u"Made", .type = ColumnType::DateTime},
          {.name = u"Yes", .type = ColumnType::Boolean},
          {.name = u"Key", .type = ColumnType::Guid},
          {.name = u"Digits", .type = ColumnType::Numeric, .precision = 18, .scale = 4},
          {.name = u"Bytes", .type = ColumnType::Binary, .length = 40},
          {.name = u"Remarks", .type = ColumnType::Memo},
          {.name = u"Picture", .type = ColumnType::Ole}};
}

TableSpec Things() {
  TableSpec spec{.name = u"Things", .columns = SampleColumns(), .indexes = {}};
  spec.indexes.push_back({.name = u"PrimaryKey", .columns = {{u"Id"}}, .primary = true});
  spec.indexes.push_back({.name = u"ByName", .columns = {{u"Name"}, {u"Number", true}}});
  spec.indexes.push_back(
      {.name = u"ByKey", .columns = {{u"Key"}, {u"Small"}}, .unique = true, .ignore_nulls = true});
  spec.indexes.push_back({.name = u"ByMade", .columns = {{u"Made", true}, {u"Digits"}}});
  return spec;
}

TableSpec Parts() {
  TableSpec spec{.name = u"Parts", .columns = {}, .indexes = {}};
  spec.columns = {{.name = u"Thing", .type = ColumnType::Long},
                  {.name = u"Place", .type = ColumnType::Integer},
                  {.name = u"Caption", .type = ColumnType::Text, .length = 100}};
  spec.indexes.push_back(
      {.name = u"PrimaryKey", .columns = {{u"Thing"}, {u"Place"}}, .primary = true});
  return spec;
}

void FillThings(Engine& engine) {
  const TableDefinition& table = engine.Table(u"Things");
  std::vector<RowId> rows;
  for (int32_t i = 0; i < 60; ++i) {
    const std::u16string letter(1, static_cast<char16_t>(u'a' + i % 26));
    std::vector<Assignment> values = {{1, Text(u"thing ") + letter},
                                      {2, static_cast<uint8_t>(i)},
                                      {3, static_cast<int16_t>(i * 37 - 500)},
                                      {4, Currency{i * 12345}},
                                      {5, i / 7.0},
                                      {6, DateTime{38000.25 + i}},
                                      {7, i % 3 == 0},
                                      {10, Binary(static_cast<size_t>(i % 30), 0x5A)}};
    if (i % 4 == 1) values.push_back({11, Text(static_cast<size_t>(i * 20), u'm')});
    if (i % 20 == 2) values.push_back({12, Binary(5000, static_cast<uint8_t>(i))});
    rows.push_back(engine.Insert(table, values));
  }
  // Moved rows, and deleted ones.
  for (size_t i = 0; i < rows.size(); i += 9) {
    const Assignment longer[] = {{1, Text(60, u'\u0141')}};
    engine.Update(table, rows[i], longer);
  }
  for (size_t i = 5; i < rows.size(); i += 13) engine.Delete(table, rows[i]);
}

std::vector<uint8_t> MakeSample() {
  MemoryFiles files;
  const EngineOptions options{.files = &files};
  const Text path(kPath);
  Engine::Create(path, options);
  const auto engine = Engine::Open(path, options);
  {
    Engine::WriteScope scope(*engine);
    engine->CreateTable(Things());
    engine->CreateTable(Parts());
    FillThings(*engine);
    const TableDefinition& parts = engine->Table(u"Parts");
    for (int32_t i = 0; i < 40; ++i) {
      const Assignment values[] = {
          {0, 1 + i / 10}, {1, static_cast<int16_t>(i)}, {2, Text(u"part")}};
      engine->Insert(parts, values);
    }
    engine->CreateRelationship({.name = u"ThingsParts",
                                .table = u"Parts",
                                .referenced_table = u"Things",
                                .columns = {{u"Thing", u"Id"}},
                                .cascade_updates = true,
                                .cascade_deletes = true});
    scope.Commit();
  }
  engine->Close();
  return files.Get(path);
}

}  // namespace

void Fail(const char* why) {
  std::fprintf(stderr, "finding: %s\n", why);
  std::abort();
}

void RequireGoodError(const RuntimeError& error) {
  Require(error.Number() != 0 && !error.Description().empty() && !error.Source().empty(),
          "an error that says nothing");
}

uint8_t Input::Byte() {
  if (rest_.empty()) return 0;
  const uint8_t byte = rest_.front();
  rest_ = rest_.subspan(1);
  return byte;
}

uint32_t Input::Number() {
  uint8_t bytes[4] = {};
  for (uint8_t& byte : bytes) byte = Byte();
  return Load32(bytes);
}

Bytes Input::Piece(size_t longest) {
  const Bytes piece = rest_.first(std::min(longest, rest_.size()));
  rest_ = rest_.subspan(piece.size());
  return piece;
}

Bytes Input::Rest() {
  return Piece(rest_.size());
}

Value Input::ValueFor(const Column& column) {
  if (Byte() % 8 == 0) return Null();
  switch (column.type) {
    case ColumnType::Boolean:
      return Byte() % 2 == 1;
    case ColumnType::Byte:
      return Byte();
    case ColumnType::Integer:
      return static_cast<int16_t>(Number());
    case ColumnType::Long:
      return static_cast<int32_t>(Number());
    case ColumnType::Currency:
      return Currency{static_cast<int32_t>(Number())};
    case ColumnType::Single:
      return static_cast<float>(static_cast<int32_t>(Number()));
    case ColumnType::Double:
      return static_cast<int32_t>(Number()) / 16.0;
    case ColumnType::DateTime:
      return DateTime{static_cast<int32_t>(Number()) % 3000000 / 32.0};
    case ColumnType::Guid: {
      Guid guid;
      guid.bytes[0] = Byte();
      guid.bytes[15] = Byte();
      return guid;
    }
    case ColumnType::Numeric: {
      DecimalNumber number;
      number.scale = column.scale;
      number.negative = Byte() % 2 == 1;
      number.magnitude[3] = Number();
      return number;
    }
    case ColumnType::Text:
    case ColumnType::Memo: {
      Text text;
      const Bytes units = Piece(Byte());
      const size_t repeated = column.type == ColumnType::Memo ? 1 + Byte() % 32u : 1;
      for (size_t i = 0; i < repeated; ++i) text.append(units.begin(), units.end());
      // Beyond the first 256 characters only now and then.
      if (Byte() % 16 == 1) text.push_back(static_cast<char16_t>(Number()));
      return text.substr(0, column.type == ColumnType::Memo ? text.size() : kLongestText);
    }
    default: {
      std::vector<uint8_t> bytes = Copy(Piece(Byte()));
      if (column.type == ColumnType::Ole) bytes.resize(bytes.size() * (1 + Byte() % 64u), 0x77);
      return bytes;
    }
  }
}

const std::vector<uint8_t>& SampleDatabase() {
  static const std::vector<uint8_t> sample = MakeSample();
  return sample;
}

std::vector<std::vector<uint8_t>> NamedDatabases() {
  namespace fs = std::filesystem;
  const char* const named = std::getenv("RDV_FUZZ_DATABASES");
  std::vector<fs::path> paths;
  std::istringstream folders(named == nullptr ? "" : named);
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (!fs::exists(folder)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file() && entry.path().extension() == ".mdb")
        paths.push_back(entry.path());
    }
  }
  std::ranges::sort(paths);
  std::vector<std::vector<uint8_t>> databases;
  for (const fs::path& path : paths) {
    std::ifstream stream(path, std::ios::binary);
    databases.emplace_back(std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>());
  }
  return databases;
}

std::vector<uint8_t> RestAsFile(Input& input) {
  const Bytes whole = input.Rest();
  return Copy(whole.first(std::min(whole.size(), kLongestFile)));
}

std::vector<uint8_t> FileFrom(Input& input) {
  if (IsWholeFile(input.Byte())) return RestAsFile(input);
  std::vector<uint8_t> file = SampleDatabase();
  while (!input.Empty()) {
    const size_t at = input.Below(file.size());
    const Bytes piece = input.Piece(1 + input.Byte() % 16u);
    for (size_t i = 0; i < piece.size() && at + i < file.size(); ++i) file[at + i] = piece[i];
  }
  return file;
}

uint32_t PageSizeOf(const std::vector<uint8_t>& file) {
  const bool jet4 = file.size() > kHeaderVersion && file[kHeaderVersion] != 0;
  return jet4 ? kJet4.page_size : kJet3.page_size;
}

void TryFile(std::vector<uint8_t> bytes, void (*read)(const FileReader& file)) {
  const uint32_t page_size = PageSizeOf(bytes);
  try {
    const Text path(kPath);
    Header header = ReadHeader(bytes, bytes.size(), path);
    BufferPageSource pages(std::move(bytes), page_size, path);
    read(FileReader(pages, std::move(header)));
  } catch (const RuntimeError& error) {
    RequireGoodError(error);
  }
}

}  // namespace rdv::jet::fuzz
