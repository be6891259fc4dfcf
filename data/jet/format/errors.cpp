#include "data/jet/format/errors.h"

#include <utility>

#include "runtime/error.h"

namespace rdv::jet {
namespace {

Text Quoted(TextView name) {
  return u"'" + Text(name) + u"'";
}

Text Hexadecimal(char16_t unit) {
  Text digits;
  for (int shift = 12; shift >= 0; shift -= 4)
    digits.push_back(u"0123456789ABCDEF"[(unit >> shift) & 15]);
  return digits;
}

}  // namespace

void RaiseEngineError(ErrorNumber number, Text description) {
  throw RuntimeError(static_cast<int32_t>(number), std::move(description), Text(kEngineSource));
}

void RaiseFileNotFound(TextView path) {
  RaiseEngineError(ErrorNumber::General, u"Could not find file " + Quoted(path) + u".");
}

void RaiseFileExists(TextView path) {
  RaiseEngineError(ErrorNumber::General, u"Database " + Quoted(path) + u" already exists.");
}
void RaiseInvalidPath(TextView path) {
  RaiseEngineError(ErrorNumber::General,
                   Quoted(path) +
                       u" is not a valid path. Make sure that the path name is spelled correctly "
                       u"and that you are connected to the server on which the file resides.");
}

void RaiseFileInUse(TextView path) {
  RaiseEngineError(ErrorNumber::General,
                   u"Could not use " + Quoted(path) + u"; file already in use.");
}

void RaiseWrongPassword() {
  RaiseEngineError(ErrorNumber::WrongPassword, u"Not a valid password.");
}

void RaiseUnrecognizedFormat(TextView path) {
  RaiseEngineError(ErrorNumber::General, u"Unrecognized database format " + Quoted(path) + u".");
}

void RaiseUnsupportedFormat(TextView path, TextView reason) {
  RaiseEngineError(ErrorNumber::General,
                   u"Unrecognized database format " + Quoted(path) + u". " + Text(reason) + u".");
}

void RaiseDamaged(TextView path, TextView reason) {
  RaiseEngineError(ErrorNumber::General,
                   u"Cannot open database " + Quoted(path) +
                       u". It may not be a database that your application recognizes, or the file "
                       u"may be corrupt. " +
                       Text(reason) + u".");
}

void RaisePageOutsideFile(TextView path, uint32_t page, uint32_t page_count) {
  RaiseDamaged(path, u"Page " + Decimal(page) + u" is referred to, but the file has " +
                         Decimal(page_count) + u" pages");
}

void RaiseReadOnly(TextView path, TextView reason) {
  RaiseEngineError(ErrorNumber::General, u"Cannot update. Database or object is read-only. " +
                                             Quoted(path) + u": " + Text(reason) + u".");
}

void RaiseDiskError(TextView path, TextView reason) {
  RaiseEngineError(ErrorNumber::General,
                   u"Disk or network error. " + Quoted(path) + u": " + Text(reason) + u".");
}

void RaiseCannotFindTable(TextView name) {
  RaiseEngineError(ErrorNumber::CannotFindTable,
                   u"The Microsoft Jet database engine cannot find the input table or query " +
                       Quoted(name) +
                       u". Make sure it exists and that its name is spelled correctly.");
}

void RaiseMissingParameter() {
  RaiseEngineError(ErrorNumber::MissingParameter,
                   u"No value given for one or more required parameters.");
}

void RaiseUnknownInsertField(TextView name) {
  RaiseEngineError(ErrorNumber::Syntax,
                   u"The INSERT INTO statement contains the following unknown field name: " +
                       Quoted(name) +
                       u". Make sure you have typed the name correctly, and try the operation "
                       u"again.");
}

void RaiseSyntaxError(TextView description) {
  RaiseEngineError(ErrorNumber::Syntax, Text(description));
}

void RaiseTypeMismatch() {
  RaiseEngineError(ErrorNumber::TypeMismatch, u"Data type mismatch in criteria expression.");
}

void RaiseOverflow() {
  RaiseEngineError(ErrorNumber::OutOfRange, u"Overflow");
}

void RaiseFieldTooSmall() {
  RaiseEngineError(ErrorNumber::OutOfRange,
                   u"The field is too small to accept the amount of data you attempted to add. Try "
                   u"inserting or pasting less data.");
}

void RaiseDuplicate() {
  RaiseEngineError(ErrorNumber::DuplicateOrReferential,
                   u"The changes you requested to the table were not successful because they would "
                   u"create duplicate values in the index, primary key, or relationship. Change "
                   u"the data in the field or fields that contain duplicate data, remove the "
                   u"index, or redefine the index to permit duplicate entries and try again.");
}

void RaiseNullInRequiredField(TextView table, TextView column) {
  RaiseEngineError(ErrorNumber::General,
                   u"The field " + Quoted(Text(table) + u"." + Text(column)) +
                       u" cannot contain a Null value because the Required property for this field "
                       u"is set to True. Enter a value in this field.");
}

void RaiseEmptyTextNotAllowed(TextView table, TextView column) {
  RaiseEngineError(ErrorNumber::General, u"Field " + Quoted(Text(table) + u"." + Text(column)) +
                                             u" cannot be a zero-length string.");
}

void RaiseNullInPrimaryKey() {
  RaiseEngineError(ErrorNumber::General, u"Index or primary key cannot contain a Null value.");
}

void RaiseRelatedRecordRequired(TextView table) {
  RaiseEngineError(ErrorNumber::DuplicateOrReferential,
                   u"You cannot add or change a record because a related record is required in "
                   u"table " +
                       Quoted(table) + u".");
}

void RaiseRelatedRecordsExist(TextView table) {
  RaiseEngineError(ErrorNumber::DuplicateOrReferential,
                   u"The record cannot be deleted or changed because table " + Quoted(table) +
                       u" includes related records.");
}

void RaiseRecordTooLarge() {
  RaiseEngineError(ErrorNumber::General, u"Record is too large.");
}

void RaiseUnstorableText() {
  RaiseEngineError(ErrorNumber::General,
                   u"A text that begins with the character U+FEFF cannot be stored.");
}

void RaiseUnsupportedKeyCharacter(char16_t unit) {
  RaiseEngineError(ErrorNumber::General, u"The character U+" + Hexadecimal(unit) +
                                             u" is not supported in an indexed text field.");
}

void RaiseUnsupportedSortOrder(uint16_t sort_order) {
  RaiseEngineError(ErrorNumber::General, u"The collating order " + Decimal(sort_order) +
                                             u" of an indexed text field is not supported.");
}

void RaiseKeyTooLong() {
  RaiseEngineError(ErrorNumber::General, u"The values of an index's fields are too long for it.");
}

}  // namespace rdv::jet
