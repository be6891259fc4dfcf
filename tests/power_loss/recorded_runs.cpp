#include "tests/power_loss/recorded_runs.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>

#include "data/commands.h"
#include "data/jet/check/repair.h"
#include "data/jet/engine.h"
#include "data/jet/format/format.h"
#include "data/jet/sql/jet_connection.h"
#include "tests/jet/indexed_things.h"
#include "tests/jet/write_support.h"
#include "tests/support/link_maker.h"

namespace rdv::jet {
namespace {

const Text kPath = u"site.mdb";
const Text kPartPath = u"part.mdb";
constexpr std::chrono::milliseconds kNoWait{1};

void Insert(Engine& engine, int32_t id, size_t name_length, size_t notes_length) {
  engine.Insert(engine.Table(u"Things"), Thing(id, name_length, notes_length));
}
void Update(Engine& engine, int32_t id, size_t column, const Value& value) {
  const std::vector<Assignment> assignments = {{column, value}};
  if (const auto row = FindThing(engine, id))
    engine.Update(engine.Table(u"Things"), *row, assignments);
}
void Delete(Engine& engine, int32_t id) {
  if (const auto row = FindThing(engine, id)) engine.Delete(engine.Table(u"Things"), *row);
}

// A database with `count` things, all of it on the disk.
DiskContents Things(int32_t count, size_t notes_length = 20) {
  SimulatedDisk disk;
  Engine::Create(kPath, {.files = &disk}, [&](Engine& engine) {
    Engine::WriteScope scope(engine);
    engine.CreateTable(IndexedThings());
    for (int32_t i = 0; i < count; ++i)
      Insert(engine, i * 2, 60, i % 10 == 0 ? notes_length * 40 : notes_length);
    scope.Commit();
  });
  return disk.Contents();
}

// A connection whose statements are recorded.
class Writer {
 public:
  explicit Writer(DiskRecorder& recorder)
      : recorder_(recorder),
        engine_(Engine::Open(kPath, {.lock_wait = kNoWait, .files = &recorder.Disk()})) {}

  template <typename Change>
  void Do(Change change) {
    wrote_ |= recorder_.Do([&] {
      Engine::WriteScope scope(*engine_);
      change(*engine_);
      scope.Commit();
    });
  }
  void Close() {
    recorder_.Close([&] { engine_->Close(); }, wrote_);
  }
  const EngineCounters& Counters() const { return engine_->Counters(); }

 private:
  DiskRecorder& recorder_;
  std::unique_ptr<Engine> engine_;
  bool wrote_ = false;
};

// --- Updates, insertions, deletions ---

void PlayUpdates(DiskRecorder& recorder) {
  Writer writer(recorder);
  writer.Do([](Engine& things) { Update(things, 20, 3, 7); });
  writer.Do([](Engine& things) { Update(things, 40, 1, Text(200, u'z')); });  // the row moves
  writer.Do([](Engine& things) {
    for (int32_t id = 0; id < 200; id += 2) Update(things, id, 3, 8);
  });
  writer.Do([](Engine& things) { Update(things, 20, 3, 9); });
  writer.Close();
}

void PlayInsertions(DiskRecorder& recorder) {
  Writer writer(recorder);
  for (int32_t turn = 0; turn < 4; ++turn) {
    writer.Do([&](Engine& things) {
      for (int32_t i = 0; i < 30; ++i) Insert(things, 1 + 2 * (turn * 30 + i), 190, 30);
    });
  }
  writer.Close();
}

void PlayGrowingMaps(DiskRecorder& recorder) {
  Writer writer(recorder);
  for (int32_t turn = 0; turn < 3; ++turn) {
    writer.Do([&](Engine& things) {
      for (int32_t i = 0; i < 12; ++i) Insert(things, 1001 + turn * 100 + i, 10, 30000);
    });
  }
  writer.Close();
}

void PlayDeletions(DiskRecorder& recorder) {
  Writer writer(recorder);
  for (int32_t turn = 0; turn < 5; ++turn) {
    writer.Do([&](Engine& things) {
      for (int32_t i = 0; i < 25; ++i) Delete(things, 2 * (turn * 25 + i));
    });
  }
  writer.Close();
}

void PlayLongMemos(DiskRecorder& recorder) {
  Writer writer(recorder);
  writer.Do([](Engine& things) { Insert(things, 1001, 10, 30000); });
  writer.Do([](Engine& things) { Update(things, 1001, 2, Text(9000, u'y')); });
  writer.Do([](Engine& things) { Update(things, 20, 2, Text(20000, u'x')); });
  writer.Do([](Engine& things) { Delete(things, 1001); });
  writer.Do([](Engine& things) { Insert(things, 1003, 10, 15000); });
  writer.Close();
}

// --- Whole files ---

void PlayNewDatabase(DiskRecorder& recorder) {
  recorder.DoAndClose([&] {
    Engine::Create(kPath, {.lock_wait = kNoWait, .files = &recorder.Disk()}, [](Engine& engine) {
      Engine::WriteScope scope(engine);
      engine.CreateTable(IndexedThings());
      Insert(engine, 1, 100, 5000);
      scope.Commit();
    });
  });
}

// A wrong count, which makes the file suspect, too.
DiskContents DamagedThings() {
  DiskContents contents = Things(60);
  SimulatedDisk disk(contents);
  const auto engine = Engine::Open(kPath, {.files = &disk});
  const Engine::ReadScope scope(*engine);
  std::vector<uint8_t>& file = contents[kPath];
  file[engine->Table(u"Things").Page() * kJet4.page_size + kJet4.definition.row_count] ^= 0x55;
  Store16(file.data() + kJet4.header.commit_words + 6, kCommitCorrupt);
  return contents;
}

void PlayRepair(DiskRecorder& recorder) {
  recorder.DoAndClose([&] {
    const RepairReport report = RepairDatabase(recorder.Disk(), kPath, kNoWait);
    EXPECT_GT(report.mended.size(), 1u);
    EXPECT_TRUE(report.remaining.Clean());
  });
}

// --- What the control does ---

// A site with relationships, autonumbers and many indexes, whose first unit has no lines yet.
DiskContents SiteWithoutLines() {
  SimulatedDisk disk({{kPath, ReadWholeFile(SamplePath("sites/indexed/NewDB.mdb"))}});
  const auto connection = OpenJetConnection(kPath, {.files = &disk});
  connection->Execute(
      u"DELETE FROM Used_Lines WHERE Config_ID = 1 AND Base_Slot_No = 1 AND Slot_Offset = 1", {});
  const CommandResult unit =
      connection->Execute(u"SELECT * FROM orvsettings WHERE ConfigID = 1", {});
  EXPECT_EQ(unit.rows->rows.size(), 1u) << "the unit that the lines refer to";
  connection->Close();
  return disk.Contents();
}

CommandResult Run(Connection& connection, Command command, std::span<const Argument> arguments) {
  const CommandDefinition& definition = DefinitionOf(command);
  return connection.Execute(definition.statement, arguments, definition.parameters);
}

constexpr size_t kLineArguments = 24;

// In the order of the statement's parameters.
std::array<Argument, kLineArguments> LineOfUnit(int line, const Text& label) {
  return {u"Partition 1", u"1", u"Message", u"0", Decimal(line), u"Day", u"1", u"Any",
          u"0",           u"2", label,      u"0", u"0",          u"0",   u"6", u"1",
          u"0",           u"0", u"0",       u"0", u"1",          u"1",   u"1", Decimal(line)};
}

// Each line through a connection of its own, then the card in the place of another.
void PlayDefaultUnit(DiskRecorder& recorder) {
  const auto open = [&] {
    return OpenJetConnection(kPath, {.lock_wait = kNoWait, .files = &recorder.Disk()});
  };
  for (int line = 1; line <= 12; ++line) {
    const auto connection = open();
    recorder.Do([&] {
      Run(*connection, Command::Insert_All_Lines, LineOfUnit(line, u"Extension " + Decimal(line)));
    });
    recorder.Close([&] { connection->Close(); });
  }
  const auto connection = open();
  const std::array<Argument, 3> slot = {u"1", u"1", u"1"};
  const std::array<Argument, 9> card = {u"1", u"1", u"1", u"Slot 1", u"Hybrid",
                                        u"6", u"0", u"",  u"0"};
  if (recorder.Do([&] { Run(*connection, Command::Delete_Used_Card, slot); }))
    recorder.Do([&] { Run(*connection, Command::Insert_Used_Card, card); });
  recorder.Close([&] { connection->Close(); });
}

void PlayAppliesOfTenRows(DiskRecorder& recorder) {
  for (int32_t apply = 1; apply <= 2; ++apply) {
    Writer writer(recorder);
    for (int32_t line = 0; line < 10; ++line)
      writer.Do([&](Engine& things) { Update(things, line * 2, 3, apply * 100 + line); });
    writer.Close();
  }
}

// Their pages are in the journal before they change, from a statement that leaves them alone.
void PlayExpectedRows(DiskRecorder& recorder) {
  Writer writer(recorder);
  writer.Do([](Engine& things) {
    Update(things, 2, 3, 1);
    std::vector<RowId> rows;
    std::set<uint32_t> pages;
    for (const int32_t id : {120, 200, 280, 360}) rows.push_back(FindThing(things, id).value());
    for (const RowId row : rows) pages.insert(row.page);
    EXPECT_EQ(pages.size(), rows.size());
    things.Expect(rows);
  });
  writer.Do([](Engine& things) { Update(things, 120, 3, 2); });
  writer.Do([](Engine& things) { Update(things, 280, 3, 7); });
  writer.Do([](Engine& things) { Update(things, 360, 3, 3); });
  if (!recorder.on_refusal) {
    EXPECT_EQ(writer.Counters().flushes, 1u);
  }
  writer.Close();
}

void PlaySeveralConnections(DiskRecorder& recorder) {
  Writer one(recorder);
  Writer two(recorder);
  one.Do([](Engine& things) { Update(things, 2, 3, 1); });
  two.Do([](Engine& things) { Update(things, 4, 1, Text(200, u'z')); });
  one.Do([](Engine& things) { Insert(things, 1001, 100, 3000); });
  one.Close();
  two.Do([](Engine& things) { Update(things, 2, 3, 2); });
  Writer three(recorder);
  three.Do([](Engine& things) { Delete(things, 4); });
  two.Close();
  three.Do([](Engine& things) { Insert(things, 1003, 100, 3000); });
  three.Close();
}

// --- A table that another file has ---

DiskContents LinkedThings() {
  SimulatedDisk disk({{kPartPath, Things(40).at(kPath)}});
  Engine::Create(kPath, {.files = &disk}, [](Engine& engine) {
    Engine::WriteScope scope(engine);
    engine.CreateTable(
        {.name = u"Own", .columns = {{.name = u"ID", .type = ColumnType::Long}}, .indexes = {}});
    scope.Commit();
  });
  test::LinkMaker(kPath, disk)
      .Make({.name = u"Linked",
             .database = kPartPath,
             .foreign_name = u"Things",
             .connect = {},
             .server = false});
  return disk.Contents();
}

// Statements on both files in turn, through one connection.
void PlayLinkedTable(DiskRecorder& recorder) {
  const auto connection =
      OpenJetConnection(kPath, {.lock_wait = kNoWait, .files = &recorder.Disk()});
  const auto run = [&](const Text& statement) {
    recorder.Do([&] { connection->Execute(statement, {}); });
  };
  run(u"UPDATE Linked SET Counter = 7 WHERE ID = 20");
  run(u"INSERT INTO Own VALUES (1)");
  run(u"INSERT INTO Linked VALUES (1001, 'new', '" + Text(6000, u'm') + u"', 0)");
  run(u"INSERT INTO Own VALUES (2)");
  run(u"DELETE FROM Linked WHERE ID = 4");
  run(u"UPDATE Linked SET Name = '" + Text(200, u'z') + u"' WHERE ID = 40");
  recorder.Close([&] { connection->Close(); });
}

}  // namespace

const RecordedRun kUpdates = {
    .name = "Updates", .start = [] { return Things(100); }, .play = PlayUpdates};
const RecordedRun kInsertionsThatSplitPages = {
    .name = "InsertionsThatSplitPages", .start = [] { return Things(60); }, .play = PlayInsertions};
const RecordedRun kGrowingMaps = {
    .name = "GrowingMaps", .start = [] { return Things(25, 420); }, .play = PlayGrowingMaps};
const RecordedRun kDeletions = {
    .name = "Deletions", .start = [] { return Things(150); }, .play = PlayDeletions};
const RecordedRun kLongMemos = {
    .name = "LongMemos", .start = [] { return Things(30); }, .play = PlayLongMemos};
const RecordedRun kNewDatabase = {
    .name = "NewDatabase", .start = [] { return DiskContents(); }, .play = PlayNewDatabase};
const RecordedRun kRepair = {
    .name = "Repair", .start = DamagedThings, .play = PlayRepair, .all_sound = false};
const RecordedRun kDefaultUnit = {
    .name = "DefaultUnit", .start = SiteWithoutLines, .play = PlayDefaultUnit};
const RecordedRun kAppliesOfTenRows = {
    .name = "AppliesOfTenRows", .start = [] { return Things(40); }, .play = PlayAppliesOfTenRows};
const RecordedRun kExpectedRows = {
    .name = "ExpectedRows", .start = [] { return Things(200); }, .play = PlayExpectedRows};
const RecordedRun kSeveralConnections = {.name = "SeveralConnections",
                                         .start = [] { return Things(40); },
                                         .play = PlaySeveralConnections};
const RecordedRun kLinkedTable = {
    .name = "LinkedTable", .start = LinkedThings, .play = PlayLinkedTable};

std::span<const RecordedRun* const> AllRecordedRuns() {
  static constexpr const RecordedRun* kAll[] = {&kUpdates,
                                                &kInsertionsThatSplitPages,
                                                &kGrowingMaps,
                                                &kDeletions,
                                                &kLongMemos,
                                                &kNewDatabase,
                                                &kRepair,
                                                &kDefaultUnit,
                                                &kAppliesOfTenRows,
                                                &kExpectedRows,
                                                &kSeveralConnections,
                                                &kLinkedTable};
  return kAll;
}

}  // namespace rdv::jet
