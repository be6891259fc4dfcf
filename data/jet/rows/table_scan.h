// The rows of a table: all of them in the order of storage, or one by its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/row_codec.h"
#include "data/jet/rows/usage_map.h"

namespace rdv::jet {

// All rows: pages ascending, rows by slot; a row that was moved stands where its pointer is.
// Reads each page once, takes no memory per row, and gives pages back as it goes on: a row's bytes
// are there until the next row is asked for.
class TableScan {
 public:
  // `table` must outlive the scan.
  TableScan(const FileReader& file, const TableDefinition& table);

  // Rows that certainly have another value in the column are passed over from now on, without a
  // look at the rest of them, where that is easily seen: in fixed columns of whole numbers. Not
  // every row that is left has the value. Replaces what was said of another column.
  void SkipOtherThan(const Column& column, const Value& value);

  // False at the end.
  bool Next();
  const RowView& Row() const { return row_; }

 private:
  bool NextPage();
  bool NextSlot();  // that is worth a look, of any page
  void LookAhead();

  const FileReader* file_;
  const TableDefinition* table_;
  UsageMap map_;
  RowView row_;
  std::optional<DataPageView> page_;
  uint32_t page_number_ = 0;
  std::vector<uint32_t> pages_;  // the current one and some that follow
  size_t place_ = 0;             // of the current one there
  size_t slot_ = 0;
  size_t skip_at_ = 0;  // where a row has the number's bytes
  uint32_t skip_number_ = 0;
  uint32_t skip_mask_ = 0;  // of the bits that count
};

// Points `row` at a row; false when there is no such row (any more).
bool FetchRow(const FileReader& file, const TableDefinition& table, RowId id, RowView& row);

}  // namespace rdv::jet
