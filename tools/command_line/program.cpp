#include "tools/command_line/program.h"

#include <iostream>
#include <vector>

#include "runtime/text.h"
#include "tools/command_line/standard_output.h"

namespace {

int Run(const std::vector<std::string>& arguments) {
  rdv::tools::StandardOutput out;
  return rdv::tools::Program(arguments, out, std::cerr);
}

}  // namespace

#ifdef _WIN32

// The arguments come in UTF-16, whatever the code page of the system is.
int wmain(int count, wchar_t** words) {
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i)
    arguments.push_back(rdv::ToUtf8(reinterpret_cast<const char16_t*>(words[i])));
  return Run(arguments);
}

#else

int main(int count, char** words) {
  return Run({words + 1, words + count});
}

#endif
