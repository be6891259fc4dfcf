#include <filesystem>
#include <memory>
#include <ostream>

#include "runtime/error.h"
#include "tools/command_line/standard_output.h"
#include "tools/rdvsite/commands.h"
#include "tools/rdvsite/database.h"
#include "tools/rdvsite/demonstration_site.h"

namespace rdv {
namespace {

struct CreateOptions {
  std::string folder;
  int configurations = kDefaultConfigurations;
};

int Create(const CreateOptions& options, std::ostream& out) {
  try {
    out << ToUtf8(CreateDemonstrationSite(FromUtf8(options.folder), options.configurations)
                      .u16string())
        << '\n';
    tools::RequireTold(out, "the site is made");
    return tools::kDone;
  } catch (const RuntimeError& error) {
    constexpr int32_t kPathAccess = 75;
    if (error.Number() == kPathAccess) {
      throw std::runtime_error(
          "'" + options.folder +
          "' cannot be made: there is no right to write there, or a file is in "
          "the way. " +
          Described(error));
    }
    throw std::runtime_error(Described(error));
  } catch (const std::filesystem::filesystem_error& error) {
    throw std::runtime_error(Quoted(error.path1().u16string()) +
                             " cannot be made or written: " + error.code().message());
  }
}

}  // namespace

void AddCreate(tools::CommandLine& line, std::ostream& out) {
  const auto options = std::make_shared<CreateOptions>();
  CLI::App& command = line.Add("create", "makes a site to try things with",
                               [options, &out] { return Create(*options, out); });
  command
      .add_option("FOLDER", options->folder,
                  "It plays the common application data folder; made where it is missing")
      ->required()
      ->check(tools::NotEmpty());
  command
      .add_option("--configurations", options->configurations,
                  "How many, 1 to " + std::to_string(kMaxConfigurations) + "; " +
                      std::to_string(kDefaultConfigurations) + " when it is left out")
      ->type_name("N")
      ->check(CLI::Range(1, kMaxConfigurations));
  command.footer(
      "Prints the path of the database. Settings that are there are kept; where a database is, "
      "nothing\nis done.\n\n"
      "  rdvsite create site                        the database is then\n"
      "                                             site/Tolvane/ORVANT+/Database/NewDB.mdb\n"
      "  rdvsite create big --configurations 3000");
}

}  // namespace rdv
