// rdvplay: plays scenario scripts on a control and prints what its host and its user see.
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

#include <cstdio>
#include <exception>
#include <iostream>

#include "tools/play/player.h"

namespace {

constexpr std::string_view kUsage =
    "usage: rdvplay [--site DIR] SCRIPT...\n"
    "  --site DIR   the common application data folder of every script\n"
    "  -            as SCRIPT: standard input\n";

constexpr int kFailed = 1;

}  // namespace

int main(int count, char** words) {
  using namespace rdv::play;
#ifdef _WIN32
  _setmode(_fileno(stdout), _O_BINARY);  // answers end in a line feed, here too
#endif
  try {
    const Options options = ParseOptions({words + 1, words + count});
    return static_cast<int>(PlayAll(options, std::cin, std::cout, std::cerr));
  } catch (const UsageError& error) {
    std::cerr << "rdvplay: " << error.what() << '\n' << kUsage;
    return static_cast<int>(ExitStatus::ScriptError);
  } catch (const std::exception& error) {
    std::cerr << "rdvplay: " << error.what() << '\n';
    return kFailed;
  }
}
