// The layout of the two versions of the file format that are read: Jet 4 (Access 2000 to 2003) and
// Jet 3 (Access 97). Every offset, size and flag of a file is named here and nowhere else.
//
// Offsets are those from the start of the page or structure named; sizes are bytes. Numbers are
// little-endian. A row pointer is `u8 row, u24 page`. Bytes that no table names are junk: never
// read, written as 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace rdv::jet {

enum class Version : uint32_t { Jet3 = 0, Jet4 = 1 };  // as on disk

// Byte 0 of a page; byte 1 is kPageMark. Pages that no map lists keep what they held.
enum class PageType : uint8_t {
  Header = 0x00,
  Data = 0x01,
  Definition = 0x02,
  IndexNode = 0x03,
  IndexLeaf = 0x04,
  UsageMap = 0x05,
};

// Every page
//   OFFSET SIZE MEANING
//   0      1    type
//   1      1    kPageMark
//   2      2    free bytes (definition pages of Jet 3: letters)
//   4      4    owner (definition pages: the next page of the definition)
inline constexpr uint8_t kPageMark = 0x01;
inline constexpr size_t kPageFreeBytes = 2;
inline constexpr size_t kPageOwner = 4;

// Owners that are no definition page.
inline constexpr uint32_t kOwnerUsageMaps = 0;            // rows of usage maps
inline constexpr uint32_t kOwnerGlobalMaps = 1;           // page 1
inline constexpr uint32_t kOwnerLongValues = 0x4C41564C;  // "LVAL"

// Fixed places of the file.
inline constexpr uint32_t kGlobalMapPage = 1;
inline constexpr uint8_t kFreePagesRow = 0;     // a bit that is set: the page is free
inline constexpr uint8_t kPendingPagesRow = 1;  // a bit that is set: the page is not to be used yet
inline constexpr uint32_t kObjectsPage = 2;     // definition of MSysObjects
inline constexpr uint32_t kAcesPage = 3;
inline constexpr uint32_t kQueriesPage = 4;
inline constexpr uint32_t kRelationshipsPage = 5;

// Row slots of a data page: two bytes each.
inline constexpr uint16_t kSlotStartMask = 0x1FFF;
inline constexpr uint16_t kSlotPointer = 0x4000;  // the row's content is a row pointer
inline constexpr uint16_t kSlotHidden = 0x8000;   // reached through a pointer only
inline constexpr uint16_t kSlotDeleted = kSlotPointer | kSlotHidden;
inline constexpr size_t kSlotSize = 2;
inline constexpr size_t kMaxSlots = 255;    // of a page that is written
inline constexpr size_t kRowNumbers = 256;  // that a row pointer can express
inline constexpr size_t kRowPointerSize = 4;

// Usage-map rows
//   inline      u8 0, u32 first page (a multiple of 8), bits
//   reference   u8 1, u32 map page[]     each page: 4 bytes header, bits
inline constexpr uint8_t kMapInline = 0;
inline constexpr uint8_t kMapReference = 1;
inline constexpr size_t kMapFirstPage = 1;
inline constexpr size_t kMapInlineBits = 5;
inline constexpr size_t kMapReferences = 1;
inline constexpr size_t kMapReferenceSize = 4;
inline constexpr size_t kMapPageBits = 4;

// Column flags.
inline constexpr uint8_t kColumnFixed = 0x01;
inline constexpr uint8_t kColumnAlways = 0x02;
inline constexpr uint8_t kColumnAutonumber = 0x04;
inline constexpr uint8_t kColumnSystem = 0x10;
inline constexpr uint8_t kColumnSid = 0x20;
inline constexpr uint8_t kColumnAutoGuid = 0x40;  // on columns of other types: no meaning
inline constexpr uint8_t kColumnExtendedCompressible = 0x01;

// Real indexes: ten columns, `u16 column number, u8 order` each.
inline constexpr size_t kIndexMaxColumns = 10;
inline constexpr size_t kIndexColumnSize = 3;
inline constexpr uint16_t kIndexNoColumn = 0xFFFF;
inline constexpr uint8_t kIndexDescending = 0;
inline constexpr uint8_t kIndexAscending = 1;
inline constexpr uint8_t kIndexUnique = 0x01;
inline constexpr uint8_t kIndexIgnoreNulls = 0x02;
inline constexpr uint8_t kIndexRequired = 0x08;
inline constexpr uint8_t kIndexAlwaysJet4 = 0x80;

// Logical indexes: the foreign-key byte and the kinds of cascade fields that are no foreign key.
inline constexpr uint8_t kForeignKeyReferenced = 1;
inline constexpr uint8_t kForeignKeyReferencing = 2;
inline constexpr uint8_t kNoCascade = 4;
inline constexpr uint32_t kNoOtherIndex = 0xFFFFFFFF;

// Definition pages.
inline constexpr uint32_t kDefinitionConstant = 0x659;  // Jet 4, before definitions and columns
inline constexpr uint32_t kIndexConstant = 0x783;       // Jet 4, before real indexes
inline constexpr uint8_t kUserTable = 0x4E;
inline constexpr uint8_t kSystemTable = 0x53;
inline constexpr uint16_t kDefinitionEnd = 0xFFFF;  // also as a column number: end of the list
inline constexpr size_t kDefinitionFreeReserve = 8;
inline constexpr size_t kLongValueMapSize = 10;  // u16 column, row pointer owned, free

// Index entries: key, page (3 bytes, big-endian), row; in nodes then the child page (4,
// big-endian).
inline constexpr size_t kEntryRowSize = 4;
inline constexpr size_t kEntryChildSize = 4;

// Long-value descriptors, 12 bytes in the row
//   OFFSET SIZE MEANING
//   0      4    bits 0..29 length in bytes, bits 30 and 31 kind
//   4      4    pointer to the first row, 0 for inline
//   8      4    0; a chain in Jet 4: stamp, also at kLongValueStamp of the chain's first page
//   12          the value, when inline
inline constexpr size_t kLongValueDescriptorSize = 12;
inline constexpr size_t kLongValuePointer = 4;
inline constexpr size_t kLongValueDescriptorStamp = 8;
inline constexpr size_t kLongValueStamp = 8;
inline constexpr uint32_t kLongValueLengthMask = 0x3FFFFFFF;
inline constexpr uint32_t kLongValueKindMask = 0xC0000000;
inline constexpr uint32_t kLongValueInline = 0x80000000;
inline constexpr uint32_t kLongValueSingleRow = 0x40000000;
inline constexpr uint32_t kLongValueChain = 0x00000000;

inline constexpr size_t kNumericSize = 17;
inline constexpr uint8_t kNumericNegative = 0x80;
inline constexpr size_t kGuidSize = 16;
// A GUID's bytes in the order in which it is written and compared: its first three groups are
// numbers, stored from their low end.
inline constexpr std::array<uint8_t, kGuidSize> kGuidOrder = {3, 2, 1,  0,  5,  4,  7,  6,
                                                              8, 9, 10, 11, 12, 13, 14, 15};
inline constexpr size_t kMaxTextUnits = 255;

// What the format allows at most; whoever reads relies on it as well as whoever writes.
inline constexpr uint64_t kLargestFile = uint64_t{1} << 31;
inline constexpr size_t kMaxColumns = 255;  // ever created in a table
inline constexpr size_t kMaxIndexes = 32;   // of a table, those of relationships included
inline constexpr size_t kMaxNameUnits = 64;
inline constexpr size_t kMaxExpressionUnits = 2048;  // a default or a rule; believed

// Header page, at the same place in both versions; kHeaderMaskStart on masked.
inline constexpr std::array<uint8_t, 4> kHeaderMark = {0x00, 0x01, 0x00, 0x00};
inline constexpr size_t kHeaderEngineName = 0x04;
inline constexpr size_t kHeaderEngineNameSize = 16;
inline constexpr size_t kHeaderVersion = 0x14;
inline constexpr size_t kHeaderMaskStart = 0x18;
inline constexpr size_t kHeaderFreeMap = 0x18;
inline constexpr size_t kHeaderPendingMap = 0x1C;
inline constexpr size_t kHeaderSystemTables = 0x20;
inline constexpr size_t kHeaderCodePage = 0x3C;
inline constexpr size_t kHeaderDatabaseKey = 0x3E;
inline constexpr size_t kHeaderPassword = 0x42;
inline constexpr size_t kHeaderSize = 0x98;  // what has to be there to read the header
inline constexpr size_t kCommitWordCount = 256;
inline constexpr uint16_t kCommitWriting = 0x0000;
inline constexpr uint16_t kCommitCorrupt = 0x0001;
inline constexpr uint16_t kCommitIdle = 0x0100;  // and above: a counter of commits
inline constexpr uint16_t kSortOrderGeneral = 0x0409;
inline constexpr uint16_t kCodePageWestern = 1252;

struct Format {
  Version version;
  uint32_t page_size;

  // Header page (the parts that differ)
  //   Jet 4  Jet 3  SIZE   MEANING
  //   0x6E   0x3A   2      sort order of texts
  //   0x42   0x42   40/20  password
  //   0x6A   0x56   4      build of the engine that made the file
  //   0x72   -      8      creation date
  //   0x98   -      8      u32 0x654, "4.0"
  //   0xE00  0x600  512    commit words
  struct {
    size_t masked_size;
    size_t sort_order;
    size_t sort_version;  // Jet 3: none, 0
    size_t password_size;
    size_t build;
    size_t creation_date;  // Jet 3: none, 0
    size_t engine_constant;
    size_t commit_words;
  } header;

  // Data page
  //   Jet 4  Jet 3  SIZE  MEANING
  //   2      2      2     free bytes between the slots and the lowest row
  //   4      4      4     owner: definition page, "LVAL", 0 or 1
  //   8      -      4     first page of a long value's chain: its stamp
  //   12     8      2     slots, deleted ones included
  //   14     10     2 n   slots; rows are stacked from the end downwards in slot order
  struct {
    size_t slot_count;
    size_t slots;
  } data;

  // Row
  //   u16 / u8 columns; fixed columns; variable columns; and, where the table has variable ones,
  //   end of data and offsets (in reverse), [Jet 3: jump table,] count of variable columns; null
  //   mask. Fields behind the variable columns are found from the end.
  struct {
    size_t count_size;   // of the column count, and where the fixed area starts
    size_t offset_size;  // of an offset, the end of data and the variable count
    size_t max_size;
  } row;

  // Definition page
  //   Jet 4  Jet 3  SIZE   MEANING
  //   2      -      2      free bytes less 8
  //   4      4      4      next page, 0 for the last; the definition goes on at 8 there
  //   8      8      4      length of the whole definition
  //   0x10   0x0C   4      rows
  //   0x14   0x10   4      last autonumber
  //   0x18   -      4      autonumber increment
  //   0x28   0x14   1      kUserTable or kSystemTable
  //   0x29   0x15   2      columns ever created
  //   0x2B   0x17   2      variable columns ever created
  //   0x2D   0x19   2      live columns
  //   0x2F   0x1B   4      logical indexes
  //   0x33   0x1F   4      real indexes
  //   0x37   0x23   4      row pointer: map of data pages
  //   0x3B   0x27   4      row pointer: map of data pages with room
  //   0x3F   0x2B          per real index: statistics (u32, u32 distinct keys[, u32 0])
  //                        then column descriptors, column names, real indexes, logical indexes,
  //                        index names, long-value maps, kDefinitionEnd
  struct {
    size_t next_page;
    size_t continuation;  // where a following page goes on
    size_t length;
    size_t row_count;
    size_t last_autonumber;
    size_t autonumber_increment;  // Jet 3: none, 0
    size_t table_type;
    size_t max_columns;
    size_t variable_columns;
    size_t column_count;
    size_t logical_index_count;
    size_t real_index_count;
    size_t owned_map;
    size_t free_map;
    size_t statistics;
    size_t statistics_size;
    size_t distinct_keys;  // in the statistics
    size_t name_length_size;
  } definition;

  // Column descriptor
  //   Jet 4  Jet 3  SIZE  MEANING
  //   0      0      1     type
  //   5      1      2     column number
  //   7      3      2     variable index
  //   9      5      2     ordinal
  //   11     11     1+1   numeric: precision, scale
  //   11     9      2     others: sort order
  //   14     -      1     version of the sort order
  //   15     13     1     flags
  //   16     -      1     extended flags
  //   21     14     2     offset in the fixed area
  //   23     16     2     length
  struct {
    size_t size;
    size_t type;
    size_t number;
    size_t variable_index;
    size_t ordinal;
    size_t precision;
    size_t scale;
    size_t sort_order;
    size_t sort_version;  // Jet 3: none, 0
    size_t flags;
    size_t extended_flags;  // Jet 3: none, 0
    size_t fixed_offset;
    size_t length;
  } column;

  // Real index
  //   Jet 4  Jet 3  SIZE  MEANING
  //   4      0      30    columns
  //   34     30     4     row pointer: map of the index's pages
  //   38     34     4     root page
  //   46     38     1     flags
  struct {
    size_t size;
    size_t columns;
    size_t map;
    size_t root;
    size_t flags;
  } real_index;

  // Logical index
  //   Jet 4  Jet 3  SIZE  MEANING
  //   4      0      4     number
  //   8      4      4     real index
  //   12     8      1     foreign key: 1 referenced, 2 referencing
  //   13     9      4     number of the other table's logical index
  //   17     13     4     definition page of the other table
  //   21     17     1     cascade updates
  //   22     18     1     cascade deletes
  //   23     19     1     kind
  struct {
    size_t size;
    size_t number;
    size_t real_index;
    size_t foreign_key;
    size_t other_index;
    size_t other_table;
    size_t cascade_updates;
    size_t cascade_deletes;
    size_t kind;
  } logical_index;

  // Index page
  //   Jet 4  Jet 3  SIZE     MEANING
  //   4      4      4        definition page of the table
  //   12     8      4        previous page of the level
  //   16     12     4        next page of the level
  //   20     16     4        node: last child
  //   24     20     2/1      bytes that all entries but the first share with it and leave out
  //   26     21     1        level: 0 leaf
  //   27     22     453/226  entry mask: bit k set = an entry ends at offset k
  //   480    248             entries
  struct {
    size_t previous;
    size_t next;
    size_t tail;
    size_t prefix;
    size_t prefix_size;
    size_t level;
    size_t mask;
    size_t mask_size;
    size_t entries;
  } index;

  // Long values
  struct {
    size_t inline_max;
    size_t single_row_max;  // longer values are written as a chain
    size_t chunk;           // payload of a full row of a chain
  } long_value;

  size_t initial_map_bits;  // bytes of bits in a new inline map

  bool IsJet4() const { return version == Version::Jet4; }
  uint32_t PagesPerMapPage() const { return static_cast<uint32_t>((page_size - kMapPageBits) * 8); }
  uint32_t PagesOfLargestFile() const { return static_cast<uint32_t>(kLargestFile / page_size); }
  size_t UnitSize() const { return IsJet4() ? sizeof(char16_t) : 1; }  // of names and plain texts
};

extern const Format kJet3;
extern const Format kJet4;

}  // namespace rdv::jet
