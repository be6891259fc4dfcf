// Judges what recorded statements leave of a disk: every state has to be one that the recorder
// allows, sound, and to be read without a repair.
//
// RDV_POWER_LOSS_STATES says how many states a test makes of what it proves (80 without it);
// RDV_POWER_LOSS_IN_ALL how many all tests of a run have to have judged, which is told at its end.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <set>
#include <string>

#include "tests/power_loss/disk_recorder.h"
#include "tests/power_loss/recorded_runs.h"

namespace rdv::jet {

// Operations of the disk after which it has room again: never.
inline constexpr int kStaysFull = 1 << 30;

// How many times as thorough as every day this run is to be.
size_t Thoroughness();

// A state was made, opened and judged; for the count of all tests.
void CountJudgedState();

std::string FindingsOf(SimulatedDisk& disk, const Text& path);

class DiskJudge : public testing::Test {
 protected:
  // Plays the run on a disk that does what it is asked to.
  void Record(const RecordedRun& run);
  // Begins a run, to be played on a disk that fails.
  void Begin(const RecordedRun& run);
  DiskRecorder& Recorder() { return *recorder_; }
  SimulatedDisk& Disk() { return recorder_->Disk(); }

  // Makes about `wanted` states of the disk, for the moments since its start, and judges them and
  // what becomes of them when putting right is cut off, too.
  void Prove(size_t wanted);

  // What the next who opens the files finds is the last state. Something that was refused may be
  // there if that `may_be` so.
  void ExpectAsBefore(bool may_be_there);

  size_t StatesJudged() const { return judged_; }

 private:
  using Fates = std::vector<PowerLoss::Fate>;

  void ForEachMoment(const std::function<void(const PowerLoss&)>& call);
  void ExpectOneOf(const DiskContents& contents, std::pair<size_t, size_t> allowed,
                   uint64_t session, bool and_again);
  bool Opens(SimulatedDisk& disk, const Text& path) const;
  void ExpectKnown(const DatabasePages& found, std::pair<size_t, size_t> allowed);
  void ExpectSound(SimulatedDisk& disk, const Text& path);
  void LosePowerAgain(const DiskContents& contents, const std::vector<DiskOperation>& operations,
                      std::pair<size_t, size_t> allowed);
  void RunOutOfRoom(const DiskContents& contents, const std::vector<DiskOperation>& operations,
                    std::pair<size_t, size_t> allowed, uint64_t session);

  RecordedRun run_;
  std::unique_ptr<DiskRecorder> recorder_;
  std::set<uint64_t> sound_;
  std::mt19937 again_{3};
  size_t judged_ = 0;
};

}  // namespace rdv::jet
