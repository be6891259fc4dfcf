// What is done to the bytes of a sound database to make a bad one: the lines below `damage` in a
// site's text. A new bad file is a new text in tests/sites with a line saying what is wrong,
//
//   # The map of data pages of Used_Lines lies beyond the end of the file.
//   like plain
//   damage
//     put definition Used_Lines + 0x37: u8 0 u24 65535
//
// and a test that names it (SiteFolder in sample_sites.h), or no test at all where the suite goes
// through all texts of the folder. The lines, one change each:
//
//   put PLACE: SIZE VALUE ...      u8, u16, u24, u32: numbers of so many bits, little-endian; b16,
//                                  b24, b32 the other way round; bytes "00ff": bytes
//   or PLACE: SIZE VALUE ...       sets the bits that are set in the values
//   and PLACE: SIZE VALUE ...      clears those that are not
//   fill PLACE: COUNT, BYTE        the byte over and over
//   random PLACE: COUNT, SEED      bytes without a meaning, the same each time
//   copy PLACE: COUNT from PLACE
//   cut PLACE                      the file ends there
//   text "..."                     the whole file is this text
//   for n = 1 .. 3000: CHANGE      once for each n
//
// PLACE is one of these, with `+ NUMBER` behind it where something further on is meant. All are
// places of the sound file, whatever was changed before. Structures and fields: format.h.
//
//   4096                           bytes from the file's beginning
//   page 35                        its first byte; from 0
//   definition TABLE               of the table's definition; `+` goes on across its pages
//   column TABLE.COLUMN            the column's descriptor in there
//   index TABLE.INDEX              the real index's block in there
//   logical TABLE.INDEX            the logical index's
//   map TABLE                      the map of data pages, its first byte
//   free-map TABLE                 that of those with room
//   index-map TABLE.INDEX          that of the index
//   free-pages                     that of free pages, on page 1
//   data TABLE N                   the table's data page; from 1
//   row TABLE N                    the first byte of a row where its bytes lie; from 1, in the
//                                  order of a scan
//   slot TABLE N                   of the same row, the two bytes that the table finds it by
//   value TABLE.COLUMN N           of the same row, the field as it is stored
//   root TABLE.INDEX               the index's first page
//   leaf TABLE.INDEX N             a page of its entries, in their order; from 1
//
// N is one number; arithmetic goes in parentheses. As a VALUE, `number-of (PLACE)` is the number of
// the page that a place lies on.
#pragma once

#include <cstdint>
#include <vector>

#include "data/jet/format/schema.h"
#include "tests/support/sites/site_text.h"

namespace rdv::sites {

// A text of a row that takes the place of one of the same length, none of it Latin.
struct OverwrittenText {
  Text table;
  jet::RowId row;
  Text column;
  Text text;
};

// Raises SiteTextError where the place does not fit.
void OverwriteTexts(const std::vector<OverwrittenText>& texts, std::vector<uint8_t>& database);

// What the site's text does to its sound database. Raises SiteTextError for what it cannot do.
std::vector<uint8_t> Damaged(const Site& site, std::vector<uint8_t> sound);

}  // namespace rdv::sites
