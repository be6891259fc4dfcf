// What a process leaves that dies while it has a database of things open.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/jet/things_table.h"
#include "tests/jet/write_support.h"

namespace rdv::jet::things {

inline std::filesystem::path JournalOf(const std::filesystem::path& path) {
  return path.string() + "-journal";
}

// It ends in the middle of a statement, after `writes` writes of it.
inline void DieWriting(const std::filesystem::path& path, int writes) {
  FaultyFileSystem files;
  const auto engine =
      Engine::Open(PathText(path), {.lock_wait = std::chrono::milliseconds(30), .files = &files});
  files.Arm(Fault::Death, writes);
  WhatRaises([&] { Insert(*engine, 1000, 20000); });
  ASSERT_TRUE(files.Struck());
}

// It ends between two statements, of which the first inserts row 1000: a journal stays.
inline void DieBetweenStatements(const std::filesystem::path& path) {
  FaultyFileSystem files;
  const auto engine =
      Engine::Open(PathText(path), {.lock_wait = std::chrono::milliseconds(30), .files = &files});
  Insert(*engine, 1000);
  files.Arm(Fault::DeathBefore, 0);
  WhatRaises([&] { Insert(*engine, 1001); });
  ASSERT_TRUE(files.Struck());
  ASSERT_TRUE(std::filesystem::exists(JournalOf(path)));
}

}  // namespace rdv::jet::things
