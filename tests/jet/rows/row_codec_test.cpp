#include "data/jet/rows/row_codec.h"

#include <gtest/gtest.h>

#include "data/jet/index/index_key.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"
#include "tests/jet/bytes_of.h"
#include "tests/jet/corpus.h"

namespace rdv::jet {
namespace {

// A file without tables, for rows that come from elsewhere.
class BareFile {
 public:
  explicit BareFile(Version version)
      : pages_(std::vector<uint8_t>(size_t{2} * 4096), version == Version::Jet4 ? 4096u : 2048u,
               u"bare.mdb"),
        reader_(pages_, HeaderOf(version)) {}
  const FileReader& Reader() const { return reader_; }

 private:
  static Header HeaderOf(Version version) {
    Header header;
    header.version = version;
    return header;
  }

  BufferPageSource pages_;
  FileReader reader_;
};

Column Fixed(ColumnType type, uint16_t number, uint16_t offset) {
  Column column;
  column.type = type;
  column.number = number;
  column.fixed = true;
  column.fixed_offset = offset;
  return column;
}

Column Variable(ColumnType type, uint16_t number, uint16_t index, uint16_t length) {
  Column column;
  column.type = type;
  column.number = number;
  column.variable_index = index;
  column.length = length;
  column.compressible = true;
  return column;
}

// Two texts, then a byte, a long, a double, a date, an amount, an integer and a flag.
TableDefinition NineColumns() {
  TableDefinition table;
  table.max_columns = 9;
  table.variable_columns = 2;
  table.columns = {Variable(ColumnType::Text, 0, 0, 100), Variable(ColumnType::Text, 1, 1, 200),
                   Fixed(ColumnType::Byte, 2, 0),         Fixed(ColumnType::Integer, 3, 1),
                   Fixed(ColumnType::Long, 4, 3),         Fixed(ColumnType::Double, 5, 7),
                   Fixed(ColumnType::DateTime, 6, 15),    Fixed(ColumnType::Currency, 7, 23),
                   Fixed(ColumnType::Boolean, 8, 0)};
  return table;
}

std::vector<Value> FieldsOf(const FileReader& file, const TableDefinition& table, Bytes bytes) {
  RowView row(file, table);
  row.Reset({30, 1}, bytes);
  std::vector<Value> values;
  for (const Column& column : table.columns) values.push_back(row.Get(column));
  return values;
}

// A field that is there.
std::vector<uint8_t> Copied(const std::optional<Bytes>& field) {
  return {field.value().begin(), field.value().end()};
}

// The same row as Access stored it in either version; that of Jet 4 has a padding byte.
const std::vector<uint8_t> kRowJet4 = BytesOf(
    "09 00 02 de 00 55 43 de 13 7b 14 ae 47 e1 c8 7b 40 00 00 00 00 40 a7 da 40 b8 88 00 00 00 00 "
    "00 00 ff fe 61 62 63 64 65 66 67 68 00 69 00 6a 00 6b 00 6c 00 6d 00 6e 00 6f 00 70 00 00 00 "
    "3c 00 2a 00 21 00 02 00 ff 01");
const std::vector<uint8_t> kRowJet3 = BytesOf(
    "09 02 de 00 55 43 de 13 7b 14 ae 47 e1 c8 7b 40 00 00 00 00 40 a7 da 40 b8 88 00 00 00 00 00 "
    "00 61 62 63 64 65 66 67 68 69 6a 6b 6c 6d 6e 6f 70 30 27 20 02 ff 01");

const std::vector<Value> kNineValues = {Text(u"abcdefg"), Text(u"hijklmnop"), uint8_t{2},
                                        int16_t{222},     int32_t{333333333}, 444.555,
                                        DateTime{27293},  Currency{35000},    true};

TEST(RowView, ReadsARowOfJet4WithPaddingBehindItsTexts) {
  const BareFile file(Version::Jet4);
  EXPECT_EQ(FieldsOf(file.Reader(), NineColumns(), kRowJet4), kNineValues);
}

TEST(RowView, ReadsTheSameRowOfJet3) {
  const BareFile file(Version::Jet3);
  EXPECT_EQ(FieldsOf(file.Reader(), NineColumns(), kRowJet3), kNineValues);
}

TEST(RowView, WritesFieldsAsTextLikeTheirValues) {
  const BareFile file(Version::Jet4);
  const TableDefinition table = NineColumns();
  RowView row(file.Reader(), table);
  row.Reset({30, 1}, kRowJet4);
  Text text;
  for (const Column& column : table.columns) {
    text += u"|";
    row.AppendText(column, text);
  }
  EXPECT_EQ(text, u"|abcdefg|hijklmnop|2|222|333333333|444.555|27293|3.5|True");
}

TEST(RowView, TakesColumnsAddedLaterForNull) {
  const BareFile file(Version::Jet4);
  TableDefinition table;
  table.max_columns = 10;
  table.variable_columns = 10;
  for (uint16_t i = 0; i < 10; ++i) table.columns.push_back(Variable(ColumnType::Text, i, i, 100));
  const std::vector<Value> values = FieldsOf(
      file.Reader(), table,
      BytesOf("03 00 ff fe 72 6f 77 31 63 6f 6c 31 ff fe 72 6f 77 31 63 6f 6c 32 16 00 16 00 0c 00 "
              "02 00 03 00 03"));
  EXPECT_EQ(values[0], Value(Text(u"row1col1")));
  EXPECT_EQ(values[1], Value(Text(u"row1col2")));
  for (size_t i = 2; i < 10; ++i) EXPECT_TRUE(IsNull(values[i]));
}

TEST(RowView, ReadsARowWrittenBeforeTheFirstVariableColumnWasAdded) {
  const BareFile file(Version::Jet4);
  TableDefinition table;
  table.max_columns = 2;
  table.variable_columns = 1;
  table.columns = {Fixed(ColumnType::Long, 0, 0), Variable(ColumnType::Text, 1, 0, 100)};
  const std::vector<Value> values = FieldsOf(file.Reader(), table, BytesOf("01 00 07 00 00 00 01"));
  EXPECT_EQ(values[0], Value(int32_t{7}));
  EXPECT_TRUE(IsNull(values[1]));
}

TEST(RowView, TellsAnEmptyTextFromNull) {
  const BareFile file(Version::Jet4);
  TableDefinition table;
  table.max_columns = 2;
  table.variable_columns = 2;
  table.columns = {Variable(ColumnType::Text, 0, 0, 100), Variable(ColumnType::Text, 1, 1, 100)};
  RowFields fields(2);
  fields.Set(0, {});
  const std::vector<Value> values = FieldsOf(file.Reader(), table, EncodeRow(table, fields));
  EXPECT_EQ(values[0], Value(Text()));
  EXPECT_TRUE(IsNull(values[1]));
}

TEST(RowView, FollowsTheJumpTableOfALongJet3Row) {
  // 300 bytes in variable column 0, "xyz" in column 1: the offsets from column 1 on are beyond 255.
  const BareFile file(Version::Jet3);
  TableDefinition table;
  table.max_columns = 2;
  table.variable_columns = 2;
  table.columns = {Variable(ColumnType::Text, 0, 0, 255), Variable(ColumnType::Text, 1, 1, 255)};
  std::vector<uint8_t> row = {2};
  row.insert(row.end(), 300, 'a');
  row.insert(row.end(), {'x', 'y', 'z'});
  // End of data and offsets from the last to the first, less 256 behind the jump.
  row.insert(row.end(), {304 - 256, 301 - 256, 1});
  row.push_back(1);  // the jump, before variable column 1
  row.push_back(2);
  row.push_back(0x03);
  const std::vector<Value> values = FieldsOf(file.Reader(), table, row);
  EXPECT_EQ(values[0], Value(Text(300, u'a')));
  EXPECT_EQ(values[1], Value(Text(u"xyz")));
}

TEST(RowView, ReadsAnInlineMemoWhoseTextIsCompressed) {
  const BareFile file(Version::Jet4);
  TableDefinition table;
  table.max_columns = 1;
  table.variable_columns = 1;
  table.columns = {Variable(ColumnType::Memo, 0, 0, 0)};
  RowFields memo(1);
  memo.Set(0, BytesOf("0b 00 00 80 00 00 00 00 00 00 00 00 ff fe 73 6f 6d 65 20 64 61 74 61"));
  EXPECT_EQ(FieldsOf(file.Reader(), table, EncodeRow(table, memo))[0], Value(Text(u"some data")));
}

TEST(RowView, RefusesARowThatIsCutOffAnywhere) {
  for (const Version version : {Version::Jet4, Version::Jet3}) {
    const BareFile file(version);
    const TableDefinition table = NineColumns();
    const std::vector<uint8_t>& whole = version == Version::Jet4 ? kRowJet4 : kRowJet3;
    for (size_t size = 0; size < whole.size(); ++size) {
      try {
        FieldsOf(file.Reader(), table, Bytes(whole).first(size));
      } catch (const RuntimeError& error) {
        EXPECT_NE(error.Description().find(u"'bare.mdb'"), Text::npos);
      }
    }
    EXPECT_THROW(FieldsOf(file.Reader(), table, {}), RuntimeError);
    EXPECT_THROW(FieldsOf(file.Reader(), table, Bytes(whole).first(10)), RuntimeError);
  }
}

TEST(EncodeText, CompressesWhatIsWorthIt) {
  EXPECT_EQ(EncodeText(u"abc", true), BytesOf("ff fe 61 62 63"));
  EXPECT_EQ(EncodeText(u"ab", true), BytesOf("61 00 62 00"));
  EXPECT_EQ(EncodeText(u"abc", false), BytesOf("61 00 62 00 63 00"));
  EXPECT_EQ(EncodeText(u"a\u0416c", true), BytesOf("61 00 16 04 63 00"));
  EXPECT_EQ(EncodeText(TextView(u"a\0c", 3), true), BytesOf("61 00 00 00 63 00"));
  EXPECT_EQ(EncodeText(u"", true), std::vector<uint8_t>());
}

TEST(EncodeText, RefusesTheMarkOfACompressedText) {
  EXPECT_THROW(EncodeText(u"\uFEFFabc", true), RuntimeError);
}

TEST(DecodeText, ReadsRunsOfBothKinds) {
  const BareFile file(Version::Jet4);
  EXPECT_EQ(file.Reader().DecodeText(BytesOf("ff fe 61 62 00 16 04 17 04 00 63 64")),
            u"ab\u0416\u0417cd");
}

TEST(RowFields, RefuseWhatDoesNotFitTheColumn) {
  const Column column = Variable(ColumnType::Text, 0, 0, 10);
  RowFields fields(1);
  fields.Encode(0, column, Text(u"12345"));
  EXPECT_TRUE(fields[0]);
  EXPECT_THROW(fields.Encode(0, column, Text(u"123456")), RuntimeError);
  EXPECT_THROW(fields.Encode(0, column, int32_t{5}), RuntimeError);
  fields.Encode(0, column, Null());
  EXPECT_FALSE(fields[0]);
}

TEST(RowFields, KeepEachFieldWhenAnotherIsSetAgain) {
  const Column column = Variable(ColumnType::Text, 0, 0, 100);
  RowFields fields(2);
  fields.Encode(0, column, Text(u"abc"));
  fields.Encode(1, column, Text(u"defg"));
  fields.Encode(0, column, Text(u"a longer text"));
  EXPECT_EQ(Copied(fields[0]), EncodeText(u"a longer text", true));
  EXPECT_EQ(Copied(fields[1]), EncodeText(u"defg", true));
  fields.SetNull(0);
  EXPECT_FALSE(fields[0]);
  EXPECT_EQ(Copied(fields[1]), EncodeText(u"defg", true));
}

TEST(RowFields, StoreADecimalNumberHighWordFirst) {
  Column column = Fixed(ColumnType::Numeric, 0, 0);
  column.scale = 2;
  DecimalNumber number;
  number.scale = 2;
  number.magnitude = {0, 0, 0, 1234};
  RowFields fields(1);
  fields.Encode(0, column, number);
  EXPECT_EQ(Copied(fields[0]), BytesOf("00 00000000 00000000 00000000 D2040000"));
}

// A definition may put a Boolean anywhere, also behind the variable columns that there are.
TEST(EncodeRow, KeepsABooleanInItsBitOnly) {
  TableDefinition table;
  table.max_columns = 2;
  table.variable_columns = 1;
  table.columns = {Variable(ColumnType::Text, 0, 0, 100),
                   Variable(ColumnType::Boolean, 1, 60000, 0)};
  RowFields fields(2);
  fields.Encode(0, table.columns[0], Text(u"abc"));
  fields.Encode(1, table.columns[1], true);
  const std::vector<uint8_t> row = EncodeRow(table, fields);
  EXPECT_EQ(row.size(), 2u + 5u + 2u * 3u + 1u);
  const BareFile file(Version::Jet4);
  RowView view(file.Reader(), table);
  view.Reset({}, row);
  EXPECT_EQ(view.Get(table.columns[0]), Value(Text(u"abc")));
  EXPECT_EQ(view.Get(table.columns[1]), Value(true));
}

TEST(EncodeRow, RefusesARowLargerThanAPage) {
  TableDefinition table;
  table.max_columns = 9;
  table.variable_columns = 9;
  RowFields fields(9);
  for (uint16_t i = 0; i < 9; ++i) {
    table.columns.push_back(Variable(ColumnType::Text, i, i, 510));
    fields.Set(i, std::vector<uint8_t>(510));
  }
  EXPECT_THROW(EncodeRow(table, fields), RuntimeError);
}

// Field by field, what is read is written the same way again: the texts of real files are
// compressed exactly where this engine would compress them.
class RowsOfFile : public testing::TestWithParam<std::string> {};

TEST_P(RowsOfFile, AreEncodedAsTheyAreStored) {
  OpenFile file(GetParam());
  const Catalog catalog(file.Reader());
  size_t fields = 0;
  for (const CatalogObject& object : catalog.All()) {
    if (!object.IsLocalTable()) continue;
    const TableDefinition table = catalog.Table(object);
    for (TableScan scan(file.Reader(), table); scan.Next();) {
      for (const Column& column : table.columns) {
        const auto stored = scan.Row().Field(column);
        if (!stored || column.IsLongValue() || column.type == ColumnType{0x11}) continue;
        RowFields encoded(1);
        encoded.Encode(0, column, scan.Row().Get(column));
        ASSERT_TRUE(encoded[0]);
        EXPECT_EQ(Copied(encoded[0]), Copied(stored))
            << ToUtf8(table.name) << "." << ToUtf8(column.name);
        ++fields;
      }
    }
  }
  EXPECT_GT(fields, 0u);
}

INSTANTIATE_TEST_SUITE_P(Jet4, RowsOfFile, testing::ValuesIn(Jet4Files()),
                         [](const auto& file) { return TestName(file.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RowsOfFile);

}  // namespace
}  // namespace rdv::jet
