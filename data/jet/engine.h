// One open database file: its tables, its rows, its rules. What a statement needs in order to read
// and write, whatever language the statement came in.
//
// Every access lies in a scope. A ReadScope sees one state of the file from its beginning to its
// end; other readers go on beside it. A WriteScope has the file to itself: its changes are in the
// file, all of them, once Commit returns, and none of them is when it ends without Commit or when
// the process ends in between. Scopes are held for the time of one statement (or of one batch of
// insertions) and never while waiting for a person.
//
// Not thread-safe. Several engines, in one process or in many, may have the same file open.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv::jet {

class FileSystem;
struct RelationshipSpec;  // catalog/table_spec.h
struct TableSpec;

struct EngineOptions {
  // How long a scope waits for other processes before the file counts as in use.
  std::chrono::milliseconds lock_wait{5000};
  // Pages that are kept from one scope to the next. A scope itself may hold more.
  size_t cache_pages = 1024;
  // Also reads a file that was left in the middle of a write and could not be put right. For those
  // who look for what is wrong.
  bool reads_suspect = false;
  // Where files come from; null for those of the operating system. Not owned.
  FileSystem* files = nullptr;
};

// What an engine has done since it was opened, for tests and measurements.
struct EngineCounters {
  uint64_t pages_read = 0;
  uint64_t pages_written = 0;
  uint64_t commits = 0;
  uint64_t flushes = 0;
};

class Engine {
 public:
  // Raises what is wrong with the file. A file that cannot be written, or is of a kind that is only
  // read here, opens all the same; writing to it raises why.
  static std::unique_ptr<Engine> Open(const Text& path, const EngineOptions& options = {});

  // Makes a Jet 4 database, empty but for what `fill` adds to it. The file has its name when it is
  // complete, not before; nothing is left of it when something raises. Raises when there is a file
  // of that name.
  static void Create(const Text& path, const EngineOptions& options = {},
                     const std::function<void(Engine&)>& fill = {});

  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  // As Close, but an error of the flush is lost.
  ~Engine();

  // Flushes to disk what was written, once, and lets the file go. No scope may be open.
  void Close();

  // Raises "Could not use ..." when the file is held by others for longer than `lock_wait`. May be
  // nested, also in a WriteScope.
  class ReadScope {
   public:
    explicit ReadScope(Engine& engine);
    ReadScope(const ReadScope&) = delete;
    ReadScope& operator=(const ReadScope&) = delete;
    ~ReadScope();

    // False when a program that knows nothing of this engine's locks has changed the file since the
    // scope began: what was read is then to be discarded and read again in a scope of its own.
    bool StillValid() const;

   private:
    Engine& engine_;
  };

  // Raises why the file is not to be written, before anything is touched. Not to be opened inside
  // another scope.
  class WriteScope {
   public:
    explicit WriteScope(Engine& engine);
    WriteScope(const WriteScope&) = delete;
    WriteScope& operator=(const WriteScope&) = delete;
    ~WriteScope();

    // Nothing is changed in the file when it raises. No access is allowed afterwards.
    void Commit();

   private:
    Engine& engine_;
    bool open_ = true;
  };

  // Inside a scope, which is one statement otherwise: begins another one. Each may make so much of
  // the file and no more (see file/work_budget.h).
  void BeginStatement();

  // Inside a scope only. References live until the scope ends, and see Generation.
  //
  // Raises "... cannot find the input table or query ..." when there is none of this name.
  const TableDefinition& Table(TextView name);
  // Null when there is none.
  const TableDefinition* FindTable(TextView name);
  // The one whose definition begins at `page`.
  const TableDefinition& TableAt(uint32_t page);
  std::vector<Text> UserTableNames();
  // Where the table of this name is that another file has, if there is one.
  std::optional<LinkedTable> Link(TextView name);
  // Another one as soon as definitions that Table and TableAt have given may have died: until then
  // they live on from scope to scope.
  uint64_t Generation() const;
  // What cursors and rows are made with. Lives as long as the engine.
  const FileReader& File() const;

  // Inside a WriteScope only. Each either does the whole change, with all indexes and what
  // relationships make follow from it, or raises why it is refused and has changed nothing.
  //
  // Columns without an assignment get their default: the next autonumber, the table's own default
  // where it is a literal, else Null (Boolean: false).
  RowId Insert(const TableDefinition& table, std::span<const Assignment> values);
  // The row keeps its id. Assigning what a column holds already is no change.
  void Update(const TableDefinition& table, RowId row, std::span<const Assignment> assignments);
  void Delete(const TableDefinition& table, RowId row);

  // Inside a WriteScope; nothing but speed depends on these two. The first change of a page since
  // the file was last flushed flushes the journal: with it comes what it takes to change the pages
  // of the rows that are expected to be changed soon.
  bool ChangesForTheFirstTime(RowId row);
  void Expect(std::span<const RowId> rows);

  // Inside a WriteScope, which is to be given up without Commit when one of these raises. They end
  // the life of all definitions that Table and TableAt have given.
  void CreateTable(const TableSpec& spec);
  void CreateRelationship(const RelationshipSpec& spec);

  const EngineCounters& Counters() const;

 private:
  struct State;
  explicit Engine(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace rdv::jet
