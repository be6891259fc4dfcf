// A site of its own for each test: a copy of one of the sample sites, which the data folder lookup
// finds for as long as the test runs.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "data/folders_and_files.h"
#include "data/jet/sql/jet_connection.h"
#include "runtime/text.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"

namespace rdv::test {

class Site : public SiteFiles {
 public:
  explicit Site(std::string_view database, std::string_view settings = "plain/ini-china")
      : SiteFiles(database, settings), found_(Folder().u16string()) {}

  // Runs a statement in the form of the stored commands on the site's database.
  // NOLINTNEXTLINE(readability-convert-member-functions-to-static): this site is found
  RowTable Execute(TextView statement, const std::vector<Argument>& arguments = {}) const {
    const auto connection = jet::OpenJetConnection(GetDatabaseFolder() + u"NewDB.mdb");
    return connection->Execute(statement, arguments).rows.value_or(RowTable{});
  }

 private:
  const SiteFolder found_;
};

// A test that works on a sample site.
class SiteTest : public ::testing::Test {
 protected:
  Site& UseSite(std::string_view database, std::string_view settings = "plain/ini-china") {
    return site_.emplace(database, settings);
  }
  Site& CurrentSite() { return site_.value(); }

 private:
  std::optional<Site> site_;
};

}  // namespace rdv::test
