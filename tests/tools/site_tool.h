// rdvsite on a demonstration site of its own.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/support/site_files.h"
#include "tools/command_line/exit_codes.h"
#include "tools/rdvsite/tool.h"

namespace rdv {

struct Outcome {
  int code = 0;
  std::string out;
  std::string errors;
};

using tools::kDone;
using tools::kFindings;
using tools::kUnusable;
using tools::kUsage;

inline Outcome RunTool(const std::vector<std::string>& arguments) {
  std::ostringstream out;
  std::ostringstream errors;
  Outcome outcome;
  outcome.code = RunSiteTool(arguments, out, errors);
  outcome.out = out.str();
  outcome.errors = errors.str();
  return outcome;
}

class SiteTool : public testing::Test {
 protected:
  void Create(const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments = {"create", folder_.Path().string()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = RunTool(arguments);
    ASSERT_EQ(outcome.code, kDone) << outcome.errors;
  }
  std::string Database() const { return (Suite() / "Database" / "NewDB.mdb").string(); }
  std::filesystem::path Suite() const { return folder_.Path() / "Tolvane" / "ORVANT+"; }

  Outcome Sql(const std::string& statement, std::vector<std::string> arguments = {}) const {
    arguments.insert(arguments.begin(), {"sql", Database(), statement});
    return RunTool(arguments);
  }

  static void WriteFile(const std::filesystem::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
  }
  static std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  // The names of the suite's files, sorted.
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Suite())) {
      if (entry.is_regular_file()) names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  static size_t Lines(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
  }

  test::TemporaryFolder folder_;
};

}  // namespace rdv
