#include "tools/command_line/program.h"

#include <iostream>
#include <streambuf>
#include <vector>

#include "runtime/text.h"
#include "tools/command_line/console.h"
#include "tools/command_line/standard_output.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

int Run(const std::vector<std::string>& arguments) {
  rdv::tools::StandardOutput out;
  return rdv::tools::Program(arguments, out, std::cerr);
}

}  // namespace

#ifdef _WIN32

namespace {

// Errors for a console, which then shows them whatever its code page is; elsewhere as they are.
class Errors : public std::streambuf {
 public:
  Errors() : console_(GetStdHandle(STD_ERROR_HANDLE)) {
    if (console_.IsThere()) before_ = std::cerr.rdbuf(this);
  }
  Errors(const Errors&) = delete;
  Errors& operator=(const Errors&) = delete;
  ~Errors() override {
    if (before_ != nullptr) std::cerr.rdbuf(before_);
  }

 private:
  int_type overflow(int_type unit) override {
    if (traits_type::eq_int_type(unit, traits_type::eof())) return traits_type::not_eof(unit);
    const char one = traits_type::to_char_type(unit);
    return xsputn(&one, 1) == 1 ? unit : traits_type::eof();
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    return console_.Write({text, static_cast<size_t>(size)}) ? size : 0;
  }

  rdv::tools::Console console_;
  std::streambuf* before_ = nullptr;
};

}  // namespace

// The arguments come in UTF-16, whatever the code page of the system is.
int wmain(int count, wchar_t** words) {
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i)
    arguments.push_back(rdv::ToUtf8(reinterpret_cast<const char16_t*>(words[i])));
  const Errors errors;
  return Run(arguments);
}

#else

int main(int count, char** words) {
  return Run({words + 1, words + count});
}

#endif
