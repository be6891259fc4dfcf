// A test in a thread that has OLE, windows to edit in, and nobody to answer message boxes.
#pragma once

#include <gtest/gtest.h>

#include "tests/component/support/editor_stand_ins.h"
#include "tests/component/support/library.h"

namespace rdv::test {

// The thread may have it already: a container that an earlier test loaded (Wine's AtlAxWin) leaves
// it initialised. Each success, of either kind, is given back.
class OleSession {
 public:
  OleSession() : result_(OleInitialize(nullptr)) {}
  OleSession(const OleSession&) = delete;
  OleSession& operator=(const OleSession&) = delete;
  ~OleSession() {
    if (Running()) OleUninitialize();
  }
  bool Running() const { return SUCCEEDED(result_); }

 private:
  const HRESULT result_;
};

// Its members that hold objects are to be emptied in TearDown, or declared after this base: they go
// before the session does.
class OleTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(session_.Running()); }

 private:
  const OleSession session_;
  const EditorStandIns stand_ins_;
  const BoxWatch boxes_;
};

}  // namespace rdv::test
