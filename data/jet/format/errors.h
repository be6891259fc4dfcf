// The errors of the engine: numbers, texts and the source that every report of them carries.
#pragma once

#include <cstdint>

#include "runtime/text.h"

namespace rdv::jet {

inline constexpr TextView kEngineSource = u"Microsoft JET Database Engine";

// The number that callers see: a COM result code as a signed number.
enum class ErrorNumber : int32_t {
  General = -2147467259,                 // 80004005: files, formats, sharing, required fields
  DuplicateOrReferential = -2147217873,  // 80040E2F
  OutOfRange = -2147217833,              // 80040E57: overflow, field too small
  WrongPassword = -2147217843,           // 80040E4D
  CannotFindTable = -2147217865,         // 80040E37
  Syntax = -2147217900,                  // 80040E14: also an unknown field of an INSERT
  MissingParameter = -2147217904,        // 80040E10
  TypeMismatch = -2147217913,            // 80040E07
};

[[noreturn]] void RaiseEngineError(ErrorNumber number, Text description);

// Files.
[[noreturn]] void RaiseFileNotFound(TextView path);
[[noreturn]] void RaiseInvalidPath(TextView path);
[[noreturn]] void RaiseFileExists(TextView path);
[[noreturn]] void RaiseFileInUse(TextView path);
[[noreturn]] void RaiseWrongPassword();
// The file is no database at all: too short, cut off in a page, or something else by its beginning.
[[noreturn]] void RaiseUnrecognizedFormat(TextView path);
// It is a database of a kind that is not read here; `reason` is a sentence without its stop.
[[noreturn]] void RaiseUnsupportedFormat(TextView path, TextView reason);
// The file is a database, but what it holds at one place cannot be.
[[noreturn]] void RaiseDamaged(TextView path, TextView reason);
[[noreturn]] void RaisePageOutsideFile(TextView path, uint32_t page, uint32_t page_count);
[[noreturn]] void RaiseReadOnly(TextView path, TextView reason);
// Opening, reading, writing or flushing failed in the operating system.
[[noreturn]] void RaiseDiskError(TextView path, TextView reason);

// Statements.
[[noreturn]] void RaiseCannotFindTable(TextView name);
[[noreturn]] void RaiseMissingParameter();
[[noreturn]] void RaiseUnknownInsertField(TextView name);
[[noreturn]] void RaiseSyntaxError(TextView description);
[[noreturn]] void RaiseTypeMismatch();
[[noreturn]] void RaiseOverflow();
[[noreturn]] void RaiseFieldTooSmall();

// Rules of the table.
[[noreturn]] void RaiseDuplicate();
[[noreturn]] void RaiseNullInRequiredField(TextView table, TextView column);
[[noreturn]] void RaiseEmptyTextNotAllowed(TextView table, TextView column);
[[noreturn]] void RaiseNullInPrimaryKey();
[[noreturn]] void RaiseRelatedRecordRequired(TextView table);  // the referenced table
[[noreturn]] void RaiseRelatedRecordsExist(TextView table);    // the referencing table
[[noreturn]] void RaiseRecordTooLarge();
// A text that begins with U+FEFF, which marks a compressed text in the file.
[[noreturn]] void RaiseUnstorableText();
// No key of the index's sort order is known for the character.
[[noreturn]] void RaiseUnsupportedKeyCharacter(char16_t unit);
[[noreturn]] void RaiseUnsupportedSortOrder(uint16_t sort_order);
[[noreturn]] void RaiseKeyTooLong();

}  // namespace rdv::jet
