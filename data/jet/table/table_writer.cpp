#include "data/jet/table/table_writer.h"

#include <algorithm>
#include <cassert>
#include <random>

#include "data/jet/file/write_context.h"
#include "data/jet/format/errors.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_writer.h"
#include "data/jet/rows/long_value_writer.h"
#include "data/jet/rows/row_store.h"
#include "data/jet/rows/table_scan.h"
#include "data/jet/table/default_value.h"
#include "runtime/error.h"

namespace rdv::jet {
namespace {

RowStore RowsOf(const WriteContext& context, PageAllocator& allocator,
                const TableDefinition& table) {
  return RowStore(context, allocator, table.Page(), table.owned_map, table.free_map);
}

template <typename ValueOf>
std::vector<Value> IndexValues(const RealIndex& index, ValueOf value) {
  std::vector<Value> values;
  values.reserve(index.columns.size());
  for (const IndexColumn& part : index.columns) values.push_back(value(part.column));
  return values;
}

std::vector<uint8_t> Copy(Bytes bytes) {
  return {bytes.begin(), bytes.end()};
}

Guid NewGuid() {
  std::random_device random;
  Guid guid;
  for (size_t i = 0; i < guid.bytes.size(); i += sizeof(uint32_t))
    Store32(&guid.bytes[i], random());
  // Marked as a random one.
  guid.bytes[7] = static_cast<uint8_t>((guid.bytes[7] & 0x0F) | 0x40);
  guid.bytes[8] = static_cast<uint8_t>((guid.bytes[8] & 0x3F) | 0x80);
  return guid;
}

}  // namespace

TableWriter::TableWriter(const WriteContext& context, PageAllocator& allocator, TableSource& tables)
    : context_(context), allocator_(allocator), tables_(tables) {}

const Relations& TableWriter::RelationsOfTable(const TableDefinition& table) {
  const auto known = relations_.find(table.Page());
  if (known != relations_.end()) return known->second;
  return relations_.emplace(table.Page(), RelationsOf(tables_, table)).first->second;
}

RowView TableWriter::RequireRowOf(const TableDefinition& table, RowId row) const {
  RowView view(context_.file, table);
  if (!FetchRow(context_.file, table, row, view))
    RaiseEngineError(ErrorNumber::General, u"Record is deleted.");
  return view;
}

// --- What callers ask for ---

RowId TableWriter::Insert(const TableDefinition& table, std::span<const Assignment> values) {
  PrepareInsert(table, values);
  changing_ = true;
  const RowId row = Apply(insert_);
  changing_ = false;
  return row;
}

void TableWriter::Update(const TableDefinition& table, RowId row,
                         std::span<const Assignment> assignments) {
  Plan plan(context_.file);
  PlanUpdate(plan, table, row, {assignments.begin(), assignments.end()}, {});
  for (size_t i = 0; i < plan.Size(); ++i) FollowUpdate(plan, i);
  changing_ = true;
  for (size_t i = 0; i < plan.Size(); ++i) Apply(plan[i]);
  changing_ = false;
}

void TableWriter::Delete(const TableDefinition& table, RowId row) {
  Plan plan(context_.file);
  plan.Add(PrepareDelete(table, row));
  for (size_t i = 0; i < plan.Size(); ++i) FollowDelete(plan, i);
  changing_ = true;
  for (size_t i = 0; i < plan.Size(); ++i) Apply(plan[i]);
  changing_ = false;
}

// --- Working out and judging ---

void TableWriter::RowChange::BeginInsert(const TableDefinition& into) {
  table = &into;
  row = {};
  fields.Reset(into.columns.size());
  indexes.clear();
  long_values.clear();
  autonumber = 0;
}

size_t TableWriter::RowChange::HeldBytes() const {
  const auto size_of = [](const auto& part) { return part ? part->size() : 0; };
  size_t held =
      sizeof *this + fields.HeldBytes() + bytes.size() + sizeof(Followed) * followed.size();
  for (const Assignment& assignment : assignments)
    held += sizeof assignment.column + jet::HeldBytes(assignment.value);
  for (const IndexChange& index : indexes)
    held += sizeof index + size_of(index.removed) + size_of(index.added);
  for (const LongValueChange& value : long_values)
    held += sizeof value + size_of(value.removed) + size_of(value.added);
  return held;
}

void TableWriter::PrepareInsert(const TableDefinition& table, std::span<const Assignment> values) {
  RowChange& change = insert_;
  change.BeginInsert(table);
  CollectInserted(table, values);
  const auto value = [&](size_t column) -> const Value& { return *inserted_.by_column[column]; };
  for (size_t i = 0; i < table.columns.size(); ++i) {
    CheckField(table, table.columns[i], value(i));
    PrepareField(change, i, value(i));
  }
  EncodeRow(table, change.fields, change.bytes);
  for (const RealIndex& index : table.indexes) {
    parts_.resize(index.columns.size());
    for (size_t i = 0; i < parts_.size(); ++i) parts_[i] = value(index.columns[i].column);
    std::optional<Key> key = CheckedKey(context_.file, table, index, parts_);
    if (!key) continue;
    const auto place = CheckUnique(context_.file, table, index, *key, parts_, {});
    change.indexes.push_back({&index, std::nullopt, std::move(key), place});
  }
  CheckReferences(change, value, [](const RealIndex&) { return true; });
}

void TableWriter::CollectInserted(const TableDefinition& table,
                                  std::span<const Assignment> values) {
  InsertedValues& row = inserted_;
  row.by_column.assign(table.columns.size(), nullptr);
  row.own.clear();
  for (const Assignment& assignment : values)
    row.by_column.at(assignment.column) = &assignment.value;
  for (size_t i = 0; i < row.by_column.size(); ++i) {
    const Column& column = table.columns[i];
    const Value*& value = row.by_column[i];
    const bool is_null = value == nullptr || IsNull(*value);
    if (column.autonumber && is_null) {
      value = &row.own.emplace_back(NextAutonumber(table, column));
    } else if (value == nullptr || (column.type == ColumnType::Boolean && is_null)) {
      value = &row.own.emplace_back(DefaultValue(column));
    }
    const int32_t* number = std::get_if<int32_t>(value);
    if (column.autonumber && number && *number > 0)
      insert_.autonumber = static_cast<uint32_t>(*number);
  }
}

Value TableWriter::NextAutonumber(const TableDefinition& table, const Column& column) const {
  if (column.type == ColumnType::Guid) return NewGuid();
  const auto& layout = context_.Layout().definition;
  const uint8_t* page = context_.file.Page(table.Page(), PageType::Definition).data();
  const uint32_t increment = std::max(table.autonumber_increment, 1u);
  return static_cast<int32_t>(Load32(page + layout.last_autonumber) + increment);
}

void TableWriter::PrepareField(RowChange& change, size_t number, const Value& value) {
  const Column& column = change.table->columns[number];
  if (!column.IsLongValue()) {
    change.fields.Encode(number, column, value);
    return;
  }
  LongValueChange long_value;
  long_value.column = number;
  if (const auto old = change.fields[number]) long_value.removed = Copy(*old);
  change.fields.SetNull(number);
  if (!IsNull(value)) {
    long_value.added = EncodeLongValue(context_.Layout(), column, value);
    const LongValueWriter writer(context_, allocator_, column);
    change.fields.Set(number, std::vector<uint8_t>(writer.FieldSize(*long_value.added)));
  }
  change.long_values.push_back(std::move(long_value));
}

std::optional<TableWriter::RowChange> TableWriter::PrepareUpdate(
    const TableDefinition& table, RowId row, std::vector<Assignment> assignments,
    std::vector<Followed> followed) {
  const RowView view = RequireRowOf(table, row);
  RowChange change;
  change.kind = RowChange::Kind::Update;
  change.table = &table;
  change.row = row;
  change.followed = std::move(followed);
  std::vector<const Value*> assigned(table.columns.size(), nullptr);
  change.assignments = std::move(assignments);
  for (Assignment& assignment : change.assignments) {
    const Column& column = table.columns.at(assignment.column);
    if (column.type == ColumnType::Boolean && IsNull(assignment.value)) assignment.value = false;
    assigned[assignment.column] = nullptr;
    if (view.Holds(column, assignment.value)) continue;
    CheckField(table, column, assignment.value);
    assigned[assignment.column] = &assignment.value;
    const int32_t* number = std::get_if<int32_t>(&assignment.value);
    if (column.autonumber && number && *number > 0)
      change.autonumber = std::max(change.autonumber, static_cast<uint32_t>(*number));
  }
  if (std::ranges::none_of(assigned, [](const Value* value) { return value != nullptr; }))
    return std::nullopt;

  change.fields = RowFields(table.columns.size());
  for (size_t i = 0; i < table.columns.size(); ++i) {
    if (const auto field = view.Field(table.columns[i])) change.fields.Set(i, *field);
    if (assigned[i]) PrepareField(change, i, *assigned[i]);
  }
  change.bytes = EncodeRow(table, change.fields);

  const auto old_value = [&](size_t column) { return view.Get(table.columns[column]); };
  const auto new_value = [&](size_t column) {
    return assigned[column] ? *assigned[column] : old_value(column);
  };
  const auto changed = [&](const RealIndex& index) {
    return std::ranges::any_of(
        index.columns, [&](const IndexColumn& part) { return assigned[part.column] != nullptr; });
  };
  for (const RealIndex& index : table.indexes) {
    if (!changed(index)) continue;
    const std::vector<Value> parts = IndexValues(index, new_value);
    std::optional<Key> added = CheckedKey(context_.file, table, index, parts);
    std::optional<Key> removed = StoredKeyOfRow(context_.file, table, index, view);
    if (added == removed) continue;
    if (added) CheckUnique(context_.file, table, index, *added, parts, row);
    change.indexes.push_back({&index, std::move(removed), std::move(added), std::nullopt});
  }
  CheckReferences(change, new_value, changed);
  return change;
}

TableWriter::RowChange TableWriter::PrepareDelete(const TableDefinition& table, RowId row) {
  const RowView view = RequireRowOf(table, row);
  RowChange change;
  change.kind = RowChange::Kind::Delete;
  change.table = &table;
  change.row = row;
  for (const RealIndex& index : table.indexes) {
    if (auto key = StoredKeyOfRow(context_.file, table, index, view))
      change.indexes.push_back({&index, std::move(key), std::nullopt, std::nullopt});
  }
  for (size_t i = 0; i < table.columns.size(); ++i) {
    if (!table.columns[i].IsLongValue()) continue;
    if (const auto field = view.Field(table.columns[i]))
      change.long_values.push_back({i, Copy(*field), std::nullopt});
  }
  return change;
}

template <typename ValueOf, typename IsChanged>
void TableWriter::CheckReferences(const RowChange& change, ValueOf value, IsChanged changed) {
  for (const Relation& relation : RelationsOfTable(*change.table).refers_to) {
    const bool follows = std::ranges::any_of(change.followed, [&](const Followed& followed) {
      return followed.index == relation.own_index && followed.other == relation.other;
    });
    if (follows || !changed(*relation.own_index)) continue;
    const std::vector<Value> values = IndexValues(*relation.own_index, value);
    if (AnyNull(values)) continue;
    // A row may refer to itself.
    if (relation.other == change.table && IndexValues(*relation.other_index, value) == values)
      continue;
    const Key key = BuildKey(context_.file, *relation.other, *relation.other_index, values);
    if (!HasKey(context_.file, *relation.other, *relation.other_index, key))
      RaiseRelatedRecordRequired(relation.other->name);
  }
}

// --- What relationships make follow ---

size_t TableWriter::Plan::HashOfRow::operator()(
    const std::pair<const TableDefinition*, RowId>& row) const {
  return std::hash<uint64_t>()(uint64_t{row.first->Page()} << 32 | row.second.page << 8 |
                               row.second.row);
}

TableWriter::RowChange* TableWriter::Plan::Find(const TableDefinition& table, RowId row) {
  const auto found = by_row_.find({&table, row});
  return found == by_row_.end() ? nullptr : &changes_[found->second];
}

void TableWriter::Plan::Add(RowChange change) {
  budget_.Take(change.HeldBytes());
  by_row_.emplace(std::pair(change.table, change.row), changes_.size());
  changes_.push_back(std::move(change));
}

void TableWriter::Plan::Replace(RowChange& planned, RowChange change) {
  budget_.Take(change.HeldBytes());
  planned = std::move(change);
}

void TableWriter::Plan::CountFollowed(const FileReader& file, size_t rows) {
  followed_ += rows;
  if (followed_ > uint64_t{file.PageCount()} * file.Layout().page_size)
    file.Damaged(u"Relationships lead to more rows than the file has");
}

void TableWriter::PlanUpdate(Plan& plan, const TableDefinition& table, RowId row,
                             std::vector<Assignment> assignments, Followed followed) {
  std::vector<Followed> all_followed;
  if (followed.index) all_followed.push_back(followed);
  RowChange* planned = plan.Find(table, row);
  if (planned == nullptr) {
    auto change = PrepareUpdate(table, row, std::move(assignments), std::move(all_followed));
    if (change) plan.Add(std::move(*change));
    return;
  }
  // The row changes for more than one reason: once, with all the values, the latest of each column.
  for (const Assignment& before : planned->assignments) {
    const bool again =
        std::ranges::find(assignments, before.column, &Assignment::column) != assignments.end();
    if (!again) assignments.push_back(before);
  }
  for (const Followed& before : planned->followed) {
    if (std::ranges::find(all_followed, before) == all_followed.end())
      all_followed.push_back(before);
  }
  auto change = PrepareUpdate(table, row, std::move(assignments), std::move(all_followed));
  if (change) plan.Replace(*planned, std::move(*change));
}

void TableWriter::FollowUpdate(Plan& plan, size_t number) {
  const TableDefinition& table = *plan[number].table;
  for (const Relation& relation : RelationsOfTable(table).referenced_by) {
    const RowChange& change = plan[number];
    const bool concerned = std::ranges::any_of(change.indexes, [&](const IndexChange& index) {
      return index.index == relation.own_index;
    });
    if (!concerned) continue;
    const RowView view = RequireRowOf(table, change.row);
    const auto old_value = [&](size_t column) { return view.Get(table.columns[column]); };
    const auto new_value = [&](size_t column) {
      Value value = old_value(column);
      for (const Assignment& assignment : change.assignments) {
        if (assignment.column == column) value = assignment.value;
      }
      return value;
    };
    const std::vector<Value> old_values = IndexValues(*relation.own_index, old_value);
    const std::vector<RowId> rows = RowsReferringTo(context_.file, relation, old_values);
    plan.CountFollowed(context_.file, rows.size());
    if (rows.empty()) continue;
    if (!relation.cascade_updates) RaiseRelatedRecordsExist(relation.other->name);
    std::vector<Assignment> assignments;
    for (size_t i = 0; i < old_values.size(); ++i) {
      assignments.push_back({relation.other_index->columns[i].column,
                             new_value(relation.own_index->columns[i].column)});
    }
    for (const RowId row : rows)
      PlanUpdate(plan, *relation.other, row, assignments, {relation.other_index, &table});
  }
}

void TableWriter::FollowDelete(Plan& plan, size_t number) {
  const TableDefinition& table = *plan[number].table;
  for (const Relation& relation : RelationsOfTable(table).referenced_by) {
    const RowView view = RequireRowOf(table, plan[number].row);
    const std::vector<Value> values = IndexValues(
        *relation.own_index, [&](size_t column) { return view.Get(table.columns[column]); });
    const std::vector<RowId> rows = RowsReferringTo(context_.file, relation, values);
    plan.CountFollowed(context_.file, rows.size());
    for (const RowId row : rows) {
      if (plan.Find(*relation.other, row)) continue;
      if (!relation.cascade_deletes) RaiseRelatedRecordsExist(relation.other->name);
      plan.Add(PrepareDelete(*relation.other, row));
    }
  }
}

// --- Making the change ---

RowId TableWriter::Apply(RowChange& change) {
  assert(changing_ && !change.bytes.empty() == (change.kind != RowChange::Kind::Delete));
  assert((change.kind == RowChange::Kind::Insert) == !change.row);
  RowStore rows = RowsOf(context_, allocator_, *change.table);
  StoreLongValues(change);
  switch (change.kind) {
    case RowChange::Kind::Insert:
      change.row = rows.Insert(change.bytes);
      break;
    case RowChange::Kind::Update:
      rows.Replace(change.row, change.bytes);
      break;
    case RowChange::Kind::Delete:
      rows.Remove(change.row);
      break;
  }
  assert(change.row);
  UpdateIndexes(change, change.row);
  ReleaseLongValues(change);
  UpdateCounters(change);
  return change.row;
}

void TableWriter::StoreLongValues(RowChange& change) {
  bool stored = false;
  for (const LongValueChange& value : change.long_values) {
    if (!value.added) continue;
    assert(change.table->columns[value.column].IsLongValue());
    LongValueWriter writer(context_, allocator_, change.table->columns[value.column]);
    change.fields.Set(value.column, writer.Store(*value.added));
    stored = true;
  }
  if (stored) change.bytes = EncodeRow(*change.table, change.fields);
}

void TableWriter::ReleaseLongValues(const RowChange& change) {
  for (const LongValueChange& value : change.long_values) {
    if (!value.removed) continue;
    LongValueWriter writer(context_, allocator_, change.table->columns[value.column]);
    writer.Release(*value.removed);
  }
}

void TableWriter::UpdateIndexes(RowChange& change, RowId row) {
  for (IndexChange& entry : change.indexes) {
    // Else its pages would take in the entries of another table's rows.
    assert(entry.index->position < change.table->indexes.size() &&
           &change.table->indexes[entry.index->position] == entry.index);
    IndexWriter writer(context_, allocator_, change.table->Page(), *entry.index);
    if (entry.removed) writer.Remove(*entry.removed, row);
    if (entry.added) writer.Insert(std::move(*entry.added), row, entry.place);
  }
}

void TableWriter::UpdateCounters(const RowChange& change) {
  if (change.kind == RowChange::Kind::Update && change.autonumber == 0) return;
  const auto& layout = context_.Layout().definition;
  context_.file.Page(change.table->Page(), PageType::Definition);
  uint8_t* page = context_.pager.Edit(change.table->Page());
  const uint32_t count = Load32(page + layout.row_count);
  if (change.kind == RowChange::Kind::Insert) Store32(page + layout.row_count, count + 1);
  if (change.kind == RowChange::Kind::Delete && count > 0)
    Store32(page + layout.row_count, count - 1);
  if (change.autonumber > Load32(page + layout.last_autonumber))
    Store32(page + layout.last_autonumber, change.autonumber);
}

}  // namespace rdv::jet
