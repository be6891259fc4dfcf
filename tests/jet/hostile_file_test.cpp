// Files that were made to hurt whoever writes to them: sound ones but for the fields that each test
// names. Every statement on them is refused or done, the file can be given up, and the checker says
// what is wrong. The sanitizers of the tree watch over the memory meanwhile.
#include <gtest/gtest.h>

#include "data/jet/catalog/properties.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"
#include "tests/jet/write_support.h"
#include "tests/support/jet_fields.h"

namespace rdv::jet {
namespace {

constexpr size_t kPageSize = 4096;

TableSpec Things() {
  TableSpec spec{.name = u"Things", .columns = {}, .indexes = {}};
  spec.columns = {{.name = u"Id", .type = ColumnType::Long, .autonumber = true},
                  {.name = u"Name", .type = ColumnType::Text, .length = 250},
                  {.name = u"Yes", .type = ColumnType::Boolean},
                  {.name = u"Number", .type = ColumnType::Integer},
                  {.name = u"Remarks", .type = ColumnType::Memo}};
  spec.indexes.push_back({.name = u"PrimaryKey", .columns = {{u"Id"}}, .primary = true});
  spec.indexes.push_back({.name = u"ByName", .columns = {{u"Name"}, {u"Id"}}});
  return spec;
}

// Its keys are those of a relationship with itself, once a test says so.
TableSpec Links() {
  TableSpec spec{.name = u"Links", .columns = {}, .indexes = {}};
  spec.columns = {{.name = u"Own", .type = ColumnType::Long},
                  {.name = u"Other", .type = ColumnType::Long}};
  spec.indexes.push_back({.name = u"ByOther", .columns = {{u"Other"}}});
  spec.indexes.push_back({.name = u"ByOwn", .columns = {{u"Own"}}});
  return spec;
}

class HostileFile : public testing::Test {
 protected:
  enum { kId, kName, kYes, kNumber, kRemarks };

  HostileFile() {
    Engine::Create(path_);
    Change([](Engine& engine) {
      engine.CreateTable(Things());
      engine.CreateTable(Links());
      const TableDefinition& table = engine.Table(u"Things");
      for (int i = 0; i < 60; ++i) {
        const Assignment values[] = {{kName, Text(200, static_cast<char16_t>(u'a' + i % 26))},
                                     {kYes, true},
                                     {kNumber, static_cast<int16_t>(i)},
                                     {kRemarks, Text(100, u'm')}};
        engine.Insert(table, values);
      }
    });
    Read();
  }

  // Takes the file up as the engine has left it.
  void Read() {
    file_ = ReadWholeFile(name_);
    fields_ = FieldsOf(file_);
  }
  void Set(std::string_view field, uint32_t value) {
    StoreField(file_, FindField(fields_, field), value);
  }
  uint32_t Get(std::string_view field) const { return LoadField(file_, FindField(fields_, field)); }
  uint32_t PageOf(std::string_view field) const {
    return static_cast<uint32_t>(FindField(fields_, field).at / kPageSize);
  }
  // Of an index page: the marks of all others are taken away.
  void KeepFirstEntry(const std::string& page) {
    uint8_t* mask = Page(PageOf(page + ".type")) + kJet4.index.mask;
    bool first = true;
    for (size_t bit = 0; bit < kJet4.index.mask_size * 8; ++bit) {
      if ((mask[bit / 8] >> (bit % 8) & 1) == 0) continue;
      if (!first) mask[bit / 8] &= static_cast<uint8_t>(~(1u << (bit % 8)));
      first = false;
    }
  }
  uint8_t* Page(uint32_t number) { return &file_[number * kPageSize]; }
  void Store() { WriteWholeFile(name_, file_); }

  void Change(const std::function<void(Engine&)>& change) {
    const auto engine = Engine::Open(path_);
    Engine::WriteScope scope(*engine);
    change(*engine);
    scope.Commit();
    engine->Close();
  }

  // What the engine says when the change is made; "" when it is done.
  std::string Refusal(const std::function<void(Engine&)>& change) {
    try {
      Change(change);
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
    return "";
  }

  static void InsertThing(Engine& engine) {
    const Assignment values[] = {{kName, Text(u"new")}, {kYes, true}, {kRemarks, Text(9000, u'n')}};
    engine.Insert(engine.Table(u"Things"), values);
  }
  static std::vector<RowId> RowsOf(Engine& engine, TextView name) {
    std::vector<RowId> rows;
    for (TableScan scan(engine.File(), engine.Table(name)); scan.Next();)
      rows.push_back(scan.Row().Id());
    return rows;
  }
  static void UpdateThing(Engine& engine) {
    const Assignment values[] = {{kName, Text(u"changed")}, {kRemarks, Text(9000, u'c')}};
    engine.Update(engine.Table(u"Things"), RowsOf(engine, u"Things").front(), values);
  }
  static void DeleteThing(Engine& engine) {
    engine.Delete(engine.Table(u"Things"), RowsOf(engine, u"Things").front());
  }

  // Both tables are written to and read in every way; says how much of it was refused.
  int WriteInEveryWay() {
    int refused = 0;
    for (const auto& change : {InsertThing, UpdateThing, DeleteThing, InsertThing})
      refused += Refusal(change).empty() ? 0 : 1;
    return refused;
  }

  std::string Findings() {
    const std::vector<uint8_t> bytes = ReadWholeFile(name_);
    BufferPageSource pages(bytes, kPageSize, path_);
    std::string text;
    for (const Finding& finding : CheckFile(FileReader(pages)).findings)
      text += ToUtf8(KindName(finding.kind) + u": " + finding.text) + "\n";
    return text;
  }

  // Puts another definition into the place of the table's, on as many new pages as it takes.
  void Redefine(uint32_t page, std::vector<uint8_t> definition) {
    const auto& layout = kJet4.definition;
    Store32(&definition[layout.length], static_cast<uint32_t>(definition.size()));
    const size_t room = kPageSize - layout.continuation;
    size_t done = std::min(definition.size(), kPageSize);
    std::copy_n(definition.begin(), done, Page(page));
    for (uint32_t before = page; done < definition.size();) {
      const uint32_t next = static_cast<uint32_t>(file_.size() / kPageSize);
      file_.resize(file_.size() + kPageSize);
      Store32(Page(before) + layout.next_page, next);
      Page(next)[0] = static_cast<uint8_t>(PageType::Definition);
      Page(next)[1] = kPageMark;
      const size_t count = std::min(room, definition.size() - done);
      std::copy_n(definition.begin() + static_cast<ptrdiff_t>(done), count,
                  Page(next) + layout.continuation);
      done += count;
      before = next;
    }
  }

  const TemporaryFolder folder_;
  const std::filesystem::path name_ = folder_.Path() / "hostile.mdb";
  const Text path_ = PathText(name_);
  std::vector<uint8_t> file_;
  std::vector<FileField> fields_;
};

TEST_F(HostileFile, IsSoundBeforeItIsChanged) {
  EXPECT_EQ(Findings(), "");
  EXPECT_EQ(WriteInEveryWay(), 0);
  EXPECT_EQ(Findings(), "");
}

// --- Definitions ---

TEST_F(HostileFile, AMemoInTheFixedAreaIsRefused) {
  Set("Things.column Remarks.flags", Get("Things.column Remarks.flags") | kColumnFixed);
  Set("Things.column Remarks.fixed offset", 6);
  Set("Things.column Remarks.length", 0);
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, ABooleanThatIsVariableWithoutAPlaceIsRefused) {
  Set("Things.column Yes.flags", kColumnAlways);
  Set("Things.column Yes.variable index", 0xFFF0);
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, ColumnsThatShareTheirBytesAreRefused) {
  Set("Things.column Number.fixed offset", 2);  // the upper half of Id
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, ColumnsThatShareTheirVariablePlaceAreRefused) {
  Set("Things.column Remarks.variable index", Get("Things.column Name.variable index"));
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, ATextLongerThanItsTypeAllowsIsRefused) {
  Set("Things.column Name.length", 0xFFFE);
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, ADefinitionThatLeadsInACircleIsRefused) {
  Set("Things.next page", PageOf("Things.next page"));
  Set("Things.length", 60000);
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

std::vector<uint8_t> EmptyDefinition(uint16_t columns, uint32_t indexes) {
  const auto& layout = kJet4.definition;
  std::vector<uint8_t> bytes(layout.statistics + indexes * layout.statistics_size);
  bytes[0] = static_cast<uint8_t>(PageType::Definition);
  bytes[1] = kPageMark;
  bytes[layout.table_type] = kUserTable;
  Store16(&bytes[layout.max_columns], columns);
  Store16(&bytes[layout.column_count], columns);
  Store32(&bytes[layout.real_index_count], indexes);
  Store32(&bytes[layout.logical_index_count], indexes);
  for (uint16_t i = 0; i < columns; ++i) {
    std::vector<uint8_t> column(kJet4.column.size);
    column[kJet4.column.type] = static_cast<uint8_t>(ColumnType::Boolean);
    column[kJet4.column.flags] = kColumnFixed | kColumnAlways;
    Store16(&column[kJet4.column.number], i);
    Store16(&column[kJet4.column.length], 1);
    bytes.insert(bytes.end(), column.begin(), column.end());
  }
  bytes.resize(bytes.size() + columns * size_t{2});  // the columns' names
  for (uint32_t i = 0; i < indexes; ++i) {
    std::vector<uint8_t> index(kJet4.real_index.size, 0xFF);
    Store16(&index[kJet4.real_index.columns], 0);
    bytes.insert(bytes.end(), index.begin(), index.end());
  }
  for (uint32_t i = 0; i < indexes; ++i) {
    std::vector<uint8_t> index(kJet4.logical_index.size);
    Store32(&index[kJet4.logical_index.number], i);
    Store32(&index[kJet4.logical_index.real_index], i);
    bytes.insert(bytes.end(), index.begin(), index.end());
  }
  bytes.resize(bytes.size() + indexes * size_t{2});  // their names
  bytes.insert(bytes.end(), {0xFF, 0xFF});
  return bytes;
}

TEST_F(HostileFile, MoreColumnsThanATableCanHaveAreRefused) {
  const uint32_t page = PageOf("Things.length");
  Redefine(page, EmptyDefinition(65535, 0));
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, MoreIndexesThanATableCanHaveAreRefused) {
  const uint32_t page = PageOf("Things.length");
  Redefine(page, EmptyDefinition(4, 20000));
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

// --- Maps ---

// The map has room for one reference and would need two for the pages that it says it is about.
TEST_F(HostileFile, AMapOfFreePagesThatStartsLateIsNotWrittenBehindItsEnd) {
  uint8_t* page = Page(kGlobalMapPage);
  const size_t slots = kJet4.data.slots;
  const size_t short_row = kPageSize - kMapInlineBits - 1;
  std::fill(page + slots, page + kPageSize, uint8_t{0});
  Store16(page + slots, static_cast<uint16_t>(short_row));
  Store16(page + slots + kSlotSize, static_cast<uint16_t>(slots + 2 * kSlotSize));
  Store32(page + short_row + kMapFirstPage, 32768);
  Store();
  std::filesystem::resize_file(name_, 32800 * kPageSize);  // holes, but for its beginning
  EXPECT_NE(Refusal(InsertThing), "");
}

TEST_F(HostileFile, AMapOfFreePagesThatStartsBehindTheFileIsAFinding) {
  uint8_t* page = Page(kGlobalMapPage);
  Store32(page + Load16(page + kJet4.data.slots) + kMapFirstPage, 32768);
  Store();
  EXPECT_NE(Findings().find("starts behind the end of the file"), std::string::npos) << Findings();
  EXPECT_GT(WriteInEveryWay(), 0);
}

TEST_F(HostileFile, AMapThatStartsBehindTheLargestFileIsAFinding) {
  Set("Things.owned map.first page", 0xFFFFFFF8);
  Store();
  EXPECT_GT(WriteInEveryWay(), 0);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, AMapWhosePagesAreOneAndTheSameIsAFinding) {
  Set("Things.owned map.kind", kMapReference);
  for (int i = 0; i < 3; ++i) Set("Things.owned map.bits " + std::to_string(i * 32), 0x01010101);
  Store();
  EXPECT_GT(WriteInEveryWay(), 0);
  EXPECT_NE(Findings(), "");
}

// --- Index pages ---

TEST_F(HostileFile, AnIndexPageThatIsCalledFreeIsNotGivenOutWhileItIsUsed) {
  const uint32_t leaf = PageOf("Things.index 0.root.type");
  // No other page is free, so this one is the next to be taken.
  for (uint32_t first = 0; first < 512; first += 32) {
    const uint32_t bit = leaf >= first && leaf < first + 32 ? 1u << (leaf - first) : 0;
    Set("free pages.bits " + std::to_string(first), bit);
  }
  Store();
  const std::string before = Findings();
  EXPECT_NE(before.find("in use but marked as free"), std::string::npos);
  EXPECT_NE(Refusal(InsertThing), "");
  EXPECT_EQ(Findings(), before);
}

TEST_F(HostileFile, AMarkOfAnEntryBehindThePageIsRefused) {
  Set("Things.index 0.root.mask end", 0x80);
  Store();
  EXPECT_GT(WriteInEveryWay(), 0);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, AFirstEntryShorterThanWhatAllShareIsRefused) {
  Set("Things.index 0.root.prefix", 0x0FFF);
  Store();
  EXPECT_GT(WriteInEveryWay(), 0);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, EntriesOutOfOrderAreRefusedWhenTheirPageIsEncodedAnew) {
  // The second entry of the first leaf becomes one of two bytes, which all others do not share.
  Set("Things.index 0.root.entry 1.key", 0x00);
  Set("Things.index 0.root.entry 2.key", 0xFF);
  Store();
  WriteInEveryWay();
  EXPECT_NE(Findings(), "");
}

// A node of one entry whose tail leads back to it: once the entry's leaf is gone, the root has its
// tail alone and would take over what it is itself.
TEST_F(HostileFile, ARootThatIsItsOwnTailIsRefused) {
  const std::string root = "Things.index 1.root";
  ASSERT_EQ(Get(root + ".type"), static_cast<uint32_t>(PageType::IndexNode));
  const uint32_t leaf = __builtin_bswap32(Get(root + ".entry 0.child"));
  const std::string leaf_name = "Things.index 1.page " + std::to_string(leaf);
  KeepFirstEntry(root);
  KeepFirstEntry(leaf_name);
  Set(root + ".tail", PageOf(root + ".type"));
  Store();
  const RowId row{__builtin_bswap32(Get(leaf_name + ".entry 0.row page")) >> 8,
                  static_cast<uint8_t>(Get(leaf_name + ".entry 0.row"))};
  EXPECT_NE(Refusal([&](Engine& engine) { engine.Delete(engine.Table(u"Things"), row); }), "");
  EXPECT_NE(Findings(), "");
}

// --- Too much of it ---

// Each value takes eight bytes of the block, and named both its owner and itself by a name as long
// as a name of 16 bits can be.
TEST_F(HostileFile, PropertiesWithNamesTooLongForANameAreRefused) {
  constexpr size_t kLongest = 0xFFFE;
  std::vector<uint8_t> block = {'M', 'R', '2', 0};
  const auto add = [&](uint32_t number, size_t size) {
    for (; size > 0; --size, number >>= 8) block.push_back(static_cast<uint8_t>(number));
  };
  add(6 + 2 + kLongest, 4);
  add(0x80, 2);
  add(kLongest, 2);
  block.resize(block.size() + kLongest, 'x');
  constexpr uint32_t kValues = 60000;
  add(6 + 6 + kLongest + kValues * 8, 4);
  add(0x01, 2);
  add(6 + kLongest, 4);
  add(kLongest, 2);
  block.resize(block.size() + kLongest, 'x');
  for (uint32_t i = 0; i < kValues; ++i) {
    add(8, 2);
    add(static_cast<uint32_t>(ColumnType::Text) << 8, 2);
    add(0, 4);
  }
  // What says that the catalog's table is the engine's own is in the file, too.
  Set("MSysObjects.type", kUserTable);
  Store();
  Change([&](Engine& engine) {
    const TableDefinition& objects = engine.Table(u"MSysObjects");
    for (TableScan scan(engine.File(), objects); scan.Next();) {
      if (ToText(scan.Row().Get(*objects.FindColumn(u"Name"))) != u"Things") continue;
      const Assignment values[] = {
          {static_cast<size_t>(objects.FindColumn(u"LvProp") - objects.columns.data()),
           Binary(block)}};
      engine.Update(objects, scan.Row().Id(), values);
      return;
    }
  });
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

// Read one after the other they are a thousand times the file.
TEST_F(HostileFile, MemosThatShareOneChainAreRefusedBeforeTheyFillTheMemory) {
  Change([](Engine& engine) {
    const TableDefinition& table = engine.Table(u"Things");
    for (int i = 0; i < 3000; ++i) {
      const Assignment values[] = {{kRemarks, Text(100, u'm')}};
      engine.Insert(table, values);
    }
    const Assignment values[] = {{kNumber, int16_t{-1}}, {kRemarks, Text(2000000, u'l')}};
    engine.Insert(table, values);
  });
  Read();
  uint32_t length = 0;
  for (const FileField& field : fields_) {
    const bool value =
        field.name.starts_with("Things.page") && field.name.ends_with("Remarks.length");
    if (value) length = std::max(length, LoadField(file_, field) & kLongValueLengthMask);
  }
  const FileField* chain = nullptr;
  for (const FileField& field : fields_) {
    if (field.size == 4 && LoadField(file_, field) == length && field.name.ends_with(".length"))
      chain = &field;
  }
  ASSERT_NE(chain, nullptr);
  const std::vector<uint8_t> descriptor(
      file_.begin() + static_cast<ptrdiff_t>(chain->at),
      file_.begin() + static_cast<ptrdiff_t>(chain->at + kLongValueDescriptorSize));
  for (const FileField& field : fields_) {
    const bool value =
        field.name.starts_with("Things.page") && field.name.ends_with("Remarks.length");
    if (value) std::ranges::copy(descriptor, file_.begin() + static_cast<ptrdiff_t>(field.at));
  }
  Store();
  const auto engine = Engine::Open(path_);
  const Engine::ReadScope scope(*engine);
  const TableDefinition& table = engine->Table(u"Things");
  std::vector<Value> values;
  const auto read_all = [&] {
    for (TableScan scan(engine->File(), table); scan.Next();)
      values.push_back(scan.Row().Get(table.columns[kRemarks]));
  };
  EXPECT_THROW(read_all(), RuntimeError);
  EXPECT_LT(values.size(), 100u);
  EXPECT_NE(Findings().find("part of two values"), std::string::npos);
}

// Pointers of four bytes to one and the same long row.
TEST_F(HostileFile, RowsThatAreAllOneAreRefusedBeforeTheyFillTheMemory) {
  Read();
  const uint32_t page = PageOf("Things.column Name.flags");
  const uint32_t data =
      Load24(&file_[FindField(fields_, "Things.index 0.root.entry 0.row page").at]);
  const uint32_t first = __builtin_bswap32(data) >> 8;
  uint8_t* bytes = Page(first);
  // Row 0 stays as the one that all point to; the others take four bytes each.
  size_t start = Load16(bytes + kJet4.data.slots) & kSlotStartMask;
  Store16(bytes + kJet4.data.slots, static_cast<uint16_t>(start | kSlotHidden));
  for (size_t row = 1; row < 250; ++row) {
    start -= kRowPointerSize;
    bytes[start] = 0;
    Store24(bytes + start + 1, first);
    Store16(bytes + kJet4.data.slots + row * kSlotSize,
            static_cast<uint16_t>(start | kSlotPointer));
  }
  Store16(bytes + kJet4.data.slot_count, 250);
  ASSERT_EQ(Load32(bytes + kPageOwner), page);
  Store();
  const auto engine = Engine::Open(path_);
  const Engine::ReadScope scope(*engine);
  size_t rows = 0;
  const auto read_all = [&] {
    for (TableScan scan(engine->File(), engine->Table(u"Things")); scan.Next();) ++rows;
  };
  read_all();
  EXPECT_GT(rows, 0u);
  EXPECT_NE(Findings(), "");
}

// A relationship of a table with itself where each row refers to all others.
class HostileRelationship : public HostileFile {
 protected:
  HostileRelationship() {
    Change([](Engine& engine) {
      const TableDefinition& table = engine.Table(u"Links");
      for (int i = 0; i < 3000; ++i) {
        const Assignment values[] = {{0, int32_t{1}}, {1, int32_t{1}}};
        engine.Insert(table, values);
      }
    });
    Read();
    const std::string own = "Links.logical index ByOwn.";
    const std::string other = "Links.logical index ByOther.";
    Set(own + "foreign key", kForeignKeyReferenced);
    Set(own + "other index", Get(other + "number"));
    Set(own + "other table", PageOf("Links.rows"));
    Set(own + "cascade deletes", 1);
    Set(own + "cascade updates", 1);
    Set(other + "foreign key", kForeignKeyReferencing);
    Set(other + "other index", Get(own + "number"));
    Set(other + "other table", PageOf("Links.rows"));
  }

  std::string DeleteOne() {
    return Refusal([](Engine& engine) {
      engine.Delete(engine.Table(u"Links"), RowsOf(engine, u"Links").front());
    });
  }
  std::string UpdateOne() {
    return Refusal([](Engine& engine) {
      const Assignment values[] = {{0, int32_t{2}}};
      engine.Update(engine.Table(u"Links"), RowsOf(engine, u"Links").front(), values);
    });
  }
};

TEST_F(HostileRelationship, WithoutAUniqueIndexIsRefused) {
  Store();
  EXPECT_NE(DeleteOne(), "");
  EXPECT_NE(UpdateOne(), "");
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileRelationship, OfEachRowWithAllOthersEnds) {
  const std::string unique = Get("Links.index 0.part 0") == 0 ? "Links.index 0" : "Links.index 1";
  Set(unique + ".flags", Get(unique + ".flags") | kIndexUnique);
  Store();
  EXPECT_NE(DeleteOne(), "");
  EXPECT_NE(Findings(), "");
}

}  // namespace
}  // namespace rdv::jet
