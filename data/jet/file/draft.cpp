#include "data/jet/file/draft.h"

#include "data/jet/file/journal.h"

namespace rdv::jet {
namespace {

// Locked by the maker for as long as it is at work. Beside those of FileLock, which are taken in
// the same file.
constexpr uint64_t kMakerByte = 0x4000'0000'0100;

Text DraftPath(const Text& final_path) {
  return final_path + u".new";
}

}  // namespace

Draft::Draft(FileSystem& files, const Text& final_path, File* model)
    : files_(files), final_path_(final_path), path_(DraftPath(final_path)) {
  while (!file_) {
    std::unique_ptr<File> file = model != nullptr
                                     ? files_.OpenBeside(*model, path_, FileAccess::Draft)
                                     : files_.Open(path_, FileAccess::Draft);
    if (!file->TryLock(kMakerByte, 1, LockMode::Exclusive))
      throw FileError(FileProblem::InUse, "another process is making it");
    const FileStamp stamp = file->Stamp();
    // Whoever had it removed it in the meantime.
    if (!stamp.linked) continue;
    // An empty one with other names as well is somebody else's.
    if (stamp.size == 0 && !stamp.several_names) {
      RemoveJournal();
      file_ = std::move(file);
      continue;
    }
    // A dead maker's. Removed, not emptied: the same file may have its name already where that was
    // given in two steps.
    try {
      files_.Remove(path_);
    } catch (const FileError& error) {
      if (error.Problem() != FileProblem::NotFound) throw;
    }
  }
}

// That of a dead maker's draft, which this one might be taken for.
void Draft::RemoveJournal() {
  const Text journal = JournalPath(path_);
  if (files_.Exists(journal)) files_.Remove(journal);
}

Draft::~Draft() {
  if (published_) return;
  try {
    RemoveJournal();
    files_.Remove(path_);
  } catch (const FileError&) {
    // The next maker removes it.
  }
}

void Draft::Publish() {
  file_->Flush();
  files_.Rename(path_, final_path_);
  published_ = true;
  files_.FlushFolder(final_path_);
}

void RemoveNameOfDraft(FileSystem& files, File& file, const Text& final_path) {
  const Text draft = DraftPath(final_path);
  try {
    if (!file.Bears(draft) || !file.TryLock(kMakerByte, 1, LockMode::Exclusive)) return;
    files.Remove(draft);
    file.Unlock(kMakerByte, 1);
  } catch (const FileError&) {
    // Whoever opens the file next tries again.
  }
}

}  // namespace rdv::jet
