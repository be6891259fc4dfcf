#include "tests/lines/lines_site.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "data/jet/sql/jet_connection.h"
#include "runtime/value.h"
#include "tests/support/sites/sample_sites.h"
#include "tools/lines/program.h"

namespace rdv::lines::test {
namespace {

namespace fs = std::filesystem;

fs::path SuiteIn(const fs::path& folder) {
  return folder / "Tolvane" / "ORVANT+";
}

#ifndef _WIN32

std::string AsText(const nlohmann::json& value) {
  if (value.is_string()) return value.get<std::string>();
  return value.dump();
}

#endif

}  // namespace

#ifndef _WIN32

std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return output;
  char piece[4096];
  for (size_t size; (size = fread(piece, 1, sizeof piece, pipe)) > 0;) output.append(piece, size);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

#endif

LinesSite::LinesSite(const std::string& site, const std::string& settings) {
  const fs::path made = sites::SiteFolder(site);
  fs::create_directories(Database().parent_path());
  rdv::test::CopySample(made / "NewDB.mdb", Database());
  if (settings.empty()) return;
  rdv::test::CopySample(made / settings / "ORVANTPlus.ini",
                        SuiteIn(folder_.Path()) / "ORVANTPlus.ini");
}

fs::path LinesSite::Database() const {
  return SuiteIn(folder_.Path()) / "Database" / "NewDB.mdb";
}

std::vector<std::string> LinesSite::FilesBesideDatabase() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(Database().parent_path())) {
    if (entry.path() != Database()) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

fs::path LinesSite::Newest(std::string_view ending) const {
  std::string newest;
  for (const std::string& name : FilesBesideDatabase()) {
    if (name.ends_with(ending)) newest = std::max(newest, name);
  }
  return Database().parent_path() / newest;
}

Outcome RunWords(const std::vector<std::string>& words,
                 const std::function<void()>& before_writing) {
  std::ostringstream out;
  std::ostringstream errors;
  Outcome outcome;
  outcome.code = RunLines(words, out, errors, false, before_writing);
  outcome.out = out.str();
  outcome.errors = errors.str();
  return outcome;
}

Outcome LinesSite::Run(const std::string& command, const std::vector<std::string>& words,
                       const std::function<void()>& before_writing) const {
  std::vector<std::string> all = {command, Folder()};
  all.insert(all.end(), words.begin(), words.end());
  return RunWords(all, before_writing);
}

fs::path LinesSite::Scratch(const std::string& name) const {
  return scratch_.Path() / name;
}

#ifdef _WIN32

std::vector<StoredRow> LinesSite::Rows(const std::string& table) const {
  const auto connection = jet::OpenJetConnection(Database().u16string());
  const CommandResult result = connection->Execute(u"SELECT * FROM " + FromUtf8(table), {});
  std::vector<StoredRow> rows;
  for (const std::vector<Value>& values : result.rows->rows) {
    StoredRow& row = rows.emplace_back();
    for (size_t i = 0; i < values.size(); ++i) {
      row[ToUtf8(result.rows->columns[i])] =
          IsNull(values[i]) ? "(null)" : ToUtf8(ToText(values[i]));
    }
  }
  return rows;
}

#else

std::vector<StoredRow> LinesSite::Rows(const std::string& table) const {
  std::vector<StoredRow> rows;
  std::istringstream output(OutputOf("mdb-json '" + Database().string() + "' " + table));
  for (std::string line; std::getline(output, line);) {
    StoredRow& row = rows.emplace_back();
    const nlohmann::json fields = nlohmann::json::parse(line);
    for (const auto& [column, value] : fields.items()) {
      row[column] = AsText(value);
    }
  }
  return rows;
}

#endif

StoredRow LinesSite::Line(int config, int line) const {
  for (const StoredRow& row : Rows("Used_Lines")) {
    if (row.at("Config_ID") == std::to_string(config) && row.at("Base_Slot_No") == "1" &&
        row.at("Slot_Offset") == "1" && row.at("Line") == std::to_string(line)) {
      return row;
    }
  }
  return {};
}

int LinesSite::Execute(TextView statement) const {
  const auto connection = jet::OpenJetConnection(Database().u16string());
  const int rows = connection->Execute(statement, {}).rows_written;
  connection->Close();
  return rows;
}

std::string ReadBytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(const fs::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string LinesSite::Bytes() const {
  return ReadBytes(Database());
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace rdv::lines::test
