#include "data/jet/file/database_copy.h"

#include <algorithm>
#include <vector>

#include "data/jet/file/draft.h"
#include "data/jet/file/pager.h"
#include "data/jet/format/errors.h"

namespace rdv::jet {
namespace {

constexpr size_t kCachedPages = 64;
constexpr size_t kPieceSize = 1u << 20;

using UsePiece = std::function<void(uint64_t offset, Bytes piece)>;
// Hands on all of what is to be copied, the same each time.
using ForEachPiece = std::function<void(const UsePiece& use)>;

// An error of the system that concerns the file that is read.
template <typename Read>
auto Reading(const Text& path, Read read) {
  try {
    return read();
  } catch (const FileError& error) {
    RaiseFileError(error, path);
  }
}

// There are disks and shares that say they have taken something and have not.
void RequireSame(const ForEachPiece& for_each_piece, File& copy) {
  std::vector<uint8_t> there;
  for_each_piece([&](uint64_t offset, Bytes piece) {
    there.resize(piece.size());
    const size_t size = copy.ReadAt(offset, there);
    if (size != piece.size() || !std::equal(piece.begin(), piece.end(), there.begin())) {
      throw FileError(FileProblem::Other,
                      "what was read back from the copy is not what was written");
    }
  });
}

void MakeCopy(FileSystem& files, File& original, const Text& to, const ForEachPiece& for_each_piece,
              const std::function<void(const Text& draft)>& check) {
  try {
    if (files.Exists(to)) RaiseFileExists(to);
    Draft draft(files, to, &original);
    for_each_piece([&](uint64_t offset, Bytes piece) { draft.Content().WriteAt(offset, piece); });
    draft.Content().Flush();
    RequireSame(for_each_piece, draft.Content());
    check(draft.Path());
    draft.Publish();
  } catch (const FileError& error) {
    RaiseFileError(error, to);
  }
}

// A statement that ends with the block.
class ReadingStatement {
 public:
  explicit ReadingStatement(Pager& pager) : pager_(pager) { pager_.BeginRead(); }
  ReadingStatement(const ReadingStatement&) = delete;
  ReadingStatement& operator=(const ReadingStatement&) = delete;
  ~ReadingStatement() { pager_.EndRead(); }

 private:
  Pager& pager_;
};

}  // namespace

void CopyDatabase(FileSystem& files, const Text& from, const Text& to,
                  std::chrono::milliseconds lock_wait, Suspects suspects) {
  Pager pager(files, from, lock_wait, kCachedPages, suspects);
  {
    const ReadingStatement statement(pager);
    const auto for_each_page = [&](const UsePiece& use) {
      for (uint32_t page = 0; page < pager.PageCount(); ++page) {
        use(uint64_t{page} * pager.PageSize(),
            Reading(from, [&] { return pager.PageInPassing(page, {}); }));
        pager.GiveBack(page);
      }
    };
    const auto original = Reading(from, [&] { return files.Open(from, FileAccess::Read); });
    MakeCopy(files, *original, to, for_each_page, [&](const Text&) {
      if (!pager.UnchangedSinceBegin()) RaiseFileInUse(from);
    });
  }
  pager.Close();
}

void CopyHeldDatabase(FileSystem& files, const Text& from, const Text& to,
                      const std::function<void(const Text& draft)>& check) {
  const auto original = Reading(from, [&] { return files.Open(from, FileAccess::Read); });
  // Not through the statement: what it has asked for, it does not use as free space.
  std::vector<uint8_t> buffer(kPieceSize);
  const auto for_each_piece = [&](const UsePiece& use) {
    for (uint64_t offset = 0;;) {
      const size_t size = Reading(from, [&] { return original->ReadAt(offset, buffer); });
      if (size == 0) return;
      use(offset, Bytes(buffer).first(size));
      offset += size;
    }
  };
  MakeCopy(files, *original, to, for_each_piece, check);
}

}  // namespace rdv::jet
