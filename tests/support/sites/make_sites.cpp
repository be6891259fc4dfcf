// Makes the sites of all texts anew, before the tests of a run that use them, so that they are the
// work of the engine that is tested.
//   make_sites [NAME...]
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "tests/support/sites/sample_sites.h"
#include "tests/support/sites/site_text.h"

int main(int argc, char** argv) {
  try {
    std::vector<std::string> names(argv + 1, argv + argc);
    if (names.empty()) names = rdv::sites::SiteNames();
    for (const std::string& name : names) {
      rdv::sites::RemakeSite(name);
      std::printf("%s\n", name.c_str());
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_sites: %s\n", error.what());
    return 1;
  }
}
