// Changes to a sound database file of Jet 4 that take more than a field: structures that were made
// to hurt whoever relies on them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/jet_fields.h"

namespace rdv::jet {

// A definition of Boolean columns, the first of which is "id", and of indexes without columns.
std::vector<uint8_t> WideDefinition(uint16_t columns, uint32_t indexes);

// Puts another definition into the place of the one that begins on the page, on as many new pages
// at the end of the file as it takes. The table keeps its maps.
void Redefine(std::vector<uint8_t>& file, uint32_t page, std::vector<uint8_t> definition);

// A table of 255 columns, and so many pages of rows that have none of them: each takes two bytes
// and its slot, and stands for 255 values. As many rows as there are at the most on a page.
void FillWithEmptyRows(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                       const std::string& table, uint32_t pages);

// A block of properties, each of which is named both by its owner and by itself as long as a name
// of 16 bits can be, and takes eight bytes.
std::vector<uint8_t> PropertiesWithLongNames();

// All rows' values in a memo column become the longest one of them.
void ShareLongestValue(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                       const std::string& table, const std::string& column);

// Says that the page is free, and no other one of the first 512.
void CallFree(std::vector<uint8_t>& file, const std::vector<FileField>& fields, uint32_t page);

// A map of free pages with room for one reference, that would need two for the pages that it says
// it is about, in a file of so many pages; all behind those that there were are holes.
inline constexpr uint32_t kPagesBehindLateMap = 32800;
void StartFreePagesLate(std::vector<uint8_t>& file);

// The root of an index, which has nodes, is its own tail, and all else that the root leads to is
// its first child.
void LeadRootToItself(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                      const std::string& root);

// Of an index page: the marks of all entries but the first are taken away.
void KeepFirstEntry(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                    const std::string& page);

// A relationship of a table with itself through two of its indexes, which cascades.
void RelateToItself(std::vector<uint8_t>& file, const std::vector<FileField>& fields,
                    const std::string& table, const std::string& own, const std::string& other);

// The page that a field lies on.
uint32_t PageOf(const std::vector<FileField>& fields, std::string_view field);

}  // namespace rdv::jet
