// What is left of a statement whose process died, and what processes do to each other.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <set>
#include <sstream>

#include "data/jet/engine.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"
#include "tests/jet/findings.h"
#include "tests/jet/indexed_things.h"
#include "tests/jet/write_support.h"

#ifndef _WIN32
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace rdv::jet {
namespace {

using Rows = std::vector<std::vector<Value>>;

// One index more, in falling order.
TableSpec ThingsByCounter() {
  TableSpec spec = IndexedThings();
  spec.indexes.push_back({.name = u"Counter", .columns = {{u"Counter", true}}});
  return spec;
}

Rows ReadThings(Engine& engine) {
  const Engine::ReadScope scope(engine);
  const TableDefinition& table = engine.Table(u"Things");
  Rows rows;
  for (TableScan scan(engine.File(), table); scan.Next();) {
    auto& row = rows.emplace_back();
    for (const Column& column : table.columns) row.push_back(scan.Row().Get(column));
  }
  return rows;
}

void Update(Engine& engine, int32_t id, size_t column, const Value& value) {
  const std::vector<Assignment> assignments = {{column, value}};
  engine.Update(engine.Table(u"Things"), FindThing(engine, id).value(), assignments);
}

class WriteCrashTest : public testing::Test {
 protected:
  void SetUp() override {
    Engine::Create(PathText(path_));
    const auto engine = Engine::Open(PathText(path_));
    Engine::WriteScope scope(*engine);
    engine->CreateTable(ThingsByCounter());
    for (int32_t i = 0; i < kThingCount; ++i)
      engine->Insert(engine->Table(u"Things"), Thing(i * 2, 60, i % 10 == 0 ? 900 : 20));
    scope.Commit();
    engine->Close();
  }

  // Runs the statement on a copy again and again, dying one operation later each time.
  void DieEverywhereIn(const std::function<void(Engine&)>& statement) {
    const auto original = folder_.Copy(path_, "original.mdb");
    const auto run = [&](FileSystem& files) {
      const auto engine = Engine::Open(PathText(path_), {.files = &files});
      Engine::WriteScope scope(*engine);
      statement(*engine);
      scope.Commit();
    };
    const Rows before = ReadThings(*Engine::Open(PathText(path_)));
    run(NativeFileSystem());
    const Rows after = ReadThings(*Engine::Open(PathText(path_)));
    ASSERT_NE(before, after);
    int nothing = 0;
    for (int writes = 0;; ++writes) {
      SCOPED_TRACE(writes);
      folder_.Copy(original, path_.filename().string());
      FaultyFileSystem files;
      files.Arm(Fault::Death, writes);
      try {
        run(files);
      } catch (const RuntimeError&) {
        EXPECT_TRUE(files.Struck());
      }
      const auto engine = Engine::Open(PathText(path_));
      const Rows found = ReadThings(*engine);
      EXPECT_TRUE(found == before || found == after);
      EXPECT_EQ(Findings(*engine), "");
      nothing += found == before ? 1 : 0;
      // And it can be written again.
      Engine::WriteScope scope(*engine);
      engine->Insert(engine->Table(u"Things"), Thing(1'000'001, 5, 5));
      scope.Commit();
      if (!files.Struck() || HasFailure()) break;
    }
    EXPECT_GT(nothing, 4);
  }

  static constexpr int32_t kThingCount = 300;
  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_.Path() / "crash.mdb";
};

TEST_F(WriteCrashTest, DeathLeavesAllOfAnInsertionOrNothing) {
  DieEverywhereIn(
      [](Engine& engine) { engine.Insert(engine.Table(u"Things"), Thing(301, 150, 30)); });
}

TEST_F(WriteCrashTest, DeathLeavesAllOfAnInsertionOfALongValueOrNothing) {
  DieEverywhereIn(
      [](Engine& engine) { engine.Insert(engine.Table(u"Things"), Thing(301, 150, 20000)); });
}

TEST_F(WriteCrashTest, DeathLeavesAllOfAnUpdateThatMovesTheRowOrNothing) {
  DieEverywhereIn([](Engine& engine) { Update(engine, 100, 1, Text(200, u'z')); });
}

TEST_F(WriteCrashTest, DeathLeavesAllOfADeletionOrNothing) {
  DieEverywhereIn([](Engine& engine) {
    engine.Delete(engine.Table(u"Things"), FindThing(engine, 100).value());
  });
}

TEST_F(WriteCrashTest, DeathLeavesAllOfAStatementOnManyRowsOrNothing) {
  DieEverywhereIn([](Engine& engine) {
    for (int32_t i = 0; i < 100; ++i) {
      engine.Insert(engine.Table(u"Things"), Thing(2 * i + 1, 120, 10));
      engine.Delete(engine.Table(u"Things"), FindThing(engine, 2 * i + 200).value());
    }
  });
}

#ifndef _WIN32

// The numbers of the things that a reader finds who knows nothing of the journal.
std::set<int> ThingsForOthers(const std::filesystem::path& path) {
  const std::string command = "mdb-json '" + path.string() + "' Things";
  FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  for (int letter = fgetc(pipe); letter != EOF; letter = fgetc(pipe))
    text.push_back(static_cast<char>(letter));
  EXPECT_EQ(pclose(pipe), 0);
  std::set<int> numbers;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    int number = 0;
    EXPECT_EQ(std::sscanf(line.c_str(), "{\"ID\":%d,", &number), 1) << line;
    numbers.insert(number);
  }
  return numbers;
}

// Rows grow out of their pages, and back, so that they move from any page to any other.
TEST_F(WriteCrashTest, EveryRowIsThereForOthersTooWhereverTheWritingWasCutOff) {
  if (std::system("command -v mdb-json > /dev/null") != 0) GTEST_SKIP() << "no mdb-json here";
  const auto statement = [](Engine& engine, size_t length, int32_t every) {
    for (int32_t i = 0; i < kThingCount; i += every) Update(engine, i * 2, 1, Text(length, u'm'));
  };
  const auto run = [&](FileSystem& files, size_t length, int32_t every) {
    const auto engine = Engine::Open(PathText(path_), {.files = &files});
    Engine::WriteScope scope(*engine);
    statement(*engine, length, every);
    scope.Commit();
  };
  const std::pair<size_t, int32_t> turns[] = {{150, 3}, {200, 2}, {10, 5}, {190, 1}};
  for (const auto& [length, every] : turns) {
    const auto original = folder_.Copy(path_, "original.mdb");
    for (int writes = 0;; ++writes) {
      SCOPED_TRACE(testing::Message() << length << " " << writes);
      folder_.Copy(original, path_.filename().string());
      FaultyFileSystem files;
      files.Arm(Fault::DeathBefore, writes);
      try {
        run(files, length, every);
      } catch (const RuntimeError&) {
        EXPECT_TRUE(files.Struck());
      }
      EXPECT_EQ(ThingsForOthers(path_).size(), static_cast<size_t>(kThingCount));
      if (!files.Struck() || HasFailure()) break;
    }
    const auto engine = Engine::Open(PathText(path_));
    EXPECT_EQ(Findings(*engine), "");
  }
}

#endif

TEST_F(WriteCrashTest, AFailureOfAnyWriteIsRaisedAndTheEngineGoesOn) {
  const Rows before = ReadThings(*Engine::Open(PathText(path_)));
  int failures = 0;
  for (int writes = 0;; ++writes) {
    FaultyFileSystem files;
    const auto engine = Engine::Open(PathText(path_), {.files = &files});
    files.Arm(Fault::FullDisk, writes);
    bool raised = false;
    try {
      Engine::WriteScope scope(*engine);
      engine->Insert(engine->Table(u"Things"), Thing(301, 150, 20000));
      scope.Commit();
    } catch (const RuntimeError&) {
      raised = true;
    }
    if (!raised) break;
    ++failures;
    files.Arm(Fault::None, 0);
    ASSERT_EQ(ReadThings(*engine), before);
    ASSERT_EQ(Findings(*engine), "");
  }
  EXPECT_GT(failures, 5);
}

#ifndef _WIN32

// Runs `work` in a process of its own, which ends without cleaning up.
pid_t Start(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child != 0) return child;
  try {
    work();
  } catch (const std::exception& error) {
    fprintf(stderr, "%s\n", error.what());
    _exit(1);
  }
  _exit(0);
}

int ExitOf(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

TEST_F(WriteCrashTest, AKilledProcessLeavesWholeStatements) {
  uint32_t pause = 3000;
  for (int round = 0; round < 12; ++round) {
    SCOPED_TRACE(round);
    int ready[2] = {};
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = Start([&] {
      const auto engine = Engine::Open(PathText(path_));
      for (int32_t i = 0;; ++i) {
        Engine::WriteScope scope(*engine);
        const int32_t id = 1000 * (round + 1) + i;
        engine->Insert(engine->Table(u"Things"), Thing(id, 40 + static_cast<size_t>(i) % 100, 500));
        Update(*engine, (i * 2) % 600, 3, id);
        scope.Commit();
        if (i == 0 && write(ready[1], "", 1) != 1) throw std::runtime_error("nobody is there");
      }
    });
    char signal = 0;
    EXPECT_EQ(read(ready[0], &signal, 1), 1);  // it has written something
    close(ready[0]);
    close(ready[1]);
    pause = pause * 1103515245 + 12345;
    usleep(pause / 4096 % 20000);
    kill(child, SIGKILL);
    ExitOf(child);
    const auto engine = Engine::Open(PathText(path_));
    ASSERT_EQ(Findings(*engine), "");
  }
  const auto engine = Engine::Open(PathText(path_));
  EXPECT_GT(ReadThings(*engine).size(), size_t{kThingCount});
}

// On a busy machine a process may be stopped for long while it keeps others out. Those are then
// told that the file is in use, and nothing of their statement was done: they try again.
constexpr EngineOptions kPatient = {.lock_wait = std::chrono::seconds(60)};
void Patiently(const std::function<void()>& statement) {
  for (int attempt = 0;; ++attempt) {
    try {
      return statement();
    } catch (const RuntimeError& error) {
      const bool busy = std::string(error.what()).find("already in use") != std::string::npos;
      if (!busy || attempt == 100) throw;
    }
  }
}

TEST_F(WriteCrashTest, EightProcessesWriteAtOnceAndNothingIsLost) {
  constexpr int kProcesses = 8;
  constexpr int32_t kRows = 12;
  std::vector<pid_t> children;
  for (int32_t process = 0; process < kProcesses; ++process) {
    children.push_back(Start([&, process] {
      for (int32_t i = 0; i < kRows; ++i) {
        const auto engine = Engine::Open(PathText(path_), kPatient);
        for (const int32_t part : {0, 1}) {
          Patiently([&] {
            Engine::WriteScope scope(*engine);
            const int32_t id = 10000 + 100 * process + 2 * i + part;
            engine->Insert(engine->Table(u"Things"), Thing(id, 100, 20));
            scope.Commit();
          });
        }
        Patiently([&] { engine->Close(); });
      }
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(ExitOf(child), 0);
  const auto engine = Engine::Open(PathText(path_));
  EXPECT_EQ(Findings(*engine), "");
  EXPECT_EQ(ReadThings(*engine).size(), size_t{kThingCount + kProcesses * kRows * 2});
  EXPECT_FALSE(std::filesystem::exists(path_.string() + "-journal"));
}

TEST_F(WriteCrashTest, ProcessesThatFindTheSameInterruptedFilePutItRight) {
  constexpr int kProcesses = 4;
  const Rows before = ReadThings(*Engine::Open(PathText(path_)));
  for (int writes = 3; writes < 12; writes += 4) {
    SCOPED_TRACE(writes);
    FaultyFileSystem files;
    files.Arm(Fault::Death, writes);
    try {
      const auto engine = Engine::Open(PathText(path_), {.files = &files});
      Engine::WriteScope scope(*engine);
      for (int32_t id = 0; id < 600; id += 20) Update(*engine, id, 1, Text(190, u'x'));
      scope.Commit();
    } catch (const RuntimeError&) {
      EXPECT_TRUE(files.Struck());
    }
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
      children.push_back(Start([&] {
        const auto engine = Engine::Open(PathText(path_));
        if (ReadThings(*engine) != before) throw std::runtime_error("not as before");
      }));
    }
    for (const pid_t child : children) EXPECT_EQ(ExitOf(child), 0);
    const auto engine = Engine::Open(PathText(path_));
    EXPECT_EQ(Findings(*engine), "");
  }
}

TEST_F(WriteCrashTest, ProcessesLoseNoUpdateAndReadNothingHalf) {
  constexpr int kProcesses = 3;
  constexpr int32_t kRounds = 60;
  const auto value_of = [](Engine& engine, int32_t id) {
    const TableDefinition& table = engine.Table(u"Things");
    RowView row(engine.File(), table);
    if (!FetchRow(engine.File(), table, FindThing(engine, id).value_or(RowId{}), row))
      throw std::runtime_error("a row is gone");
    return std::get<int32_t>(row.Get(table.columns[3]));
  };
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    children.push_back(Start([&, process] {
      const auto engine = Engine::Open(PathText(path_), kPatient);
      for (int32_t i = 0; i < kRounds; ++i) {
        Patiently([&] {
          Engine::WriteScope scope(*engine);
          const int32_t next = value_of(*engine, 0) + 1;
          for (const int32_t id : {0, 200, 400}) Update(*engine, id, 3, next);
          engine->Insert(engine->Table(u"Things"), Thing(10000 + 1000 * process + i, 100, 20));
          scope.Commit();
        });
      }
      Patiently([&] { engine->Close(); });
    }));
    children.push_back(Start([&] {
      const auto engine = Engine::Open(PathText(path_), kPatient);
      for (int32_t last = 0; last < kProcesses * kRounds;) {
        Patiently([&] {
          const Engine::ReadScope scope(*engine);
          const int32_t value = value_of(*engine, 0);
          const bool whole =
              value >= last && value == value_of(*engine, 200) && value == value_of(*engine, 400);
          if (!whole) throw std::runtime_error("half a statement was read");
          last = value;
        });
      }
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(ExitOf(child), 0);
  const auto engine = Engine::Open(PathText(path_));
  EXPECT_EQ(Findings(*engine), "");
  EXPECT_EQ(ReadThings(*engine).size(), size_t{kThingCount + kProcesses * kRounds});
  const Engine::ReadScope scope(*engine);
  EXPECT_EQ(value_of(*engine, 0), kProcesses * kRounds);
  EXPECT_FALSE(std::filesystem::exists(path_.string() + "-journal"));
}

#endif

}  // namespace
}  // namespace rdv::jet
