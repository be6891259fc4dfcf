#include "tools/lines/site_copy.h"

#include <stdexcept>
#include <string>

#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/file/database_copy.h"

namespace rdv::lines {
namespace {

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

void CopySite(const Text& database, const std::filesystem::path& copy) {
  jet::CopyHeldDatabase(jet::NativeFileSystem(), database, copy.u16string(),
                        [&](const Text& draft) { RequireSound(draft, database); });
}

}  // namespace rdv::lines
