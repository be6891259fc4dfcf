// rdvlines as its user drives it, on a copy of a site that was made from its text, and what another
// reader finds in the database afterwards.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/text.h"
#include "tests/support/site_files.h"

namespace rdv::lines::test {

struct Outcome {
  int code = 0;
  std::string out;
  std::string errors;
};

// The text of each field by column; "(null)" for Null.
using StoredRow = std::map<std::string, std::string>;

class LinesSite {
 public:
  // `settings` is one of the site's folders with a settings file in it; "" for none.
  explicit LinesSite(const std::string& site = "plain", const std::string& settings = "ini-china");

  // The common application data folder, the database in it, and what else lies beside that.
  std::string Folder() const { return folder_.Path().string(); }
  std::filesystem::path Database() const;
  std::vector<std::string> FilesBesideDatabase() const;
  // The newest file with that ending.
  std::filesystem::path Newest(std::string_view ending) const;

  // Runs `rdvlines COMMAND FOLDER WORDS...`.
  Outcome Run(const std::string& command, const std::vector<std::string>& words = {},
              const std::function<void()>& before_writing = {}) const;

  // A file beside nothing else, for tables and pages.
  std::filesystem::path Scratch(const std::string& name) const;

  // All rows of a table as mdb-json reads them; on Windows, where there is none, as the engine
  // does.
  std::vector<StoredRow> Rows(const std::string& table) const;
  // One line of the unit's own slot; empty when there is none.
  StoredRow Line(int config, int line) const;
  // Runs a statement as another program would. Gives the number of rows written.
  int Execute(TextView statement) const;
  // The bytes of the database.
  std::string Bytes() const;

 private:
  rdv::test::TemporaryFolder folder_;
  rdv::test::TemporaryFolder scratch_;
};

#ifndef _WIN32
// What the command prints; expects it to succeed.
std::string OutputOf(const std::string& command);
#endif

Outcome RunWords(const std::vector<std::string>& words,
                 const std::function<void()>& before_writing = {});

std::string ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, std::string_view bytes);

// The lines of a text, without their ends.
std::vector<std::string> LinesOf(const std::string& text);

}  // namespace rdv::lines::test
