// Statements of any text, parsed and run on the sample database: each gives rows, a number or an
// error, and the file is sound whatever was run.
#include "data/jet/check/check.h"
#include "data/jet/sql/jet_connection.h"
#include "data/jet/sql/statement_parser.h"
#include "tests/fuzz/fuzz_support.h"

namespace rdv::jet::fuzz {
namespace {

constexpr size_t kLongestStatement = 2000;

// One statement to a line; a line that begins with a colon gives the next arguments instead,
// between colons.
void RunLines(Connection& connection, TextView text) {
  std::vector<Argument> arguments;
  while (!text.empty()) {
    const TextView line = text.substr(0, text.find(u'\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (line.starts_with(u':')) {
      TextView rest = line.substr(1);
      arguments.clear();
      while (arguments.size() < 30) {
        const size_t colon = rest.find(u':');
        const TextView one = rest.substr(0, colon);
        arguments.push_back(one == u"\\N" ? Argument() : Argument(Text(one)));
        if (colon == TextView::npos) break;
        rest.remove_prefix(colon + 1);
      }
      continue;
    }
    try {
      sql::ParseStatement(line);
      const CommandResult result = connection.Execute(line, arguments);
      for (const auto& row : result.rows ? result.rows->rows : std::vector<std::vector<Value>>())
        Require(row.size() == result.rows->columns.size(), "a row of another width than its table");
    } catch (const RuntimeError& error) {
      RequireGoodError(error);
    }
  }
}

}  // namespace
}  // namespace rdv::jet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace rdv::jet;
  fuzz::MemoryFiles files;
  const rdv::Text path(fuzz::kPath);
  files.Put(path, fuzz::SampleDatabase());
  const std::string utf8(data, data + std::min(size, fuzz::kLongestStatement));
  {
    const auto connection = OpenJetConnection(path, {.files = &files});
    fuzz::RunLines(*connection, rdv::FromUtf8(utf8));
  }
  BufferPageSource pages(files.Get(path), kJet4.page_size, path);
  fuzz::Require(CheckFile(FileReader(pages)).Clean(), "a statement left the file unsound");
  return 0;
}
