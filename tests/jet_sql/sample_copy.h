// A copy of a sample database that a test may write to.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "data/jet/sql/jet_connection.h"
#include "runtime/error.h"
#include "tests/support/site_fixture.h"

namespace rdv::jet::sql {

inline constexpr char kMismatch[] = "Data type mismatch in criteria expression.";
inline constexpr char kMissingParameter[] = "No value given for one or more required parameters.";

class SampleCopyTest : public testing::Test {
 protected:
  void SetUp() override { Use("sites/plain/NewDB.mdb"); }

  // A name of sample_sites.h.
  void Use(const std::string& name) {
    connection_.reset();
    const auto source = sites::SamplePath(name);
    path_ = folder_.Path() / "copy.mdb";
    std::filesystem::copy_file(source, path_, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(path_, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
    Reopen();
  }

  void Reopen() {
    connection_.reset();
    connection_ = OpenJetConnection(FromUtf8(path_.string()));
  }

  std::vector<std::vector<Value>> Query(TextView statement,
                                        const std::vector<Argument>& arguments = {}) {
    return connection_->Execute(statement, arguments).rows.value().rows;
  }

  // The first column.
  std::vector<Value> Column(TextView statement, const std::vector<Argument>& arguments = {}) {
    std::vector<Value> values;
    for (auto& row : Query(statement, arguments)) values.push_back(std::move(row.at(0)));
    return values;
  }

  int Change(TextView statement, const std::vector<Argument>& arguments = {}) {
    return connection_->Execute(statement, arguments).rows_written;
  }

  std::string ErrorOf(TextView statement, const std::vector<Argument>& arguments = {}) {
    try {
      connection_->Execute(statement, arguments);
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
    return "no error";
  }

  rdv::test::TemporaryFolder folder_;
  std::filesystem::path path_;
  std::unique_ptr<Connection> connection_;
};

// The values of a column of 16-bit numbers.
inline std::vector<Value> Integers(std::initializer_list<int16_t> numbers) {
  return std::vector<Value>(numbers.begin(), numbers.end());
}

}  // namespace rdv::jet::sql
