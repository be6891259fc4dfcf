// What a loss of power leaves where something went wrong before: a flush that failed, a process
// that was killed while others went on, a reader in the way of closing, statements that failed.
#include <gtest/gtest.h>

#include <algorithm>

#include "data/jet/file/journal_record.h"
#include "tests/jet/things_table.h"
#include "tests/power_loss/disk_judge.h"
#include "tests/power_loss/simulated_process.h"

namespace rdv::jet {
namespace {

using things::Ids;
using things::Insert;

const Text kSite = u"site.mdb";

class PowerLossWithOthers : public testing::Test {
 protected:
  void TearDown() override {
    RecordProperty("states", std::to_string(states_));
    std::printf("             %zu states of the disk\n", states_);
  }

  void Start(int32_t count) {
    SimulatedDisk disk;
    things::Create(kSite, count, 30, &disk);
    start_ = disk.Contents();
    Again();
  }
  void Again() { disk_ = std::make_unique<SimulatedDisk>(start_); }

  std::unique_ptr<Engine> Open(FileSystem& files) {
    return Engine::Open(kSite, {.lock_wait = std::chrono::milliseconds(1), .files = &files});
  }
  std::unique_ptr<Engine> Open() { return Open(*disk_); }

  // Loses the power at moments from `since` (a number of operations) on, opens what is left and
  // expects it to be sound; `needed`: rows that have to be there. Of all the states that there are
  // with so many `samples`, no more than about `most` are made in an everyday run.
  void Prove(size_t since, const std::set<int32_t>& needed = {}, int samples = 4,
             size_t most = 60) {
    std::mt19937 chance(1);
    size_t choices = 0;
    ForEachChoice(since, samples, chance, [&](const PowerLoss&, const auto&) { ++choices; });
    const size_t stride = choices / (most * Thoroughness()) + 1;
    size_t number = 0;
    ForEachChoice(since, samples, chance, [&](const PowerLoss& power, const auto& fates) {
      if (number++ % stride != 0 || HasFailure()) return;
      SCOPED_TRACE(testing::Message() << "after operation " << power.Position() << " of "
                                      << disk_->Operations().size());
      ExpectSound(power.Left(fates, chance), needed);
    });
  }

  void ExpectSound(DiskContents contents, const std::set<int32_t>& needed) {
    ++states_;
    CountJudgedState();
    SimulatedDisk after(std::move(contents));
    try {
      const auto engine = Open(after);
      const std::set<int32_t> ids = Ids(*engine);
      EXPECT_TRUE(std::ranges::includes(ids, needed)) << "a row that had to be there is lost";
      const bool is_new =
          sound_.insert(ContentSum(after.ContentOf(kSite).subspan(kPageSize))).second;
      EXPECT_EQ(is_new ? Findings(*engine) : "", "");
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what();
    }
  }

  size_t Now() const { return disk_->Operations().size(); }

  std::unique_ptr<SimulatedDisk> disk_;
  size_t states_ = 0;  // made and opened

 private:
  using UseChoice = std::function<void(const PowerLoss&, const std::vector<PowerLoss::Fate>&)>;
  void ForEachChoice(size_t since, int samples, std::mt19937& chance, const UseChoice& use) {
    PowerLoss power(start_, disk_->Operations());
    do {
      if (power.Position() < since) continue;
      power.ForEachChoice(samples, chance, [&](const auto& fates) { use(power, fates); });
    } while (power.Advance());
  }

  DiskContents start_;
  std::set<uint64_t> sound_;
};

// A reader is in the way when an Apply ends, so its journal stays; somebody who had looked at the
// file before goes on writing.
TEST_F(PowerLossWithOthers, AnApplyThatHasReturnedIsThereThoughAReaderWasInTheWayAndOthersWentOn) {
  Start(5);
  const auto other = Open();
  const auto reader = Open();
  const auto apply = Open();
  Insert(*apply, 100, 30);
  EXPECT_EQ(Ids(*other).size(), 6u);
  {
    const Engine::ReadScope scope(*reader);
    apply->Close();
  }
  const size_t returned = Now();
  Insert(*other, 200, 30);
  Insert(*other, 201, 30);
  Prove(returned, {0, 1, 2, 3, 4, 100}, 4, 150);
  EXPECT_GT(states_, 100u);
}

TEST_F(PowerLossWithOthers, AnApplyWhoseJournalAnotherWriterGoesOnWithSaysThatItMayBeLost) {
  Start(5);
  const auto other = Open();
  const auto reader = Open();
  const auto apply = Open();
  Insert(*apply, 100, 30);
  Insert(*other, 200, 30);
  const Engine::ReadScope scope(*reader);
  EXPECT_NE(WhatRaises([&] { apply->Close(); }).find("already in use"), std::string::npos);
}

TEST_F(PowerLossWithOthers, AProcessThatIsKilledAtAnyMomentLeavesTheOthersASoundFile) {
  Start(20);
  int moments = 0;
  for (int after = 0;; ++after) {
    SCOPED_TRACE(after);
    Again();
    const auto other = Open();
    const auto third = Open();
    Insert(*third, 50, 30);
    if (after % 2 == 0) third->Close();
    Ids(*other);
    SimulatedProcess process(*disk_);
    const auto dying = Open(process);
    process.KillAfter(after);
    WhatRaises([&] {
      Insert(*dying, 100, 3000);
      Insert(*dying, 101, 30);
      dying->Close();
    });
    if (!process.IsKilled()) break;
    ++moments;
    const size_t killed = Now();
    Insert(*other, 200, 3000);
    Prove(killed, {}, 1, 20);
    other->Close();
    ExpectSound(disk_->Contents(), {50, 200});
    if (HasFailure()) break;
  }
  EXPECT_GT(moments, 15);
  EXPECT_GT(states_, 200u);
}

// What it should have brought to the disk never gets there, and all later flushes succeed.
TEST_F(PowerLossWithOthers, AfterAnyFlushThatFailedNothingIsSaidToBeThereThatIsNot) {
  Start(60);
  int failed = 0;
  for (int turn = 0;; ++turn) {
    const int flush = turn / 2;
    SCOPED_TRACE(turn);
    Again();
    std::set<int32_t> needed;
    const auto engine = Open();
    const size_t before = Now();
    disk_->FailFlushAfter(flush);
    const auto insert = [&](int32_t id, size_t length) {
      const std::string raised = WhatRaises([&] { Insert(*engine, id, length); });
      if (raised == kNothing) needed.insert(id);
      return raised != kNothing;
    };
    // Odd turns close at once when one was refused: nothing makes good what its flush has lost.
    bool any = false;
    const size_t lengths[] = {30, 30, 3000, 30, 9000};
    for (size_t i = 0; i < std::size(lengths) && !(any && turn % 2 == 1); ++i)
      any |= insert(1000 + static_cast<int32_t>(i), lengths[i]);
    Prove(before, {}, 1, 20);
    const std::string closed = WhatRaises([&] { engine->Close(); });
    any |= closed != kNothing;
    disk_->FailFlushAfter(-1);
    if (closed == kNothing) Prove(Now(), needed, 20, 40);
    Prove(before, {}, 1, 20);
    // Whoever comes next finds all that was finished: nothing was lost but what the disk forgot.
    {
      const auto next = Open();
      EXPECT_TRUE(std::ranges::includes(Ids(*next), needed));
      Insert(*next, 2000, 30);
      next->Close();
      needed.insert(2000);
    }
    Prove(Now(), needed, 20, 40);
    if (!any || HasFailure()) break;
    ++failed;
  }
  EXPECT_GT(failed, 7);
}

// Nobody but the one whose flush it was is told by the system. Another one is at work meanwhile, or
// comes later; it writes or only closes.
TEST_F(PowerLossWithOthers, WhatTheFlushOfAnotherHasLostIsWrittenOnceMoreByWhoeverGoesOn) {
  Start(5);
  enum class Then { Closes, Writes, IsJoined };
  for (const Then then : {Then::Closes, Then::Writes, Then::IsJoined}) {
    for (int flush = 0; flush < 2; ++flush) {
      SCOPED_TRACE(testing::Message() << static_cast<int>(then) << " after flush " << flush);
      Again();
      const auto two = Open();
      const auto one = Open();
      Insert(*two, 200, 3000);
      Insert(*one, 100, 30);
      Insert(*one, 101, 30);
      disk_->FailFlushAfter(flush);
      EXPECT_NE(WhatRaises([&] { one->Close(); }), kNothing);
      std::set<int32_t> needed = {0, 1, 2, 3, 4, 100, 101, 200};
      if (then == Then::Writes) Insert(*two, 201, 30);
      if (then == Then::Writes) needed.insert(201);
      if (then == Then::IsJoined) {
        const auto three = Open();
        Insert(*three, 300, 30);
        three->Close();
        needed.insert(300);
        Prove(Now(), needed, 20, 20);
      }
      two->Close();
      Prove(Now(), needed, 20, 20);
      Prove(0, {}, 1, 20);
      EXPECT_FALSE(disk_->Exists(kSite + u"-journal"));
    }
  }
}

// One fails before it writes anything to the file, so nothing there tells of its record.
TEST_F(PowerLossWithOthers, ARecordOfAStatementThatFailedAtOnceIsNotWrittenOver) {
  Start(20);
  const auto one = Open();
  const auto two = Open();
  Insert(*one, 100, 30);
  disk_->FillAfter(1, 2);
  EXPECT_NE(WhatRaises([&] { Insert(*two, 200, 30); }), kNothing);
  disk_->FillAfter(0, 2);
  EXPECT_NE(WhatRaises([&] { Insert(*one, 101, 9000); }), kNothing);
  disk_->FillAfter(0, 0);
  Insert(*two, 201, 30);
  ExpectSound(disk_->Contents(), {100, 201});
}

TEST_F(PowerLossWithOthers, AnApplyWhoseJournalCannotEndFailsWhereAnotherWriterGoesOnWithIt) {
  Start(5);
  const auto apply = Open();
  Insert(*apply, 100, 30);
  disk_->FillAfter(0, 1);
  apply->Close();
  EXPECT_TRUE(disk_->WasFull());
  Prove(Now(), {0, 1, 2, 3, 4, 100}, 4, 20);

  Again();
  const auto other = Open();
  const auto second = Open();
  Insert(*second, 100, 30);
  Insert(*other, 200, 30);
  disk_->FillAfter(0, 1);
  EXPECT_NE(WhatRaises([&] { second->Close(); }).find("the disk is full"), std::string::npos);
}

// Each takes two commit words. They lie on pages that the journal has, so nothing is flushed.
TEST_F(PowerLossWithOthers, ManyStatementsThatFailedLeaveNoWordThatTheJournalDoesNotKnow) {
  Start(5);
  const auto engine = Open();
  // A row and its key: two pages, which do not fit each other when one of them is lost.
  int32_t id = 3;
  int32_t turn = 0;
  const auto update = [&] {
    Engine::WriteScope scope(*engine);
    ++turn;
    const Assignment values[] = {{0, 1000 + turn},
                                 {1, Text(30, static_cast<char16_t>(u'a' + turn % 26))}};
    engine->Update(engine->Table(u"Things"), things::Find(*engine, id), values);
    scope.Commit();
    id = 1000 + turn;
  };
  update();
  int failed = 0;
  for (int i = 0; i < 58; ++i) update();
  for (int i = 0; i < 4; ++i) {
    disk_->FillAfter(2, 1);
    if (WhatRaises(update) != kNothing) ++failed;
  }
  EXPECT_EQ(failed, 4);
  update();
  const size_t now = Now();
  Prove(now, {0, 1, 2, 4}, 1500, 300);
  EXPECT_GT(states_, 200u);
}

// The journal keeps its name, as somebody has it open, but says nothing any more.
TEST_F(PowerLossWithOthers, AJournalThatCannotBeRemovedIsNotPlayedLater) {
  Start(20);
  disk_->KeepNames();
  for (int32_t turn = 0; turn < 3; ++turn) {
    const auto engine = Open();
    Insert(*engine, 100 + turn, turn == 1 ? 9000 : 30);
    engine->Close();
    std::set<int32_t> needed;
    for (int32_t id = 100; id <= 100 + turn; ++id) needed.insert(id);
    Prove(Now(), needed);
  }
  Prove(0);
  EXPECT_TRUE(disk_->Exists(kSite + u"-journal"));
  EXPECT_GT(states_, 80u);
}

}  // namespace
}  // namespace rdv::jet
