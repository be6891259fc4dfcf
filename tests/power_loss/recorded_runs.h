// Everything that writes, to be played on a simulated disk: what each statement does, and when a
// connection ends.
#pragma once

#include <span>

#include "tests/power_loss/disk_recorder.h"

namespace rdv::jet {

struct RecordedRun {
  const char* name = "";
  DiskContents (*start)() = nullptr;
  // Leaves out what builds upon a statement that was refused.
  void (*play)(DiskRecorder& recorder) = nullptr;
  bool all_sound = true;  // all states that the file may be found in; a repair begins with none
};

extern const RecordedRun kUpdates;
extern const RecordedRun kInsertionsThatSplitPages;
extern const RecordedRun kGrowingMaps;
extern const RecordedRun kDeletions;
extern const RecordedRun kLongMemos;
extern const RecordedRun kNewDatabase;
extern const RecordedRun kRepair;
extern const RecordedRun kDefaultUnit;
extern const RecordedRun kAppliesOfTenRows;
extern const RecordedRun kExpectedRows;
extern const RecordedRun kSeveralConnections;
extern const RecordedRun kLinkedTable;

std::span<const RecordedRun* const> AllRecordedRuns();

}  // namespace rdv::jet
