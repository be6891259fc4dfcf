#include "tools/lines/dated_files.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace rdv::lines {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono;

// Behind the name of the database.
constexpr std::string_view kPattern = "-00000000-000000-000";
// Behind the name that a file in the making is to have.
constexpr const char* kDraftEnding = ".new";

std::string Digits(unsigned number, size_t count) {
  std::string digits = std::to_string(number);
  return std::string(count - std::min(count, digits.size()), '0') + digits;
}

std::string StampOf(sys_time<milliseconds> time) {
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  return "-" + Digits(static_cast<unsigned>(static_cast<int>(date.year())), 4) +
         Digits(static_cast<unsigned>(date.month()), 2) +
         Digits(static_cast<unsigned>(date.day()), 2) + "-" +
         Digits(static_cast<unsigned>(clock.hours().count()), 2) +
         Digits(static_cast<unsigned>(clock.minutes().count()), 2) +
         Digits(static_cast<unsigned>(clock.seconds().count()), 2) + "-" +
         Digits(static_cast<unsigned>(clock.subseconds().count()), 3);
}

int NumberIn(std::string_view stamp, size_t at, size_t count) {
  return std::stoi(std::string(stamp.substr(at, count)));
}

year_month_day DateIn(std::string_view stamp) {
  return {year(NumberIn(stamp, 1, 4)), month(static_cast<unsigned>(NumberIn(stamp, 5, 2))),
          day(static_cast<unsigned>(NumberIn(stamp, 7, 2)))};
}

// One of a time that there is, and before the last year that a stamp can name: others have to
// follow.
bool IsStamp(std::string_view text) {
  const bool has_form =
      text.size() == kPattern.size() &&
      std::equal(text.begin(), text.end(), kPattern.begin(), [](char unit, char pattern) {
        return pattern == '0' ? unit >= '0' && unit <= '9' : unit == pattern;
      });
  constexpr year kLastYear{9998};
  return has_form && DateIn(text).ok() && DateIn(text).year() <= kLastYear &&
         NumberIn(text, 10, 2) < 24 && NumberIn(text, 12, 2) < 60 && NumberIn(text, 14, 2) < 60;
}

std::string Utf8(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

// The stamp of one of the database's files; empty for any other.
std::string StampIn(const std::string& name, const std::string& stem, std::string_view ending) {
  if (name.size() != stem.size() + kPattern.size() + ending.size()) return {};
  if (!name.starts_with(stem) || !name.ends_with(ending)) return {};
  const std::string stamp = name.substr(stem.size(), kPattern.size());
  return IsStamp(stamp) ? stamp : std::string();
}

fs::path FolderOf(const fs::path& database) {
  return database.has_parent_path() ? database.parent_path() : fs::path(".");
}

}  // namespace

std::vector<fs::path> DatedFiles(const fs::path& database, std::string_view ending) {
  const std::string stem = Utf8(database.stem());
  std::vector<fs::path> files;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(FolderOf(database), ignored)) {
    // Anything may lie there under such a name; a pipe would be waited for.
    if (!entry.is_regular_file(ignored)) continue;
    if (!StampIn(Utf8(entry.path().filename()), stem, ending).empty()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

fs::path NextDatedStem(const fs::path& database) {
  const std::string stem = Utf8(database.stem());
  std::string newest;
  for (const std::string_view ending : {kCopyEnding, kRecordEnding}) {
    const std::vector<fs::path> files = DatedFiles(database, ending);
    if (files.empty()) continue;
    newest = std::max(newest, StampIn(Utf8(files.back().filename()), stem, ending));
  }
  auto time = floor<milliseconds>(system_clock::now());
  std::string stamp = StampOf(time);
  if (stamp <= newest) {
    // As far behind the newest one as a clock can tell, whatever the clock says now.
    time = sys_days(DateIn(newest)) + hours(NumberIn(newest, 10, 2)) +
           minutes(NumberIn(newest, 12, 2)) + seconds(NumberIn(newest, 14, 2)) +
           milliseconds(NumberIn(newest, 17, 3) + 1);
    stamp = StampOf(time);
  }
  const std::string name = stem + stamp;
  return FolderOf(database) / fs::path(std::u8string(name.begin(), name.end()));
}

void RemoveDrafts(const fs::path& database) {
  for (const std::string_view ending : {kCopyEnding, kRecordEnding}) {
    for (const fs::path& draft : DatedFiles(database, std::string(ending) + kDraftEnding)) {
      std::error_code ignored;
      fs::remove(draft, ignored);
    }
  }
}

void RemoveOldest(const fs::path& database, std::string_view ending) {
  const std::vector<fs::path> files = DatedFiles(database, ending);
  for (size_t i = 0; i + kKeptFiles < files.size(); ++i) {
    std::error_code ignored;
    fs::remove(files[i], ignored);
  }
}

}  // namespace rdv::lines
