#include "data/jet/check/check.h"

#include <gtest/gtest.h>

#include "data/jet/file/pager.h"
#include "tests/jet/corpus.h"
#include "tests/jet/findings.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

// What real files are known to have wrong.
bool Known(const std::filesystem::path& path, const Finding& finding) {
  return path.filename() == "queryTestV2000.mdb" && finding.kind == FindingKind::RowCount &&
         finding.table == kQueriesPage;
}

TEST(Check, FindsNothingInSoundFiles) {
  const TemporaryFolder folder;
  for (const std::string& name : AllFiles()) {
    SCOPED_TRACE(name);
    const std::filesystem::path path = SamplePath(name);
    Pager pager(NativeFileSystem(), PathText(folder.Copy(path)), std::chrono::milliseconds(100),
                1000);
    pager.BeginRead();
    const FileReader file(pager, pager.FileHeader());
    CheckReport report = CheckFile(file);
    std::erase_if(report.findings, [&](const Finding& finding) { return Known(path, finding); });
    EXPECT_EQ(Findings(report), "");
    EXPECT_GE(report.tables, 4u);
    pager.EndRead();
  }
}

}  // namespace
}  // namespace rdv::jet
