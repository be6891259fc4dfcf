#include "tools/lines/site_copy.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/file/draft.h"
#include "data/jet/file/file.h"

namespace rdv::lines {
namespace {

constexpr size_t kPiece = 1u << 20;

// Calls use(offset, bytes) for the whole file, in pieces.
template <typename Use>
void ForEachPiece(jet::File& file, Use use) {
  std::vector<uint8_t> buffer(kPiece);
  for (uint64_t offset = 0;;) {
    const size_t size = file.ReadAt(offset, buffer);
    if (size == 0) return;
    use(offset, jet::Bytes(buffer).first(size));
    offset += size;
  }
}

void CompareWith(jet::File& original, jet::File& copy) {
  if (original.Stamp().size != copy.Stamp().size) {
    throw std::runtime_error("the copy has another size than the database");
  }
  std::vector<uint8_t> there(kPiece);
  ForEachPiece(original, [&](uint64_t offset, jet::Bytes piece) {
    const size_t size = copy.ReadAt(offset, std::span(there).first(piece.size()));
    if (size != piece.size() || !std::equal(piece.begin(), piece.end(), there.begin())) {
      throw std::runtime_error("what was read back from the copy is not what the database holds");
    }
  });
}

void RequireSound(const Text& path, const Text& database) {
  const auto engine = jet::Engine::Open(path);
  const jet::Engine::ReadScope scope(*engine);
  const jet::CheckReport report = jet::CheckFile(engine->File());
  if (report.Clean()) return;
  throw std::runtime_error("the database is not sound, and nothing is written to it: " +
                           ToUtf8(report.findings.front().text) +
                           (report.findings.size() > 1
                                ? " (and " + std::to_string(report.findings.size() - 1) + " more)"
                                : std::string()) +
                           "; see rdvsite check " + ToUtf8(database));
}

}  // namespace

void CopyDatabase(const Text& database, const std::filesystem::path& copy) {
  const Text path = copy.u16string();
  try {
    jet::FileSystem& files = jet::NativeFileSystem();
    const auto original = files.Open(database, jet::FileAccess::Read);
    jet::Draft draft(files, path);
    ForEachPiece(*original, [&](uint64_t offset, jet::Bytes piece) {
      draft.Content().WriteAt(offset, piece);
    });
    draft.Content().Flush();
    CompareWith(*original, draft.Content());
    RequireSound(draft.Path(), database);
    draft.Publish();
  } catch (const jet::FileError& error) {
    jet::RaiseFileError(error, path);
  }
}

}  // namespace rdv::lines
