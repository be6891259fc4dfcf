// Files that were made to hurt whoever writes to them: sound ones but for the fields that each test
// names. Every statement on them is refused or done, the file can be given up, and the checker says
// what is wrong. The sanitizers of the tree watch over the memory meanwhile.
#include "tests/jet/hostile_file.h"

#include <gmock/gmock.h>

#include "data/jet/catalog/properties.h"
#include "data/jet/sql/jet_connection.h"

namespace rdv::jet {
namespace {

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

TEST_F(HostileFile, MoreColumnsThanATableCanHaveAreRefused) {
  const uint32_t page = PageOf("Things.length");
  Redefine(file_, page, WideDefinition(65535, 0));
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

TEST_F(HostileFile, MoreIndexesThanATableCanHaveAreRefused) {
  const uint32_t page = PageOf("Things.length");
  Redefine(file_, page, WideDefinition(4, 20000));
  Store();
  EXPECT_EQ(WriteInEveryWay(), 4);
  EXPECT_NE(Findings(), "");
}

// --- Maps ---

// The map has room for one reference and would need two for the pages that it says it is about.
TEST_F(HostileFile, AMapOfFreePagesThatStartsLateIsNotWrittenBehindItsEnd) {
  StartFreePagesLate(file_);
  Store();
  std::filesystem::resize_file(name_,
                               kPagesBehindLateMap * kPageSize);  // holes, but for its beginning
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
  // The one to be taken next.
  CallFree(file_, fields_, leaf);
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
  KeepFirstEntry(file_, fields_, leaf_name);
  LeadRootToItself(file_, fields_, root);
  Store();
  const RowId row{__builtin_bswap32(Get(leaf_name + ".entry 0.row page")) >> 8,
                  static_cast<uint8_t>(Get(leaf_name + ".entry 0.row"))};
  EXPECT_NE(Refusal([&](Engine& engine) { engine.Delete(engine.Table(u"Things"), row); }), "");
  EXPECT_NE(Findings(), "");
}

// --- Too much of it ---

TEST_F(HostileFile, PropertiesWithNamesTooLongForANameAreRefused) {
  const std::vector<uint8_t> block = PropertiesWithLongNames();
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

// More than are read of values that all have one chain; fewer than fill the memory when nobody
// refuses them.
constexpr size_t kManyShared = 40;

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
  ShareLongestValue(file_, fields_, "Things", "Remarks");
  Store();
  const auto engine = Engine::Open(path_);
  const Engine::ReadScope scope(*engine);
  const TableDefinition& table = engine->Table(u"Things");
  std::vector<Value> values;
  const auto read_all = [&] {
    for (TableScan scan(engine->File(), table); scan.Next() && values.size() < kManyShared;)
      values.push_back(scan.Row().Get(table.columns[kRemarks]));
  };
  EXPECT_THROW(read_all(), RuntimeError);
  EXPECT_NE(Findings().find("part of two values"), std::string::npos);
}

TEST_F(HostileFile, BinaryValuesThatShareOneChainAreRefusedAsTextToo) {
  Change([](Engine& engine) {
    TableSpec spec{.name = u"Pictures", .columns = {}, .indexes = {}};
    spec.columns = {{.name = u"Id", .type = ColumnType::Long},
                    {.name = u"Picture", .type = ColumnType::Ole}};
    engine.CreateTable(spec);
    const TableDefinition& table = engine.Table(u"Pictures");
    for (int32_t i = 0; i < 3000; ++i) {
      const Assignment values[] = {{0, i}, {1, Binary(100, uint8_t{1})}};
      engine.Insert(table, values);
    }
    const Assignment values[] = {{0, int32_t{-1}}, {1, Binary(1'000'000, uint8_t{2})}};
    engine.Insert(table, values);
  });
  Read();
  ShareLongestValue(file_, fields_, "Pictures", "Picture");
  Store();
  const auto engine = Engine::Open(path_);
  const Engine::ReadScope scope(*engine);
  const TableDefinition& table = engine->Table(u"Pictures");
  size_t read = 0;
  const auto read_all = [&] {
    for (TableScan scan(engine->File(), table); scan.Next() && read < kManyShared; ++read) {
      Text text;
      scan.Row().AppendText(table.columns[1], text);
    }
  };
  EXPECT_THROW(read_all(), RuntimeError);
}

// Each table has all columns of one definition, and all properties of one block: two megabytes.
TEST_F(HostileFile, TablesThatShareOneDefinitionAreNotAllKept) {
  constexpr int kTables = 40;  // a few more than are kept
  const auto name_of = [](int table) { return u"T" + Decimal(table); };
  TableSpec wide{.name = u"Wide", .columns = {}, .indexes = {}};
  std::vector<Property> properties;
  for (int i = 0; i < 255; ++i) {
    const Text name = u"C" + Decimal(i);
    wide.columns.push_back({.name = name, .type = ColumnType::Text, .length = 2});
    for (const TextView of : {u"DefaultValue", u"ValidationRule"})
      properties.push_back({.owner = name,
                            .name = Text(of),
                            .type = ColumnType::Memo,
                            .value = std::vector<uint8_t>(4000, 0x64)});
  }
  Change([&](Engine& engine) {
    engine.CreateTable(wide);
    for (int i = 0; i < kTables; ++i) {
      TableSpec spec{.name = name_of(i), .columns = {}, .indexes = {}};
      spec.columns = {{.name = u"A", .type = ColumnType::Text, .length = 10, .required = true}};
      engine.CreateTable(spec);
    }
  });
  Read();
  // What says that the catalog's table is the engine's own is in the file, too.
  Set("MSysObjects.type", kUserTable);
  Store();
  Change([&](Engine& engine) {
    const TableDefinition& objects = engine.Table(u"MSysObjects");
    for (TableScan scan(engine.File(), objects); scan.Next();) {
      if (ToText(scan.Row().Get(*objects.FindColumn(u"Name"))) != u"Wide") continue;
      const Assignment values[] = {
          {static_cast<size_t>(objects.FindColumn(u"LvProp") - objects.columns.data()),
           Binary(EncodeProperties(properties))}};
      engine.Update(objects, scan.Row().Id(), values);
      return;
    }
  });
  Read();
  ShareLongestValue(file_, fields_, "MSysObjects", "LvProp");
  for (int i = 0; i < kTables; ++i) {
    const uint32_t page = PageOf(ToUtf8(name_of(i)) + ".type");
    std::copy_n(Page(PageOf("Wide.type")), kPageSize, Page(page));
  }
  Store();
  const auto engine = Engine::Open(path_);
  const Engine::ReadScope scope(*engine);
  int kept = 0;
  std::string refusal;
  try {
    for (; kept < kTables; ++kept) engine->Table(name_of(kept));
  } catch (const RuntimeError& error) {
    refusal = ToUtf8(error.Description());
  }
  EXPECT_THAT(refusal,
              testing::HasSubstr("More is to be kept in memory than the file can stand for"));
  EXPECT_GT(kept, 10);
}

// Half a megabyte of the file would take a quarter of a gigabyte of memory.
TEST_F(HostileFile, RowsThatStandForMoreValuesThanTheyHaveBytesAreRefused) {
  FillWithEmptyRows(file_, fields_, "Links", 100);
  Store();
  const auto connection = OpenJetConnection(path_, {});
  const auto refusal = [&](TextView statement) {
    try {
      connection->Execute(statement, {}, {});
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
    return std::string();
  };
  const char* const kept = "More is to be kept in memory than the file can stand for";
  EXPECT_THAT(refusal(u"SELECT * FROM Links"), testing::HasSubstr(kept));
  // What is kept of a row is small, however many columns it has.
  EXPECT_EQ(refusal(u"SELECT id FROM Links"), "");
}

// Pointers of four bytes to one and the same long row.
TEST_F(HostileFile, RowsThatAreAllOneAreReadOneByOneAndAreAFinding) {
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
  EXPECT_GE(rows, 249u);
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
    RelateToItself(file_, fields_, "Links", "ByOwn", "ByOther");
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
