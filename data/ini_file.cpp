#include "data/ini_file.h"

#include <string_view>

#ifdef _WIN32
#include <filesystem>
#include <fstream>
#include <system_error>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#endif

#include "runtime/error.h"

namespace rdv {
namespace {

constexpr int32_t kPathFileAccess = 75;  // the language's number for it
constexpr size_t kLargestSettingsFile = size_t{64} * 1024;

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

[[noreturn]] void Refuse(const Text& path, TextView why) {
  throw RuntimeError(kPathFileAccess, u"'" + path + u"' " + Text(why), Text(kProductSource));
}
[[noreturn]] void RefuseKind(const Text& path) {
  Refuse(path, u"is no file of settings.");
}
[[noreturn]] void RefuseSize(const Text& path) {
  Refuse(path, u"is too large for a file of settings.");
}

#ifdef _WIN32

// What the name stands for is looked at before it is read: the system's function, which reads the
// settings, takes a name as well, and reads no more than its caller has room for.
std::string Content(const Text& path) {
  RequireSettingsFile(path);
  std::string content(kLargestSettingsFile, '\0');
  std::ifstream stream(std::filesystem::path(path), std::ios::binary);
  stream.read(content.data(), static_cast<std::streamsize>(content.size()));
  content.resize(static_cast<size_t>(stream.gcount()));
  return content;
}

#else

// Opened once, so that what is looked at is what is read; by whichever links its administrator has
// laid. Nothing is waited for: not for somebody at the other end of a pipe.
std::string Content(const Text& path) {
  const int file = open(ToUtf8(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0 && errno == ENXIO) RefuseKind(path);  // a socket
  if (file < 0) return {};
  struct Closing {
    int descriptor;
    ~Closing() { close(descriptor); }
  } const closing{file};
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) RefuseKind(path);
  // One byte more than it may have: its size may be another one by now, or not be told.
  std::string content(kLargestSettingsFile + 1, '\0');
  size_t size = 0;
  while (size < content.size()) {
    const ssize_t count = read(file, content.data() + size, content.size() - size);
    if (count == 0 || (count < 0 && errno != EINTR)) break;
    if (count > 0) size += static_cast<size_t>(count);
  }
  if (size > kLargestSettingsFile) RefuseSize(path);
  content.resize(size);
  return content;
}

#endif

}  // namespace

#ifdef _WIN32
void RequireSettingsFile(const Text& path) {
  const std::filesystem::path file(path);
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) return;
  if (!std::filesystem::is_regular_file(status)) RefuseKind(path);
  if (std::filesystem::file_size(file, error) > kLargestSettingsFile || error) RefuseSize(path);
}
#endif

std::optional<std::string> FindIniValue(const Text& path, TextView section, TextView key) {
  const std::string content = Content(path);
  std::string_view rest = content;
  bool in_section = false;
  while (!rest.empty()) {
    const size_t end = rest.find('\n');
    const std::string_view line = TrimBlanks(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
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
