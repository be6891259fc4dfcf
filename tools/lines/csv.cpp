#include "tools/lines/csv.h"

#include <algorithm>

namespace rdv::lines {
namespace {

// The one that the first row has most of, outside of quotes.
char SeparatorOf(std::string_view bytes) {
  constexpr std::string_view kSeparators = ",;\t";
  size_t counts[kSeparators.size()] = {};
  bool quoted = false;
  for (const char byte : bytes) {
    if (byte == '"') quoted = !quoted;
    if (quoted) continue;
    if (byte == '\n' || byte == '\r') break;
    const size_t which = kSeparators.find(byte);
    if (which != std::string_view::npos) ++counts[which];
  }
  return kSeparators[static_cast<size_t>(std::max_element(std::begin(counts), std::end(counts)) -
                                         std::begin(counts))];
}

}  // namespace

std::string CsvField(TextView text) {
  const std::string utf8 = ToUtf8(text);
  // Blanks at the ends are kept by quotes only; separators of all kinds are quoted, so that the
  // file reads the same whichever is taken for one.
  const bool quoted = utf8.find_first_of(",;\t\"\r\n") != std::string::npos ||
                      (!utf8.empty() && (utf8.front() == ' ' || utf8.back() == ' '));
  if (!quoted) return utf8;
  std::string field = "\"";
  for (const char byte : utf8) {
    if (byte == '"') field += '"';
    field += byte;
  }
  return field + '"';
}

void AppendCsvRecord(const std::vector<Text>& fields, std::string& to) {
  for (size_t i = 0; i < fields.size(); ++i) {
    if (i > 0) to += ',';
    to += CsvField(fields[i]);
  }
  to += "\r\n";
}

CsvError::CsvError(size_t row, size_t column, const std::string& why)
    : std::runtime_error("row " + std::to_string(row) + ", column " + std::to_string(column) +
                         ": " + why) {}

CsvReader::CsvReader(std::string_view bytes) : bytes_(bytes) {
  if (bytes_.starts_with("\xFF\xFE") || bytes_.starts_with("\xFE\xFF")) {
    throw CsvError(1, 1, "the file is UTF-16; save it as \"CSV UTF-8\"");
  }
  if (bytes_.starts_with(kByteOrderMark)) bytes_.remove_prefix(kByteOrderMark.size());
  separator_ = SeparatorOf(bytes_);
}

void CsvReader::Fail(const std::string& why) const {
  throw CsvError(row_, column_, why);
}

bool CsvReader::AtLineEnd() const {
  return at_ < bytes_.size() && (bytes_[at_] == '\n' || bytes_[at_] == '\r');
}

void CsvReader::SkipLineEnd() {
  if (bytes_.substr(at_).starts_with("\r\n")) ++at_;
  ++at_;
}

bool CsvReader::Next(std::vector<Text>& fields) {
  while (NextRow(fields)) {
    if (!std::ranges::all_of(fields, &Text::empty)) return true;
  }
  return false;
}

bool CsvReader::NextRow(std::vector<Text>& fields) {
  fields.clear();
  while (AtLineEnd()) {
    SkipLineEnd();
    ++row_;
  }
  if (at_ >= bytes_.size()) return false;
  ++row_;
  for (column_ = 1;; ++column_) {
    if (column_ > kMostFields) Fail("the row goes on beyond any that a table has");
    fields.push_back(Field());
    if (at_ >= bytes_.size()) return true;
    if (AtLineEnd()) {
      SkipLineEnd();
      return true;
    }
    ++at_;  // the separator
  }
}

Text CsvReader::Field() {
  std::string field;
  if (at_ < bytes_.size() && bytes_[at_] == '"') {
    field = QuotedField();
  } else {
    const size_t end =
        std::min(bytes_.find_first_of(std::string{separator_, '\r', '\n'}, at_), bytes_.size());
    field = bytes_.substr(at_, end - at_);
    at_ = end;
  }
  if (field.find('\0') != std::string::npos) Fail("has a character that no file of text has");
  if (!IsUtf8(field)) Fail("is not UTF-8; save the file as \"CSV UTF-8\"");
  return FromUtf8(field);
}

std::string CsvReader::QuotedField() {
  std::string field;
  for (++at_;;) {
    const size_t quote = bytes_.find('"', at_);
    if (quote == std::string_view::npos) Fail("the quote that opens here is never closed");
    field += bytes_.substr(at_, quote - at_);
    at_ = quote + 1;
    if (at_ < bytes_.size() && bytes_[at_] == '"') {
      field += '"';
      ++at_;
      continue;
    }
    if (at_ < bytes_.size() && bytes_[at_] != separator_ && !AtLineEnd()) {
      Fail("there is text behind the quote that closes the field");
    }
    return field;
  }
}

}  // namespace rdv::lines
