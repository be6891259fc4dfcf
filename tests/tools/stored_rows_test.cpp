// What the player prints of the stored lines and cards, whatever columns their tables have.
#include "tools/play/stored_rows.h"

#include <gmock/gmock.h>

#include <map>

#include "data/connection_route.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/engine.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"

namespace rdv::play {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class StoredRows : public ::testing::Test {
 protected:
  void Create(const std::vector<jet::TableSpec>& tables) {
    jet::Engine::Create(files_.DatabaseFile().u16string(), {}, [&](jet::Engine& engine) {
      jet::Engine::WriteScope scope(engine);
      for (const jet::TableSpec& table : tables) engine.CreateTable(table);
      scope.Commit();
    });
  }
  // The fields by column; those left out are Null.
  void Insert(TextView table, const std::map<Text, Text>& fields) {
    Text names;
    Text parameters;
    std::vector<Argument> values;
    for (const auto& [name, value] : fields) {
      if (!names.empty()) {
        names += u", ";
        parameters += u", ";
      }
      names += name;
      parameters += u"`" + name + u"`";
      values.emplace_back(value);
    }
    OpenConnection(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" +
                   files_.DatabaseFile().u16string())
        ->Execute(u"INSERT INTO " + Text(table) + u" (" + names + u") VALUES (" + parameters + u")",
                  values);
  }
  static Value FieldOf(const RowTable& table, size_t row, TextView column) {
    for (size_t index = 0; index < table.columns.size(); ++index) {
      if (table.columns[index] == column) return table.rows.at(row)[index];
    }
    ADD_FAILURE() << "no column " << ToUtf8(column);
    return {};
  }
  static std::vector<int> Numbers(const RowTable& table, TextView column) {
    std::vector<int> numbers;
    for (size_t row = 0; row < table.rows.size(); ++row) {
      numbers.push_back(ToLong(FieldOf(table, row, column)));
    }
    return numbers;
  }

  const test::SiteFiles files_{"", ""};
  const SiteFolder found_{files_.Folder().u16string()};
};

const jet::TableSpec kOddLines = {
    .name = u"Used_Lines",
    .columns = {{.name = u"LINE"},
                {.name = u"slot_offset"},
                {.name = u"BASE_slot_NO"},
                {.name = u"config_id"},
                {.name = u"Description", .type = jet::ColumnType::Text, .length = 50},
                {.name = u"OfNoInterest"}},
    .indexes = {}};

TEST_F(StoredRows, ColumnsAreFoundWithoutRegardToCaseAndMissingOnesAreNull) {
  Create({kOddLines});
  Insert(u"Used_Lines", {{u"config_id", u"1"},
                         {u"BASE_slot_NO", u"1"},
                         {u"slot_offset", u"1"},
                         {u"LINE", u"7"},
                         {u"Description", u"seven"}});
  const RowTable lines = StoredLines(1);
  EXPECT_THAT(lines.columns, SizeIs(24));
  ASSERT_THAT(lines.rows, SizeIs(1));
  EXPECT_EQ(FieldOf(lines, 0, u"Line"), Value(int32_t{7}));
  EXPECT_EQ(FieldOf(lines, 0, u"Description"), Value(Text(u"seven")));
  EXPECT_TRUE(IsNull(FieldOf(lines, 0, u"Volume_ID")));
}

TEST_F(StoredRows, LinesOfTheConfigurationAreOrderedBySlotAndNumberWithNullFirst) {
  Create({kOddLines});
  struct Line {
    TextView config, base_slot, slot_offset, line;
  };
  for (const Line& line :
       {Line{u"1", u"2", u"1", u"1"}, Line{u"1", u"1", u"2", u"2"}, Line{u"1", u"1", u"1", u"10"},
        Line{u"2", u"1", u"1", u"4"}, Line{u"1", u"1", u"1", u"9"}, Line{u"1", u"1", u"1", u"3"}}) {
    Insert(u"Used_Lines", {{u"config_id", Text(line.config)},
                           {u"BASE_slot_NO", Text(line.base_slot)},
                           {u"slot_offset", Text(line.slot_offset)},
                           {u"LINE", Text(line.line)}});
  }
  EXPECT_THAT(Numbers(StoredLines(1), u"Line"), ElementsAre(3, 9, 10, 2, 1));
  EXPECT_THAT(Numbers(StoredLines(2), u"Line"), ElementsAre(4));
  Insert(u"Used_Lines", {{u"config_id", u"1"}, {u"slot_offset", u"5"}, {u"LINE", u"6"}});
  EXPECT_THAT(Numbers(StoredLines(1), u"Line"), ElementsAre(6, 3, 9, 10, 2, 1));
}

TEST_F(StoredRows, CardsAreFoundBesideATableOfLinesThatIsMissing) {
  Create({{.name = u"used_cards",
           .columns = {{.name = u"Slot_Offset"}, {.name = u"CONFIG_ID"}, {.name = u"Base_Slot_No"}},
           .indexes = {}}});
  struct Card {
    TextView config, base_slot, slot_offset;
  };
  for (const Card& card : {Card{u"3", u"2", u"1"}, Card{u"3", u"1", u"8"}, Card{u"3", u"1", u"2"},
                           Card{u"4", u"1", u"1"}}) {
    Insert(u"used_cards", {{u"CONFIG_ID", Text(card.config)},
                           {u"Base_Slot_No", Text(card.base_slot)},
                           {u"Slot_Offset", Text(card.slot_offset)}});
  }
  const RowTable cards = StoredCards(3);
  EXPECT_THAT(cards.columns, SizeIs(9));
  EXPECT_THAT(Numbers(cards, u"Slot_Offset"), ElementsAre(2, 8, 1));
  EXPECT_TRUE(IsNull(FieldOf(cards, 0, u"Part_Num")));
  EXPECT_THAT(StoredLines(3).rows, IsEmpty());
}

TEST_F(StoredRows, WithoutADatabaseThereAreNone) {
  EXPECT_THAT(StoredLines(1).rows, IsEmpty());
  EXPECT_THAT(StoredCards(1).rows, IsEmpty());
}

}  // namespace
}  // namespace rdv::play
