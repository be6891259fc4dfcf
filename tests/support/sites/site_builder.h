// From a site's text to what it holds and to its files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/sites/site_text.h"

namespace rdv::sites {

struct TableContent {
  const jet::TableSpec* spec = nullptr;  // the site's
  // In the order of insertion; nothing for rows that were deleted again.
  std::vector<std::optional<std::vector<Value>>> rows;
};

// Told of everything that the text says, in its order. Rows are numbered by their insertion.
class SiteSink {
 public:
  SiteSink() = default;
  SiteSink(const SiteSink&) = delete;
  SiteSink& operator=(const SiteSink&) = delete;
  virtual ~SiteSink() = default;

  // `given`: positions of the columns that have a value in the text.
  virtual void Insert(size_t table, const std::vector<size_t>& given,
                      const std::vector<Value>& row) = 0;
  virtual void Update(size_t table, size_t row, const std::vector<size_t>& given,
                      const std::vector<Value>& content) = 0;
  virtual void Overwrite(size_t table, size_t row, const std::vector<size_t>& given,
                         const std::vector<Value>& content) = 0;
  virtual void Delete(size_t table, size_t row) = 0;
  virtual void Relate(const jet::RelationshipSpec& spec) = 0;
};

// What the tables hold in the end, as the text says it, without any database. In the order of
// Site::tables. Lives no longer than the site.
std::vector<TableContent> ContentOf(const Site& site, SiteSink* sink = nullptr);

// The rows of one table that are not deleted, in order.
std::vector<std::vector<Value>> RowsOf(const std::vector<TableContent>& content,
                                       std::string_view table);

// The database, made by the engine and then damaged if the text says so.
std::vector<uint8_t> MakeDatabase(const Site& site);

// NewDB.mdb and the folders with the settings files.
void MakeSite(const Site& site, const std::filesystem::path& folder);

}  // namespace rdv::sites
