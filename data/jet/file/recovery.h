// What to do with a database file whose journal was left behind, by a process that died or by a
// loss of power.
//
// The file is never judged by what should have reached it but by what did: a state counts when
// every page that the journal knows of has the content that this state has it have. Pages that the
// journal does not know have not been written since it was begun.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "data/jet/file/commit_words.h"
#include "data/jet/file/file.h"
#include "data/jet/file/journal.h"

namespace rdv::jet {

enum class Outcome {
  NothingLost,  // the file is as after the last statement
  LastPutBack,  // that one was cut off: as before it
  AllPutBack,   // something that was not flushed is lost: as when the journal was begun
  GoneBeyond,   // none of it: somebody else has gone on with the file, or it is another one
};

// A state of the file, as far as it may differ from what is there.
struct FileState {
  std::map<uint32_t, std::vector<uint8_t>> pages;
  uint32_t page_count = 0;
  CommitWords words;
};

struct RecoveryPlan {
  Outcome outcome = Outcome::AllPutBack;
  // Holds all pages that the journal knows of; also those that are right, as nobody can tell which
  // of them reached the disk when a flush fails.
  FileState state;
};

// Nothing when the journal does not explain the file as it is, which then stays as it is. With
// GoneBeyond there is no state: the journal is done with.
// `words`: those in the file. Raises FileError.
std::optional<RecoveryPlan> PlanRecovery(const JournalContent& journal, File& file,
                                         const CommitWords& words);

// Brings the file to the state, saying "being written" until it has it, unless it is there already
// and only written again. May be cut off and done again. `words`: those in the file, at `words_at`.
// `flush` flushes the file: before the commit word says that the state is there, lest the word
// reaches the disk and the pages do not. Raises FileError.
void PutBack(File& file, const FileState& state, uint32_t page_size, const CommitWords& words,
             uint64_t words_at, const std::function<void()>& flush, bool is_there = false);

void WriteCommitWords(File& file, const CommitWords& from, const CommitWords& to,
                      uint64_t words_at);

}  // namespace rdv::jet
