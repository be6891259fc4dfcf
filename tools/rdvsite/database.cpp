#include "tools/rdvsite/database.h"

#include <filesystem>
#include <stdexcept>
#include <vector>

#include "data/jet/file/file.h"
#include "data/jet/format/errors.h"
#include "data/jet/format/format.h"
#include "data/jet/format/header.h"

namespace rdv {
namespace {

// Below the common application data folder.
constexpr const char* kDatabaseInSite = "Tolvane/ORVANT+/Database/NewDB.mdb";

// Why the file is not read here, nothing when its beginning is that of a database that is.
std::optional<Text> WhyNotRead(const Text& path) {
  try {
    const auto file = jet::NativeFileSystem().Open(path, jet::FileAccess::Read);
    std::vector<uint8_t> start(jet::kJet4.page_size);
    start.resize(file->ReadAt(0, start));
    return jet::WhyNotRecognized(start, file->Stamp().size);
  } catch (const jet::FileError& error) {
    return u"It cannot be read: " + FromUtf8(error.what());
  }
}

}  // namespace

void AddFileOperand(CLI::App& command, std::string& file) {
  command.add_option("FILE", file, "The database, or the folder that holds a site")
      ->required()
      ->check(tools::NotEmpty());
}

Text DatabasePath(const std::string& given) {
  const std::filesystem::path path(FromUtf8(given));
  std::error_code ignored;
  if (!std::filesystem::is_directory(path, ignored)) return path.u16string();
  const std::filesystem::path database = path / kDatabaseInSite;
  if (std::filesystem::exists(database, ignored)) return database.u16string();
  throw std::runtime_error("'" + given + "' is a folder, and no site: there is no " +
                           kDatabaseInSite + " in it");
}

std::unique_ptr<jet::Engine> OpenDatabase(const Text& path) {
  try {
    return jet::Engine::Open(path);
  } catch (const RuntimeError& error) {
    throw std::runtime_error(Explained(error, path));
  }
}

std::string Explained(const RuntimeError& error, const Text& path) {
  std::string text = Described(error);
  if (static_cast<jet::ErrorNumber>(error.Number()) == jet::ErrorNumber::WrongPassword)
    return "'" + ToUtf8(path) + "' is protected by a password; remove it where it was set. " + text;
  if (error.Description().starts_with(u"Unrecognized database format")) {
    // A reason that the error tells itself is not told twice.
    const std::optional<Text> reason = WhyNotRead(path);
    if (reason && error.Description().find(*reason) == Text::npos)
      return ToUtf8(*reason) + ". " + text;
  }
  return text;
}

std::string Described(const RuntimeError& error) {
  return ToUtf8(error.Description()) + " (error " + std::to_string(error.Number()) + ", " +
         ToUtf8(error.Source()) + ")";
}

std::string Quoted(const Text& name) {
  return "'" + ToUtf8(name) + "'";
}

}  // namespace rdv
