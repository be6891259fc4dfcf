// A disk that has no room, or does not take what it is given, at each write and at each flush of
// everything that writes. What was refused is not there, whatever follows; and what a loss of
// power, a kill or the next one who opens the file then finds is a state that was finished.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "tests/power_loss/disk_judge.h"

namespace rdv::jet {
namespace {

// Of all writes of a run that might fail so many do every day; else all of them. For each, so many
// states of the disk.
constexpr int kEveryDayFailures = 4;
constexpr size_t kStates = 4;

class FullDisk : public DiskJudge, public testing::WithParamInterface<const RecordedRun*> {
 protected:
  const RecordedRun& Run() const { return *GetParam(); }

  static int Stride(int count) {
    return Thoroughness() > 1 ? 1 : std::max(1, count / kEveryDayFailures);
  }

  int CountOf(std::initializer_list<DiskOperation::Kind> kinds) {
    Record(Run());
    const auto counts = [&](const DiskOperation& operation) {
      return std::ranges::find(kinds, operation.kind) != kinds.end();
    };
    return static_cast<int>(std::ranges::count_if(Disk().Operations(), counts));
  }

  // Plays the run, which something is to refuse, then opens the files with a disk that works.
  void PlayFailing() {
    Recorder().on_refusal = [this](const RuntimeError& error, bool may_be_there) {
      ++refused_;
      const std::string why = error.what();
      EXPECT_NE(why.find("Disk or network error"), std::string::npos) << why;
      ExpectAsBefore(may_be_there);
    };
    Run().play(Recorder());
    was_full_ = Disk().WasFull();
    Disk().FillAfter(0, 0);
    Disk().FailFlushAfter(-1);
    ExpectAsBefore(false);
  }

  int refused_ = 0;
  bool was_full_ = false;
};

TEST_P(FullDisk, AtAnyWriteRefusesTheStatementAndLosesNothing) {
  using Kind = DiskOperation::Kind;
  const int writes = CountOf({Kind::Write, Kind::Resize});
  int failures = 0;
  for (const int count : {1, 5, kStaysFull}) {
    for (int write = 0; write < writes && !HasFailure(); write += Stride(writes)) {
      SCOPED_TRACE(testing::Message() << "write " << write << " of " << writes << " and as many as "
                                      << count << " in all");
      Begin(Run());
      Disk().FillAfter(write, count);
      PlayFailing();
      EXPECT_TRUE(was_full_);
      ++failures;
      Prove(kStates);
    }
  }
  std::printf("             %d writes failed, %d statements were refused, %zu states of the disk\n",
              failures, refused_, StatesJudged());
  // The last writes of a connection are its journal's end, which nobody is told of.
  EXPECT_GE(refused_, failures / 2);
}

TEST_P(FullDisk, AtAnyFlushRefusesTheStatementAndLosesNothing) {
  const int flushes = CountOf({DiskOperation::Kind::Flush});
  ASSERT_GT(flushes, 1);
  for (int flush = 0; flush < flushes && !HasFailure(); flush += Stride(flushes)) {
    SCOPED_TRACE(testing::Message() << "flush " << flush << " of " << flushes);
    Begin(Run());
    Disk().FailFlushAfter(flush, FileProblem::DiskFull);
    const int before = refused_;
    PlayFailing();
    EXPECT_GT(refused_, before);
    Prove(kStates);
  }
  std::printf("             %d statements were refused, %zu states of the disk\n", refused_,
              StatesJudged());
}

INSTANTIATE_TEST_SUITE_P(Runs, FullDisk,
                         testing::ValuesIn(AllRecordedRuns().begin(), AllRecordedRuns().end()),
                         [](const auto& run) { return run.param->name; });

}  // namespace
}  // namespace rdv::jet
