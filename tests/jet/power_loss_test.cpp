// What a loss of power leaves, and what a process that is killed does, at every moment of
// everything that writes. RDV_POWER_LOSS_STATES says how many states of the disk each test makes
// and opens.
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/check/repair.h"
#include "data/jet/engine.h"
#include "data/jet/file/commit_words.h"
#include "data/jet/file/journal_record.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "runtime/error.h"
#include "tests/jet/simulated_disk.h"

namespace rdv::jet {
namespace {

const Text kPath = u"site.mdb";
const Text kJournal = u"site.mdb-journal";
constexpr size_t kPageSize = 4096;
constexpr int kEverydayStates = 80;

const TableSpec kThings = {
    .name = u"Things",
    .columns = {{.name = u"ID", .type = ColumnType::Long},
                {.name = u"Name", .type = ColumnType::Text, .length = 200},
                {.name = u"Notes", .type = ColumnType::Memo},
                {.name = u"Counter", .type = ColumnType::Long}},
    .indexes = {{.name = u"PrimaryKey", .columns = {{u"ID"}}, .primary = true},
                {.name = u"Name", .columns = {{u"Name"}}}}};

int StatesToMake() {
  const char* const wanted = std::getenv("RDV_POWER_LOSS_STATES");
  return wanted != nullptr ? std::atoi(wanted) : kEverydayStates;
}

// The pages behind the header page, whose commit words count on.
std::vector<uint8_t> PagesOf(const DiskContents& contents) {
  const auto found = contents.find(kPath);
  if (found == contents.end() || found->second.size() < kPageSize) return {};
  return {found->second.begin() + kPageSize, found->second.end()};
}

std::string FindingsOf(SimulatedDisk& disk) {
  const auto engine = Engine::Open(kPath, {.files = &disk});
  const Engine::ReadScope scope(*engine);
  std::string text;
  for (const Finding& finding : CheckFile(engine->File()).findings)
    text += ToUtf8(KindName(finding.kind) + u": " + finding.text) + "\n";
  return text;
}

std::vector<Assignment> Thing(int32_t id, size_t name_length, size_t notes_length) {
  return {{0, id},
          {1, Text(name_length, static_cast<char16_t>(u'a' + id % 26))},
          {2, Text(notes_length, u'n')},
          {3, int32_t{0}}};
}

RowId FindThing(Engine& engine, int32_t id) {
  const TableDefinition& table = engine.Table(u"Things");
  const Value value = id;
  IndexSeek seek(engine.File(), table, table.indexes[0],
                 BuildKey(engine.File(), table, table.indexes[0], {&value, 1}));
  return seek.Next() ? seek.Row().Id() : RowId{};
}

void Insert(Engine& engine, int32_t id, size_t name_length, size_t notes_length) {
  engine.Insert(engine.Table(u"Things"), Thing(id, name_length, notes_length));
}
void Update(Engine& engine, int32_t id, size_t column, const Value& value) {
  const std::vector<Assignment> assignments = {{column, value}};
  engine.Update(engine.Table(u"Things"), FindThing(engine, id), assignments);
}
void Delete(Engine& engine, int32_t id) {
  engine.Delete(engine.Table(u"Things"), FindThing(engine, id));
}

class PowerLossTest : public testing::Test {
 protected:
  using Change = std::function<void(Engine&)>;

  // A database with `count` things, all of it on the disk.
  static DiskContents Things(int32_t count, size_t notes_length = 20) {
    SimulatedDisk disk;
    Engine::Create(kPath, {.files = &disk}, [&](Engine& engine) {
      Engine::WriteScope scope(engine);
      engine.CreateTable(kThings);
      for (int32_t i = 0; i < count; ++i)
        Insert(engine, i * 2, 60, i % 10 == 0 ? notes_length * 40 : notes_length);
      scope.Commit();
    });
    return disk.Contents();
  }

  void Start(DiskContents contents) {
    start_ = std::move(contents);
    disk_ = std::make_unique<SimulatedDisk>(start_);
    states_ = {PagesOf(start_)};
    finished_ = {0};
    durable_ = {{0, 0}};
  }

  std::unique_ptr<Engine> Open() { return Engine::Open(kPath, {.files = disk_.get()}); }
  // A statement of its own.
  void Do(Engine& engine, const Change& change) {
    Engine::WriteScope scope(engine);
    change(engine);
    scope.Commit();
    Finished();
  }
  // What the file is now is one of the states that it may be found in.
  void Finished() {
    states_.push_back(PagesOf(disk_->Contents()));
    finished_.push_back(disk_->Operations().size());
  }
  // Everything that was finished is there from now on.
  void Durable() { durable_.emplace_back(disk_->Operations().size(), states_.size() - 1); }
  void Close(Engine& engine) {
    engine.Close();
    Durable();
  }

  // Makes states of the disk for every moment since Start and opens them.
  void Prove() {
    ASSERT_EQ(disk_->Contents().contains(kJournal), false);
    const int wanted = StatesToMake();
    const size_t moments = disk_->Operations().size() + 1;
    const int samples = wanted / static_cast<int>(moments) + 1;
    size_t choices = 0;
    std::mt19937 chance(1);
    ForEachMoment([&](const PowerLoss& disk) {
      disk.ForEachChoice(samples, chance, [&](const auto&) { ++choices; });
    });
    const size_t stride = std::max<size_t>(1, choices / static_cast<size_t>(wanted));
    const size_t kill_stride = moments / static_cast<size_t>(wanted) + 1;
    size_t number = 0;
    chance.seed(2);
    ForEachMoment([&](const PowerLoss& disk) {
      disk.ForEachChoice(samples, chance, [&](const std::vector<PowerLoss::Fate>& fates) {
        const bool killed =
            std::ranges::all_of(fates, [](auto fate) { return fate == PowerLoss::Fate::Kept; });
        const bool chosen = killed ? disk.Position() % kill_stride == 0 : number++ % stride == 0;
        if (!chosen) return;
        if (HasFailure()) return;
        SCOPED_TRACE(testing::Message() << "after operation " << disk.Position() << " of "
                                        << moments - 1 << Described(fates));
        const auto [first, last] = Allowed(disk.Position(), killed);
        ExpectOneOf(disk.Left(fates, chance), first, last, killed ? disk_->Session() : 0, true);
      });
    });
    RecordProperty("states", std::to_string(made_));
    std::printf("             %zu states of the disk over %zu moments\n", made_, moments);
    EXPECT_GE(made_, static_cast<size_t>(wanted) / 2);
  }

  // Whether all states that a file may be found in are sound; a repair begins with one that is not.
  bool all_sound_ = true;
  // Whether there need not be a file yet.
  bool may_be_absent_ = false;
  std::unique_ptr<SimulatedDisk> disk_;

 private:
  void ForEachMoment(const std::function<void(const PowerLoss&)>& call) const {
    PowerLoss disk(start_, disk_->Operations());
    do call(disk);
    while (disk.Advance());
  }

  static std::string Described(const std::vector<PowerLoss::Fate>& fates) {
    std::string text = ", pending ";
    for (const PowerLoss::Fate fate : fates) text += "KDT"[static_cast<size_t>(fate)];
    return text;
  }

  // The states that may be found at the moment: from the last one that is there for certain to the
  // one that a statement at work leads to. A process that was killed has lost none that was
  // finished.
  std::pair<size_t, size_t> Allowed(size_t position, bool killed) const {
    size_t last = 0;
    while (last + 1 < finished_.size() && finished_[last + 1] <= position) ++last;
    size_t first = 0;
    for (const auto& [since, state] : durable_) {
      if (since <= position) first = state;
    }
    return {killed ? last : first, std::min(last + 1, states_.size() - 1)};
  }

  // `session`: 0 when the power was lost.
  void ExpectOneOf(const DiskContents& contents, size_t first, size_t last, uint64_t session,
                   bool and_again) {
    ++made_;
    SimulatedDisk disk(contents, session);
    if (!disk.Exists(kPath)) {
      EXPECT_TRUE(may_be_absent_ && first == 0);
      return;
    }
    try {
      const auto engine = Engine::Open(kPath, {.reads_suspect = !all_sound_, .files = &disk});
      const Engine::ReadScope scope(*engine);
      engine->UserTableNames();
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what();
      return;
    }
    const Bytes found = disk.ContentOf(kPath).subspan(kPageSize);
    bool known = false;
    for (size_t state = first; state <= last; ++state)
      known = known || std::ranges::equal(states_[state], found);
    EXPECT_TRUE(known) << "it is none of the states " << first << " to " << last << " of "
                       << states_.size();
    EXPECT_FALSE(disk.Exists(kJournal));
    if (all_sound_) ExpectSound(disk);
    if (and_again && !disk.Operations().empty() && !HasFailure())
      LosePowerAgain(contents, disk.Operations(), first, last);
  }

  // Each state once: what is the same is as sound.
  void ExpectSound(SimulatedDisk& disk) {
    const Bytes file = disk.ContentOf(kPath);
    const CommitWords words(file.subspan(kJet4.header.commit_words));
    EXPECT_EQ(SuspectState(words.Stored()), std::nullopt);
    const bool is_new = sound_.insert(ContentSum(file.subspan(kPageSize))).second;
    EXPECT_EQ(is_new ? FindingsOf(disk) : "", "");
  }

  // While it was put right.
  void LosePowerAgain(const DiskContents& contents, const std::vector<DiskOperation>& operations,
                      size_t first, size_t last) {
    PowerLoss again(contents, operations);
    const size_t position = again_() % (operations.size() + 1);
    while (again.Position() < position) again.Advance();
    std::vector<PowerLoss::Fate> fates(again.PendingCount());
    for (PowerLoss::Fate& fate : fates) fate = static_cast<PowerLoss::Fate>(again_() % 3);
    SCOPED_TRACE(testing::Message() << "and again after operation " << position << " of "
                                    << operations.size() << Described(fates));
    ExpectOneOf(again.Left(fates, again_), first, last, 0, false);
  }

  DiskContents start_;
  std::vector<std::vector<uint8_t>> states_;
  std::vector<size_t> finished_;                    // after which operation each was
  std::vector<std::pair<size_t, size_t>> durable_;  // since which operation which state
  std::set<uint64_t> sound_;
  std::mt19937 again_{3};
  size_t made_ = 0;
};

TEST_F(PowerLossTest, UpdatesAreThereOrNot) {
  Start(Things(100));
  const auto engine = Open();
  Do(*engine, [](Engine& things) { Update(things, 20, 3, 7); });
  Do(*engine, [](Engine& things) { Update(things, 40, 1, Text(200, u'z')); });  // the row moves
  Do(*engine, [](Engine& things) {
    for (int32_t id = 0; id < 200; id += 2) Update(things, id, 3, 8);
  });
  Do(*engine, [](Engine& things) { Update(things, 20, 3, 9); });
  Close(*engine);
  Prove();
}

TEST_F(PowerLossTest, InsertionsThatSplitPagesAreThereOrNot) {
  Start(Things(60));
  const auto engine = Open();
  for (int32_t turn = 0; turn < 4; ++turn) {
    Do(*engine, [&](Engine& things) {
      for (int32_t i = 0; i < 30; ++i) Insert(things, 1 + 2 * (turn * 30 + i), 190, 30);
    });
  }
  Close(*engine);
  Prove();
}

TEST_F(PowerLossTest, GrowingMapsOfPagesAreThereOrNot) {
  Start(Things(25, 420));
  const auto engine = Open();
  for (int32_t turn = 0; turn < 3; ++turn) {
    Do(*engine, [&](Engine& things) {
      for (int32_t i = 0; i < 12; ++i) Insert(things, 1001 + turn * 100 + i, 10, 30000);
    });
  }
  ASSERT_GT(disk_->Contents()[kPath].size(), 512 * kPageSize) << "the first maps are full";
  Close(*engine);
  Prove();
}

TEST_F(PowerLossTest, DeletionsAreThereOrNot) {
  Start(Things(150));
  const auto engine = Open();
  for (int32_t turn = 0; turn < 5; ++turn) {
    Do(*engine, [&](Engine& things) {
      for (int32_t i = 0; i < 25; ++i) Delete(things, 2 * (turn * 25 + i));
    });
  }
  Close(*engine);
  Prove();
}

TEST_F(PowerLossTest, MemosOfSeveralPagesAreThereOrNot) {
  Start(Things(30));
  const auto engine = Open();
  Do(*engine, [](Engine& things) { Insert(things, 1001, 10, 30000); });
  Do(*engine, [](Engine& things) { Update(things, 1001, 2, Text(9000, u'y')); });
  Do(*engine, [](Engine& things) { Update(things, 20, 2, Text(20000, u'x')); });
  Do(*engine, [](Engine& things) { Delete(things, 1001); });
  Do(*engine, [](Engine& things) { Insert(things, 1003, 10, 15000); });
  Close(*engine);
  Prove();
}

TEST_F(PowerLossTest, ANewDatabaseIsThereWholeOrNot) {
  may_be_absent_ = true;
  Start({});
  const std::vector<uint8_t> none;
  Engine::Create(kPath, {.files = disk_.get()}, [](Engine& engine) {
    Engine::WriteScope scope(engine);
    engine.CreateTable(kThings);
    Insert(engine, 1, 100, 5000);
    scope.Commit();
  });
  Finished();
  Durable();
  Prove();
}

TEST_F(PowerLossTest, ARepairIsThereWholeOrNot) {
  DiskContents contents = Things(60);
  {
    SimulatedDisk disk(contents);
    const auto engine = Engine::Open(kPath, {.files = &disk});
    const Engine::ReadScope scope(*engine);
    const TableDefinition& things = engine->Table(u"Things");
    std::vector<uint8_t>& file = contents[kPath];
    file[things.Page() * kPageSize + kJet4.definition.row_count] ^= 0x55;
    Store16(file.data() + kJet4.header.commit_words + 6, kCommitCorrupt);
  }
  all_sound_ = false;
  Start(std::move(contents));
  const RepairReport report = RepairDatabase(*disk_, kPath, std::chrono::milliseconds(0));
  EXPECT_GT(report.mended.size(), 1u);
  EXPECT_TRUE(report.remaining.Clean());
  Finished();
  Durable();
  Prove();
  EXPECT_EQ(FindingsOf(*disk_), "");
}

// A card and its thirteen lines, a statement each.
TEST_F(PowerLossTest, ADefaultUnitIsThereStatementByStatementAndWholeAtTheEnd) {
  Start(Things(5));
  const auto engine = Open();
  for (int32_t line = 0; line < 14; ++line)
    Do(*engine, [&](Engine& things) { Insert(things, 1000 + line, 24, 40); });
  Close(*engine);
  Prove();
}

TEST_F(PowerLossTest, AnApplyOfTenRowsIsThereWhenItHasReturned) {
  Start(Things(40));
  for (int32_t apply = 1; apply <= 2; ++apply) {
    const auto engine = Open();
    for (int32_t line = 0; line < 10; ++line)
      Do(*engine, [&](Engine& things) { Update(things, line * 2, 3, apply * 100 + line); });
    Close(*engine);
  }
  Prove();
}

// Their pages are in the journal before they change, from a statement that leaves them alone.
TEST_F(PowerLossTest, RowsThatWereExpectedToChangeAreThereOrNotWhetherTheyDidOrNot) {
  Start(Things(200));
  const auto engine = Open();
  std::vector<RowId> rows;
  Do(*engine, [&](Engine& things) {
    Update(things, 2, 3, 1);
    for (const int32_t id : {120, 200, 280, 360}) rows.push_back(FindThing(things, id));
    things.Expect(rows);
  });
  std::set<uint32_t> pages;
  for (const RowId row : rows) pages.insert(row.page);
  EXPECT_EQ(pages.size(), rows.size());
  Do(*engine, [](Engine& things) { Update(things, 120, 3, 2); });
  Do(*engine, [](Engine& things) { Update(things, 280, 3, 7); });
  Do(*engine, [](Engine& things) { Update(things, 360, 3, 3); });
  EXPECT_EQ(engine->Counters().flushes, 1u);
  Close(*engine);
  Prove();
}

TEST_F(PowerLossTest, SeveralConnectionsShareOneJournal) {
  Start(Things(40));
  const auto one = Open();
  const auto two = Open();
  Do(*one, [](Engine& things) { Update(things, 2, 3, 1); });
  Do(*two, [](Engine& things) { Update(things, 4, 1, Text(200, u'z')); });
  Do(*one, [](Engine& things) { Insert(things, 1001, 100, 3000); });
  Close(*one);
  Do(*two, [](Engine& things) { Update(things, 2, 3, 2); });
  const auto three = Open();
  Do(*three, [](Engine& things) { Delete(things, 4); });
  Close(*two);
  Do(*three, [](Engine& things) { Insert(things, 1003, 100, 3000); });
  Close(*three);
  Prove();
}

// The disk fills up in the middle of a statement, for one write after the other; other statements
// follow.
TEST_F(PowerLossTest, AStatementThatFailedIsNotThereWhateverFollows) {
  const DiskContents start = Things(40);
  for (int writes = 0; writes < 12; writes += 3) {
    SCOPED_TRACE(writes);
    Start(start);
    const auto engine = Open();
    Do(*engine, [](Engine& things) { Update(things, 2, 3, 1); });
    disk_->FillAfter(writes, 1);
    EXPECT_THROW(Do(*engine,
                    [](Engine& things) {
                      for (int32_t i = 0; i < 10; ++i) Insert(things, 1001 + i, 150, 900);
                    }),
                 RuntimeError);
    EXPECT_EQ(PagesOf(disk_->Contents()).size(), PagesOf(start).size());
    Do(*engine, [](Engine& things) { Insert(things, 1001, 150, 2000); });
    Close(*engine);
    Prove();
  }
}

}  // namespace
}  // namespace rdv::jet
