// Tests of files that other programs have written. There are as many of them as there are such
// files at hand; FilesOfOthers.AreAtHand, which each suite with such tests has, names those that
// are not.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <vector>

#include "tests/support/sites/sample_sites.h"

namespace rdv::test {

inline std::set<std::string>& MissingFiles() {
  static std::set<std::string> missing;
  return missing;
}

// Those of the names (see SamplePath) that are at hand.
inline std::vector<std::string> AtHand(std::vector<std::string> names) {
  std::erase_if(names, [](const std::string& name) {
    if (sites::IsAtHand(name)) return false;
    MissingFiles().insert(name);
    return true;
  });
  return names;
}

// The same for trials that each have a file.
template <typename Trial>
std::vector<Trial> TrialsAtHand(std::vector<Trial> trials, const char* Trial::*file) {
  std::erase_if(trials, [&](const Trial& trial) { return AtHand({trial.*file}).empty(); });
  return trials;
}

// A name that a parameterized test may bear.
inline std::string TestNameOf(std::string file) {
  for (char& character : file) {
    if (std::isalnum(static_cast<unsigned char>(character)) == 0) character = '_';
  }
  return file;
}

// Begins a test that needs one foreign file: RDV_TEST_ON_FILE(Fixture, WhatIsProved, "corpus/...").
// Inside, GetParam() is the file's name.
#define RDV_TEST_ON_FILE(fixture, what, file)                                                   \
  class what : public fixture, public testing::WithParamInterface<std::string> {};              \
  INSTANTIATE_TEST_SUITE_P(File, what, testing::ValuesIn(rdv::test::AtHand({file})),            \
                           [](const auto& name) { return rdv::test::TestNameOf(name.param); }); \
  GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(what);                                          \
  TEST_P(what, IsSo)

// To be put into one source of a suite.
#define RDV_TELL_MISSING_FILES()                                                         \
  TEST(FilesOfOthers, AreAtHand) {                                                       \
    std::string missing;                                                                 \
    for (const std::string& name : rdv::test::MissingFiles()) missing += " " + name;     \
    if (!missing.empty())                                                                \
      GTEST_SKIP() << "tests that need files of other programs are left out:" + missing; \
  }

}  // namespace rdv::test
