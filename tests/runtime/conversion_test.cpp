#include "runtime/conversion.h"

#include <gtest/gtest.h>

#include <functional>

#include "runtime/error.h"
#include "runtime/keyed_collection.h"
#include "runtime/value.h"

namespace rdv {
namespace {

int32_t ErrorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const RuntimeError& error) {
    return error.Number();
  }
  return 0;
}

TEST(Conversion, RoundsHalfToEven) {
  EXPECT_EQ(CInt(u"2.5"), 2);
  EXPECT_EQ(CInt(u"3.5"), 4);
  EXPECT_EQ(CInt(u"-2.5"), -2);
  EXPECT_EQ(CLng(u"32767.5"), 32768);
}

TEST(Conversion, TakesTheWholeTextWithBlanksAroundIt) {
  EXPECT_EQ(CInt(u" 12 "), 12);
  EXPECT_EQ(CInt(u"+7"), 7);
  EXPECT_EQ(CInt(u"1e2"), 100);
  EXPECT_EQ(ErrorOf([] { CInt(u"12a"); }), 13);
  EXPECT_EQ(ErrorOf([] { CInt(u""); }), 13);
  EXPECT_EQ(ErrorOf([] { CInt(u"."); }), 13);
}

TEST(Conversion, ChecksTheRange) {
  EXPECT_EQ(CInt(u"-32768"), -32768);
  EXPECT_EQ(ErrorOf([] { CInt(u"32768"); }), 6);
  EXPECT_EQ(ErrorOf([] { CLng(u"2147483648"); }), 6);
  EXPECT_EQ(ErrorOf([] { CDbl(u"1e999"); }), 6);
}

TEST(Value, NullAsNumberIsInvalidUseOfNull) {
  EXPECT_EQ(ErrorOf([] { ToInteger(Value(Null{})); }), 94);
  EXPECT_EQ(ErrorOf([] { ToText(Value(Null{})); }), 94);
  EXPECT_EQ(ToInteger(Value(true)), -1);
  EXPECT_EQ(ToInteger(Value(Text(u"12"))), 12);
}

TEST(Value, DigitsKeepAllDecimals) {
  EXPECT_EQ(ToDigits(Currency{-1}), u"-0.0001");
  EXPECT_EQ(ToDigits(Currency{INT64_MIN}), u"-922337203685477.5808");
  EXPECT_EQ(ToDigits(DecimalNumber{true, 2, {0, 0, 0, 1234}}), u"-12.34");
  EXPECT_EQ(ToDigits(DecimalNumber{false, 0, {0, 0, 1, 0}}), u"4294967296");
}

TEST(KeyedCollection, RefusesATakenKeyAndAMissingOne) {
  KeyedCollection names;
  names.Add(u"Menu", u"1");
  EXPECT_EQ(names.Item(u"1"), u"Menu");
  EXPECT_EQ(ErrorOf([&] { names.Add(u"Queue", u"1"); }), 457);
  EXPECT_EQ(ErrorOf([&] { names.Item(u"2"); }), 5);
  EXPECT_EQ(names.Count(), 1u);
}

}  // namespace
}  // namespace rdv
