// Names and texts of windows.
#pragma once

#include <windows.h>

#include <string_view>

#include "runtime/text.h"

namespace rdv::play {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* Wide(const Text& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

inline Text FromWide(std::wstring_view text) {
  return Text(reinterpret_cast<const char16_t*>(text.data()), text.size());
}

bool HasClass(HWND window, const wchar_t* name);
Text TextOf(HWND window);

}  // namespace rdv::play
