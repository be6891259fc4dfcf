// The keys of index entries: bytes whose order is that of the values.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/row_codec.h"
#include "runtime/value.h"

namespace rdv::jet {

using Key = std::vector<uint8_t>;

// Two entries with keys of this size fit a page, which every split of it relies on.
inline constexpr size_t kLongestKey = 1800;

// Appends one column's part of a key. `value` has the column's own type or is Null; another type
// raises a mismatch. Raises for a
// text with a character that the sort order's table does not know, and for files whose sort order
// is not the general one.
void AppendKeyPart(const FileReader& file, const Column& column, bool descending,
                   const Value& value, Key& key);

// The key of the leading columns of an index that `values` gives, in the order of the index's
// columns; of all of them, the whole key. Raises as AppendKeyPart does, and for what is longer than
// kLongestKey.
Key BuildKey(const FileReader& file, const TableDefinition& table, const RealIndex& index,
             std::span<const Value> values);

// As BuildKey, but nothing where BuildKey would raise for the text: for searches, which can do
// without the index.
std::optional<Key> TryBuildKey(const FileReader& file, const TableDefinition& table,
                               const RealIndex& index, std::span<const Value> values);

// The row's fields that an index is made of, in the order of the index's columns.
std::vector<Value> IndexValuesOfRow(const TableDefinition& table, const RealIndex& index,
                                    const RowView& row);

bool AnyNull(std::span<const Value> values);
bool AllNull(std::span<const Value> values);

// Whether a row with these values has an entry: an index that ignores Nulls has none for a row
// whose columns are all Null.
bool HasEntry(const RealIndex& index, std::span<const Value> values);

// The key of a row, nothing when the row has no entry. Raises as BuildKey does; see StoredKeyOfRow
// for rows that another program has stored.
std::optional<Key> KeyOfRow(const FileReader& file, const TableDefinition& table,
                            const RealIndex& index, const RowView& row);

// The text's part of a key, from the flag to the terminator. Nothing when a character is not
// known, which is then stored in `unsupported`.
bool AppendTextKeyJet4(TextView text, bool descending, Key& key, char16_t& unsupported);
void AppendTextKeyJet3(TextView text, bool descending, Key& key);

// How Jet compares texts: without regard to case, accents only where the letters are equal,
// hyphens and apostrophes last; trailing blanks do not count. Characters that the sort order's
// table does not know come after all others, by number. The whole texts count, of which an index
// knows kMaxTextUnits only. Negative, zero or positive.
int CompareTexts(TextView left, TextView right);

}  // namespace rdv::jet
