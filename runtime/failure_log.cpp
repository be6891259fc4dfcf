#include "runtime/failure_log.h"

#include <atomic>

#include "runtime/environment.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <syslog.h>
#endif

namespace rdv {
namespace {

std::atomic<FailureLog>& Replaced() {
  static std::atomic<FailureLog> log{nullptr};
  return log;
}

void LogOfTheSystem(TextView line) {
#ifdef _WIN32
  OutputDebugStringW(reinterpret_cast<const wchar_t*>((Text(line) + u"\r\n").c_str()));
#else
  syslog(LOG_USER | LOG_WARNING, "%s", ToUtf8(line).c_str());
#endif
}

// What comes from a file or a path may hold anything: control characters would end the line.
void KeepOnOneLine(Text& line) {
  for (char16_t& unit : line) {
    if (unit < u' ' || unit == 0x7F || unit == 0x2028 || unit == 0x2029) unit = u' ';
  }
}

}  // namespace

void LogFailure(TextView failure) {
  Text line = Text(u"TLV_RDV_Line_Config: ").append(failure);
  if (const Text in_force = EnvironmentInForce(); !in_force.empty())
    line.append(u" (").append(in_force).append(u")");
  KeepOnOneLine(line);
  const FailureLog log = Replaced();
  (log != nullptr ? log : LogOfTheSystem)(line);
}

FailureLog ReplaceFailureLog(FailureLog log) {
  return Replaced().exchange(log);
}

}  // namespace rdv
