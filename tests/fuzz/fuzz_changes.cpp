// Any sequence of changes of rows on the sample database, with statements given up and the file
// opened again in between: the rows are those that the changes should give, and the checker finds
// nothing.
#include <map>

#include "data/jet/check/check.h"
#include "data/jet/rows/table_scan.h"
#include "tests/fuzz/fuzz_support.h"

namespace rdv::jet::fuzz {
namespace {

constexpr int kMostSteps = 200;

using Rows = std::map<RowId, std::vector<Value>>;

Rows ReadRows(Engine& engine, TextView name) {
  Rows rows;
  const TableDefinition& table = engine.Table(name);
  for (TableScan scan(engine.File(), table); scan.Next();) {
    std::vector<Value>& row = rows[scan.Row().Id()];
    for (const Column& column : table.columns) row.push_back(scan.Row().Get(column));
  }
  return rows;
}

class Session {
 public:
  explicit Session(Input& input) : input_(input) {
    files_.Put(path_, SampleDatabase());
    Open();
    const Engine::ReadScope scope(*engine_);
    things_ = ReadRows(*engine_, u"Things");
  }

  void Run() {
    for (int step = 0; step < kMostSteps && !input_.Empty(); ++step) {
      const uint8_t choice = input_.Byte();
      if (choice % 16 == 15) {
        engine_->Close();
        Open();
      } else {
        Statement(choice % 16 == 14);
      }
    }
    engine_->Close();
  }

  void Check() {
    Open();
    {
      const Engine::ReadScope scope(*engine_);
      Require(ReadRows(*engine_, u"Things") == things_, "rows are not as they were written");
    }
    BufferPageSource pages(files_.Get(path_), kJet4.page_size, path_);
    Require(CheckFile(FileReader(pages)).Clean(), "changes left the file unsound");
  }

 private:
  // With a small cache, so that pages are given up and read again.
  void Open() { engine_ = Engine::Open(path_, {.cache_pages = 16, .files = &files_}); }

  // Some changes in one statement, kept or given up; one that is refused changes nothing.
  void Statement(bool given_up) {
    const Rows before = things_;
    Engine::WriteScope scope(*engine_);
    const size_t changes = 1 + input_.Byte() % 4u;
    for (size_t i = 0; i < changes; ++i) {
      try {
        Change();
      } catch (const RuntimeError& error) {
        RequireGoodError(error);
      }
    }
    if (given_up) {
      things_ = before;
      return;
    }
    scope.Commit();
  }

  void Change() {
    const TableDefinition& table = engine_->Table(u"Things");
    const uint8_t choice = input_.Byte() % 8;
    if (choice >= 6 && !things_.empty()) {
      const RowId row = SomeRow();
      engine_->Delete(table, row);
      things_.erase(row);
    } else if (choice >= 3 && !things_.empty()) {
      const RowId row = SomeRow();
      const std::vector<Assignment> values = Values(table);
      engine_->Update(table, row, values);
      Note(table, row, values);
    } else {
      const std::vector<Assignment> values = Values(table);
      const RowId row = engine_->Insert(table, values);
      Require(!things_.contains(row), "a row takes the place of another");
      Note(table, row, values);
    }
  }

  RowId SomeRow() {
    return std::next(things_.begin(), static_cast<ptrdiff_t>(input_.Below(things_.size())))->first;
  }

  std::vector<Assignment> Values(const TableDefinition& table) {
    std::vector<Assignment> values;
    for (size_t column = 1; column < table.columns.size(); ++column) {
      if (input_.Byte() % 2 == 1)
        values.push_back({column, input_.ValueFor(table.columns[column])});
    }
    return values;
  }

  void Note(const TableDefinition& table, RowId row, const std::vector<Assignment>& values) {
    RowView view(engine_->File(), table);
    Require(FetchRow(engine_->File(), table, row, view), "a row is not there after it was written");
    std::vector<Value>& stored = things_[row];
    const std::vector<Value> old = std::move(stored);
    stored.clear();
    for (const Column& column : table.columns) stored.push_back(view.Get(column));
    std::vector<bool> assigned(table.columns.size());
    for (const auto& [column, value] : values) {
      assigned[column] = true;
      const bool no_flag = table.columns[column].type == ColumnType::Boolean && IsNull(value);
      Require(stored[column] == (no_flag ? Value(false) : value),
              "a field is not what was assigned");
    }
    for (size_t i = 0; i < old.size(); ++i)
      Require(assigned[i] || stored[i] == old[i], "a field changed that was not assigned");
  }

  Input& input_;
  const Text path_{kPath};
  MemoryFiles files_;
  std::unique_ptr<Engine> engine_;
  Rows things_;
};

}  // namespace
}  // namespace rdv::jet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  rdv::jet::fuzz::Input input(data, size);
  rdv::jet::fuzz::Session session(input);
  session.Run();
  session.Check();
  return 0;
}
