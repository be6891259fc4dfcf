#include "data/jet/file/database_copy.h"

#include "data/jet/file/draft.h"
#include "data/jet/file/pager.h"
#include "data/jet/format/errors.h"

namespace rdv::jet {
namespace {

constexpr size_t kCachedPages = 64;

// A statement that ends with the block.
class Reading {
 public:
  explicit Reading(Pager& pager) : pager_(pager) { pager_.BeginRead(); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
  ~Reading() { pager_.EndRead(); }

 private:
  Pager& pager_;
};

// An error of the system that concerns the file that is read.
Bytes PageOf(Pager& pager, uint32_t number) {
  try {
    return pager.PageInPassing(number, {});
  } catch (const FileError& error) {
    RaiseFileError(error, pager.Path());
  }
}

}  // namespace

void CopyDatabase(FileSystem& files, const Text& from, const Text& to,
                  std::chrono::milliseconds lock_wait) {
  Pager pager(files, from, lock_wait, kCachedPages);
  try {
    if (files.Exists(to)) RaiseFileExists(to);
    Draft draft(files, to);
    {
      const Reading reading(pager);
      for (uint32_t page = 0; page < pager.PageCount(); ++page) {
        draft.Content().WriteAt(uint64_t{page} * pager.PageSize(), PageOf(pager, page));
        pager.GiveBack(page);
      }
      if (!pager.UnchangedSinceBegin()) RaiseFileInUse(from);
    }
    draft.Content().Flush();
    draft.Publish();
  } catch (const FileError& error) {
    RaiseFileError(error, to);
  }
  pager.Close();
}

}  // namespace rdv::jet
