#include "tools/lines/unit_table.h"

#include <map>
#include <optional>

#include "runtime/conversion.h"
#include "runtime/error.h"
#include "tools/lines/columns.h"
#include "tools/lines/csv.h"

namespace rdv::lines {
namespace {

constexpr TextView kConfiguration = u"Configuration";
constexpr size_t kLongestQuotation = 40;

std::string QuotedBeginning(TextView text) {
  const bool cut = text.size() > kLongestQuotation;
  return "\"" + ToUtf8(text.substr(0, kLongestQuotation)) + (cut ? "...\"" : "\"");
}

int16_t NumberIn(const Text& field, size_t row, size_t column) {
  const bool digits = field.find_first_not_of(u"-0123456789") == Text::npos;
  try {
    if (digits) return CInt(field);
  } catch (const RuntimeError&) {
    // Told below.
  }
  throw CsvError(row, column,
                 QuotedBeginning(field) + " is no number of a configuration or a line");
}

void RequireHeader(const std::vector<Text>& fields, size_t row) {
  const std::vector<Text> header = TableHeader();
  for (size_t i = 0; i < header.size(); ++i) {
    const Text found = i < fields.size() ? fields[i] : Text();
    if (found == header[i]) continue;
    throw CsvError(row, i + 1,
                   "the header has " + QuotedBeginning(found) + " where " +
                       QuotedBeginning(header[i]) + " belongs");
  }
  if (fields.size() > header.size()) {
    throw CsvError(row, header.size() + 1, "the header has one column too many");
  }
}

}  // namespace

std::vector<Text> TableHeader() {
  std::vector<Text> header = {Text(kConfiguration)};
  for (const ShownColumn& shown : kShownColumns) header.emplace_back(CaptionOf(shown.column));
  return header;
}

std::string TableOf(const std::vector<Unit>& units) {
  std::string table(kByteOrderMark);
  AppendCsvRecord(TableHeader(), table);
  for (const Unit& unit : units) {
    for (const RowCells& row : unit.rows) {
      table += std::to_string(unit.config);
      for (const ShownColumn& shown : kShownColumns) {
        table += ',';
        table += CsvField(row[shown.column]);
      }
      table += "\r\n";
    }
  }
  return table;
}

std::vector<TableRow> ReadTable(std::string_view bytes, size_t most_rows) {
  CsvReader reader(bytes);
  std::vector<Text> fields;
  if (!reader.Next(fields)) throw CsvError(1, 1, "the file is empty");
  RequireHeader(fields, reader.Row());

  std::vector<TableRow> rows;
  std::map<std::pair<int16_t, int16_t>, size_t> seen;
  while (reader.Next(fields)) {
    const size_t row = reader.Row();
    const size_t wanted = kShownColumns.size() + 1;
    if (fields.size() != wanted) {
      throw CsvError(row, std::min(fields.size(), wanted) + 1,
                     "the row has " + std::to_string(fields.size()) + " fields, not " +
                         std::to_string(wanted));
    }
    if (rows.size() == most_rows) {
      throw CsvError(row, 1,
                     "there are more rows than the site can have lines, which are " +
                         std::to_string(most_rows) + " at most");
    }
    TableRow& read = rows.emplace_back();
    read.row = row;
    read.config = NumberIn(fields[0], row, 1);
    read.line = NumberIn(fields[1], row, 2);
    for (size_t i = 0; i < kShownColumns.size(); ++i) {
      read.cells[kShownColumns[i].column] = std::move(fields[i + 1]);
    }
    const auto [place, is_new] = seen.emplace(std::pair(read.config, read.line), row);
    if (!is_new) {
      throw CsvError(row, 2,
                     "line " + std::to_string(read.line) + " of configuration " +
                         std::to_string(read.config) + " was there before, in row " +
                         std::to_string(place->second));
    }
  }
  return rows;
}

}  // namespace rdv::lines
