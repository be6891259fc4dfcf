// The page for the file cabinet: its text here, its looks in a real browser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "tests/lines/lines_site.h"

namespace rdv::lines::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

size_t Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) ++count;
  return count;
}

TEST(Report, IsNotWrittenOverADatabase) {
  const LinesSite site;
  const std::string before = site.Bytes();
  for (const char* command : {"report", "export"}) {
    const Outcome refused = site.Run(command, {"-o", site.Database().string()});
    EXPECT_EQ(refused.code, 3);
    EXPECT_NE(refused.errors.find("cannot be written: it is a database"), std::string::npos)
        << refused.errors;
  }
  EXPECT_EQ(site.Bytes(), before);
}

TEST(Report, HoldsEveryUnitItsFindingsAndTheCounts) {
  const LinesSite site;
  const std::filesystem::path page = site.Scratch("page.html");
  const Outcome reported = site.Run("report", {"-o", page.string()});
  EXPECT_EQ(reported.code, 1) << reported.errors;  // there are findings
  const std::string html = ReadBytes(page);
  EXPECT_THAT(html, StartsWith("<!DOCTYPE html>"));
  EXPECT_EQ(Count(html, "<section "), 3u);
  EXPECT_EQ(Count(html, "<li>Line "), 18u);
  EXPECT_EQ(Count(html, "<sup>"), 18u);
  EXPECT_THAT(html, HasSubstr("<li><b>3</b> units"));
  EXPECT_THAT(html, HasSubstr("Линия 7 – γραμμή – 受付"));
  EXPECT_THAT(html, HasSubstr("O'Brien &quot;direct&quot;"));
}

TEST(Report, MarksASecondHalfOfAPairInTheRowThatShowsThePair) {
  const LinesSite site;
  ASSERT_EQ(site.Run("report", {"1", "-o", site.Scratch("before.html").string()}).code, 1);
  site.Execute(u"UPDATE Used_Lines SET Partition_ID = 2 WHERE Config_ID = 1 AND Line = 10");
  site.Run("report", {"1", "-o", site.Scratch("after.html").string()});
  const std::string html = ReadBytes(site.Scratch("after.html"));
  EXPECT_THAT(html, HasSubstr("<td>MOH Line<td class=found>Reception<sup>"));
  EXPECT_EQ(Count(html, "<sup>"), Count(html, "<li>Line "));
  EXPECT_GT(Count(html, "<sup>"), Count(ReadBytes(site.Scratch("before.html")), "<sup>"));
}

TEST(Report, ShowsAUnitThatTheControlCannotShowAsItIsStored) {
  const LinesSite site;
  site.Execute(
      u"UPDATE Used_Lines SET Mode_Type_ID = NULL WHERE Config_ID = 3 AND Line = 1 AND "
      u"Base_Slot_No = 1");
  const std::filesystem::path page = site.Scratch("page.html");
  EXPECT_EQ(site.Run("report", {"3", "-o", page.string()}).code, 1);
  const std::string html = ReadBytes(page);
  EXPECT_THAT(html, HasSubstr("the control cannot show the unit: "));
  EXPECT_THAT(html, HasSubstr("Stored, and not shown by the control:"));
  EXPECT_THAT(html, HasSubstr("<tr><td>1<td>Hybrid Line<td>North<td>Message 10<td>Low"
                              "<td class=found>"));
  EXPECT_EQ(Count(html, "<sup>"), Count(html, "<li>Line "));
  EXPECT_THAT(html, HasSubstr("; of these the control does not show "));
}

TEST(Report, NeedsNothingBesidesItself) {
  const LinesSite site;
  site.Execute(u"UPDATE Used_Lines SET Description = '<script src=http://x>' WHERE Line = 1");
  const std::filesystem::path page = site.Scratch("page.html");
  site.Run("report", {"-o", page.string()});
  const std::string html = ReadBytes(page);
  EXPECT_THAT(html, HasSubstr("&lt;script src=http://x&gt;"));
  EXPECT_THAT(html, Not(HasSubstr("<script")));
  EXPECT_THAT(html, Not(HasSubstr("<link")));
  EXPECT_THAT(html, Not(HasSubstr("url(")));
}

TEST(Report, IsTheSameEachTime) {
  const LinesSite site;
  site.Run("report", {"-o", site.Scratch("one.html").string()});
  site.Run("report", {"-o", site.Scratch("two.html").string()});
  EXPECT_EQ(ReadBytes(site.Scratch("one.html")), ReadBytes(site.Scratch("two.html")));
}

TEST(Report, IsPrintedWhereTheFileIsADash) {
  const LinesSite site;
  site.Run("report", {"-o", site.Scratch("page.html").string()});
  EXPECT_EQ(site.Run("report", {"-o", "-"}).out, ReadBytes(site.Scratch("page.html")));
}

TEST(Report, HasTheTitleThatItIsGiven) {
  const LinesSite site;
  const std::filesystem::path page = site.Scratch("page.html");
  site.Run("report", {"-o", page.string(), "--title", "Ward <A> & B"});
  EXPECT_THAT(ReadBytes(page), HasSubstr("<h1>Ward &lt;A&gt; &amp; B</h1>"));
  EXPECT_THAT(ReadBytes(page), HasSubstr("<title>Ward &lt;A&gt; &amp; B</title>"));
}

#ifndef _WIN32

TEST(Report, IsWrittenToAPipeAndThroughALinkThatBothStay) {
  const LinesSite site;
  const std::filesystem::path page = site.Scratch("page.html");
  const std::filesystem::path link = site.Scratch("link.html");
  WriteBytes(page, "an older page");
  std::filesystem::create_symlink(page, link);
  EXPECT_EQ(site.Run("report", {"-o", link.string()}).code, 1);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  const std::string html = ReadBytes(page);
  EXPECT_THAT(html, StartsWith("<!DOCTYPE html>"));

  const std::filesystem::path pipe = site.Scratch("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(site.Run("report", {"-o", pipe.string()}).code, 1);
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  std::string read_back(html.size() + 1, '\0');
  EXPECT_EQ(read(reader, read_back.data(), read_back.size()), static_cast<ssize_t>(html.size()));
  EXPECT_THAT(read_back, StartsWith(html));
  close(reader);
}

// The first browser that is there and takes pictures without a display; "" without one.
std::string Browser() {
  for (const char* name : {"chromium-headless-shell", "chromium"}) {
    if (std::system((std::string("command -v ") + name + " > /dev/null").c_str()) == 0) return name;
  }
  return "";
}

class ReportInABrowser : public testing::Test {
 protected:
  void SetUp() override {
    browser_ = Browser();
    if (browser_.empty()) GTEST_SKIP() << "there is no chromium-headless-shell to look at it with";
    page_ = site_.Scratch("page.html");
    site_.Run("report", {"-o", page_.string()});
  }

  // Runs the browser on the page; gives what it prints.
  std::string Look(const std::string& options) const {
    return OutputOf(browser_ + " --no-sandbox --disable-gpu --hide-scrollbars --user-data-dir='" +
                    site_.Scratch("browser").string() + "' " + options + " 'file://" +
                    page_.string() + "' 2>/dev/null");
  }

  const LinesSite site_;
  std::filesystem::path page_;
  std::string browser_;
};

TEST_F(ReportInABrowser, HasEveryLineInItsTable) {
  const std::string dom = Look("--dump-dom");
  EXPECT_EQ(Count(dom, "<section id="), 3u);
  // Each cell in a row of its own table: nothing was moved out of one as misplaced.
  EXPECT_EQ(Count(dom, "<th scope=\"col\">"), 3u * 11u);
  EXPECT_EQ(Count(dom, "class=\"found\""), 18u);
  EXPECT_THAT(dom, HasSubstr("<q>O'Brien \"direct\"</q>"));
}

TEST_F(ReportInABrowser, ShowsItsBarsAndItsMarks) {
  if (std::system("command -v convert > /dev/null") != 0) GTEST_SKIP() << "there is no convert";
  const std::string picture = site_.Scratch("page.png").string();
  Look("--window-size=1280,1800 --screenshot='" + picture + "'");
  const std::string colors =
      OutputOf("convert '" + picture + "' -format %c histogram:info:- | tr -d ' '");
  for (const char* color : {"#2F6F9F", "#FFF1CF", "#EEF1F4"}) {
    EXPECT_THAT(colors, HasSubstr(color));
  }
}

TEST_F(ReportInABrowser, PrintsOnPages) {
  const std::string pages = site_.Scratch("page.pdf").string();
  Look("--no-pdf-header-footer --print-to-pdf='" + pages + "'");
  const std::string pdf = ReadBytes(pages);
  EXPECT_THAT(pdf, StartsWith("%PDF-"));
  const size_t sheets = Count(pdf, "/Type /Page\n");
  EXPECT_GE(sheets, 2u);
  EXPECT_LE(sheets, 4u);
}

#endif

}  // namespace
}  // namespace rdv::lines::test
