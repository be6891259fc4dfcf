#include "data/jet/file/draft.h"

namespace rdv::jet {
namespace {

// Locked by the maker for as long as it is at work. Beside those of FileLock, which are taken in
// the same file.
constexpr uint64_t kMakerByte = 0x4000'0000'0100;

}  // namespace

Draft::Draft(FileSystem& files, const Text& final_path)
    : files_(files), final_path_(final_path), path_(final_path + u".new") {
  while (!file_) {
    std::unique_ptr<File> file = files_.Open(path_, FileAccess::Draft);
    if (!file->TryLock(kMakerByte, 1, LockMode::Exclusive))
      throw FileError(FileProblem::InUse, "another process is making it");
    const FileStamp stamp = file->Stamp();
    // Whoever had it removed it in the meantime.
    if (!stamp.linked) continue;
    if (stamp.size == 0) {
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

Draft::~Draft() {
  if (published_) return;
  try {
    files_.Remove(path_);
  } catch (const FileError&) {
    // The next maker removes it.
  }
}

void Draft::Publish() {
  files_.Rename(path_, final_path_);
  published_ = true;
}

}  // namespace rdv::jet
