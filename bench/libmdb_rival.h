// libmdb scanning a table: the rival for reading.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace rdv::bench {

struct ScanTotals {
  size_t rows = 0;
  size_t bytes = 0;  // of all fields as text
};

// Opens the file, fetches every column of every row of the table as text, closes it.
ScanTotals ScanWithLibmdb(const std::filesystem::path& file, const std::string& table);

}  // namespace rdv::bench
