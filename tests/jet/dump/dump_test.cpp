#include "data/jet/dump/dump.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>

#include "runtime/error.h"
#include "tests/jet/corpus.h"
#include "tests/jet/dump/json.h"

namespace rdv::jet {
namespace {

std::string Dump(const std::string& name, std::vector<Text> tables = {}) {
  OpenFile file(name);
  std::string text;
  const Text file_name = FromUtf8(std::filesystem::path(name).filename().string());
  DumpDatabase(file.Reader(), {.file_name = file_name, .tables = tables},
               [&text](std::string_view piece) { text += piece; });
  return text;
}

// The dump that lies beside a database; "" when there is none.
std::string ShippedDump(const std::string& name) {
  std::filesystem::path path = SamplePath(name);
  path.replace_extension(".json");
  if (std::filesystem::exists(path)) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  path += ".gz";
  std::string text;
#ifndef _WIN32
  if (!std::filesystem::exists(path)) return text;
  FILE* pipe = popen(("zcat '" + path.string() + "'").c_str(), "r");
  if (pipe == nullptr) return text;
  char buffer[65536];
  for (size_t size; (size = fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, size);
  pclose(pipe);
#endif
  return text;
}

class DumpOfFile : public testing::TestWithParam<std::string> {};

TEST_P(DumpOfFile, SaysWhatTheShippedDumpSays) {
  const std::string shipped = ShippedDump(GetParam());
  const std::string dump = Dump(GetParam());
  EXPECT_EQ(FirstDifference(ParseJson(shipped), ParseJson(dump)), "");
}

// The files of others; a compressed dump is not read on Windows.
std::vector<std::string> FilesWithADump() {
  std::vector<std::string> files = AllFiles();
  std::erase_if(files, [](const std::string& name) {
#ifdef _WIN32
    if (name == "foreign/large/NewDB.mdb") return true;
#endif
    return name.starts_with("sites/");
  });
  return files;
}

INSTANTIATE_TEST_SUITE_P(Files, DumpOfFile, testing::ValuesIn(FilesWithADump()),
                         [](const auto& file) { return TestName(file.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DumpOfFile);

TEST(Dump, HoldsTheNamedTablesOnlyWithoutRegardToCase) {
  const std::string dump = Dump("sites/plain/NewDB.mdb", {u"used_cards"});
  EXPECT_NE(dump.find("\"name\":\"Used_Cards\""), std::string::npos);
  EXPECT_EQ(dump.find("\"name\":\"Used_Lines\""), std::string::npos);
}

TEST(Dump, RefusesTheNameOfATableThatIsNotThere) {
  try {
    Dump("sites/plain/NewDB.mdb", {u"Nowhere"});
    FAIL() << "a table that is not there was dumped";
  } catch (const RuntimeError& error) {
    EXPECT_NE(error.Description().find(u"'Nowhere'"), Text::npos);
  }
}

TEST(JsonComparison, TellsTheFirstDifference) {
  EXPECT_EQ(FirstDifference(ParseJson("[1, {\"a\": [true, \"x\"]}]"),
                            ParseJson("[1.0, {\"a\": [true, \"\\u0078\"]}]")),
            "");
  EXPECT_EQ(FirstDifference(ParseJson("[1, {\"a\": null}]"), ParseJson("[1, {\"a\": false}]")),
            "/1/a: false instead of null");
  EXPECT_EQ(FirstDifference(ParseJson("[1]"), ParseJson("[1, 2]")), ": 2 elements instead of 1");
}

}  // namespace
}  // namespace rdv::jet
