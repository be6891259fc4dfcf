#include <algorithm>
#include <array>

#include "data/jet/check/check_parts.h"
#include "data/jet/index/index_key.h"
#include "data/jet/rows/data_page.h"
#include "data/jet/rows/long_value.h"
#include "data/jet/rows/memory_budget.h"
#include "data/jet/rows/row_codec.h"
#include "runtime/error.h"

namespace rdv::jet {
namespace {

Text RowName(const TableDefinition& table, RowId row) {
  return u"row " + Decimal(row.row) + u" of page " + Decimal(row.page) + u", table " + table.name;
}

// One walk over the data pages of a table.
class RowWalk {
 public:
  RowWalk(const FileReader& file, const TableDefinition& table, CheckReport& report)
      : file_(file), table_(table), report_(report), view_(file, table), budget_(file) {
    contents_.keys.resize(table.indexes.size());
    contents_.keyless.resize(table.indexes.size());
  }

  TableContents Run() {
    ForEachDataPage(file_, table_, table_.owned_map, table_.Page(), report_,
                    [&](uint32_t page) { VisitPage(page); });
    for (const auto& [row, visited] : hidden_) {
      if (visited) continue;
      Report(report_,
             {.kind = FindingKind::OrphanRow,
              .page = LoadRowPointer(Key(row).data()).page,
              .table = table_.Page(),
              .position = LoadRowPointer(Key(row).data()).row,
              .text = u"No pointer leads to " + RowName(table_, LoadRowPointer(Key(row).data()))});
    }
    for (auto& keys : contents_.keys) {
      std::ranges::sort(keys, [](const EntryBytes& left, const EntryBytes& right) {
        return CompareEntries(left, right) < 0;
      });
    }
    return std::move(contents_);
  }

 private:
  static std::array<uint8_t, kRowPointerSize> Key(uint32_t packed) {
    std::array<uint8_t, kRowPointerSize> bytes{};
    Store32(bytes.data(), packed);
    return bytes;
  }
  static uint32_t Packed(RowId row) { return row.page << 8 | row.row; }

  void VisitPage(uint32_t number) {
    const Bytes bytes = file_.DataPage(number, table_.Page());
    const DataPageView page(file_, number, bytes);
    size_t lowest = bytes.size();
    for (size_t row = 0; row < page.SlotCount(); ++row) {
      const Slot slot = page.At(row);
      lowest = slot.start;
      const RowId id{number, static_cast<uint8_t>(row)};
      if (slot.Deleted()) continue;
      if (slot.Hidden()) {
        hidden_.try_emplace(Packed(id), false);
      } else if (slot.Pointer()) {
        VisitPointer(id, page.Content(slot));
      } else {
        VisitRow(id, page.Content(slot));
      }
    }
    const size_t free = lowest - (file_.Layout().data.slots + page.SlotCount() * kSlotSize);
    if (Load16(&bytes[kPageFreeBytes]) != free) {
      Report(report_,
             {.kind = FindingKind::FreeBytes,
              .page = number,
              .table = table_.Page(),
              .text = u"Page " + Decimal(number) + u" has " + Decimal(static_cast<int64_t>(free)) +
                      u" free bytes but says " + Decimal(Load16(&bytes[kPageFreeBytes]))});
    }
  }

  void VisitPointer(RowId id, Bytes content) {
    Guarded(
        report_,
        {.kind = FindingKind::LostRow, .page = id.page, .table = table_.Page(), .position = id.row},
        [&] {
          const RowId target = ReadRowPointer(file_, content);
          const std::optional<Bytes> row = FindRow(file_, table_.Page(), id);
          hidden_[Packed(target)] = true;
          VisitRow(id, *row);
        });
  }

  void VisitRow(RowId id, Bytes content) {
    ++contents_.rows;
    Guarded(report_,
            {.kind = FindingKind::DamagedRow,
             .page = id.page,
             .table = table_.Page(),
             .position = id.row},
            [&] {
              view_.Reset(id, content);
              for (const Column& column : table_.columns) VisitField(column);
              for (const RealIndex& index : table_.indexes) CollectKey(index);
            });
  }

  void VisitField(const Column& column) {
    if (column.IsLongValue()) {
      VisitLongValue(column);
      return;
    }
    const Value value = view_.Get(column);
    const int32_t* number = std::get_if<int32_t>(&value);
    if (column.autonumber && number && *number > 0) {
      contents_.largest_autonumber =
          std::max(contents_.largest_autonumber, static_cast<uint32_t>(*number));
    }
  }

  void VisitLongValue(const Column& column) {
    const std::optional<Bytes> field = view_.Field(column);
    if (!field) return;
    Guarded(report_,
            {.kind = FindingKind::DamagedLongValue,
             .page = view_.Id().page,
             .table = table_.Page(),
             .position = view_.Id().row},
            [&] {
              for (const RowId row : LongValueRows(file_, *field)) {
                std::vector<bool>& slots = contents_.long_values[row.page];
                slots.resize(kRowNumbers);
                if (slots[row.row]) file_.DamagedPage(row.page, u"holds a part of two values");
                slots[row.row] = true;
              }
            });
  }

  // Where one key cannot be built, the index as a whole is not compared.
  void CollectKey(const RealIndex& index) {
    if (contents_.keyless[index.position]) return;
    std::optional<jet::Key> key;
    try {
      key = KeyOfRow(file_, table_, index, view_);
    } catch (const RuntimeError&) {
      contents_.keyless[index.position] = true;
    }
    if (!key) return;
    EntryBytes entry = MakeEntry(*key, view_.Id());
    budget_.Take(sizeof entry + entry.size());
    contents_.keys[index.position].push_back(std::move(entry));
  }

  const FileReader& file_;
  const TableDefinition& table_;
  CheckReport& report_;
  RowView view_;
  MemoryBudget budget_;
  TableContents contents_;
  std::unordered_map<uint32_t, bool> hidden_;  // moved rows; whether a pointer leads there
};

void CheckLongValuePage(const FileReader& file, const TableDefinition& table, const Column& column,
                        uint32_t number, const TableContents& contents, CheckReport& report) {
  const DataPageView page(file, number, file.DataPage(number, kOwnerLongValues));
  const auto referred = contents.long_values.find(number);
  for (size_t row = 0; row < page.SlotCount(); ++row) {
    const bool used = referred != contents.long_values.end() && referred->second[row];
    if (page.At(row).Deleted() || used) continue;
    Report(report, {.kind = FindingKind::LeakedLongValue,
                    .page = number,
                    .table = table.Page(),
                    .position = row,
                    .map = column.owned_map,
                    .text = u"No row refers to the long value in row " +
                            Decimal(static_cast<int64_t>(row)) + u" of page " + Decimal(number)});
  }
}

}  // namespace

void ForEachDataPage(const FileReader& file, const TableDefinition& table, RowId map,
                     uint32_t owner, CheckReport& report,
                     const std::function<void(uint32_t)>& visit) {
  for (const uint32_t page : UsageMap(file, map).Pages()) {
    const auto finding = [&](FindingKind kind) {
      return Finding{.kind = kind, .page = page, .table = table.Page(), .map = map};
    };
    Guarded(report, finding(FindingKind::WrongPage), [&] {
      file.DataPage(page, owner);
      Guarded(report, finding(FindingKind::DamagedPage), [&] { visit(page); });
    });
  }
}

TableContents CheckRows(const FileReader& file, const TableDefinition& table, CheckReport& report) {
  return RowWalk(file, table, report).Run();
}

void CheckLongValues(const FileReader& file, const TableDefinition& table,
                     const TableContents& contents, CheckReport& report) {
  for (const Column& column : table.columns) {
    if (!column.IsLongValue() || !column.owned_map) continue;
    ForEachDataPage(file, table, column.owned_map, kOwnerLongValues, report, [&](uint32_t page) {
      CheckLongValuePage(file, table, column, page, contents, report);
    });
  }
}

}  // namespace rdv::jet
