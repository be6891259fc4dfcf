#include "tests/power_loss/disk_judge.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/file/commit_words.h"
#include "data/jet/file/journal_record.h"

namespace rdv::jet {
namespace {

// What RDV_POWER_LOSS_STATES is without being said.
constexpr int kEverydayStates = 80;

size_t& JudgedInAll() {
  static size_t judged = 0;
  return judged;
}

int NumberFrom(const char* variable, int without) {
  const char* const said = std::getenv(variable);
  return said != nullptr ? std::atoi(said) : without;
}

class CountOfAllTests : public testing::Environment {
 public:
  void TearDown() override {
    if (JudgedInAll() == 0) return;
    std::printf("%zu states of the disk were judged in all\n", JudgedInAll());
    const int wanted = NumberFrom("RDV_POWER_LOSS_IN_ALL", 0);
    EXPECT_GE(JudgedInAll(), static_cast<size_t>(std::max(0, wanted)));
  }
};
// The framework takes it over.
const testing::Environment* const kCount =
    testing::AddGlobalTestEnvironment(std::make_unique<CountOfAllTests>().release());

std::string Described(const std::vector<PowerLoss::Fate>& fates) {
  std::string text = ", pending ";
  for (const PowerLoss::Fate fate : fates) text += "KDT"[static_cast<size_t>(fate)];
  return text;
}

bool IsKill(const std::vector<PowerLoss::Fate>& fates) {
  return std::ranges::all_of(fates, [](auto fate) { return fate == PowerLoss::Fate::Kept; });
}

size_t WritesAmong(const std::vector<DiskOperation>& operations) {
  return static_cast<size_t>(std::ranges::count_if(operations, [](const DiskOperation& operation) {
    return operation.kind == DiskOperation::Kind::Write ||
           operation.kind == DiskOperation::Kind::Resize;
  }));
}

}  // namespace

size_t Thoroughness() {
  const int states = NumberFrom("RDV_POWER_LOSS_STATES", kEverydayStates);
  return static_cast<size_t>(std::max(1, states / kEverydayStates));
}

void CountJudgedState() {
  ++JudgedInAll();
}

std::string FindingsOf(SimulatedDisk& disk, const Text& path) {
  const auto engine = Engine::Open(path, {.files = &disk});
  const Engine::ReadScope scope(*engine);
  std::string text;
  for (const Finding& finding : CheckFile(engine->File()).findings)
    text += ToUtf8(KindName(finding.kind) + u": " + finding.text) + "\n";
  return text;
}

void DiskJudge::Begin(const RecordedRun& run) {
  run_ = run;
  recorder_ = std::make_unique<DiskRecorder>(run.start());
}

void DiskJudge::Record(const RecordedRun& run) {
  Begin(run);
  run.play(*recorder_);
  for (const auto& [name, content] : Disk().Contents())
    EXPECT_TRUE(name.ends_with(u".mdb")) << ToUtf8(name) << " was left behind";
}

void DiskJudge::ForEachMoment(const std::function<void(const PowerLoss&)>& call) {
  PowerLoss disk(recorder_->Start(), Disk().Operations());
  do call(disk);
  while (disk.Advance());
}

void DiskJudge::Prove(size_t wanted) {
  const size_t moments = Disk().Operations().size() + 1;
  const auto samples = static_cast<int>(wanted / moments) + 1;
  size_t choices = 0;
  std::mt19937 chance(1);
  ForEachMoment([&](const PowerLoss& disk) {
    disk.ForEachChoice(samples, chance, [&](const Fates&) { ++choices; });
  });
  const size_t stride = std::max<size_t>(1, choices / wanted);
  const size_t kill_stride = moments / wanted + 1;
  size_t number = 0;
  chance.seed(2);
  ForEachMoment([&](const PowerLoss& disk) {
    disk.ForEachChoice(samples, chance, [&](const Fates& fates) {
      const bool killed = IsKill(fates) && !disk.HasLost();
      const bool chosen = killed ? disk.Position() % kill_stride == 0 : number++ % stride == 0;
      if (!chosen || HasFailure()) return;
      SCOPED_TRACE(testing::Message() << "after operation " << disk.Position() << " of "
                                      << moments - 1 << Described(fates));
      ExpectOneOf(disk.Left(fates, chance), recorder_->Allowed(disk.Position(), killed),
                  killed ? Disk().Session() : 0, true);
    });
  });
}

void DiskJudge::ExpectAsBefore(bool may_be_there) {
  SimulatedDisk next(Disk().Contents(), Disk().Session());
  for (const auto& [path, pages] : recorder_->State(recorder_->StateCount() - 1)) {
    if (!Opens(next, path)) return;
  }
  const DatabasePages found = PagesOf(next.Contents());
  if (found == recorder_->State(recorder_->StateCount() - 1)) return;
  EXPECT_TRUE(may_be_there) << "what was refused has changed something";
  recorder_->Finished(found);
}

// `session`: 0 when the power was lost.
void DiskJudge::ExpectOneOf(const DiskContents& contents, std::pair<size_t, size_t> allowed,
                            uint64_t session, bool and_again) {
  ++judged_;
  CountJudgedState();
  SimulatedDisk disk(contents, session);
  const DatabasePages& last = recorder_->State(allowed.second);
  const DatabasePages& first = recorder_->State(allowed.first);
  for (const auto& [path, pages] : last) {
    if (!disk.Exists(path)) {
      EXPECT_FALSE(first.contains(path)) << ToUtf8(path) << " is lost";
      return;
    }
    if (!Opens(disk, path)) return;
    EXPECT_FALSE(disk.Exists(path + u"-journal"));
    if (run_.all_sound) ExpectSound(disk, path);
  }
  ExpectKnown(PagesOf(disk.Contents()), allowed);
  if (!and_again || disk.Operations().empty() || HasFailure()) return;
  if (again_() % 2 == 0) {
    LosePowerAgain(contents, disk.Operations(), allowed);
  } else {
    RunOutOfRoom(contents, disk.Operations(), allowed, session);
  }
}

bool DiskJudge::Opens(SimulatedDisk& disk, const Text& path) const {
  try {
    const auto engine = Engine::Open(path, {.reads_suspect = !run_.all_sound, .files = &disk});
    const Engine::ReadScope scope(*engine);
    engine->UserTableNames();
    return true;
  } catch (const std::exception& error) {
    ADD_FAILURE() << ToUtf8(path) << ": " << error.what();
    return false;
  }
}

// Each file for itself: no statement changes two.
void DiskJudge::ExpectKnown(const DatabasePages& found, std::pair<size_t, size_t> allowed) {
  for (const auto& [path, pages] : found) {
    bool known = false;
    for (size_t state = allowed.first; state <= allowed.second && !known; ++state) {
      const auto at = recorder_->State(state).find(path);
      known = at != recorder_->State(state).end() && at->second == pages;
    }
    EXPECT_TRUE(known) << ToUtf8(path) << " is none of the states " << allowed.first << " to "
                       << allowed.second << " of " << recorder_->StateCount();
  }
}

// Each state once: what is the same is as sound.
void DiskJudge::ExpectSound(SimulatedDisk& disk, const Text& path) {
  const Bytes file = disk.ContentOf(path);
  const CommitWords words(file.subspan(kJet4.header.commit_words));
  EXPECT_EQ(SuspectState(words.Stored()), std::nullopt);
  const bool is_new = sound_.insert(ContentSum(file.subspan(kPageSize))).second;
  EXPECT_EQ(is_new ? FindingsOf(disk, path) : "", "");
}

// While it was put right.
void DiskJudge::LosePowerAgain(const DiskContents& contents,
                               const std::vector<DiskOperation>& operations,
                               std::pair<size_t, size_t> allowed) {
  PowerLoss again(contents, operations);
  const size_t position = again_() % (operations.size() + 1);
  while (again.Position() < position) again.Advance();
  Fates fates(again.PendingCount());
  for (PowerLoss::Fate& fate : fates) fate = static_cast<PowerLoss::Fate>(again_() % 3);
  SCOPED_TRACE(testing::Message() << "and again after operation " << position << " of "
                                  << operations.size() << Described(fates));
  ExpectOneOf(again.Left(fates, again_), allowed, 0, false);
}

// While it was put right: it is read all the same, and put right by whoever finds room.
void DiskJudge::RunOutOfRoom(const DiskContents& contents,
                             const std::vector<DiskOperation>& operations,
                             std::pair<size_t, size_t> allowed, uint64_t session) {
  const size_t writes = WritesAmong(operations);
  if (writes == 0) return;
  const auto position = static_cast<int>(again_() % writes);
  SimulatedDisk disk(contents, session);
  disk.FillAfter(position, again_() % 2 == 0 ? 1 : kStaysFull);
  SCOPED_TRACE(testing::Message() << "and no room after write " << position << " of " << writes);
  for (const auto& [path, pages] : PagesOf(contents)) {
    if (!Opens(disk, path)) return;
  }
  EXPECT_TRUE(disk.WasFull());
  const bool power_goes = again_() % 2 == 0;
  if (!power_goes) return ExpectOneOf(disk.Contents(), allowed, disk.Session(), false);
  PowerLoss loss(contents, disk.Operations());
  while (loss.Position() < disk.Operations().size()) loss.Advance();
  Fates fates(loss.PendingCount());
  for (PowerLoss::Fate& fate : fates) fate = static_cast<PowerLoss::Fate>(again_() % 3);
  ExpectOneOf(loss.Left(fates, again_), allowed, 0, false);
}

}  // namespace rdv::jet
