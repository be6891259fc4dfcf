#include "data/jet/file/database_copy.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "data/jet/file/pager.h"
#include "runtime/error.h"
#include "tests/jet/what_raises.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kShortWait{30};

// The native file system, with an eye on the copy.
class WatchedFileSystem : public FaultyFileSystem {
 public:
  // Called when the name of the copy is looked for: after its making has begun.
  std::function<void()> on_beginning;
  // The copy's disk takes what is written and keeps something else.
  bool forgets = false;

  bool Exists(const Text& path) override {
    if (on_beginning && path.ends_with(u"copy.mdb")) on_beginning();
    return FaultyFileSystem::Exists(path);
  }
  std::unique_ptr<File> Open(const Text& path, FileAccess access) override {
    return Watched(FaultyFileSystem::Open(path, access), access);
  }
  std::unique_ptr<File> OpenBeside(File& model, const Text& path, FileAccess access) override {
    return Watched(FaultyFileSystem::OpenBeside(model, path, access), access);
  }

 private:
  std::unique_ptr<File> Watched(std::unique_ptr<File> file, FileAccess access) const {
    if (!forgets || access != FileAccess::NewDraft) return file;
    return std::make_unique<Forgetful>(std::move(file));
  }

  class Forgetful : public File {
   public:
    explicit Forgetful(std::unique_ptr<File> file) : file_(std::move(file)) {}
    size_t ReadAt(uint64_t offset, std::span<uint8_t> into) override {
      const size_t size = file_->ReadAt(offset, into);
      if (offset == 0 && size > 0) into[size - 1] ^= 1;
      return size;
    }
    void WriteAt(uint64_t offset, Bytes from) override { file_->WriteAt(offset, from); }
    FileStamp Stamp() override { return file_->Stamp(); }
    void Resize(uint64_t size) override { file_->Resize(size); }
    void Flush() override { file_->Flush(); }
    bool TryLock(uint64_t offset, uint64_t length, LockMode mode) override {
      return file_->TryLock(offset, length, mode);
    }
    void Unlock(uint64_t offset, uint64_t length) override { file_->Unlock(offset, length); }
    bool IsLocked(uint64_t offset) override { return file_->IsLocked(offset); }
    bool Bears(const Text& path) override { return file_->Bears(path); }

   private:
    std::unique_ptr<File> file_;
  };
};

class DatabaseCopy : public testing::Test {
 protected:
  void SetUp() override {
    path_ = folder_.Copy(SamplePath("sites/plain/NewDB.mdb"));
    copy_ = folder_.Path() / "copy.mdb";
  }

  void Copy(FileSystem& files = NativeFileSystem()) {
    CopyDatabase(files, PathText(path_), PathText(copy_), kShortWait);
  }
  // As a writer does that has changed nothing yet.
  void CopyHeld(
      FileSystem& files = NativeFileSystem(),
      const std::function<void(const Text&)>& check = [](const Text&) {}) {
    Pager pager(files, PathText(path_), kShortWait, 100);
    pager.BeginWrite();
    try {
      CopyHeldDatabase(files, PathText(path_), PathText(copy_), check);
    } catch (...) {
      pager.Rollback();
      throw;
    }
    pager.Rollback();
  }

  std::ptrdiff_t FileCount() const {
    return std::distance(std::filesystem::directory_iterator(folder_.Path()), {});
  }

  TemporaryFolder folder_;
  std::filesystem::path path_;
  std::filesystem::path copy_;
};

TEST_F(DatabaseCopy, HoldsWhatTheDatabaseHolds) {
  const auto before = ReadWholeFile(path_);
  Copy();
  EXPECT_EQ(ReadWholeFile(copy_), before);
  EXPECT_EQ(ReadWholeFile(path_), before);
  std::filesystem::remove(copy_);
  CopyHeld();
  EXPECT_EQ(ReadWholeFile(copy_), before);
  EXPECT_EQ(ReadWholeFile(path_), before);
  EXPECT_EQ(FileCount(), 2);
}

TEST_F(DatabaseCopy, TakesNoNameThatAFileBears) {
  WriteWholeFile(copy_, std::vector<uint8_t>{1, 2, 3});
  for (const auto& copy : {std::function<void()>([&] { Copy(); }), {[&] { CopyHeld(); }}}) {
    EXPECT_NE(WhatRaises(copy).find("already exists"), std::string::npos) << WhatRaises(copy);
    EXPECT_EQ(ReadWholeFile(copy_).size(), 3u);
  }
}

TEST_F(DatabaseCopy, IsWholeOrLeavesNothingWhateverFails) {
  const auto before = ReadWholeFile(path_);
  int failed = 0;
  for (const Fault fault :
       {Fault::FailingWrite, Fault::ShortWrite, Fault::FailingRead, Fault::FailingFlush}) {
    for (int after = 0;; after += 7) {
      SCOPED_TRACE(after);
      FaultyFileSystem files;
      files.Arm(fault, after);
      const std::string raised = WhatRaises([&] { Copy(files); });
      EXPECT_EQ(ReadWholeFile(path_), before);
      if (raised == "nothing was raised") {
        EXPECT_EQ(ReadWholeFile(copy_), before);
        std::filesystem::remove(copy_);
        break;
      }
      ++failed;
      EXPECT_NE(raised.find("a fault of the test"), std::string::npos) << raised;
      EXPECT_EQ(FileCount(), 1);
      if (fault == Fault::FailingFlush) break;
    }
  }
  EXPECT_GE(failed, 20);
}

TEST_F(DatabaseCopy, IsReadBack) {
  WatchedFileSystem files;
  files.forgets = true;
  for (const auto& copy :
       {std::function<void()>([&] { Copy(files); }), {[&] { CopyHeld(files); }}}) {
    EXPECT_NE(WhatRaises(copy).find("read back"), std::string::npos);
    EXPECT_EQ(FileCount(), 1);
  }
}

TEST_F(DatabaseCopy, HasNoNameUntilItsCheckIsContent) {
  const auto refuse = [&](const Text& draft) {
    EXPECT_FALSE(std::filesystem::exists(copy_));
    EXPECT_EQ(ReadWholeFile(std::filesystem::path(draft)), ReadWholeFile(path_));
    throw std::runtime_error("not content");
  };
  EXPECT_EQ(WhatRaises([&] { CopyHeld(NativeFileSystem(), refuse); }), "not content");
  EXPECT_EQ(FileCount(), 1);
}

TEST_F(DatabaseCopy, LetsOthersReadMeanwhileAndNotWrite) {
  WatchedFileSystem files;
  std::string writing;
  int pages = 0;
  files.on_beginning = [&] {
    Pager other(NativeFileSystem(), PathText(path_), kShortWait, 100);
    other.BeginRead();
    pages += other.Page(1).empty() ? 0 : 1;
    other.EndRead();
    writing = WhatRaises([&] { other.BeginWrite(); });
  };
  Copy(files);
  EXPECT_EQ(pages, 1);
  EXPECT_NE(writing.find("already in use"), std::string::npos) << writing;
  EXPECT_EQ(ReadWholeFile(copy_), ReadWholeFile(path_));
}

// A page that a statement has asked for is not free to it, whatever the map says.
TEST_F(DatabaseCopy, LeavesTheFreeSpaceOfTheStatementThatHoldsItFree) {
  Pager pager(NativeFileSystem(), PathText(path_), kShortWait, 100);
  pager.BeginWrite();
  CopyHeldDatabase(NativeFileSystem(), PathText(path_), PathText(copy_), [](const Text&) {});
  for (uint32_t page = 1; page < pager.PageCount(); ++page) EXPECT_FALSE(pager.AskedFor(page));
  pager.Rollback();
}

TEST_F(DatabaseCopy, LeavesOutWhatADeadWriterLeftHalfDone) {
  const auto pages_of = [](const std::filesystem::path& path) {
    std::vector<uint8_t> bytes = ReadWholeFile(path);
    bytes.erase(bytes.begin(), bytes.begin() + 4096);  // the commit words count on
    return bytes;
  };
  const auto original = ReadWholeFile(path_);
  const auto before = pages_of(path_);
  int half_done = 0;
  for (int writes = 0; writes < 40; ++writes) {
    WriteWholeFile(path_, original);
    FaultyFileSystem files;
    files.Arm(Fault::Death, writes);
    WhatRaises([&] {
      Pager pager(files, PathText(path_), kShortWait, 100);
      pager.BeginWrite();
      for (uint32_t page = 2; page < 8; ++page) pager.Edit(page)[100] ^= 0xFF;
      pager.Commit();
    });
    if (!files.Struck()) break;
    const bool touched = pages_of(path_) != before;
    Copy();
    if (touched && pages_of(copy_) == before) ++half_done;
    EXPECT_EQ(pages_of(copy_), pages_of(path_)) << writes;
    std::filesystem::remove(copy_);
  }
  EXPECT_GE(half_done, 1);
}

}  // namespace
}  // namespace rdv::jet
