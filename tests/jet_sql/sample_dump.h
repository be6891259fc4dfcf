// What a sample database holds, as the truth that query results are compared with: as its text says
// it, or the dump beside it where another program has made it.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "runtime/value.h"
#include "tests/jet/dump/json.h"

namespace rdv::jet::sql {

class SampleTable {
 public:
  using Cell = std::variant<Json, Value>;
  using Row = std::vector<Cell>;

  SampleTable(std::vector<std::string> columns, std::vector<Row> rows)
      : columns_(std::move(columns)), rows_(std::move(rows)) {}

  const std::vector<std::string>& Columns() const { return columns_; }
  const std::vector<Row>& Rows() const { return rows_; }

  const Cell& At(const Row& row, const std::string& column) const;
  // -999 for Null.
  double Number(const Row& row, const std::string& column) const;

 private:
  std::vector<std::string> columns_;
  std::vector<Row> rows_;
};

class SampleDump {
 public:
  // "sites/plain" or "foreign/plain".
  explicit SampleDump(const std::string& site);
  SampleTable Table(const std::string& name) const;

 private:
  std::map<std::string, SampleTable> tables_;
};

// Empty when the value is the one that the dump gives for it, else both.
std::string Difference(const SampleTable::Cell& expected, const Value& actual);

}  // namespace rdv::jet::sql
