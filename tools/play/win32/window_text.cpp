#include "tools/play/win32/window_text.h"

#include <cwchar>
#include <iterator>

namespace rdv::play {

bool HasClass(HWND window, const wchar_t* name) {
  wchar_t found[64] = {};
  GetClassNameW(window, found, static_cast<int>(std::size(found)));
  return _wcsicmp(found, name) == 0;
}

Text TextOf(HWND window) {
  Text text(static_cast<size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, u'\0');
  const LRESULT length =
      SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(length));
  return text;
}

}  // namespace rdv::play
