// How much of a file one statement may keep in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "data/jet/file/file_reader.h"
#include "data/jet/format/schema.h"
#include "runtime/value.h"

namespace rdv::jet {

// What is kept of a sound file is a small multiple of it. A file that was made to hurt may tell of
// columns that its rows do not have, of rows that are all one, of one long value many times over:
// some bytes of it then stand for kilobytes in memory. Whoever keeps what is read pays for it here;
// one object serves one statement.
class MemoryBudget {
 public:
  // `file` must outlive it.
  explicit MemoryBudget(const FileReader& file);
  // A quarter of it, for the definitions that are kept from one statement to the next: in a sound
  // file they take some ten times their bytes, and are the least of it.
  static MemoryBudget OfDefinitions(const FileReader& file);

  // Raises the damaged file's error once more is kept than the file can stand for.
  void Take(uint64_t bytes);

 private:
  MemoryBudget(const FileReader& file, uint64_t bytes) : file_(&file), left_(bytes) {}

  const FileReader* file_;
  uint64_t left_;
};

// What values take in memory, whatever they are: a Null takes as much as a number.
size_t HeldBytes(const Value& value);
size_t HeldBytes(const std::vector<Value>& row);
size_t HeldBytes(const TableDefinition& table);

}  // namespace rdv::jet
