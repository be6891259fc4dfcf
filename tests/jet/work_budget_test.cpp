// What one statement may make of a file that was made to hurt: each step on its own is within what
// a walk may take, and all of them together are not.
#include <gmock/gmock.h>

#include "data/jet/sql/jet_connection.h"
#include "tests/jet/hostile_file.h"

namespace rdv::jet {
namespace {

constexpr const char* kTooMuch = "takes more work than a sound file of its size can make";

class HostileWork : public HostileFile {
 protected:
  std::string RefusalOf(TextView statement) {
    try {
      OpenJetConnection(path_, {})->Execute(statement, {}, {});
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
    return "";
  }

  // A row that `rows` others refer to and change with, in a table with so many unique indexes more.
  void MakeFamily(int rows, int indexes) {
    Change([&](Engine& engine) {
      TableSpec parents{.name = u"Parents", .columns = {}, .indexes = {}};
      parents.columns = {{.name = u"Id", .type = ColumnType::Long}};
      parents.indexes.push_back({.name = u"PrimaryKey", .columns = {{u"Id"}}, .primary = true});
      engine.CreateTable(parents);
      TableSpec children{.name = u"Children", .columns = {}, .indexes = {}};
      children.columns = {{.name = u"Parent", .type = ColumnType::Long},
                          {.name = u"Id", .type = ColumnType::Long}};
      children.indexes.push_back({.name = u"ByParent", .columns = {{u"Parent"}}});
      for (int i = 0; i < indexes; ++i) {
        children.indexes.push_back(
            {.name = u"ById" + Decimal(i), .columns = {{u"Parent"}, {u"Id"}}, .unique = true});
      }
      engine.CreateTable(children);
      engine.CreateRelationship({.name = u"Family",
                                 .table = u"Children",
                                 .referenced_table = u"Parents",
                                 .columns = {{u"Parent", u"Id"}},
                                 .cascade_updates = true});
      const Assignment parent[] = {{0, int32_t{1}}};
      engine.Insert(engine.Table(u"Parents"), parent);
      for (int32_t i = 0; i < rows; ++i) {
        const Assignment child[] = {{0, int32_t{1}}, {1, i}};
        engine.Insert(engine.Table(u"Children"), child);
      }
    });
    Read();
  }

  // The last leaf of each of the table's indexes is followed by the same `count` leaves without
  // entries.
  void LeadLeavesToEmptyOnes(const std::string& table, uint32_t count) {
    const uint32_t owner = PageOf(table + ".type");
    const auto first = static_cast<uint32_t>(file_.size() / kPageSize);
    for (uint32_t page = 1; page < first; ++page) {
      uint8_t* const bytes = Page(page);
      const bool leaf = bytes[0] == static_cast<uint8_t>(PageType::IndexLeaf);
      if (!leaf || Load32(bytes + kPageOwner) != owner) continue;
      if (Load32(bytes + kJet4.index.next) == 0) Store32(bytes + kJet4.index.next, first);
    }
    file_.resize(file_.size() + count * kPageSize);
    for (uint32_t i = 0; i < count; ++i) {
      uint8_t* const bytes = Page(first + i);
      bytes[0] = static_cast<uint8_t>(PageType::IndexLeaf);
      bytes[1] = kPageMark;
      Store16(bytes + kPageFreeBytes, static_cast<uint16_t>(kPageSize - kJet4.index.entries));
      Store32(bytes + kPageOwner, owner);
      if (i + 1 < count) Store32(bytes + kJet4.index.next, first + i + 1);
    }
  }
};

// No walk meets a page twice: only all of them together are too much.
TEST_F(HostileWork, OfManySeeksThroughTheSameEmptyLeavesIsRefused) {
  MakeFamily(200, 10);
  LeadLeavesToEmptyOnes("Children", 150);
  Store();
  EXPECT_THAT(RefusalOf(u"UPDATE Parents SET Id = 2 WHERE Id = 1"), testing::HasSubstr(kTooMuch));
  EXPECT_EQ(RefusalOf(u"SELECT Id FROM Children WHERE Parent = 1"), "");
}

}  // namespace
}  // namespace rdv::jet
