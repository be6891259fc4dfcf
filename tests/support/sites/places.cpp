#include "tests/support/sites/places.h"

#include <fstream>
#include <map>
#include <stdexcept>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

namespace rdv::sites {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kBetween = " = ";

fs::path Program() {
#ifdef _WIN32
  std::wstring path(32767, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
#else
  return fs::read_symlink("/proc/self/exe");
#endif
}

fs::path ListOfPlaces() {
  for (fs::path folder = Program().parent_path();; folder = folder.parent_path()) {
    if (fs::exists(folder / "places.txt")) return folder / "places.txt";
    if (folder == folder.parent_path())
      throw std::runtime_error("no places.txt in " + Program().parent_path().string() +
                               " or above it");
  }
}

std::map<std::string, fs::path, std::less<>> ReadPlaces() {
  const fs::path list = ListOfPlaces();
  std::map<std::string, fs::path, std::less<>> places;
  std::ifstream stream(list, std::ios::binary);
  for (std::string line; std::getline(stream, line);) {
    const size_t between = line.find(kBetween);
    if (between == std::string::npos) continue;
    places[line.substr(0, between)] =
        (list.parent_path() / line.substr(between + kBetween.size())).lexically_normal();
  }
  return places;
}

}  // namespace

fs::path Place(std::string_view name) {
  static const auto places = ReadPlaces();
  const auto found = places.find(name);
  if (found == places.end())
    throw std::runtime_error("places.txt does not name " + std::string(name));
  return found->second;
}

}  // namespace rdv::sites
