// The dump beside a sample database, as the truth that query results are compared with.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "runtime/value.h"
#include "tests/jet/json.h"

namespace rdv::jet::sql {

class SampleTable {
 public:
  using Row = std::vector<Json>;

  SampleTable(const Json& tables, const std::string& name);

  const std::vector<std::string>& Columns() const { return columns_; }
  const std::vector<Row>& Rows() const { return rows_; }

  const Json& Cell(const Row& row, const std::string& column) const;
  // -999 for Null.
  double Number(const Row& row, const std::string& column) const;

 private:
  std::vector<std::string> columns_;
  std::vector<Row> rows_;
};

class SampleDump {
 public:
  // "plain": the folder of the sample site.
  explicit SampleDump(const std::string& site);
  SampleTable Table(const std::string& name) const { return SampleTable(tables_, name); }

 private:
  Json tables_;
};

// Empty when the value is the one that the dump gives for it, else both.
std::string Difference(const Json& expected, const Value& actual);

}  // namespace rdv::jet::sql
