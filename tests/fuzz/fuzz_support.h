// What the fuzz targets share: input taken piece by piece, a sample database that the engine makes
// itself, and what counts as a finding.
#pragma once

#include <cstdint>
#include <vector>

#include "data/jet/engine.h"
#include "data/jet/file/file_reader.h"
#include "data/jet/format/bytes.h"
#include "runtime/error.h"
#include "tests/fuzz/memory_files.h"

namespace rdv::jet::fuzz {

inline constexpr TextView kPath = u"fuzz.mdb";

// A finding: says why and ends the program.
[[noreturn]] void Fail(const char* why);
inline void Require(bool holds, const char* what) {
  if (!holds) Fail(what);
}
// An error must say what is wrong and with which file; anything else that is thrown is a finding.
void RequireGoodError(const RuntimeError& error);

// The input, taken from its front; zeros behind its end.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : rest_(data, size) {}

  bool Empty() const { return rest_.empty(); }
  uint8_t Byte();
  uint32_t Number();  // four bytes
  size_t Below(size_t limit) { return limit == 0 ? 0 : Number() % limit; }
  Bytes Piece(size_t longest);
  Bytes Rest();
  Value ValueFor(const Column& column);  // of the column's type, or Null; may be too long

 private:
  Bytes rest_;
};

// Two related tables with columns of most types, several indexes, memos, moved and deleted rows.
const std::vector<uint8_t>& SampleDatabase();

// Those in the folders that RDV_FUZZ_DATABASES names, with colons between them; none where it is
// not set. They are the same in every run as long as the folders are.
std::vector<std::vector<uint8_t>> NamedDatabases();

// What the first byte ends in when the rest of the input is a file as it is.
inline constexpr uint8_t kWholeFile = 0x0F;
constexpr bool IsWholeFile(uint8_t first) {
  return first % 16 == kWholeFile;
}

// A whole file: the rest of the input as it is, or the sample with the input's changes to its
// bytes.
std::vector<uint8_t> FileFrom(Input& input);
// The rest of the input as it is.
std::vector<uint8_t> RestAsFile(Input& input);

// The page size that the file says it has.
uint32_t PageSizeOf(const std::vector<uint8_t>& file);

// Lets `read` have a file of these bytes; it may raise good errors.
void TryFile(std::vector<uint8_t> bytes, void (*read)(const FileReader& file));

}  // namespace rdv::jet::fuzz
