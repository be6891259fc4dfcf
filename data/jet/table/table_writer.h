// Changes of rows, with everything that follows from them: indexes, long values, counters, and the
// rows of other tables that relationships let change along.
//
// A change is worked out and judged as a whole first, without touching a page; only then it is
// made.
#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "data/jet/file/write_context.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/allocation.h"
#include "data/jet/rows/memory_budget.h"
#include "data/jet/rows/row_codec.h"
#include "data/jet/table/constraints.h"

namespace rdv::jet {

// Serves until the pager's generation changes.
class TableWriter {
 public:
  TableWriter(const WriteContext& context, PageAllocator& allocator, TableSource& tables);

  RowId Insert(const TableDefinition& table, std::span<const Assignment> values);
  void Update(const TableDefinition& table, RowId row, std::span<const Assignment> assignments);
  void Delete(const TableDefinition& table, RowId row);

  // True while pages are being changed; what raises then leaves a part of the change behind.
  bool Changing() const { return changing_; }

 private:
  struct IndexChange {
    const RealIndex* index = nullptr;
    std::optional<Key> removed;
    std::optional<Key> added;
    std::optional<EntryPlace> place;  // of the added one, if nothing else changes the index before
  };
  struct LongValueChange {
    size_t column = 0;
    std::optional<std::vector<uint8_t>> removed;  // the field that leads to the old value
    std::optional<std::vector<uint8_t>> added;    // the new value
  };
  // The end of a relationship that a change follows: its other side is about to get the values.
  struct Followed {
    const RealIndex* index = nullptr;
    const TableDefinition* other = nullptr;

    bool operator==(const Followed&) const = default;
  };
  struct RowChange {
    enum class Kind { Insert, Update, Delete };

    Kind kind = Kind::Insert;
    const TableDefinition* table = nullptr;
    RowId row;
    RowFields fields{0};         // of the new row; long values as place holders
    std::vector<uint8_t> bytes;  // the new row, likewise
    std::vector<Assignment> assignments;
    std::vector<Followed> followed;
    std::vector<IndexChange> indexes;
    std::vector<LongValueChange> long_values;
    uint32_t autonumber = 0;  // 0: none handed out or given

    // As if made anew for a new row, but with the room that there is.
    void BeginInsert(const TableDefinition& into);
    // What it takes in memory.
    size_t HeldBytes() const;
  };
  // All changes of a statement's one: in their order, and by the row.
  class Plan {
   public:
    explicit Plan(const FileReader& file) : budget_(file) {}

    size_t Size() const { return changes_.size(); }
    RowChange& operator[](size_t number) { return changes_[number]; }
    RowChange* Find(const TableDefinition& table, RowId row);
    void Add(RowChange change);
    // In the place of one that is there.
    void Replace(RowChange& planned, RowChange change);
    // Counts rows that relationships have led to. In a sound file each one leads to a row once, and
    // takes some bytes of it to say so.
    void CountFollowed(const FileReader& file, size_t rows);

   private:
    struct HashOfRow {
      size_t operator()(const std::pair<const TableDefinition*, RowId>& row) const;
    };

    std::vector<RowChange> changes_;
    std::unordered_map<std::pair<const TableDefinition*, RowId>, size_t, HashOfRow> by_row_;
    uint64_t followed_ = 0;
    MemoryBudget budget_;
  };
  // What the columns of a new row get: the caller's values and others.
  struct InsertedValues {
    std::vector<const Value*> by_column;
    std::list<Value> own;
  };

  const Relations& RelationsOfTable(const TableDefinition& table);

  // In `insert_`.
  void PrepareInsert(const TableDefinition& table, std::span<const Assignment> values);
  // Nothing when the row has the values already.
  std::optional<RowChange> PrepareUpdate(const TableDefinition& table, RowId row,
                                         std::vector<Assignment> assignments,
                                         std::vector<Followed> followed);
  RowChange PrepareDelete(const TableDefinition& table, RowId row);
  // In `inserted_`.
  void CollectInserted(const TableDefinition& table, std::span<const Assignment> values);
  Value NextAutonumber(const TableDefinition& table, const Column& column) const;
  void PrepareField(RowChange& change, size_t number, const Value& value);

  void PlanUpdate(Plan& plan, const TableDefinition& table, RowId row,
                  std::vector<Assignment> assignments, Followed followed);
  void FollowUpdate(Plan& plan, size_t number);
  void FollowDelete(Plan& plan, size_t number);

  // `value(column)`: what the row is to have. `changed(index)`: whether the index is concerned.
  template <typename ValueOf, typename IsChanged>
  void CheckReferences(const RowChange& change, ValueOf value, IsChanged changed);

  RowId Apply(RowChange& change);
  void StoreLongValues(RowChange& change);
  void ReleaseLongValues(const RowChange& change);
  void UpdateIndexes(RowChange& change, RowId row);
  void UpdateCounters(const RowChange& change);

  RowView RequireRowOf(const TableDefinition& table, RowId row) const;

  const WriteContext& context_;
  PageAllocator& allocator_;
  TableSource& tables_;
  std::unordered_map<uint32_t, Relations> relations_;  // by page of the definition
  bool changing_ = false;
  // Kept from row to row for their room: rows are inserted by the thousand.
  RowChange insert_;
  InsertedValues inserted_;
  std::vector<Value> parts_;
};

}  // namespace rdv::jet
