// The picture that the control draws of itself for containers that print it or show it inactive:
// of its windows where it runs, of an empty form in a form designer.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

constexpr COLORREF kUntouched = RGB(1, 2, 3);

// Pixels to draw on.
class Paper {
 public:
  Paper(int width, int height)
      : width_(width),
        height_(height),
        screen_(GetDC(nullptr)),
        context_(CreateCompatibleDC(screen_)) {
    bitmap_ = CreateCompatibleBitmap(screen_, width, height);
    before_ = SelectObject(context_, bitmap_);
    const HBRUSH brush = CreateSolidBrush(kUntouched);
    const RECT all = {0, 0, width, height};
    FillRect(context_, &all, brush);
    DeleteObject(brush);
  }
  ~Paper() {
    SelectObject(context_, before_);
    DeleteObject(bitmap_);
    DeleteDC(context_);
    ReleaseDC(nullptr, screen_);
  }
  Paper(const Paper&) = delete;
  Paper& operator=(const Paper&) = delete;

  HDC Context() const { return context_; }
  COLORREF At(int x, int y) const { return GetPixel(context_, x, y); }

  // Row by row.
  std::vector<COLORREF> In(const RECT& area) const {
    std::vector<COLORREF> pixels;
    for (LONG y = area.top; y < area.bottom; ++y) {
      for (LONG x = area.left; x < area.right; ++x) pixels.push_back(GetPixel(context_, x, y));
    }
    return pixels;
  }
  std::vector<COLORREF> All() const { return In({0, 0, width_, height_}); }

 private:
  const int width_;
  const int height_;
  const HDC screen_;
  const HDC context_;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ before_ = nullptr;
};

auto Others(const std::vector<COLORREF>& pixels, COLORREF than) {
  return std::count_if(pixels.begin(), pixels.end(),
                       [than](COLORREF pixel) { return pixel != than; });
}

class PictureOfLines : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    if (!CanPaint()) GTEST_SKIP() << "nothing can be painted here";
    files_ = std::make_unique<SiteFiles>("plain");
    found_ = std::make_unique<SiteFolder>(files_->Folder().u16string());
    placed_ = std::make_unique<PlacedControl>();
    placed_->container.place = {0, 0, kWidth, kHeight};
    ASSERT_EQ(placed_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  }
  void TearDown() override { placed_.reset(); }

  void Load() {
    VARIANT_BOOL shown = VARIANT_FALSE;
    placed_->As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown);
    ASSERT_EQ(shown, VARIANT_TRUE);
  }
  void Draw(HDC context, const RECTL& bounds) {
    EXPECT_EQ(placed_->As<IViewObject2>(IID_IViewObject2)
                  ->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, context, &bounds, nullptr,
                         nullptr, 0),
              S_OK);
  }
  std::vector<COLORREF> Drawn(const RECT& area) {
    const Paper paper(kWidth, kHeight);
    Draw(paper.Context(), {0, 0, kWidth, kHeight});
    return paper.In(area);
  }
  RECT PlaceOf(int id) {
    RECT place = {};
    GetWindowRect(placed_->Child(id), &place);
    MapWindowPoints(nullptr, placed_->Form(), reinterpret_cast<POINT*>(&place), 2);
    return place;
  }
  // Of the grid, without its header and with all rows of a unit in it.
  RECT PlaceOfRows() {
    RECT place = PlaceOf(control_id::LVRDVLineConfig);
    place.top += 30;
    place.right -= 30;
    place.bottom = std::min(place.bottom, place.top + 150);
    return place;
  }

  // The form is whole in it.
  static constexpr int kWidth = 940;
  static constexpr int kHeight = 460;
  static constexpr long kSomeText = 500;  // pixels

  std::unique_ptr<SiteFiles> files_;
  std::unique_ptr<SiteFolder> found_;
  std::unique_ptr<PlacedControl> placed_;
};

TEST_F(PictureOfLines, ShowsThoseThatAreLoaded) {
  const COLORREF empty = GetSysColor(COLOR_WINDOW);
  EXPECT_EQ(Others(Drawn(PlaceOfRows()), empty), 0);
  Load();
  EXPECT_GT(Others(Drawn(PlaceOfRows()), empty), kSomeText);
}

TEST_F(PictureOfLines, IsTheSameOfAControlThatIsNoLongerPlaced) {
  Load();
  const auto placed = Drawn(PlaceOfRows());
  const RECT rows = PlaceOfRows();
  ASSERT_EQ(placed_->Verb(OLEIVERB_HIDE), S_OK);
  EXPECT_EQ(Drawn(rows), placed);
}

TEST_F(PictureOfLines, ShowsTheStatesOfTheButtons) {
  Load();
  const auto disabled = Drawn(PlaceOf(control_id::cmdApply));
  EnableWindow(placed_->Child(control_id::cmdApply), TRUE);
  EXPECT_NE(Drawn(PlaceOf(control_id::cmdApply)), disabled);
}

TEST_F(PictureOfLines, ShowsAnEditorOverItsCell) {
  Load();
  const RECT rows = PlaceOfRows();
  const auto without = Drawn(rows);
  SetFocus(placed_->Child(control_id::LVRDVLineConfig));
  for (const WPARAM key : {WPARAM{VK_DOWN}, WPARAM{VK_F2}}) {
    MSG event = {};
    event.hwnd = GetFocus();
    event.message = WM_KEYDOWN;
    event.wParam = key;
    placed_->As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject)->TranslateAccelerator(&event);
  }
  const HWND editor = placed_->Child(control_id::cmbPartition);
  ASSERT_TRUE(IsWindowVisible(editor));
  // Its button with the arrow, at its right end, covers the cell.
  RECT button = PlaceOf(control_id::cmbPartition);
  button.left = button.right - 10;
  InflateRect(&button, 0, -4);
  EXPECT_GT(Others(Drawn(button), GetSysColor(COLOR_WINDOW)), 0);
  EXPECT_NE(Drawn(rows), without);
}

TEST_F(PictureOfLines, FitsItsPlaceAndTouchesNothingElse) {
  Load();
  const Paper paper(kWidth, kHeight);
  Draw(paper.Context(), {20, 30, 20 + kWidth / 2, 30 + kHeight / 2});
  const RECT rows = PlaceOfRows();
  const RECT half = {20 + rows.left / 2, 30 + rows.top / 2, 20 + rows.right / 2,
                     30 + rows.bottom / 2};
  EXPECT_GT(Others(paper.In(half), GetSysColor(COLOR_WINDOW)), kSomeText / 4);
  EXPECT_EQ(paper.At(21, 31), GetSysColor(COLOR_BTNFACE));
  for (const RECT& outside :
       {RECT{0, 0, kWidth, 30}, RECT{0, 0, 20, kHeight}, RECT{20 + kWidth / 2, 0, kWidth, kHeight},
        RECT{0, 30 + kHeight / 2, kWidth, kHeight}}) {
    EXPECT_EQ(Others(paper.In(outside), kUntouched), 0);
  }
}

TEST_F(PictureOfLines, IsTheSameInAMetafile) {
  Load();
  const HDC metafile = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
  Draw(metafile, {0, 0, kWidth, kHeight});
  const HENHMETAFILE picture = CloseEnhMetaFile(metafile);
  ENHMETAHEADER header = {};
  ASSERT_NE(GetEnhMetaFileHeader(picture, sizeof header, &header), 0u);
  EXPECT_EQ(header.rclBounds.right - header.rclBounds.left + 1, kWidth);
  const Paper paper(kWidth, kHeight);
  // Bounds are inclusive.
  const RECT whole = {0, 0, kWidth - 1, kHeight - 1};
  EXPECT_TRUE(PlayEnhMetaFile(paper.Context(), picture, &whole));
  DeleteEnhMetaFile(picture);
  EXPECT_GT(Others(paper.In(PlaceOfRows()), GetSysColor(COLOR_WINDOW)), kSomeText);
}

// What a designer shows is the same whatever the control has in it.
TEST_F(PictureOfLines, IsOfAnEmptyFormInADesigner) {
  PlacedControl designed({.user_mode = false});
  const auto drawn = [&designed] {
    const Paper paper(kWidth, kHeight);
    const RECTL bounds = {0, 0, kWidth, kHeight};
    EXPECT_EQ(designed.As<IViewObject2>(IID_IViewObject2)
                  ->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, paper.Context(), &bounds,
                         nullptr, nullptr, 0),
              S_OK);
    return paper.All();
  };
  const auto before = drawn();
  designed.Verb(OLEIVERB_INPLACEACTIVATE);
  EXPECT_EQ(drawn(), before);
}

}  // namespace
}  // namespace rdv::test
