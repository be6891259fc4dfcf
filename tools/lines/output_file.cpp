#include "tools/lines/output_file.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "data/jet/file/draft.h"
#include "data/jet/format/header.h"

namespace rdv::lines {
namespace {

[[noreturn]] void Fail(const Text& path, const std::string& what, const std::string& why) {
  throw std::runtime_error(ToUtf8(path) + ": cannot be " + what + ": " + why);
}

// To what is no file and cannot be replaced by one: a device, a pipe.
void WriteThrough(const Text& path, std::string_view content) {
  std::ofstream stream(std::filesystem::path(path), std::ios::binary);
  stream.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!stream.flush()) Fail(path, "written", std::system_category().message(errno));
}

bool IsDeviceOrPipe(const std::filesystem::path& path) {
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::status(path, ignored);
  return std::filesystem::exists(status) && std::filesystem::is_other(status);
}

// Where the links end that the name leads through, so that they stay.
std::filesystem::path Target(const std::filesystem::path& path) {
  std::error_code ignored;
  const std::filesystem::path target = std::filesystem::canonical(path, ignored);
  return target.empty() ? path : target;
}

bool IsDatabase(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> start(4096);
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  std::error_code ignored;
  const auto size = std::filesystem::file_size(path, ignored);
  const jet::Bytes bytes(reinterpret_cast<const uint8_t*>(start.data()),
                         static_cast<size_t>(file.gcount()));
  return !bytes.empty() && !jet::WhyNotRecognized(bytes, ignored ? 0 : size);
}

}  // namespace

namespace {

// `model`: whose rights it gets, or null.
void WriteAsDraft(const Text& path, std::string_view content, jet::File* model) {
  const std::filesystem::path target = Target(std::filesystem::path(path));
  if (IsDatabase(target)) Fail(path, "written", "it is a database");
  try {
    // In a file of its own, whatever bears the draft's name already.
    jet::Draft draft(jet::NativeFileSystem(), target.u16string(), model);
    draft.Content().WriteAt(
        0, jet::Bytes(reinterpret_cast<const uint8_t*>(content.data()), content.size()));
    draft.Content().Flush();
    std::filesystem::rename(std::filesystem::path(draft.Path()), target);
  } catch (const jet::FileError& error) {
    Fail(path, "written", error.what());
  } catch (const std::filesystem::filesystem_error& error) {
    Fail(path, "written", error.code().message());
  }
}

}  // namespace

void WriteFile(const Text& path, std::string_view content) {
  if (IsDeviceOrPipe(std::filesystem::path(path))) return WriteThrough(path, content);
  WriteAsDraft(path, content, nullptr);
}

void WriteFileBeside(const Text& database, const Text& path, std::string_view content) {
  try {
    const auto model = jet::NativeFileSystem().Open(database, jet::FileAccess::Read);
    WriteAsDraft(path, content, model.get());
  } catch (const jet::FileError& error) {
    Fail(database, "read", error.what());
  }
}

std::string ReadFile(const Text& path) {
  std::error_code error;
  if (std::filesystem::is_directory(std::filesystem::path(path), error)) {
    Fail(path, "read", "it is a folder");
  }
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  if (!file) Fail(path, "read", std::system_category().message(errno));
  std::string content;
  std::vector<char> piece(1u << 20);
  while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())) || file.gcount() > 0) {
    content.append(piece.data(), static_cast<size_t>(file.gcount()));
  }
  return content;
}

}  // namespace rdv::lines
