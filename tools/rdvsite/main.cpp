#include <iostream>
#include <vector>

#include "tools/rdvsite/tool.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <stdio.h>

// The arguments come in UTF-16, and what is printed is UTF-8 without carriage returns.
int wmain(int count, wchar_t** arguments) {
  _setmode(_fileno(stdout), _O_BINARY);
  std::vector<rdv::Text> texts;
  for (int i = 1; i < count; ++i)
    texts.emplace_back(reinterpret_cast<const char16_t*>(arguments[i]));
  return rdv::RunSiteTool(texts, std::cout, std::cerr);
}

#else

int main(int count, char** arguments) {
  std::vector<rdv::Text> texts;
  for (int i = 1; i < count; ++i) texts.push_back(rdv::FromUtf8(arguments[i]));
  return rdv::RunSiteTool(texts, std::cout, std::cerr);
}

#endif
