// Run-time errors: what a failing procedure raises and an error report shows. An error is a
// number, a description and a source; the three travel together from where the failure is known
// to the procedure that reports it.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "runtime/text.h"

namespace rdv {

// Source of the errors that the language's own runtime would raise.
inline constexpr TextView kProductSource = u"TLV_RDV_Line_Config";

class RuntimeError : public std::exception {
 public:
  RuntimeError(int32_t number, Text description, Text source);

  int32_t Number() const { return number_; }
  const Text& Description() const { return description_; }
  const Text& Source() const { return source_; }

  // "number: description (source)" in UTF-8, as the command-line tools print it.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  int32_t number_;
  Text description_;
  Text source_;
  std::string what_;
};

// The errors of the language's runtime that this product raises. The values are the numbers that
// error reports carry; the texts belong to them (see error.cpp).
enum class LanguageError : int32_t {
  InvalidProcedureCall = 5,  // also a missing key of a keyed collection
  Overflow = 6,
  SubscriptOutOfRange = 9,
  TypeMismatch = 13,
  ObjectVariableNotSet = 91,
  InvalidUseOfNull = 94,
  InvalidPropertyValue = 380,
  InvalidPropertyArrayIndex = 381,  // item data of an entry when none is selected
  KeyAlreadyInCollection = 457,     // name lists
  UnsupportedValueType = 1001,      // a registry value of a type that is not read
  KeyNotUnique = 35602,             // grid rows
};

[[noreturn]] void Raise(LanguageError error);

}  // namespace rdv
