#include "runtime/environment.h"

#include <array>
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#endif

namespace rdv {
namespace {

struct Named {
  EnvironmentVariable variable;
  TextView name;
};
constexpr std::array kVariables = {
    Named{EnvironmentVariable::DatabaseRoute, u"RDV_DATABASE_ROUTE"},
    Named{EnvironmentVariable::CommonAppData, u"RDV_COMMON_APPDATA"},
    Named{EnvironmentVariable::ShellFolders, u"RDV_SHELL_FOLDERS"},
    Named{EnvironmentVariable::Registration, u"RDV_REGISTRATION"},
};

Text Read(TextView name) {
#ifdef _WIN32
  const Text ended(name);
  const auto* wide = reinterpret_cast<const wchar_t*>(ended.c_str());
  Text value(GetEnvironmentVariableW(wide, nullptr, 0), u'\0');
  const auto capacity = static_cast<DWORD>(value.size());
  const DWORD length =
      GetEnvironmentVariableW(wide, reinterpret_cast<wchar_t*>(value.data()), capacity);
  // Longer than it was a moment ago: somebody is just changing it.
  value.resize(length < capacity ? length : 0);
  return value;
#else
  const char* value = std::getenv(ToUtf8(name).c_str());
  return value == nullptr ? Text() : FromUtf8(value);
#endif
}

}  // namespace

Text ValueOf(EnvironmentVariable variable) {
  for (const Named& each : kVariables) {
    if (each.variable == variable) return Read(each.name);
  }
  return {};
}

Text EnvironmentInForce() {
  Text all;
  for (const Named& each : kVariables) {
    const Text value = Read(each.name);
    if (value.empty()) continue;
    if (!all.empty()) all.append(u", ");
    all.append(each.name).append(u"=").append(value);
  }
  return all;
}

}  // namespace rdv
