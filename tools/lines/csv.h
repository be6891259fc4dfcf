// Tables as text with commas (RFC 4180), as spreadsheets read and write them.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/text.h"

namespace rdv::lines {

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A field as it stands in a file: in quotes where it has to be.
std::string CsvField(TextView text);

// Appends a record and its line break.
void AppendCsvRecord(const std::vector<Text>& fields, std::string& to);

// Rows and columns are counted from 1, as a spreadsheet counts them.
class CsvError : public std::runtime_error {
 public:
  CsvError(size_t row, size_t column, const std::string& why);
};

// More than any table of this product has: a row with more is no row of one.
inline constexpr size_t kMostFields = 255;

// Reads UTF-8 with or without a byte order mark, lines that end in any of the usual ways, and
// fields that are separated by commas, semicolons or tabs, whichever the first row uses.
class CsvReader {
 public:
  // The bytes outlive the reader.
  explicit CsvReader(std::string_view bytes);

  // False at the end. Empty rows, and those of empty fields that spreadsheets leave, are passed
  // over. Throws CsvError for bytes that are not UTF-8, a quote that is not closed, text behind a
  // closing quote, and more fields than kMostFields.
  bool Next(std::vector<Text>& fields);
  // Of the record that was read last.
  size_t Row() const { return row_; }

 private:
  bool NextRow(std::vector<Text>& fields);
  Text Field();
  std::string QuotedField();
  bool AtLineEnd() const;
  void SkipLineEnd();
  [[noreturn]] void Fail(const std::string& why) const;

  std::string_view bytes_;
  size_t at_ = 0;
  size_t row_ = 0;
  size_t column_ = 0;
  char separator_ = ',';
};

}  // namespace rdv::lines
