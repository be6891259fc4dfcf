#include "data/ini_file.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "runtime/error.h"

namespace rdv {
namespace {

constexpr int32_t kPathFileAccess = 75;  // the language's number for it
constexpr uintmax_t kLargestSettingsFile = uintmax_t{64} * 1024;

std::string_view TrimBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view WithoutQuotes(std::string_view text) {
  if (text.size() < 2 || text.front() != text.back()) return text;
  if (text.front() != '"' && text.front() != '\'') return text;
  return text.substr(1, text.size() - 2);
}

bool Matches(std::string_view stored, TextView wanted) {
  return EqualsIgnoringCase(FromWindows1252(stored), wanted);
}

// The name in a section's heading; nothing for any other line.
std::optional<std::string_view> SectionName(std::string_view line) {
  if (line.empty() || line.front() != '[') return std::nullopt;
  const size_t end = line.find(']');
  if (end == std::string_view::npos) return std::nullopt;
  return line.substr(1, end - 1);
}

}  // namespace

void RequireSettingsFile(const Text& path) {
  const std::filesystem::path file(path);
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) return;
  const auto refuse = [&](TextView why) {
    throw RuntimeError(kPathFileAccess, u"'" + path + u"' " + Text(why), Text(kProductSource));
  };
  if (!std::filesystem::is_regular_file(status)) refuse(u"is no file of settings.");
  if (std::filesystem::file_size(file, error) > kLargestSettingsFile || error)
    refuse(u"is too large for a file of settings.");
}

std::optional<std::string> FindIniValue(const Text& path, TextView section, TextView key) {
  RequireSettingsFile(path);
  std::ifstream file(ToUtf8(path), std::ios::binary);
  bool in_section = false;
  for (std::string text; std::getline(file, text);) {
    const std::string_view line = TrimBlanks(text);
    if (line.empty() || line.front() == ';') continue;
    if (const auto name = SectionName(line)) {
      if (in_section) return std::nullopt;
      in_section = Matches(*name, section);
      continue;
    }
    const size_t equals = line.find('=');
    if (!in_section || equals == std::string_view::npos) continue;
    if (Matches(TrimBlanks(line.substr(0, equals)), key))
      return std::string(WithoutQuotes(TrimBlanks(line.substr(equals + 1))));
  }
  return std::nullopt;
}

}  // namespace rdv
