#include "data/recordset.h"

#include <gtest/gtest.h>

#include <functional>

#include "runtime/error.h"

namespace rdv {
namespace {

RowTable TwoRows() {
  return {{u"ID", u"English_Name"}, {{int16_t{1}, Text(u"Ring")}, {int16_t{2}, Null{}}}};
}

// "number description", and the source as all errors of recordsets have it.
std::string ErrorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Source(), u"ADODB.Recordset");
    return std::to_string(error.Number()) + " " + ToUtf8(error.Description());
  }
  return "no error";
}

constexpr char kClosed[] = "3704 Operation is not allowed when the object is closed.";
constexpr char kNoRecord[] =
    "3021 Either BOF or EOF is True, or the current record has been deleted. Requested operation "
    "requires a current record.";

TEST(Recordset, IsWalkedFromTheFirstRowToTheEndOfFile) {
  Recordset recordset;
  recordset.Open(TwoRows());
  EXPECT_FALSE(recordset.EndOfFile());
  EXPECT_EQ(recordset.Field(u"ID"), Value(int16_t{1}));
  recordset.MoveNext();
  EXPECT_EQ(recordset.Field(u"ID"), Value(int16_t{2}));
  EXPECT_EQ(recordset.Field(u"English_Name"), Value(Null{}));
  recordset.MoveNext();
  EXPECT_TRUE(recordset.EndOfFile());
}

TEST(Recordset, FindsFieldsWithoutRegardToCase) {
  Recordset recordset;
  recordset.Open(TwoRows());
  EXPECT_EQ(recordset.Field(u"english_NAME"), Value(Text(u"Ring")));
}

TEST(Recordset, MovesToItsLastRow) {
  Recordset recordset;
  recordset.Open(TwoRows());
  recordset.MoveLast();
  EXPECT_EQ(recordset.Field(u"ID"), Value(int16_t{2}));
}

TEST(Recordset, RaisesForAFieldThatIsNoColumn) {
  Recordset recordset;
  recordset.Open(TwoRows());
  EXPECT_EQ(ErrorOf([&] { recordset.Field(u"Name"); }),
            "3265 Item cannot be found in the collection corresponding to the requested name or "
            "ordinal.");
}

TEST(Recordset, RaisesWhereThereIsNoCurrentRow) {
  Recordset recordset;
  recordset.Open({{u"ID"}, {}});
  EXPECT_TRUE(recordset.EndOfFile());
  EXPECT_EQ(ErrorOf([&] { recordset.Field(u"ID"); }), kNoRecord);
  EXPECT_EQ(ErrorOf([&] { recordset.MoveNext(); }), kNoRecord);
  EXPECT_EQ(ErrorOf([&] { recordset.MoveLast(); }), kNoRecord);
}

TEST(Recordset, RaisesWhenItIsClosed) {
  Recordset recordset;
  EXPECT_FALSE(recordset.IsOpen());
  EXPECT_EQ(ErrorOf([&] { recordset.EndOfFile(); }), kClosed);
  EXPECT_EQ(ErrorOf([&] { recordset.MoveNext(); }), kClosed);
  EXPECT_EQ(ErrorOf([&] { recordset.MoveLast(); }), kClosed);
  EXPECT_EQ(ErrorOf([&] { recordset.Field(u"ID"); }), kClosed);
  EXPECT_EQ(ErrorOf([&] { recordset.Close(); }), kClosed);
}

TEST(Recordset, OpensAgainOnItsFirstRowAfterItWasClosed) {
  Recordset recordset;
  recordset.Open(TwoRows());
  recordset.MoveNext();
  EXPECT_EQ(ErrorOf([&] { recordset.Open(TwoRows()); }),
            "3705 Operation is not allowed when the object is open.");
  recordset.Close();
  recordset.Open(TwoRows());
  EXPECT_EQ(recordset.Field(u"ID"), Value(int16_t{1}));
}

}  // namespace
}  // namespace rdv
