#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <set>

#include "data/jet/catalog/creation.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"
#include "tests/jet/findings.h"
#include "tests/jet/write_support.h"
#include "tests/support/foreign_files.h"

namespace rdv::jet {
namespace {

RDV_TEST_ON_FILE(testing::Test, CreatedDatabaseEqualsOneThatJetMadeButForBytesThatMeanNothing,
                 "corpus/blank/adox_jet4.mdb") {
  const auto jet_made = SamplePath(GetParam());
  const TemporaryFolder folder;
  const auto path = folder.Path() / "new.mdb";
  constexpr std::array<uint8_t, 8> kCreated = {0x3e, 0x85, 0xd3, 0x3b, 0x3e, 0xab, 0xe4, 0x40};
  constexpr std::array<uint8_t, 8> kRows = {0x4e, 0xfb, 0xd3, 0x3b, 0x3e, 0xab, 0xe4, 0x40};
  CreateDatabase(NativeFileSystem(), PathText(path),
                 {LoadDouble(kCreated.data()), LoadDouble(kRows.data()), 9756});
  // Buffers that the maker did not clear: offsets of variable columns, the order of index columns
  // that are not there, the bytes behind a root's page number.
  const std::set<size_t> junk = {0x20E9, 0x2134, 0x2135, 0x214D, 0x214E, 0x2167, 0x217F,
                                 0x2199, 0x21E3, 0x2321, 0x2327, 0x30AB, 0x30FA, 0x3106,
                                 0x3109, 0x3115, 0x3117, 0x407A, 0x40C5, 0x40DE, 0x4110,
                                 0x419F, 0x41A5, 0x41AB, 0x41B7, 0x41B9};
  const auto expected = ReadWholeFile(jet_made);
  const auto found = ReadWholeFile(path);
  ASSERT_EQ(found.size(), expected.size());
  std::set<size_t> different;
  for (size_t i = 0; i < found.size(); ++i) {
    if (found[i] != expected[i]) different.insert(i);
  }
  EXPECT_EQ(different, junk);
}

TEST(CreateDatabase, LeavesAFileThatIsThereAlone) {
  const TemporaryFolder folder;
  const auto path = folder.Path() / "new.mdb";
  Engine::Create(PathText(path));
  const auto before = ReadWholeFile(path);
  EXPECT_THROW(Engine::Create(PathText(path)), RuntimeError);
  EXPECT_EQ(ReadWholeFile(path), before);
}

TableSpec Customers() {
  return {.name = u"Customers",
          .columns = {{.name = u"ID", .type = ColumnType::Long, .autonumber = true},
                      {.name = u"Name",
                       .type = ColumnType::Text,
                       .length = 50,
                       .required = true,
                       .allow_zero_length = false},
                      {.name = u"Since", .type = ColumnType::DateTime},
                      {.name = u"Active", .type = ColumnType::Boolean},
                      {.name = u"Remarks", .type = ColumnType::Memo},
                      {.name = u"Balance", .type = ColumnType::Currency}},
          .indexes = {{.name = u"PrimaryKey", .columns = {{u"ID"}}, .primary = true},
                      {.name = u"Name", .columns = {{u"Name"}, {u"Since", true}}}}};
}

TableSpec Orders() {
  return {.name = u"Orders",
          .columns = {{.name = u"Number", .type = ColumnType::Integer},
                      {.name = u"Customer", .type = ColumnType::Long},
                      {.name = u"Item", .type = ColumnType::Text, .length = 20}},
          .indexes = {{.name = u"PrimaryKey", .columns = {{u"Number"}}, .primary = true}}};
}

class CreatedFile : public testing::Test {
 protected:
  void SetUp() override {
    Engine::Create(PathText(path_));
    engine_ = Engine::Open(PathText(path_));
    Write([&] {
      engine_->CreateTable(Customers());
      engine_->CreateTable(Orders());
    });
  }

  void Write(const std::function<void()>& change) {
    Engine::WriteScope scope(*engine_);
    change();
    scope.Commit();
  }
  // What refuses the change; the file is as it was then.
  std::string Refused(const std::function<void()>& change) {
    Engine::WriteScope scope(*engine_);
    try {
      change();
    } catch (const RuntimeError& error) {
      scope.Commit();
      return ToUtf8(error.Description());
    }
    return "nothing was refused";
  }
  void Relate(bool updates, bool deletes) {
    Write([&] {
      engine_->CreateRelationship({.name = u"CustomersOrders",
                                   .table = u"Orders",
                                   .referenced_table = u"Customers",
                                   .columns = {{u"Customer", u"ID"}},
                                   .cascade_updates = updates,
                                   .cascade_deletes = deletes});
    });
  }
  RowId AddCustomer(const Text& name) {
    return engine_->Insert(engine_->Table(u"customers"), std::vector<Assignment>{{1, name}});
  }
  RowId AddOrder(int16_t number, const Value& customer) {
    return engine_->Insert(engine_->Table(u"ORDERS"),
                           std::vector<Assignment>{{0, number}, {1, customer}});
  }
  std::vector<std::vector<Value>> Rows(TextView table_name) {
    const Engine::ReadScope scope(*engine_);
    const TableDefinition& table = engine_->Table(table_name);
    std::vector<std::vector<Value>> rows;
    for (TableScan scan(engine_->File(), table); scan.Next();) {
      auto& row = rows.emplace_back();
      for (const Column& column : table.columns) row.push_back(scan.Row().Get(column));
    }
    return rows;
  }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_.Path() / "made.mdb";
  std::unique_ptr<Engine> engine_;
};

TEST_F(CreatedFile, HasItsTablesWithNothingWrong) {
  EXPECT_EQ(Findings(*engine_), "");
  const Engine::ReadScope scope(*engine_);
  EXPECT_EQ(engine_->UserTableNames(), (std::vector<Text>{u"Customers", u"Orders"}));
  const TableDefinition& table = engine_->Table(u"CUSTOMERS");
  ASSERT_EQ(table.columns.size(), 6u);
  EXPECT_TRUE(table.columns[0].autonumber);
  EXPECT_TRUE(table.columns[1].required);
  EXPECT_FALSE(table.columns[1].allow_zero_length);
  EXPECT_EQ(table.columns[1].length, 100);
  EXPECT_TRUE(table.indexes[1].columns[1].descending);
}

// Also where an index that is not unique has the same columns and stands before it.
TEST_F(CreatedFile, RelatesToTheUniqueIndexOfTheColumn) {
  TableSpec persons = Customers();
  persons.name = u"Persons";
  persons.indexes.insert(persons.indexes.begin(), {.name = u"ID", .columns = {{u"ID"}}});
  Write([&] {
    engine_->CreateTable(persons);
    engine_->CreateRelationship({.name = u"PersonsOrders",
                                 .table = u"Orders",
                                 .referenced_table = u"Persons",
                                 .columns = {{u"Customer", u"ID"}}});
  });
  EXPECT_NE(Refused([&] { AddOrder(1, int32_t{1}); }).find("related record"), std::string::npos);
  EXPECT_EQ(Findings(*engine_), "");
}

// A table's references to itself are not made, nor a second relationship of the same name.
TEST_F(CreatedFile, RefusesRelationshipsThatItCannotHave) {
  const auto relate = [&](const Text& name, const Text& table, const Text& column) {
    Engine::WriteScope scope(*engine_);
    try {
      engine_->CreateRelationship({.name = name,
                                   .table = table,
                                   .referenced_table = u"Customers",
                                   .columns = {{column, u"ID"}}});
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
    return std::string("nothing was refused");
  };
  EXPECT_EQ(relate(u"Self", u"Customers", u"ID"), "Relationship 'Self' cannot be made.");
  Relate(false, false);
  EXPECT_EQ(relate(u"customersorders", u"Orders", u"Customer"),
            "Relationship 'customersorders' cannot be made.");
  EXPECT_EQ(Findings(*engine_), "");
}

#ifndef _WIN32

TEST_F(CreatedFile, IsReadAlikeByAnIndependentReader) {
  if (std::system("command -v mdb-export > /dev/null") != 0)
    GTEST_SKIP() << "mdb-export is not installed";
  Write([&] {
    const std::vector<Assignment> values = {{1, Text(u"M\u00FCller")},
                                            {2, DateTime{40000.5}},
                                            {3, true},
                                            {4, Text(5000, u'x')},
                                            {5, Currency{123456}}};
    engine_->Insert(engine_->Table(u"Customers"), values);
    for (int16_t i = 0; i < 1000; ++i) AddOrder(i, int32_t{1});
  });
  engine_->Close();
  const auto run = [&](const std::string& table) {
    const std::string command = "mdb-export '" + path_.string() + "' " + table;
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    char buffer[4096];
    while (const size_t count = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, count);
    EXPECT_EQ(pclose(pipe), 0);
    return output;
  };
  EXPECT_EQ(run("Customers"),
            "ID,Name,Since,Active,Remarks,Balance\n1,\"M\u00FCller\",\"07/06/09 12:00:00\",1,\"" +
                std::string(5000, 'x') + "\",12.3456\n");
  std::string orders = "Number,Customer,Item\n";
  for (int i = 0; i < 1000; ++i) orders += std::to_string(i) + ",1,\n";
  EXPECT_EQ(run("Orders"), orders);
}

#endif

TEST_F(CreatedFile, RefusesWhatItsRulesForbidAndTakesNothingOfIt) {
  EXPECT_NE(Refused([&] {
              AddOrder(1, Null());
              AddOrder(1, Null());
            }).find("duplicate values"),
            std::string::npos);
  EXPECT_EQ(Rows(u"Orders").size(), 1u);
  const auto insert = [&](const Value& name) {
    return Refused([&] {
      engine_->Insert(engine_->Table(u"Customers"), std::vector<Assignment>{{1, name}});
    });
  };
  EXPECT_NE(insert(Null()).find("'Customers.Name' cannot contain a Null"), std::string::npos);
  EXPECT_NE(insert(Text()).find("'Customers.Name' cannot be a zero-length"), std::string::npos);
  EXPECT_NE(insert(Text(51, u'a')).find("too small to accept"), std::string::npos);
  EXPECT_NE(insert(Text(u"\u6F22")).find("U+6F22"), std::string::npos);
  EXPECT_NE(Refused([&] {
              engine_->Insert(engine_->Table(u"Orders"), std::vector<Assignment>{{1, int32_t{4}}});
            }).find("primary key cannot contain a Null"),
            std::string::npos);
  EXPECT_TRUE(Rows(u"Customers").empty());
  EXPECT_EQ(Findings(*engine_), "");
}

TEST_F(CreatedFile, CountsItsNumbersOn) {
  Write([&] {
    AddCustomer(u"first");
    engine_->Insert(engine_->Table(u"Customers"),
                    std::vector<Assignment>{{0, int32_t{70}}, {1, Text(u"given")}});
    AddCustomer(u"next");
  });
  const auto rows = Rows(u"Customers");
  EXPECT_EQ(rows.at(0)[0], Value(int32_t{1}));
  EXPECT_EQ(rows.at(2)[0], Value(int32_t{71}));
}

TEST_F(CreatedFile, ARelationshipIsEnforced) {
  Relate(false, false);
  EXPECT_EQ(Findings(*engine_), "");
  RowId customer;
  RowId order;
  Write([&] {
    customer = AddCustomer(u"one");
    order = AddOrder(1, int32_t{1});
    AddOrder(2, Null());
  });
  EXPECT_NE(Refused([&] { AddOrder(3, int32_t{9}); }).find("required in table 'Customers'"),
            std::string::npos);
  EXPECT_NE(
      Refused([&] {
        engine_->Update(engine_->Table(u"Orders"), order, std::vector<Assignment>{{1, int32_t{9}}});
      }).find("required in table 'Customers'"),
      std::string::npos);
  EXPECT_NE(Refused([&] {
              engine_->Delete(engine_->Table(u"Customers"), customer);
            }).find("table 'Orders' includes related records"),
            std::string::npos);
  EXPECT_NE(Refused([&] {
              engine_->Update(engine_->Table(u"Customers"), customer,
                              std::vector<Assignment>{{0, int32_t{5}}});
            }).find("table 'Orders' includes related records"),
            std::string::npos);
  Write([&] {
    engine_->Delete(engine_->Table(u"Orders"), order);
    engine_->Delete(engine_->Table(u"Customers"), customer);
  });
  EXPECT_EQ(Rows(u"Orders").size(), 1u);
  EXPECT_EQ(Findings(*engine_), "");
}

TEST_F(CreatedFile, ARelationshipCascades) {
  RowId customer;
  Write([&] {
    customer = AddCustomer(u"one");
    AddCustomer(u"two");
    for (int16_t i = 0; i < 300; ++i) AddOrder(i, int32_t{1 + i % 2});
  });
  Relate(true, true);
  EXPECT_EQ(Findings(*engine_), "");
  Write([&] {
    engine_->Update(engine_->Table(u"Customers"), customer,
                    std::vector<Assignment>{{0, int32_t{1000}}});
  });
  EXPECT_EQ(Findings(*engine_), "");
  const auto orders = Rows(u"Orders");
  EXPECT_EQ(std::ranges::count_if(orders, [](const auto& row) { return row[1] == Value(1000); }),
            150);
  Write([&] { engine_->Delete(engine_->Table(u"Customers"), customer); });
  EXPECT_EQ(Rows(u"Orders").size(), 150u);
  EXPECT_EQ(Findings(*engine_), "");
}

TEST_F(CreatedFile, ARelationshipThatTheRowsBreakIsNotMade) {
  Write([&] { AddOrder(1, int32_t{77}); });
  EXPECT_THROW(Relate(false, false), RuntimeError);
  EXPECT_EQ(Findings(*engine_), "");
  const Engine::ReadScope scope(*engine_);
  EXPECT_EQ(engine_->Table(u"Orders").logical_indexes.size(), 1u);
}

TEST_F(CreatedFile, ATableOfManyColumnsTakesMoreThanAPageToDefine) {
  TableSpec spec{.name = u"Wide", .columns = {}, .indexes = {}};
  for (int i = 0; i < 255; ++i) {
    const bool memo = i % 3 == 0;
    spec.columns.push_back({.name = u"ThisIsColumnNumber" + Decimal(i),
                            .type = memo ? ColumnType::Memo : ColumnType::Integer});
  }
  for (int i = 1; i < 32; i += 3) {
    const Text name = u"ThisIsColumnNumber" + Decimal(i);
    spec.indexes.push_back({.name = name, .columns = {{name}}});
  }
  Write([&] { engine_->CreateTable(spec); });
  EXPECT_EQ(Findings(*engine_), "");
  Write([&] {
    for (int i = 0; i < 50; ++i) {
      std::vector<Assignment> values;
      for (size_t column = 0; column < 255; column += 5) {
        const bool memo = column % 3 == 0;
        values.push_back({column, memo ? Value(Text(static_cast<size_t>(i), u'm'))
                                       : Value(static_cast<int16_t>(i))});
      }
      engine_->Insert(engine_->Table(u"Wide"), values);
    }
  });
  EXPECT_EQ(Findings(*engine_), "");
  EXPECT_EQ(Rows(u"Wide").size(), 50u);
}

}  // namespace
}  // namespace rdv::jet
