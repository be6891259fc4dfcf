#include "data/jet/sql/jet_connection.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "data/jet/format/errors.h"
#include "data/jet/sql/execution.h"
#include "data/jet/sql/statement_parser.h"
#include "runtime/error.h"

namespace rdv::jet {
namespace {

// Statements that are kept after they were parsed; the stored commands are fourteen.
constexpr size_t kKeptStatements = 32;

// How often a query begins anew because another program changed the file under it.
constexpr int kMaxAttempts = 20;

class JetConnection : public Connection {
 public:
  JetConnection(const Text& path, const EngineOptions& options)
      : path_(path), engine_(Engine::Open(path, options)) {}

  CommandResult Execute(TextView text, std::span<const Argument> arguments,
                        std::span<const Parameter>) override {
    const sql::Statement& statement = Parsed(text);
    CommandResult result;
    if (const auto* select = std::get_if<sql::Select>(&statement)) {
      result.rows = Read(*select, arguments);
    } else {
      result.rows_written = Write(statement, arguments);
    }
    return result;
  }

  void Close() override { engine_->Close(); }

 private:
  struct KnownStatement {
    Text text;
    std::unique_ptr<sql::Statement> statement;
  };

  const sql::Statement& Parsed(TextView text) {
    const auto known =
        std::find_if(statements_.begin(), statements_.end(),
                     [&](const KnownStatement& entry) { return entry.text == text; });
    if (known != statements_.end()) return *known->statement;
    auto statement = std::make_unique<sql::Statement>(sql::ParseStatement(text));
    if (statements_.size() >= kKeptStatements) statements_.clear();
    statements_.push_back({Text(text), std::move(statement)});
    return *statements_.back().statement;
  }

  RowTable Read(const sql::Select& select, std::span<const Argument> arguments) {
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
      const Engine::ReadScope scope(*engine_);
      try {
        RowTable rows =
            sql::RunSelect(engine_->File(), engine_->Table(select.table), select, arguments);
        if (scope.StillValid()) return rows;
      } catch (const RuntimeError&) {
        // What was read from a file that changed meanwhile says nothing about the file.
        if (scope.StillValid()) throw;
      }
    }
    RaiseFileInUse(path_);
  }

  int Write(const sql::Statement& statement, std::span<const Argument> arguments) {
    Engine::WriteScope scope(*engine_);
    int rows = 0;
    if (const auto* update = std::get_if<sql::Update>(&statement)) {
      rows = sql::RunUpdate(*engine_, *update, arguments);
    } else if (const auto* insert = std::get_if<sql::Insert>(&statement)) {
      rows = sql::RunInsert(*engine_, *insert, arguments);
    } else {
      rows = sql::RunDelete(*engine_, std::get<sql::Delete>(statement), arguments);
    }
    scope.Commit();
    return rows;
  }

  Text path_;
  std::unique_ptr<Engine> engine_;
  std::vector<KnownStatement> statements_;
};

}  // namespace

std::unique_ptr<Connection> OpenJetConnection(const Text& path, const EngineOptions& options) {
  return std::make_unique<JetConnection>(path, options);
}

}  // namespace rdv::jet
