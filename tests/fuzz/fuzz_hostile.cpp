// A sound file with some of its fields changed on purpose, and then written to: definitions, maps,
// index pages, data pages, rows and long values, each field where it really lies. Every statement
// ends, is done or refused, and the checker and the repair end, too.
#include <optional>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/check/repair.h"
#include "data/jet/rows/table_scan.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/support/jet_fields.h"

namespace rdv::jet::fuzz {
namespace {

constexpr size_t kMostFields = 6;
constexpr int kMostChanges = 24;
constexpr size_t kManyRows = 90;
constexpr size_t kLongName = 200;

// Beside the sample's tables one whose indexes have nodes, and that refers to itself.
TableSpec Trees() {
  TableSpec spec{.name = u"Trees", .columns = {}, .indexes = {}};
  spec.columns = {{.name = u"Id", .type = ColumnType::Long, .autonumber = true},
                  {.name = u"Parent", .type = ColumnType::Long},
                  {.name = u"Name", .type = ColumnType::Text, .length = 250},
                  {.name = u"Yes", .type = ColumnType::Boolean},
                  {.name = u"Remarks", .type = ColumnType::Memo}};
  spec.indexes.push_back({.name = u"PrimaryKey", .columns = {{u"Id"}}, .primary = true});
  spec.indexes.push_back({.name = u"ByName", .columns = {{u"Name"}, {u"Id"}}});
  spec.indexes.push_back({.name = u"ByParent", .columns = {{u"Parent"}}});
  return spec;
}

void FillTrees(Engine& engine) {
  const TableDefinition& table = engine.Table(u"Trees");
  for (size_t i = 0; i < kManyRows; ++i) {
    Text name(kLongName, static_cast<char16_t>(u'a' + i % 26));
    name[i % kLongName] = u'z';
    std::vector<Assignment> values = {{2, name}};
    if (i > 0) values.push_back({1, static_cast<int32_t>(1 + (i - 1) / 3)});
    if (i % 30 == 7) values.push_back({4, Text(6000, u'r')});
    engine.Insert(table, values);
  }
}

// The engine makes none of a table with itself.
void RelateTrees(std::vector<uint8_t>& bytes, const std::vector<FileField>& fields) {
  const auto set = [&](const std::string& name, uint32_t value) {
    StoreField(bytes, FindField(fields, "Trees.logical index " + name), value);
  };
  const auto number = [&](const std::string& name) {
    return LoadField(bytes, FindField(fields, "Trees.logical index " + name + ".number"));
  };
  const auto page = static_cast<uint32_t>(FindField(fields, "Trees.rows").at / kJet4.page_size);
  set("PrimaryKey.foreign key", kForeignKeyReferenced);
  set("PrimaryKey.other index", number("ByParent"));
  set("PrimaryKey.other table", page);
  set("ByParent.foreign key", kForeignKeyReferencing);
  set("ByParent.other index", number("PrimaryKey"));
  set("ByParent.other table", page);
  for (const char* side : {"PrimaryKey", "ByParent"}) {
    set(side + std::string(".cascade updates"), 1);
    set(side + std::string(".cascade deletes"), 1);
  }
}

struct Sample {
  std::vector<uint8_t> bytes;
  std::vector<FileField> fields;
  uint32_t pages = 0;
  std::vector<Text> tables;  // that are written to
};

Sample SampleOf(std::vector<uint8_t> bytes) {
  Sample made{.bytes = std::move(bytes), .fields = {}, .pages = 0, .tables = {}};
  made.fields = FieldsOf(made.bytes);
  made.pages = static_cast<uint32_t>(made.bytes.size() / kJet4.page_size);
  return made;
}

// The catalog's own tables have many fields, and nothing writes to them.
void LeaveOutTheCatalogsOwn(Sample& sample) {
  std::erase_if(sample.fields,
                [](const FileField& field) { return field.name.starts_with("MSysA"); });
}

Sample OwnSample() {
  MemoryFiles files;
  const Text path(kPath);
  files.Put(path, SampleDatabase());
  const auto engine = Engine::Open(path, {.files = &files});
  {
    Engine::WriteScope scope(*engine);
    engine->CreateTable(Trees());
    FillTrees(*engine);
    scope.Commit();
  }
  engine->Close();
  Sample made = SampleOf(files.Get(path));
  RelateTrees(made.bytes, made.fields);
  LeaveOutTheCatalogsOwn(made);
  made.tables = {u"Things", u"Trees", u"Parts"};
  return made;
}

// Nothing of a file that cannot be written to, or is so large that each input would take long.
std::optional<Sample> RealSample(std::vector<uint8_t> bytes) {
  constexpr size_t kLargest = size_t{1} << 20;
  if (bytes.size() > kLargest || PageSizeOf(bytes) != kJet4.page_size) return std::nullopt;
  try {
    MemoryFiles files;
    const Text path(kPath);
    files.Put(path, bytes);
    Sample made = SampleOf(std::move(bytes));
    LeaveOutTheCatalogsOwn(made);
    const auto engine = Engine::Open(path, {.files = &files});
    const Engine::ReadScope scope(*engine);
    made.tables = engine->UserTableNames();
    if (made.tables.empty() || made.fields.empty()) return std::nullopt;
    return made;
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

// The engine's own first, then the databases in the folders that are named.
const std::vector<Sample>& Samples() {
  static const std::vector<Sample> samples = [] {
    std::vector<Sample> made;
    made.push_back(OwnSample());
    for (std::vector<uint8_t>& bytes : NamedDatabases()) {
      if (auto sample = RealSample(std::move(bytes))) made.push_back(std::move(*sample));
    }
    return made;
  }();
  return samples;
}

uint32_t NewValue(Input& input, const Sample& sample, const FileField& field) {
  const uint32_t old = LoadField(sample.bytes, field);
  switch (input.Byte() % 9) {
    case 0:
      return input.Number();
    case 1:
      return input.Byte() % 8u;
    case 2:
      return 0u - 1u - input.Byte() % 8u;
    case 3:
      return old + input.Byte() % 8u;
    case 4:
      return old - input.Byte() % 8u;
    case 5:
      return old ^ 1u << input.Byte() % 32u;
    case 6:
      return static_cast<uint32_t>(input.Below(sample.pages + 2));
    case 7:  // also where the number is one of an index: the highest byte first
      return __builtin_bswap32(static_cast<uint32_t>(input.Below(sample.pages))) >>
             (field.size == 3 ? 8 : 0);
    default:
      return LoadField(sample.bytes, sample.fields[input.Below(sample.fields.size())]);
  }
}

// Fields of one neighbourhood: what is damaged together meets together.
std::vector<uint8_t> HostileFile(Input& input, const Sample& sample) {
  std::vector<uint8_t> bytes = sample.bytes;
  const size_t count = 1 + input.Byte() % kMostFields;
  size_t place = input.Below(sample.fields.size());
  for (size_t i = 0; i < count; ++i) {
    const FileField& field = sample.fields[place];
    StoreField(bytes, field, NewValue(input, sample, field));
    place = input.Byte() % 2 == 0 ? input.Below(sample.fields.size())
                                  : (place + input.Byte()) % sample.fields.size();
  }
  return bytes;
}

template <typename Action>
bool Try(Action action) {
  try {
    action();
    return true;
  } catch (const RuntimeError& error) {
    RequireGoodError(error);
    return false;
  }
}

class Attack {
 public:
  explicit Attack(Input& input) : input_(input) {
    const uint8_t first = input.Byte();
    checked_ = first % 8 == 0;
    sample_ = &Samples()[first / 8 % Samples().size()];
  }

  void Run() {
    files_.Put(path_, HostileFile(input_, *sample_));
    Try([&] {
      engine_ = Engine::Open(path_, {.cache_pages = 16, .files = &files_});
      for (int i = 0; i < kMostChanges && !input_.Empty(); ++i) Try([&] { Statement(); });
      engine_->Close();
    });
    engine_.reset();
    // Both read the whole file many times.
    if (!checked_) return;
    Try([&] {
      BufferPageSource pages(files_.Get(path_), kJet4.page_size, path_);
      CheckFile(FileReader(pages));
      RepairDatabase(files_, path_, std::chrono::milliseconds(0));
    });
  }

 private:
  void Statement() {
    const TextView name = sample_->tables[input_.Byte() % sample_->tables.size()];
    if (input_.Byte() % 8 == 0) {
      const Engine::ReadScope scope(*engine_);
      ReadRows(engine_->Table(name));
      return;
    }
    Engine::WriteScope scope(*engine_);
    const TableDefinition& table = engine_->Table(name);
    bool whole = true;
    for (int changes = 1 + input_.Byte() % 6; changes > 0; --changes)
      whole = Try([&] { Change(table); }) && whole;
    if (whole) scope.Commit();
  }

  std::vector<RowId> ReadRows(const TableDefinition& table) {
    std::vector<RowId> rows;
    Try([&] {
      for (TableScan scan(engine_->File(), table); scan.Next();) {
        rows.push_back(scan.Row().Id());
        for (const Column& column : table.columns) scan.Row().Get(column);
      }
    });
    return rows;
  }

  void Change(const TableDefinition& table) {
    const uint8_t choice = input_.Byte() % 8;
    std::vector<RowId> rows;
    if (choice >= 3) rows = ReadRows(table);
    if (rows.empty()) {
      engine_->Insert(table, Values(table, 0));
      return;
    }
    const RowId row = rows[input_.Below(rows.size())];
    if (choice >= 6) {
      engine_->Delete(table, row);
    } else {
      // Numbers that others refer to change, too.
      engine_->Update(table, row, Values(table, 0));
    }
  }

  std::vector<Assignment> Values(const TableDefinition& table, size_t first) {
    std::vector<Assignment> values;
    for (size_t column = first; column < table.columns.size(); ++column) {
      const uint8_t choice = input_.Byte();
      if (choice % 3 == 0) continue;
      const Column& definition = table.columns[column];
      if (definition.type == ColumnType::Long && choice % 2 == 0) {
        values.push_back({column, static_cast<int32_t>(input_.Byte())});
      } else {
        values.push_back({column, input_.ValueFor(definition)});
      }
    }
    return values;
  }

  Input& input_;
  const Sample* sample_ = nullptr;
  bool checked_ = false;
  const Text path_{kPath};
  MemoryFiles files_;
  std::unique_ptr<Engine> engine_;
};

}  // namespace
}  // namespace rdv::jet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  rdv::jet::fuzz::Input input(data, size);
  rdv::jet::fuzz::Attack(input).Run();
  return 0;
}
