// The font of the control's windows.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "widgets/win32/platform.h"
#include "widgets/win32/scale.h"

namespace rdv::win32 {

struct FontDescription {
  std::wstring face;
  double points = 0;
  LONG weight = FW_NORMAL;
  bool italic = false;
  BYTE character_set = DEFAULT_CHARSET;

  bool operator==(const FontDescription&) const = default;
};

struct FontDeleter {
  void operator()(HFONT font) const { DeleteObject(font); }
};
using Font = std::unique_ptr<std::remove_pointer_t<HFONT>, FontDeleter>;

Font MakeFont(const FontDescription& description, Scale scale);

// That of the system's message boxes.
Font MakeSystemFont(Scale scale);

// In pixels; nothing where nothing is painted.
SIZE TextExtent(HFONT font, std::wstring_view text);

}  // namespace rdv::win32
