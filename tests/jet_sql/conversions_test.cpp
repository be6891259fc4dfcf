#include "data/jet/sql/conversions.h"

#include <gtest/gtest.h>

#include "data/jet/format/errors.h"
#include "data/jet/sql/date_text.h"
#include "data/jet/sql/value_order.h"
#include "runtime/error.h"

namespace rdv::jet::sql {
namespace {

Column OfType(ColumnType type, uint8_t precision = 0, uint8_t scale = 0) {
  Column column;
  column.type = type;
  column.precision = precision;
  column.scale = scale;
  return column;
}

Value Converted(ColumnType type, TextView text) {
  return ToColumn(OfType(type), Argument(Text(text)));
}

ErrorNumber ErrorOf(const Column& column, TextView text) {
  try {
    ToColumn(column, Argument(Text(text)));
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Source(), kEngineSource);
    return static_cast<ErrorNumber>(error.Number());
  }
  ADD_FAILURE() << ToUtf8(text) << " was converted";
  return ErrorNumber::General;
}

ErrorNumber ErrorOf(ColumnType type, TextView text) {
  return ErrorOf(OfType(type), text);
}

DecimalNumber Decimals(uint32_t low, uint8_t scale, bool negative = false) {
  DecimalNumber number;
  number.negative = negative;
  number.scale = scale;
  number.magnitude = {0, 0, 0, low};
  return number;
}

TEST(Conversions, RoundWholeNumbersHalfToEven) {
  EXPECT_EQ(Converted(ColumnType::Integer, u"12"), Value(int16_t{12}));
  EXPECT_EQ(Converted(ColumnType::Integer, u" -12 "), Value(int16_t{-12}));
  EXPECT_EQ(Converted(ColumnType::Integer, u"2.5"), Value(int16_t{2}));
  EXPECT_EQ(Converted(ColumnType::Integer, u"3.5"), Value(int16_t{4}));
  EXPECT_EQ(Converted(ColumnType::Integer, u"2.50001"), Value(int16_t{3}));
  EXPECT_EQ(Converted(ColumnType::Integer, u"0.5"), Value(int16_t{0}));
  EXPECT_EQ(Converted(ColumnType::Integer, u"0.51"), Value(int16_t{1}));
  EXPECT_EQ(Converted(ColumnType::Integer, u"-1.5e1"), Value(int16_t{-15}));
  EXPECT_EQ(Converted(ColumnType::Long, u"1E5"), Value(int32_t{100000}));
  EXPECT_EQ(Converted(ColumnType::Byte, u"255"), Value(uint8_t{255}));
}

// A few digits take a short way, which blanks around them keep them from.
TEST(Conversions, GiveTheSameForAFewDigitsAloneAndBetweenBlanks) {
  for (const ColumnType type : {ColumnType::Integer, ColumnType::Long, ColumnType::Byte}) {
    for (int number = 0; number <= 255; ++number) {
      const std::string digits = std::to_string(number);
      for (const std::string& text : {digits, "0" + digits, "00" + digits.substr(0, 2)}) {
        const Text alone(text.begin(), text.end());
        EXPECT_EQ(Converted(type, alone), Converted(type, u" " + alone + u" ")) << text;
      }
    }
  }
  for (int number = 0; number < 32768; number += 7) {
    const std::string digits = std::to_string(number);
    const Text alone(digits.begin(), digits.end());
    EXPECT_EQ(Converted(ColumnType::Integer, alone), Value(static_cast<int16_t>(number)));
    EXPECT_EQ(Converted(ColumnType::Long, alone), Value(int32_t{number}));
  }
}

TEST(Conversions, OverflowOutsideTheRangeOfWholeNumbers) {
  EXPECT_EQ(Converted(ColumnType::Integer, u"32767.4"), Value(int16_t{32767}));
  EXPECT_EQ(Converted(ColumnType::Integer, u"-32768"), Value(int16_t{-32768}));
  for (const TextView text : {u"32768", u"-32769", u"1e300", u"1e999999999", u"32767.5"})
    EXPECT_EQ(ErrorOf(ColumnType::Integer, text), ErrorNumber::OutOfRange) << ToUtf8(text);
  EXPECT_EQ(ErrorOf(ColumnType::Byte, u"256"), ErrorNumber::OutOfRange);
  EXPECT_EQ(ErrorOf(ColumnType::Byte, u"-1"), ErrorNumber::OutOfRange);
  EXPECT_EQ(Converted(ColumnType::Byte, u"-0.4"), Value(uint8_t{0}));
  EXPECT_EQ(Converted(ColumnType::Long, u"-2147483648"), Value(int32_t{INT32_MIN}));
  EXPECT_EQ(ErrorOf(ColumnType::Long, u"2147483648"), ErrorNumber::OutOfRange);
}

TEST(Conversions, RefuseTextsThatAreNoNumber) {
  for (const ColumnType type :
       {ColumnType::Byte, ColumnType::Integer, ColumnType::Long, ColumnType::Currency,
        ColumnType::Single, ColumnType::Double, ColumnType::Numeric, ColumnType::Boolean,
        ColumnType::DateTime, ColumnType::Guid}) {
    for (const TextView text : {u"", u" ", u"N/A", u"1x", u"--1", u"1e", u".", u"1,5"})
      EXPECT_EQ(ErrorOf(type, text), ErrorNumber::TypeMismatch) << ToUtf8(text);
  }
}

TEST(Conversions, KeepCurrencyExactToFourDecimals) {
  EXPECT_EQ(Converted(ColumnType::Currency, u"922337203685477.5807"), Value(Currency{INT64_MAX}));
  EXPECT_EQ(Converted(ColumnType::Currency, u"-922337203685477.5808"), Value(Currency{INT64_MIN}));
  EXPECT_EQ(ErrorOf(ColumnType::Currency, u"922337203685477.5808"), ErrorNumber::OutOfRange);
  EXPECT_EQ(Converted(ColumnType::Currency, u"0.00005"), Value(Currency{0}));
  EXPECT_EQ(Converted(ColumnType::Currency, u"0.00015"), Value(Currency{2}));
}

TEST(Conversions, RoundToTheScaleAndKeepThePrecisionOfNumeric) {
  const Column column = OfType(ColumnType::Numeric, 5, 2);
  EXPECT_EQ(ToColumn(column, Argument(u"-123.455")), Value(Decimals(12346, 2, true)));
  EXPECT_EQ(ToColumn(column, Argument(u"999.99")), Value(Decimals(99999, 2)));
  EXPECT_EQ(ErrorOf(column, u"999.995"), ErrorNumber::OutOfRange);
  EXPECT_EQ(ErrorOf(column, u"1000"), ErrorNumber::OutOfRange);
  EXPECT_EQ(ToColumn(column, Argument(u"-0.001")), Value(Decimals(0, 2)));
}

TEST(Conversions, ReadRealNumbersToTheNearestOfTheirWidth) {
  EXPECT_EQ(Converted(ColumnType::Single, u"0.1"), Value(0.1f));
  EXPECT_EQ(Converted(ColumnType::Double, u"0.1"), Value(0.1));
  EXPECT_EQ(Converted(ColumnType::Double, u"1.5d3"), Value(1500.0));
  EXPECT_EQ(Converted(ColumnType::Single, u"-1e-60"), Value(0.0f));
  EXPECT_EQ(ErrorOf(ColumnType::Single, u"1e39"), ErrorNumber::OutOfRange);
  EXPECT_EQ(ErrorOf(ColumnType::Double, u"-1e309"), ErrorNumber::OutOfRange);
}

TEST(Conversions, ReadBooleansFromWordsAndNumbers) {
  EXPECT_EQ(Converted(ColumnType::Boolean, u"true"), Value(true));
  EXPECT_EQ(Converted(ColumnType::Boolean, u"False"), Value(false));
  EXPECT_EQ(Converted(ColumnType::Boolean, u"-1"), Value(true));
  EXPECT_EQ(Converted(ColumnType::Boolean, u"0.2"), Value(true));
  EXPECT_EQ(Converted(ColumnType::Boolean, u"0"), Value(false));
  EXPECT_EQ(ToColumn(OfType(ColumnType::Boolean), Argument()), Value(false));
}

TEST(Conversions, ReadDates) {
  const std::pair<TextView, double> dates[] = {{u"1899-12-30", 0},
                                               {u"2011-03-14", 40616},
                                               {u"3/14/2011", 40616},
                                               {u"14/3/2011", 40616},
                                               {u"3/14/11", 40616},
                                               {u"3/14/1999 6:00 PM", 36233.75},
                                               {u"2011-03-14 12:00", 40616.5},
                                               {u"2011-03-14T18:00:00", 40616.75},
                                               {u"12:00 AM", 0},
                                               {u"06:00", 0.25},
                                               {u"1899-12-29 06:00", -1.25},
                                               {u"40616.5", 40616.5},
                                               {u"0100-01-01", -657434},
                                               {u"9999-12-31", 2958465}};
  for (const auto& [text, days] : dates)
    EXPECT_EQ(Converted(ColumnType::DateTime, text), Value(DateTime{days})) << ToUtf8(text);
  for (const TextView text : {u"2011-02-29", u"2011-13-01", u"2011-3", u"3/14/2011 25:00",
                              u"13:00 PM", u"0099-01-01", u"2011-03-14 x", u"2011/03-14"})
    EXPECT_EQ(ErrorOf(ColumnType::DateTime, text), ErrorNumber::TypeMismatch) << ToUtf8(text);
  EXPECT_EQ(ErrorOf(ColumnType::DateTime, u"2958466"), ErrorNumber::OutOfRange);
}

TEST(Conversions, ReadGuidsWithAndWithoutBraces) {
  const Guid guid{{0x78, 0x56, 0x34, 0x12, 0xBC, 0x9A, 0xF0, 0xDE, 1, 2, 3, 4, 5, 6, 7, 8}};
  EXPECT_EQ(Converted(ColumnType::Guid, u"{12345678-9ABC-DEF0-0102-030405060708}"), Value(guid));
  EXPECT_EQ(Converted(ColumnType::Guid, u"12345678-9abc-def0-0102-030405060708"), Value(guid));
  EXPECT_EQ(ErrorOf(ColumnType::Guid, u"{12345678-9ABC-DEF0-0102-03040506070G}"),
            ErrorNumber::TypeMismatch);
}

TEST(Conversions, KeepTextsAsTheyAreAndTellNullFromEmpty) {
  EXPECT_EQ(Converted(ColumnType::Text, u" a "), Value(Text(u" a ")));
  EXPECT_EQ(Converted(ColumnType::Memo, u""), Value(Text()));
  EXPECT_EQ(ToColumn(OfType(ColumnType::Text), Argument()), Value(Null{}));
  EXPECT_EQ(ToColumn(OfType(ColumnType::Integer), Argument()), Value(Null{}));
  EXPECT_EQ(Converted(ColumnType::Binary, u"A\u0416"), Value(Binary{0x41, 0, 0x16, 0x04}));
}

TEST(Conversions, TakeOverValuesOfOtherColumns) {
  const Column integer = OfType(ColumnType::Integer);
  EXPECT_EQ(ToColumn(integer, Value(int32_t{7})), Value(int16_t{7}));
  EXPECT_EQ(ToColumn(integer, Value(true)), Value(int16_t{-1}));
  EXPECT_EQ(ToColumn(integer, Value(2.5)), Value(int16_t{2}));
  EXPECT_EQ(ToColumn(integer, Value(Decimals(75, 1))), Value(int16_t{8}));
  EXPECT_EQ(ToColumn(OfType(ColumnType::Text), Value(int16_t{-3})), Value(Text(u"-3")));
  EXPECT_EQ(ToColumn(OfType(ColumnType::Boolean), Value(Null{})), Value(false));
  EXPECT_THROW(ToColumn(integer, Value(Binary{1})), RuntimeError);
}

TEST(SearchValues, AreBeyondAllRowsOutsideTheRange) {
  const Column integer = OfType(ColumnType::Integer);
  EXPECT_EQ(ToSearchValue(integer, Argument(u"32768")).beyond, 1);
  EXPECT_EQ(ToSearchValue(integer, Argument(u"-1e99")).beyond, -1);
  EXPECT_FALSE(ToSearchValue(integer, Argument(u"32768")).Exists());
  EXPECT_FALSE(ToSearchValue(integer, Argument()).Exists());
  EXPECT_TRUE(ToSearchValue(integer, Argument(u"7")).Exists());
  EXPECT_THROW(ToSearchValue(integer, Argument(u"seven")), RuntimeError);
}

TEST(SearchValues, NeedLiteralsOfTheColumnsKind) {
  const Column integer = OfType(ColumnType::Integer);
  const Column text = OfType(ColumnType::Text);
  EXPECT_THROW(ToSearchValue(integer, Literal{LiteralKind::Text, u"1"}), RuntimeError);
  EXPECT_THROW(ToSearchValue(text, Literal{LiteralKind::Number, u"1"}), RuntimeError);
  EXPECT_TRUE(ToSearchValue(integer, Literal{LiteralKind::Boolean, u"-1"}).Exists());
  EXPECT_TRUE(ToSearchValue(text, Literal{LiteralKind::Text, u"1"}).Exists());
}

TEST(ValueOrder, ComparesByTheKindOfValue) {
  EXPECT_LT(CompareValues(Value(int16_t{-1}), Value(int16_t{1})), 0);
  EXPECT_LT(CompareValues(Value(true), Value(false)), 0);
  EXPECT_EQ(CompareValues(Value(Text(u"ABC")), Value(Text(u"abc  "))), 0);
  EXPECT_LT(CompareValues(Value(Text(u"a")), Value(Text(u"B"))), 0);
  EXPECT_GT(CompareValues(Value(Decimals(5, 1, true)), Value(Decimals(6, 1, true))), 0);
  EXPECT_EQ(CompareValues(Value(Decimals(0, 1, true)), Value(Decimals(0, 1))), 0);
  EXPECT_LT(CompareValues(Value(Binary{1}), Value(Binary{1, 0})), 0);
  EXPECT_EQ(CompareValues(Value(0.0), Value(-0.0)), 0);
  EXPECT_GT(CompareValues(Value(int32_t{3}), Value(2.5)), 0);
  EXPECT_THROW(CompareValues(Value(Text(u"1")), Value(int16_t{1})), RuntimeError);
}

TEST(ValueOrder, PutsNullFirst) {
  EXPECT_LT(CompareForOrder(Value(Null{}), Value(Text())), 0);
  EXPECT_GT(CompareForOrder(Value(int16_t{-5}), Value(Null{})), 0);
  EXPECT_EQ(CompareForOrder(Value(Null{}), Value(Null{})), 0);
}

TEST(ValueOrder, ComparesGuidsAsTheyAreWritten) {
  const Value small = Converted(ColumnType::Guid, u"{00000001-0000-0000-0000-0000000000FF}");
  const Value large = Converted(ColumnType::Guid, u"{00000100-0000-0000-0000-000000000000}");
  EXPECT_LT(CompareValues(small, large), 0);
}

}  // namespace
}  // namespace rdv::jet::sql
