// The header page: which version a file has, whether this engine reads it, and the secrets that
// its fields are covered with.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "data/jet/format/bytes.h"
#include "data/jet/format/format.h"
#include "runtime/text.h"

namespace rdv::jet {

struct Header {
  Version version = Version::Jet4;
  uint16_t code_page = kCodePageWestern;  // of the texts of a Jet 3 file
  uint16_t sort_order = kSortOrderGeneral;
  uint8_t sort_version = 0;
  uint32_t build = 0;
  double creation_date = 0;  // days since 1899-12-30; 0 in Jet 3
  Text password;             // in clear; empty for none
  uint32_t sid_key = 0;      // of the encrypted columns of the catalog; Jet 4 only

  const Format& Layout() const { return version == Version::Jet4 ? kJet4 : kJet3; }
  // Whether keys of text can be built, and so whether tables with such indexes can be written.
  bool HasGeneralSortOrder() const { return sort_order == kSortOrderGeneral && sort_version == 0; }
};

// `start` is the beginning of the file, a whole page or as much as there is. Raises "Unrecognized
// database format" with the reason for whatever is not read here, the damaged file's error for one
// that is cut off, "Not a valid password." for a password other than the file's.
Header ReadHeader(Bytes start, uint64_t file_size, TextView path, TextView password = {});

// Why a file with this beginning is not read here, a sentence without its stop; nothing for one
// that is. A password is no reason. For programs that explain: of the engine's errors, that of a
// file which is no database at all does not tell it.
std::optional<Text> WhyNotRecognized(Bytes start, uint64_t file_size);

// Covers or uncovers the masked part of a header page, which holds at least kHeaderSize bytes.
void ApplyHeaderMask(std::span<uint8_t> page, const Format& format);

// The four bytes that the password's units of a Jet 4 file are covered with, from the date of its
// creation.
std::array<uint8_t, 4> DateMask(double creation_date);

// The key of the encrypted columns, from an uncovered Jet 4 header page.
uint32_t ComputeSidKey(Bytes uncovered_page);

// Encrypts and decrypts the content of such a column.
void ApplySidKey(uint32_t sid_key, std::span<uint8_t> bytes);

// RC4 with the given key, from the start of its stream.
void ApplyRc4(Bytes key, std::span<uint8_t> bytes);

// Why the commit words (kCommitWordCount of them, from the page) tell that the file was left in
// the middle of a write, if they do. Says nothing about writers that are still at work.
std::optional<Text> SuspectState(Bytes commit_words);

}  // namespace rdv::jet
