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
  while (!TryMake(model)) RemoveDeadOne();
  RemoveJournal();
}

// A new file, whatever bears the name: one that was found would stay its owner's, and open to
// whoever has it open. False where there is one.
bool Draft::TryMake(File* model) {
  std::unique_ptr<File> file;
  try {
    file = model != nullptr ? files_.OpenBeside(*model, path_, FileAccess::NewDraft)
                            : files_.Open(path_, FileAccess::NewDraft);
  } catch (const FileError& error) {
    if (error.Problem() != FileProblem::Exists) throw;
    return false;
  }
  Lock(*file);
  // Another maker may have taken it for a dead one's before it was locked.
  if (!file->Stamp().linked) return false;
  file_ = std::move(file);
  return true;
}

// Not emptied: the same file may have its name already where that was given in two steps.
void Draft::RemoveDeadOne() {
  try {
    const std::unique_ptr<File> file = files_.Open(path_, FileAccess::Draft);
    Lock(*file);
    // Whoever had it may have removed it in the meantime.
    if (file->Stamp().linked) files_.Remove(path_);
  } catch (const FileError& error) {
    if (error.Problem() != FileProblem::NotFound) throw;
  }
}

void Draft::Lock(File& file) {
  if (!file.TryLock(kMakerByte, 1, LockMode::Exclusive))
    throw FileError(FileProblem::InUse, "another process is making it");
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
