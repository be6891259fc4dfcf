// What is left of a creation that failed or died, and what creations do to each other.
#include <gtest/gtest.h>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/check/check.h"
#include "data/jet/engine.h"
#include "data/jet/format/errors.h"
#include "runtime/error.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

const TableSpec kOneColumn = {
    .name = u"Things", .columns = {{.name = u"ID", .type = ColumnType::Long}}, .indexes = {}};

void AddThings(Engine& engine) {
  Engine::WriteScope scope(engine);
  engine.CreateTable(kOneColumn);
  scope.Commit();
}

class CreationFailure : public testing::Test {
 protected:
  // Whether it came to its end.
  bool Create(FileSystem& files) {
    try {
      Engine::Create(PathText(path_), {.files = &files}, AddThings);
      return true;
    } catch (const RuntimeError&) {
      return false;
    }
  }

  // What refuses it.
  std::string ErrorOfCreation() {
    try {
      Engine::Create(PathText(path_));
      return "no error";
    } catch (const RuntimeError& error) {
      return ToUtf8(error.Description());
    }
  }

  // A whole database with its table is in place.
  void ExpectWhole() {
    const auto engine = Engine::Open(PathText(path_));
    const Engine::ReadScope scope(*engine);
    EXPECT_EQ(engine->UserTableNames(), std::vector<Text>{u"Things"});
    EXPECT_TRUE(CheckFile(engine->File()).Clean());
  }

  std::vector<std::string> NamesInFolder() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path()))
      names.push_back(entry.path().filename().string());
    return names;
  }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_.Path() / "made.mdb";
};

TEST_F(CreationFailure, DeathLeavesNoDatabaseAndNothingInTheWayOfTheNext) {
  int deaths = 0;
  for (bool done = false; !done && !HasFailure(); ++deaths) {
    SCOPED_TRACE(deaths);
    FaultyFileSystem files;
    files.Arm(Fault::Death, deaths);
    done = Create(files) && !files.Struck();
    // Only the last removals come after it has its place.
    if (std::filesystem::exists(path_)) {
      ExpectWhole();
    } else {
      for (const std::string& name : NamesInFolder())
        EXPECT_NE(std::filesystem::path(name).extension(), ".mdb") << name;
      EXPECT_TRUE(Create(NativeFileSystem()));
      ExpectWhole();
      EXPECT_EQ(NamesInFolder(), std::vector<std::string>{"made.mdb"});
    }
    std::filesystem::remove(path_);
  }
  EXPECT_GT(deaths, 10);
}

TEST_F(CreationFailure, AFailureOfAnyWriteRemovesWhatWasMade) {
  int failures = 0;
  for (int writes = 0;; ++writes) {
    SCOPED_TRACE(writes);
    FaultyFileSystem files;
    files.Arm(Fault::ShortWrite, writes);
    const bool done = Create(files);
    if (!files.Struck()) break;
    if (done) {
      // A failure to remove the journal is none of the creation's.
      ExpectWhole();
      std::filesystem::remove(path_);
    } else {
      ++failures;
      ASSERT_EQ(NamesInFolder(), std::vector<std::string>());
    }
  }
  EXPECT_GT(failures, 10);
}

TEST_F(CreationFailure, AFillingThatFailsLeavesNothing) {
  const auto fail = [](Engine& engine) {
    AddThings(engine);
    throw std::runtime_error("a failure of the test");
  };
  EXPECT_THROW(Engine::Create(PathText(path_), {}, fail), std::runtime_error);
  EXPECT_EQ(NamesInFolder(), std::vector<std::string>());
}

TEST_F(CreationFailure, AnotherOneAtTheSameTimeIsRefusedAndDisturbsNothing) {
  std::string error;
  Engine::Create(PathText(path_), {}, [&](Engine& engine) {
    error = ErrorOfCreation();
    AddThings(engine);
  });
  EXPECT_EQ(error, "Could not use '" + path_.string() + "'; file already in use.");
  ExpectWhole();
}

TEST_F(CreationFailure, AFileThatTakesTheNameInTheMeantimeIsKept) {
  const std::vector<uint8_t> other = {1, 2, 3};
  const auto take_name = [&](Engine&) { WriteWholeFile(path_, other); };
  EXPECT_THROW(Engine::Create(PathText(path_), {}, take_name), RuntimeError);
  EXPECT_EQ(ReadWholeFile(path_), other);
  EXPECT_EQ(NamesInFolder(), std::vector<std::string>{"made.mdb"});
  EXPECT_EQ(ErrorOfCreation(), "Database '" + path_.string() + "' already exists.");
}

TEST_F(CreationFailure, AFolderThatIsNotThereIsNamed) {
  path_ = folder_.Path() / "none" / "made.mdb";
  EXPECT_EQ(ErrorOfCreation().substr(0, path_.string().size() + 1), "'" + path_.string());
}

TEST_F(CreationFailure, RenamingTakesNoNameThatIsTaken) {
  const auto other = folder_.Path() / "other";
  WriteWholeFile(path_, std::vector<uint8_t>{1});
  WriteWholeFile(other, std::vector<uint8_t>{2});
  FileSystem& files = NativeFileSystem();
  try {
    files.Rename(PathText(other), PathText(path_));
    ADD_FAILURE() << "renamed";
  } catch (const FileError& error) {
    EXPECT_EQ(error.Problem(), FileProblem::Exists);
  }
  EXPECT_EQ(ReadWholeFile(path_), std::vector<uint8_t>{1});
  EXPECT_EQ(ReadWholeFile(other), std::vector<uint8_t>{2});
  std::filesystem::remove(path_);
  files.Rename(PathText(other), PathText(path_));
  EXPECT_EQ(ReadWholeFile(path_), std::vector<uint8_t>{2});
  EXPECT_FALSE(std::filesystem::exists(other));
}

}  // namespace
}  // namespace rdv::jet
