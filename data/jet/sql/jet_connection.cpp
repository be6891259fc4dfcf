#include "data/jet/sql/jet_connection.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <list>
#include <map>
#include <optional>
#include <type_traits>
#include <utility>

#include "data/jet/format/errors.h"
#include "data/jet/linked_file.h"
#include "data/jet/sql/execution.h"
#include "data/jet/sql/parameters.h"
#include "data/jet/sql/statement_parser.h"
#include "runtime/error.h"

namespace rdv::jet {
namespace {

// Statements that are kept after they were parsed; the stored commands are fourteen.
constexpr size_t kKeptStatements = 32;

// How often a query begins anew because another program changed the file under it.
constexpr int kMaxAttempts = 20;

// What is known of a statement, for the next time that it comes.
struct KnownStatement {
  explicit KnownStatement(TextView written)
      : text(written), statement(sql::ParseStatement(written)) {}

  Text text;
  sql::Statement statement;
  std::unique_ptr<sql::Plan> plan;  // of that ...
  const Engine* engine = nullptr;   // ... engine's table ...
  uint64_t generation = 0;          // ... as it was then
  std::optional<LinkedTable> link;  // where the table was when it was found in another file

  // In bytes, as most statements are long and asked for by the same words.
  bool IsOf(TextView asked) const {
    return text.size() == asked.size() &&
           std::memcmp(text.data(), asked.data(), asked.size() * sizeof asked.front()) == 0;
  }
  const Text& Table() const { return sql::TableOf(statement); }
  bool Reads() const { return std::holds_alternative<sql::Select>(statement); }
};

class JetConnection : public Connection {
 public:
  JetConnection(const Text& path, const EngineOptions& options)
      : path_(path), options_(options), engine_(Engine::Open(path, options)) {}

  CommandResult Execute(TextView text, std::span<const Argument> arguments,
                        std::span<const Parameter>) override {
    KnownStatement& known = Known(text);
    // A table may be written to that a file links to which is only to be read.
    if (!known.plan && !known.Reads()) FindLink(known);
    if (known.link) return RunLinked(known, arguments);
    std::optional<CommandResult> result = RunIn(*engine_, path_, known, arguments);
    return result ? std::move(*result) : RunLinked(known, arguments);
  }

  // All are closed, whatever becomes of one of them.
  void Close() override {
    std::exception_ptr failure;
    const auto close = [&failure](Engine& engine) {
      try {
        engine.Close();
      } catch (const RuntimeError&) {
        if (!failure) failure = std::current_exception();
      }
    };
    close(*engine_);
    for (auto& [path, engine] : linked_) close(*engine);
    if (failure) std::rethrow_exception(failure);
  }

 private:
  KnownStatement& Known(TextView text) {
    const auto known = std::ranges::find_if(
        statements_, [text](const KnownStatement& one) { return one.IsOf(text); });
    if (known != statements_.end()) return *known;
    std::list<KnownStatement> fresh;
    fresh.emplace_back(text);
    if (statements_.size() >= kKeptStatements) statements_.clear();
    statements_.splice(statements_.end(), fresh);
    return statements_.back();
  }

  // Nothing when the table turns out to be linked: then `known.link` tells where it is.
  std::optional<CommandResult> RunIn(Engine& engine, const Text& path, KnownStatement& known,
                                     std::span<const Argument> arguments) {
    if (!known.Reads()) return Write(engine, known, arguments);
    return Read(engine, path, [&] { return RunPlan(engine, known, arguments); });
  }

  // What `look` makes of one state of the file.
  template <typename Look>
  static std::invoke_result_t<Look> Read(Engine& engine, const Text& path, Look look) {
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
      const Engine::ReadScope scope(engine);
      try {
        auto found = look();
        if (scope.StillValid()) return found;
      } catch (const RuntimeError&) {
        // What was read from a file that changed meanwhile says nothing about the file.
        if (scope.StillValid()) throw;
      }
    }
    RaiseFileInUse(path);
  }

  std::optional<CommandResult> Write(Engine& engine, KnownStatement& known,
                                     std::span<const Argument> arguments) {
    Engine::WriteScope scope(engine);
    std::optional<CommandResult> result = RunPlan(engine, known, arguments);
    if (result) scope.Commit();
    return result;
  }

  std::optional<CommandResult> RunPlan(Engine& engine, KnownStatement& known,
                                       std::span<const Argument> arguments) {
    const bool good =
        known.plan && known.engine == &engine && known.generation == engine.Generation();
    if (!good) {
      known.plan.reset();
      const Text& name = known.link ? known.link->foreign_name : known.Table();
      const TableDefinition* table = engine.FindTable(name);
      if (!table && &engine == engine_.get()) known.link = engine.Link(name);
      if (!table && known.link && &engine == engine_.get()) return std::nullopt;
      if (!table) RaiseCannotFindTable(name);
      known.plan = sql::MakePlan(known.statement, *table);
      known.engine = &engine;
      known.generation = engine.Generation();
    }
    return known.plan->Run(engine, arguments);
  }

  // A link is looked up each time, as a definition is.
  void FindLink(KnownStatement& known) {
    const std::optional<LinkedTable> link =
        Read(*engine_, path_, [&]() -> std::optional<LinkedTable> {
          if (engine_->FindTable(known.Table())) return std::nullopt;
          return engine_->Link(known.Table());
        });
    if (link != known.link) known.plan.reset();
    known.link = link;
  }

  // In the file that has the table, under that file's own locks.
  CommandResult RunLinked(KnownStatement& known, std::span<const Argument> arguments) {
    FindLink(known);
    if (!known.link) return RunIn(*engine_, path_, known, arguments).value();
    const Text path =
        FileOfLink(*known.link, path_, options_.files ? *options_.files : NativeFileSystem());
    auto found = linked_.find(path);
    if (found == linked_.end()) found = linked_.emplace(path, Engine::Open(path, options_)).first;
    return RunIn(*found->second, path, known, arguments).value();
  }

  Text path_;
  EngineOptions options_;
  std::unique_ptr<Engine> engine_;
  std::map<Text, std::unique_ptr<Engine>> linked_;  // by path
  std::list<KnownStatement> statements_;            // whose plans point into them
};

}  // namespace

std::unique_ptr<Connection> OpenJetConnection(const Text& path, const EngineOptions& options) {
  return std::make_unique<JetConnection>(path, options);
}

}  // namespace rdv::jet
