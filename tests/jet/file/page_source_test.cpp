#include "data/jet/file/page_source.h"

#include <gtest/gtest.h>

#include "runtime/error.h"

namespace rdv::jet {
namespace {

TEST(BufferPageSource, GivesWholePagesAndRefusesOthersByNameOfTheFile) {
  std::vector<uint8_t> bytes(2048 * 2 + 100, 7);
  bytes[2048] = 9;
  BufferPageSource source(std::move(bytes), 2048, u"some.mdb");
  EXPECT_EQ(source.PageCount(), 2u);
  EXPECT_EQ(source.Page(1).size(), 2048u);
  EXPECT_EQ(source.Page(1)[0], 9);
  try {
    source.Page(2);
    FAIL() << "a page outside the file was given";
  } catch (const RuntimeError& error) {
    EXPECT_NE(error.Description().find(u"'some.mdb'"), Text::npos);
    EXPECT_NE(error.Description().find(u"Page 2"), Text::npos);
    EXPECT_EQ(error.Source(), u"Microsoft JET Database Engine");
  }
}

}  // namespace
}  // namespace rdv::jet
