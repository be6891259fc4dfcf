// The product's UTF-16 text as the platform's functions take and give it. Views into the argument:
// nothing is copied but by FromWide.
#pragma once

#include <string_view>

#include "runtime/text.h"

namespace rdv::win32 {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* Wide(const Text& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

// Of a view that a null character follows.
inline const wchar_t* WideLiteral(TextView literal) {
  return reinterpret_cast<const wchar_t*>(literal.data());
}

inline Text FromWide(std::wstring_view text) {
  return Text(reinterpret_cast<const char16_t*>(text.data()), text.size());
}

}  // namespace rdv::win32
