#include "data/jet/rows/memory_budget.h"

#include <variant>

namespace rdv::jet {
namespace {

// A row of a line takes a dozen times its bytes when all of its columns are fetched; a table of
// nothing but Booleans, which are bits in the file, has a hundred times its bytes and more: the
// first part is for those as long as they are small.
constexpr uint64_t kOfAnyFile = uint64_t{64} << 20;
constexpr uint64_t kTimesTheFile = 64;

uint64_t BytesFor(const FileReader& file) {
  return kOfAnyFile + kTimesTheFile * file.PageCount() * file.Layout().page_size;
}

}  // namespace

MemoryBudget::MemoryBudget(const FileReader& file) : MemoryBudget(file, BytesFor(file)) {}

MemoryBudget MemoryBudget::OfDefinitions(const FileReader& file) {
  return {file, BytesFor(file) / 4};
}

void MemoryBudget::Take(uint64_t bytes) {
  if (bytes > left_) file_->Damaged(u"More is to be kept in memory than the file can stand for");
  left_ -= bytes;
}

size_t HeldBytes(const Value& value) {
  size_t bytes = sizeof value;
  if (const Text* text = std::get_if<Text>(&value)) bytes += text->size() * sizeof(char16_t);
  if (const Binary* binary = std::get_if<Binary>(&value)) bytes += binary->size();
  return bytes;
}

size_t HeldBytes(const std::vector<Value>& row) {
  size_t bytes = sizeof row;
  for (const Value& value : row) bytes += HeldBytes(value);
  return bytes;
}

size_t HeldBytes(const TableDefinition& table) {
  size_t bytes = sizeof table + table.indexes.size() * sizeof(RealIndex) +
                 table.pages.size() * sizeof table.pages.front();
  for (const Column& column : table.columns) {
    const size_t characters =
        column.name.size() + column.default_value.size() + column.validation_rule.size();
    bytes += sizeof column + characters * sizeof(char16_t);
  }
  for (const RealIndex& index : table.indexes) bytes += index.columns.size() * sizeof(IndexColumn);
  for (const LogicalIndex& index : table.logical_indexes)
    bytes += sizeof index + index.name.size() * sizeof(char16_t);
  return bytes;
}

}  // namespace rdv::jet
