#include "tools/rdvsite/database.h"

#include <filesystem>
#include <stdexcept>

#include "data/jet/format/errors.h"
#include "tools/database_file/database_of_site.h"

namespace rdv {

void AddFileOperand(CLI::App& command, std::string& file) {
  command.add_option("FILE", file, "The database, or the folder that holds a site")
      ->required()
      ->check(tools::NotEmpty());
}

Text DatabasePath(const std::string& given) {
  const std::filesystem::path path(FromUtf8(given));
  std::error_code ignored;
  const bool is_folder = std::filesystem::is_directory(path, ignored);
  return FileOf(is_folder ? DatabaseOfSite(path) : path).u16string();
}

std::unique_ptr<jet::Engine> OpenDatabase(const Text& path) {
  try {
    return jet::Engine::Open(path, {.reads_suspect = true});
  } catch (const RuntimeError& error) {
    throw std::runtime_error(Explained(error, path));
  }
}

bool IsAboutFile(const RuntimeError& error, const Text& path) {
  return static_cast<jet::ErrorNumber>(error.Number()) == jet::ErrorNumber::General &&
         error.Description().find(u"'" + path + u"'") != Text::npos;
}

}  // namespace rdv
