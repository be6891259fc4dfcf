#include "runtime/error.h"

#include <utility>

namespace rdv {
namespace {

struct LanguageErrorText {
  LanguageError error;
  const char16_t* description;
};

constexpr LanguageErrorText kLanguageErrors[] = {
    {LanguageError::InvalidProcedureCall, u"Invalid procedure call or argument"},
    {LanguageError::Overflow, u"Overflow"},
    {LanguageError::SubscriptOutOfRange, u"Subscript out of range"},
    {LanguageError::TypeMismatch, u"Type mismatch"},
    {LanguageError::ObjectVariableNotSet, u"Object variable or With block variable not set"},
    {LanguageError::InvalidUseOfNull, u"Invalid use of Null"},
    {LanguageError::InvalidPropertyValue, u"Invalid property value"},
    {LanguageError::InvalidPropertyArrayIndex, u"Invalid property array index"},
    {LanguageError::KeyAlreadyInCollection,
     u"This key is already associated with an element of this collection"},
    {LanguageError::UnsupportedValueType, u"Unsupported value type"},
    {LanguageError::KeyNotUnique, u"Key is not unique in collection"},
};

}  // namespace

RuntimeError::RuntimeError(int32_t number, Text description, Text source)
    : number_(number), description_(std::move(description)), source_(std::move(source)) {
  what_ = std::to_string(number_) + ": " + ToUtf8(description_) + " (" + ToUtf8(source_) + ")";
}

void Raise(LanguageError error) {
  const char16_t* description = u"";
  for (const LanguageErrorText& entry : kLanguageErrors) {
    if (entry.error == error) description = entry.description;
  }
  throw RuntimeError(static_cast<int32_t>(error), description, Text(kProductSource));
}

}  // namespace rdv
