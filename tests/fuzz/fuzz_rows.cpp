// A row of any bytes under a definition of any columns, or the rows of a file of any bytes: both
// ways of reading a field agree, and what was read is written the same way again.
#include "data/jet/catalog/catalog.h"
#include "data/jet/rows/row_codec.h"
#include "data/jet/rows/table_scan.h"
#include "tests/fuzz/fuzz_support.h"

namespace rdv::jet::fuzz {
namespace {

constexpr ColumnType kTypes[] = {ColumnType::Boolean, ColumnType::Byte,   ColumnType::Integer,
                                 ColumnType::Long,    ColumnType::Single, ColumnType::Currency,
                                 ColumnType::Double,  ColumnType::Text,   ColumnType::DateTime,
                                 ColumnType::Binary,  ColumnType::Guid,   ColumnType::Memo,
                                 ColumnType::Numeric, ColumnType::Ole};

TableDefinition DefinitionFrom(Input& input) {
  TableDefinition table;
  table.name = u"Rows";
  const size_t columns = 1 + input.Byte() % 12u;
  uint16_t fixed_end = 0;
  for (size_t i = 0; i < columns; ++i) {
    Column column;
    column.name = u"c" + Decimal(static_cast<int64_t>(i));
    column.type = kTypes[input.Byte() % std::size(kTypes)];
    column.number = table.max_columns++;
    column.length = input.Byte();
    column.compressible = true;
    column.fixed = !column.IsLongValue() && input.Byte() % 2 == 1;
    if (column.type == ColumnType::Boolean) column.fixed = true;
    if (column.fixed) {
      column.fixed_offset = fixed_end;
      fixed_end = static_cast<uint16_t>(fixed_end + FixedSize(column));
    } else {
      column.variable_index = table.variable_columns++;
    }
    table.columns.push_back(column);
  }
  return table;
}

// What raises, raises both ways.
bool ReadField(const RowView& row, const Column& column, Value& value) {
  Text text;
  bool as_value = true;
  bool as_text = true;
  try {
    value = row.Get(column);
  } catch (const RuntimeError& error) {
    RequireGoodError(error);
    as_value = false;
  }
  try {
    row.AppendText(column, text);
  } catch (const RuntimeError& error) {
    RequireGoodError(error);
    as_text = false;
  }
  Require(as_value == as_text, "a field is read in one way and refused in the other");
  const bool plain = column.type != ColumnType::Guid && column.type != ColumnType::Binary &&
                     column.type != ColumnType::Ole;
  if (as_value && plain && !IsNull(value))
    Require(ToText(value) == text, "a field is read differently as text");
  return as_value;
}

void Reencode(const FileReader& file, const TableDefinition& table,
              const std::vector<Value>& values) {
  RowFields fields(table.columns.size());
  std::vector<uint8_t> bytes;
  try {
    for (size_t i = 0; i < values.size(); ++i) {
      if (!table.columns[i].IsLongValue()) fields.Encode(i, table.columns[i], values[i]);
    }
    bytes = EncodeRow(table, fields);
  } catch (const RuntimeError& error) {
    RequireGoodError(error);  // too long for the column or the page
    return;
  }
  RowView again(file, table);
  again.Reset({2, 0}, bytes);
  for (size_t i = 0; i < values.size(); ++i) {
    const Column& column = table.columns[i];
    if (column.IsLongValue()) continue;
    Text before;
    Text after;
    RowFields first(1);
    RowFields second(1);
    first.Encode(0, column, values[i]);
    second.Encode(0, column, again.Get(column));
    Require(first[0].has_value() == second[0].has_value() &&
                (!first[0] || std::ranges::equal(*first[0], *second[0])),
            "a field that was written is read differently");
  }
}

void TryRow(const FileReader& file, const TableDefinition& table, const RowView& row) {
  std::vector<Value> values(table.columns.size());
  bool all = true;
  for (size_t i = 0; i < values.size(); ++i)
    all = ReadField(row, table.columns[i], values[i]) && all;
  if (all && file.Layout().IsJet4()) Reencode(file, table, values);
}

void TryMadeUpRow(const FileReader& file, Input& input) {
  const TableDefinition table = DefinitionFrom(input);
  RowView row(file, table);
  row.Reset({2, 0}, input.Rest());
  TryRow(file, table, row);
}

void TryRows(const FileReader& file) {
  const Catalog catalog(file);
  for (const CatalogObject& object : catalog.All()) {
    if (!object.IsLocalTable()) continue;
    try {
      const TableDefinition table = catalog.Table(object);
      for (TableScan scan(file, table); scan.Next();) TryRow(file, table, scan.Row());
    } catch (const RuntimeError& error) {
      RequireGoodError(error);
    }
  }
}

}  // namespace
}  // namespace rdv::jet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace rdv::jet;
  fuzz::Input input(data, size);
  const uint8_t first = input.Byte();
  if (fuzz::IsWholeFile(first)) {
    fuzz::TryFile(fuzz::RestAsFile(input), fuzz::TryRows);
    return 0;
  }
  Header header;
  header.version = first % 4 == 3 ? Version::Jet3 : Version::Jet4;
  header.code_page = 1252;
  // The long values that a descriptor leads to are those of the sample.
  BufferPageSource pages(fuzz::SampleDatabase(), header.Layout().page_size, rdv::Text(fuzz::kPath));
  try {
    fuzz::TryMadeUpRow(FileReader(pages, header), input);
  } catch (const rdv::RuntimeError& error) {
    fuzz::RequireGoodError(error);
  }
  return 0;
}
