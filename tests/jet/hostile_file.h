// A file with two tables, whose fields tests change before it is written to in every way.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"
#include "tests/jet/write_support.h"
#include "tests/support/jet_damage.h"
#include "tests/support/jet_fields.h"

namespace rdv::jet {

inline constexpr size_t kPageSize = 4096;

inline TableSpec Things() {
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
inline TableSpec Links() {
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
  uint32_t PageOf(std::string_view field) const { return jet::PageOf(fields_, field); }
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

  const TemporaryFolder folder_;
  const std::filesystem::path name_ = folder_.Path() / "hostile.mdb";
  const Text path_ = PathText(name_);
  std::vector<uint8_t> file_;
  std::vector<FileField> fields_;
};

}  // namespace rdv::jet
