#include "tools/verify/win32/probe.h"

#include <windows.h>
// COM's headers need the platform's before them.
#include <objbase.h>

#include <nlohmann/json.hpp>
#include <ostream>

#include "data/ado/ado_connection.h"
#include "data/ado/provider.h"
#include "data/connection_route.h"
#include "data/jet/sql/jet_connection.h"
#include "runtime/error.h"
#include "tools/verify/database_text.h"

namespace rdv::verify {
namespace {

constexpr TextView kNamedProvider = u"Microsoft.Jet.OLEDB.4.0";

bool MakesDropDownLists() {
  const HWND list = CreateWindowExW(0, L"COMBOBOX", L"", CBS_DROPDOWNLIST, 0, 0, 10, 10, nullptr,
                                    nullptr, nullptr, nullptr);
  if (list) DestroyWindow(list);
  return list != nullptr;
}

// "" where both ways read the same.
std::string Difference(const Text& provider, const Text& file) {
  try {
    const auto by_engine = jet::OpenJetConnection(file);
    const std::string expected = TextOfDatabase(*by_engine);
    by_engine->Close();
    const auto by_provider =
        ado::OpenAdoConnection(ForProvider(u"Provider=;Data Source=" + file, provider));
    const std::string read = TextOfDatabase(*by_provider);
    by_provider->Close();
    return read == expected ? "" : "the engine reads\n" + expected + "the provider\n" + read;
  } catch (const RuntimeError& error) {
    return ToUtf8(error.Source() + u": " + error.Description());
  }
}

}  // namespace

void PrintProbe(std::ostream& out) {
  const auto provider = ado::FindProvider(kNamedProvider);
  out << nlohmann::json{{"provider", ToUtf8(provider.value_or(Text()))},
                        {"lists", MakesDropDownLists()}}
      << '\n';
}

void PrintReadings(const std::string& provider, std::span<const std::string> files,
                   std::ostream& out) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  for (const std::string& file : files) {
    out << nlohmann::json{{"file", file},
                          {"difference", Difference(FromUtf8(provider), FromUtf8(file))}}
        << '\n';
  }
  CoUninitialize();
}

}  // namespace rdv::verify
