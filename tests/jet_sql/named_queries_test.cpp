// Each of the stored queries, with every argument that gives rows, against the dumps beside the
// sample databases.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>

#include "data/commands.h"
#include "data/jet/sql/jet_connection.h"
#include "runtime/conversion.h"
#include "tests/jet_sql/sample_dump.h"
#include "tests/support/foreign_files.h"

RDV_TELL_MISSING_FILES()

namespace rdv::jet::sql {
namespace {

struct NamedQuery {
  Command command;
  std::string table;
  std::vector<std::string> argument_columns;  // the columns that the arguments are compared with
  std::vector<std::pair<std::string, double>> fixed;  // and what the statement itself demands
  std::string order;                                  // "" for the order of storage
};

const NamedQuery kQueries[] = {
    {Command::Get_All_Partitions, "Partition_Settings", {"Config_ID"}, {}, "PartitionID"},
    {Command::Get_All_Card_Name, "SR_Card_Type_Names", {}, {}, "ID"},
    {Command::Get_Used_Lines,
     "Used_Lines",
     {"Config_ID"},
     {{"Base_Slot_No", 1}, {"Slot_Offset", 1}},
     "Line"},
    {Command::Get_All_Node_Names, "SR_Node_Type_Names", {}, {}, "ID"},
    {Command::Get_All_Mode_Names, "SR_Mode_Type_Names", {}, {}, "ID"},
    {Command::Get_Line_Type_Allowed_Modes, "SR_Card_Type_can_use_Mode", {"Card_Type_ID"}, {}, ""},
    {Command::Get_Line_Type_Allowed_Volume,
     "SR_Card_Type_can_use_Volume",
     {"Card_Type_ID"},
     {},
     "Volume_Type_ID"},
    {Command::Get_Max_NodeNumber,
     "Node_Type_Max",
     {"Config_ID", "PartitionID", "NodeType_ID"},
     {},
     "NodeType_ID"},
    {Command::Get_Specific_Line,
     "Used_Lines",
     {"Config_ID", "Base_Slot_No", "Slot_Offset", "Line"},
     {},
     ""},
    {Command::GetORVSettings, "orvsettings", {"ConfigID"}, {}, ""},
};

using Key = std::vector<double>;

class NamedQueries : public testing::TestWithParam<std::string> {
 protected:
  void Compare(const NamedQuery& query, const SampleTable& sample, const Key& key) {
    std::vector<Argument> arguments;
    for (const double part : key) arguments.push_back(Decimal(static_cast<int64_t>(part)));
    std::vector<SampleTable::Row> expected = Expected(query, sample, key);
    const CommandResult result =
        connection_->Execute(DefinitionOf(query.command).statement, arguments);
    ASSERT_TRUE(result.rows.has_value());
    ASSERT_EQ(result.rows->rows.size(), expected.size());
    ASSERT_EQ(result.rows->columns.size(), sample.Columns().size());
    for (size_t i = 0; i < expected.size(); ++i) CompareRow(sample, expected[i], *result.rows, i);
  }

  static void CompareRow(const SampleTable& sample, const SampleTable::Row& expected,
                         const RowTable& actual, size_t row) {
    for (size_t column = 0; column < actual.columns.size(); ++column) {
      const std::string name = ToUtf8(actual.columns[column]);
      EXPECT_EQ(Difference(sample.At(expected, name), actual.rows[row][column]), "")
          << "row " << row << ", " << name;
    }
  }

  static std::vector<SampleTable::Row> Expected(const NamedQuery& query, const SampleTable& sample,
                                                const Key& key) {
    std::vector<SampleTable::Row> rows;
    for (const SampleTable::Row& row : sample.Rows()) {
      bool matches = KeyOf(query, sample, row) == key;
      for (const auto& [column, value] : query.fixed)
        matches = matches && sample.Number(row, column) == value;
      if (matches) rows.push_back(row);
    }
    if (!query.order.empty()) {
      std::stable_sort(rows.begin(), rows.end(), [&](const auto& left, const auto& right) {
        return sample.Number(left, query.order) < sample.Number(right, query.order);
      });
    }
    return rows;
  }

  static Key KeyOf(const NamedQuery& query, const SampleTable& sample,
                   const SampleTable::Row& row) {
    Key key;
    for (const std::string& column : query.argument_columns)
      key.push_back(sample.Number(row, column));
    return key;
  }

  std::unique_ptr<Connection> connection_;
};

TEST_P(NamedQueries, GiveTheRowsOfTheDumpInTheirOrder) {
  connection_ = OpenJetConnection(FromUtf8(sites::SamplePath(GetParam() + "/NewDB.mdb").string()));
  const SampleDump dump(GetParam());
  for (const NamedQuery& query : kQueries) {
    SCOPED_TRACE(ToUtf8(DefinitionOf(query.command).name));
    const SampleTable sample = dump.Table(query.table);
    std::set<Key> keys;
    for (const SampleTable::Row& row : sample.Rows()) keys.insert(KeyOf(query, sample, row));
    ASSERT_FALSE(keys.empty());
    keys.insert(Key(query.argument_columns.size(), 12345));  // which no row has
    for (const Key& key : keys) Compare(query, sample, key);
  }
}

INSTANTIATE_TEST_SUITE_P(Sites, NamedQueries,
                         testing::ValuesIn(test::AtHand({"sites/plain", "sites/plain2003",
                                                         "sites/indexed", "foreign/plain",
                                                         "foreign/plain2003", "foreign/indexed"})),
                         [](const auto& site) { return test::TestNameOf(site.param); });

}  // namespace
}  // namespace rdv::jet::sql
