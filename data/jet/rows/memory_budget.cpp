#include "data/jet/rows/memory_budget.h"

#include <variant>

namespace rdv::jet {
namespace {

// A row of a line takes a dozen times its bytes when all of its columns are fetched; a table of
// nothing but Booleans, which are bits in the file, has a hundred times its bytes and more: the
// first part is for those as long as they are small.
constexpr uint64_t kOfAnyFile = uint64_t{64} << 20;
constexpr uint64_t kTimesTheFile = 64;

}  // namespace

MemoryBudget::MemoryBudget(const FileReader& file)
    : file_(&file),
      left_(kOfAnyFile + kTimesTheFile * file.PageCount() * file.Layout().page_size) {}

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

}  // namespace rdv::jet
