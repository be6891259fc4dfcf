#include "data/jet/check/check.h"

#include <gtest/gtest.h>

#include "data/jet/file/pager.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

// What real files are known to have wrong.
bool Known(const std::filesystem::path& path, const Finding& finding) {
  return path.filename() == "queryTestV2000.mdb" && finding.kind == FindingKind::RowCount &&
         finding.table == kQueriesPage;
}

std::string Findings(const CheckReport& report) {
  std::string text;
  for (const Finding& finding : report.findings)
    text += ToUtf8(KindName(finding.kind) + u": " + finding.text) + "\n";
  return text;
}

std::vector<std::filesystem::path> RealFiles() {
  std::vector<std::filesystem::path> files;
  for (const char* folder : {"corpus/jet4", "corpus/jet3", "corpus/blank", "sites"}) {
    if (!std::filesystem::exists(SharedFile(folder))) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SharedFile(folder))) {
      const bool broken = entry.path().string().find("broken") != std::string::npos;
      if (entry.path().extension() == ".mdb" && !broken) files.push_back(entry.path());
    }
  }
  return files;
}

TEST(Check, FindsNothingInRealFiles) {
  const auto files = RealFiles();
  if (files.empty()) GTEST_SKIP() << "no real files";
  const TemporaryFolder folder;
  for (const auto& path : files) {
    SCOPED_TRACE(path.string());
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
