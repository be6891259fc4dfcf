#include "tools/lines/output_file.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "data/jet/file/file.h"

namespace rdv::lines {
namespace {

[[noreturn]] void Fail(const Text& path, const std::string& what, const std::string& why) {
  throw std::runtime_error(ToUtf8(path) + ": cannot be " + what + ": " + why);
}

}  // namespace

void WriteFile(const Text& path, std::string_view content) {
  const std::filesystem::path draft(path + u".new");
  try {
    {
      const auto file = jet::NativeFileSystem().Open(draft.u16string(), jet::FileAccess::Create);
      file->Resize(0);
      file->WriteAt(0,
                    jet::Bytes(reinterpret_cast<const uint8_t*>(content.data()), content.size()));
      file->Flush();
    }
    std::filesystem::rename(draft, std::filesystem::path(path));
  } catch (const jet::FileError& error) {
    Fail(path, "written", error.what());
  } catch (const std::filesystem::filesystem_error& error) {
    std::error_code ignored;
    std::filesystem::remove(draft, ignored);
    Fail(path, "written", error.code().message());
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
