#include "tools/verify/win32/process.h"

#include <stdexcept>

#include "runtime/text.h"

namespace rdv::verify {
namespace {

// That the program inherits for its output.
HANDLE OpenForOutput(const std::filesystem::path& file) {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  return CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE MakeJob() {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  return job;
}

}  // namespace

std::string Utf8(std::wstring_view text) {
  return ToUtf8(TextView(reinterpret_cast<const char16_t*>(text.data()), text.size()));
}

RunningProgram::RunningProgram(const std::filesystem::path& program, const std::wstring& arguments,
                               const std::filesystem::path& output)
    : job_(MakeJob()) {
  const HANDLE printed = OpenForOutput(output);
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = printed;
  start.hStdError = printed;
  std::wstring command = L'"' + program.wstring() + L"\" " + arguments;
  PROCESS_INFORMATION made = {};
  const BOOL started = CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE,
                                      CREATE_SUSPENDED, nullptr, nullptr, &start, &made);
  const DWORD error = started != FALSE ? ERROR_SUCCESS : GetLastError();
  CloseHandle(printed);
  if (started == FALSE) {
    CloseHandle(job_);
    throw std::runtime_error(Utf8(program.filename().wstring()) + " cannot be started, error " +
                             std::to_string(error));
  }
  AssignProcessToJobObject(job_, made.hProcess);
  ResumeThread(made.hThread);
  CloseHandle(made.hThread);
  process_ = made.hProcess;
  id_ = made.dwProcessId;
}

RunningProgram::~RunningProgram() {
  if (!HasEnded()) TerminateJobObject(job_, 1);
  CloseHandle(process_);
  CloseHandle(job_);
}

bool RunningProgram::HasEnded() const {
  return WaitForSingleObject(process_, 0) == WAIT_OBJECT_0;
}

std::optional<unsigned> RunningProgram::Wait(unsigned seconds) {
  if (WaitForSingleObject(process_, seconds * 1000) != WAIT_OBJECT_0) return std::nullopt;
  DWORD code = 0;
  GetExitCodeProcess(process_, &code);
  return code;
}

Environment::Environment(const wchar_t* name, const wchar_t* value) : name_(name) {
  before_.resize(GetEnvironmentVariableW(name, nullptr, 0));
  before_.resize(GetEnvironmentVariableW(name, before_.data(), static_cast<DWORD>(before_.size())));
  SetEnvironmentVariableW(name, value);
}

Environment::~Environment() {
  SetEnvironmentVariableW(name_, before_.empty() ? nullptr : before_.c_str());
}

}  // namespace rdv::verify
