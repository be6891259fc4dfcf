// Programs that the kit starts.
#pragma once

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>

namespace rdv::verify {

// A program that runs, with all that it starts. What is still running when the object goes is
// ended.
class RunningProgram {
 public:
  // `arguments` follow the program as they stand. What is printed goes to the file `output`. Throws
  // std::runtime_error, with the system's number, when the program cannot be started.
  RunningProgram(const std::filesystem::path& program, const std::wstring& arguments,
                 const std::filesystem::path& output);
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram();

  DWORD Id() const { return id_; }
  bool HasEnded() const;
  // Waits so long at most and gives its exit code; none when it has not ended then.
  std::optional<unsigned> Wait(unsigned seconds);

 private:
  HANDLE job_ = nullptr;
  HANDLE process_ = nullptr;
  DWORD id_ = 0;
};

// An environment variable of this process and of those that it starts; null takes it away. As it
// was when the object goes.
class Environment {
 public:
  Environment(const wchar_t* name, const wchar_t* value);
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment();

 private:
  const wchar_t* const name_;
  std::wstring before_;
};

// UTF-8 of the platform's text.
std::string Utf8(std::wstring_view text);

}  // namespace rdv::verify
