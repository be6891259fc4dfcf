#include "tools/verify/win32/picture.h"

// These headers need the platform's, and names that it has been told to leave out.
#include <objidl.h>

#include <algorithm>
#include <set>
namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus
#include <gdiplus.h>

namespace rdv::verify {
namespace {

constexpr CLSID kPngEncoder = {
    0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};
constexpr size_t kEnoughColours = 256;

class Library {
 public:
  Library() {
    const Gdiplus::GdiplusStartupInput input;
    started_ = Gdiplus::GdiplusStartup(&token_, &input, nullptr) == Gdiplus::Ok;
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() {
    if (started_) Gdiplus::GdiplusShutdown(token_);
  }
  bool Started() const { return started_; }

 private:
  ULONG_PTR token_ = 0;
  bool started_ = false;
};

// As much of the window as lies on the screens.
RECT OnTheScreens(HWND window) {
  const int left = GetSystemMetrics(SM_XVIRTUALSCREEN);
  const int top = GetSystemMetrics(SM_YVIRTUALSCREEN);
  const RECT screens = {left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN),
                        top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
  RECT place = {};
  RECT seen = {};
  GetWindowRect(window, &place);
  IntersectRect(&seen, &place, &screens);
  return seen;
}

HBITMAP CopyOfTheScreen(const RECT& place) {
  const int width = place.right - place.left;
  const int height = place.bottom - place.top;
  const HDC screen = GetDC(nullptr);
  const HDC memory = CreateCompatibleDC(screen);
  const HBITMAP bitmap = memory ? CreateCompatibleBitmap(screen, width, height) : nullptr;
  if (bitmap) {
    const HGDIOBJ before = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, screen, place.left, place.top, SRCCOPY);
    SelectObject(memory, before);
  }
  if (memory) DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  return bitmap;
}

std::string BytesOf(IStream* stream) {
  STATSTG facts = {};
  stream->Stat(&facts, STATFLAG_NONAME);
  std::string bytes(static_cast<size_t>(facts.cbSize.QuadPart), '\0');
  stream->Seek({}, STREAM_SEEK_SET, nullptr);
  ULONG read = 0;
  stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read);
  bytes.resize(read);
  return bytes;
}

int Colours(Gdiplus::Bitmap& bitmap) {
  std::set<Gdiplus::ARGB> seen;
  for (UINT y = 0; y < bitmap.GetHeight(); y += 2) {
    for (UINT x = 0; x < bitmap.GetWidth() && seen.size() < kEnoughColours; ++x) {
      Gdiplus::Color colour;
      bitmap.GetPixel(static_cast<INT>(x), static_cast<INT>(y), &colour);
      seen.insert(colour.GetValue());
    }
  }
  return static_cast<int>(seen.size());
}

}  // namespace

std::optional<Taken> TakePicture(HWND window) {
  const Library library;
  const RECT place = OnTheScreens(window);
  if (!library.Started() || IsRectEmpty(&place)) return std::nullopt;
  const HBITMAP copy = CopyOfTheScreen(place);
  if (!copy) return std::nullopt;
  std::optional<Taken> taken;
  IStream* stream = nullptr;
  {
    Gdiplus::Bitmap bitmap(copy, nullptr);
    if (CreateStreamOnHGlobal(nullptr, TRUE, &stream) == S_OK &&
        bitmap.Save(stream, &kPngEncoder, nullptr) == Gdiplus::Ok)
      taken = Taken{BytesOf(stream), Colours(bitmap)};
  }
  if (stream) stream->Release();
  DeleteObject(copy);
  return taken;
}

}  // namespace rdv::verify
