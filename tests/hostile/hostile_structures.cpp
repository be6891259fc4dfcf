#include "tests/hostile/hostile_structures.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "data/jet/catalog/catalog.h"
#include "data/jet/engine.h"
#include "data/jet/file/page_source.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/rows/usage_map.h"
#include "tests/support/jet_damage.h"
#include "tests/support/site_files.h"
#include "tests/support/sites/site_builder.h"
#include "tests/support/sites/site_text.h"

namespace rdv::test {
namespace {

using namespace jet;  // NOLINT(google-build-using-namespace): this is about nothing else

using File = std::vector<uint8_t>;
using Fields = std::vector<FileField>;

// Enough lines of other units that an index of theirs has nodes; those of the units that are shown
// come last.
constexpr const char* kManyLines = R"(
like plain

insert Used_Lines for k = 0 .. 1499: Config_ID, Base_Slot_No, Slot_Offset, Line, Partition_ID, Volume_ID, Description
  0 - 1 - k / 12, 1, 1, k % 12 + 1, 1, 1, "Line " & k
)";

// A changes to a sound file. `fields` are those of the sound one.
using Damage = std::function<void(File& file, const Fields& fields)>;

void Set(File& file, const Fields& fields, const std::string& field, uint32_t value) {
  StoreField(file, FindField(fields, field), value);
}
uint32_t Get(const File& file, const Fields& fields, const std::string& field) {
  return LoadField(file, FindField(fields, field));
}

std::function<std::vector<uint8_t>()> From(sites::Site (*site)(), Damage damage) {
  return [site, damage = std::move(damage)] {
    File file = sites::MakeDatabase(site());
    damage(file, FieldsOf(file));
    return file;
  };
}

sites::Site Plain() {
  return sites::ReadSite("plain");
}
sites::Site WithManyLines() {
  return sites::ParseSite("many lines", kManyLines);
}

TableSpec& LinesOf(sites::Site& site) {
  return *std::ranges::find(site.tables, TextView(u"Used_Lines"), &TableSpec::name);
}

// The labels of lines are memos.
sites::Site WithMemos() {
  sites::Site site = sites::ParseSite("memos", R"(
like plain

insert Used_Lines: Config_ID, Base_Slot_No, Slot_Offset, Line, Description
  99, 1, 1, 1, counted("long", 400000)
insert Used_Lines for k = 13 .. 1500: Config_ID, Base_Slot_No, Slot_Offset, Line, Description
  1, 1, 1, k, "short"
)");
  std::ranges::find(LinesOf(site).columns, TextView(u"Description"), &ColumnSpec::name)->type =
      ColumnType::Memo;
  return site;
}

// Two more indexes for lines, all of which have the same key in either.
sites::Site WithEqualKeys() {
  sites::Site site = WithManyLines();
  LinesOf(site).indexes.push_back({.name = u"ByVolume", .columns = {{u"Volume_ID"}}});
  LinesOf(site).indexes.push_back({.name = u"ByPartition", .columns = {{u"Partition_ID"}}});
  return site;
}

// --- What is done to them ---

void FixedMemo(File& file, const Fields& fields) {
  const std::string column = "Used_Lines.column Description.";
  Set(file, fields, column + "flags", Get(file, fields, column + "flags") | kColumnFixed);
  Set(file, fields, column + "fixed offset", 6);
  Set(file, fields, column + "length", 0);
}

void BooleanWithoutAPlace(File& file, const Fields& fields) {
  const std::string column = "Used_Lines.column SoftStop.";
  Set(file, fields, column + "type", static_cast<uint32_t>(ColumnType::Boolean));
  Set(file, fields, column + "length", 1);
  Set(file, fields, column + "flags", kColumnAlways);
  Set(file, fields, column + "variable index", 0xFFF0);
}

// No page has room for another line, so that a new one is taken.
void FillLinesPages(File& file, const Fields& fields) {
  for (uint32_t first = 0;; first += 32) {
    const std::string name = "Used_Lines.free map.bits " + std::to_string(first);
    if (!FieldIsThere(fields, name)) return;
    Set(file, fields, name, 0);
  }
}

void LateFreePages(File& file, const Fields& fields) {
  FillLinesPages(file, fields);
  StartFreePagesLate(file);
}

// The first page of a table's rows.
uint32_t DataPageOf(const File& file, TextView table) {
  BufferPageSource pages(file, kJet4.page_size, u"hostile.mdb");
  const FileReader reader(pages);
  return UsageMap(reader, Catalog(reader).Table(table).owned_map).Pages().at(0);
}

void FreePageOfRules(File& file, const Fields& fields) {
  const uint32_t page = DataPageOf(file, u"SR_Card_Type_can_use_Mode");
  FillLinesPages(file, fields);
  CallFree(file, fields, page);
}

void FreeLeafOfLines(File& file, const Fields& fields) {
  FillLinesPages(file, fields);
  CallFree(file, fields, PageOf(fields, "Used_Lines.index 0.root.type"));
}

void MarkBehindThePage(File& file, const Fields& fields) {
  Set(file, fields, "Used_Lines.index 0.root.mask end", 0x80);
}

void RootThatIsItsOwnTail(File& file, const Fields& fields) {
  LeadRootToItself(file, fields, "Used_Lines.index 0.root");
}

void ManyColumns(File& file, const Fields& fields) {
  Redefine(file, PageOf(fields, "Used_Lines.rows"), WideDefinition(65535, 0));
}
void ManyIndexes(File& file, const Fields& fields) {
  Redefine(file, PageOf(fields, "Used_Lines.rows"), WideDefinition(4, 20000));
}

void EmptyRows(File& file, const Fields& fields) {
  FillWithEmptyRows(file, fields, "SR_Node_Type_Names", 100);
}

void SharedMemo(File& file, const Fields& fields) {
  ShareLongestValue(file, fields, "Used_Lines", "Description");
}

void EveryLineReferringToAll(File& file, const Fields& fields) {
  RelateToItself(file, fields, "Used_Lines", "ByVolume", "ByPartition");
  // The definition says by which of its columns an index goes, and is believed that it is unique.
  sites::Site site = WithEqualKeys();
  const TableSpec& lines = LinesOf(site);
  const auto volume = std::ranges::find(lines.columns, TextView(u"Volume_ID"), &ColumnSpec::name);
  const auto number = static_cast<uint32_t>(volume - lines.columns.begin());
  for (int i = 0; i < 3; ++i) {
    const std::string index = "Used_Lines.index " + std::to_string(i);
    if (Get(file, fields, index + ".part 0") != number) continue;
    Set(file, fields, index + ".flags", Get(file, fields, index + ".flags") | kIndexUnique);
  }
}

// The engine writes the block, to a catalog that says it is no table of the engine's own.
std::vector<uint8_t> LongProperties() {
  File file = sites::MakeDatabase(Plain());
  Set(file, FieldsOf(file), "MSysObjects.type", kUserTable);
  const TemporaryFolder folder;
  const auto name = folder.Path() / "NewDB.mdb";
  WriteBytes(name, file);
  const auto engine = Engine::Open(name.u16string());
  {
    Engine::WriteScope scope(*engine);
    const TableDefinition& objects = engine->Table(u"MSysObjects");
    RowId lines;
    for (TableScan scan(engine->File(), objects); scan.Next();) {
      if (ToText(scan.Row().Get(*objects.FindColumn(u"Name"))) == u"Used_Lines")
        lines = scan.Row().Id();
    }
    const Assignment values[] = {
        {static_cast<size_t>(objects.FindColumn(u"LvProp") - objects.columns.data()),
         Binary(PropertiesWithLongNames())}};
    engine->Update(objects, lines, values);
    scope.Commit();
  }
  engine->Close();
  return ReadBytes(name);
}

}  // namespace

std::vector<uint8_t> ReadBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), {});
}

void WriteBytes(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

const std::vector<HostileStructure>& HostileStructures() {
  static const std::vector<HostileStructure> structures = {
      {"a memo in the fixed area", From(WithMemos, FixedMemo)},
      {"a Boolean without a place", From(Plain, BooleanWithoutAPlace)},
      {"free pages that start late", From(Plain, LateFreePages), kPagesBehindLateMap},
      {"a free page with another table's rows", From(WithManyLines, FreePageOfRules)},
      {"a free page with the index's entries", From(Plain, FreeLeafOfLines)},
      {"a mark behind the page", From(Plain, MarkBehindThePage)},
      {"a root that is its own tail", From(WithManyLines, RootThatIsItsOwnTail)},
      {"65,535 columns", From(Plain, ManyColumns)},
      {"20,000 indexes", From(Plain, ManyIndexes)},
      {"properties of long names", LongProperties},
      {"memos that are all one", From(WithMemos, SharedMemo)},
      {"rows of two bytes and 255 columns", From(Plain, EmptyRows)},
      {"lines that all refer to all", From(WithEqualKeys, EveryLineReferringToAll)},
  };
  return structures;
}

}  // namespace rdv::test
