// A database of things in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "tests/jet/things_table.h"
#include "tests/jet/write_support.h"

namespace rdv::jet::things {

class OnDisk : public testing::Test {
 protected:
  OnDisk() { Create(PathText(path_), kCount, 3000); }

  static std::unique_ptr<Engine> Open(const std::filesystem::path& path,
                                      FileSystem* files = nullptr) {
    return Engine::Open(PathText(path), {.lock_wait = kWaitForOthers, .files = files});
  }
  std::unique_ptr<Engine> Open() const { return Open(path_); }

  static constexpr std::chrono::milliseconds kWaitForOthers{30};
  static constexpr int32_t kCount = 20;
  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_.Path() / "site.mdb";
};

}  // namespace rdv::jet::things
