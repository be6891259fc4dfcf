#include "data/connection_route.h"

#include <gtest/gtest.h>

namespace rdv {
namespace {

TEST(ConnectionRoute, GivesAProviderThePathAsOneValueWhateverItHolds) {
  constexpr TextView kBegin = u"Provider=First;Data Source=";
  const auto given = [&](TextView path) {
    return ForProvider(Text(kBegin) + Text(path), u"Second");
  };
  EXPECT_EQ(given(u"C:\\Sites\\NewDB.mdb"),
            u"Provider=Second;Data Source=\"C:\\Sites\\NewDB.mdb\"");
  EXPECT_EQ(given(u"C:\\a;Mode=Read\\NewDB.mdb"),
            u"Provider=Second;Data Source=\"C:\\a;Mode=Read\\NewDB.mdb\"");
  EXPECT_EQ(given(u"a\";Mode=Read;\""), u"Provider=Second;Data Source=\"a\"\";Mode=Read;\"\"\"");
}

}  // namespace
}  // namespace rdv
