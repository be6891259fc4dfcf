#include "tools/verify/win32/probe.h"

#include <windows.h>
// COM's headers need the platform's before them.
#include <objbase.h>

#include <functional>
#include <memory>
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

Reading Read(const std::function<std::unique_ptr<Connection>()>& open) {
  try {
    const auto connection = open();
    std::string text = TextOfDatabase(*connection);
    connection->Close();
    return {true, std::move(text)};
  } catch (const RuntimeError& error) {
    return {false, ToUtf8(error.Source() + u": " + error.Description())};
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
    const Text path = FromUtf8(file);
    const Reading engine = Read([&] { return jet::OpenJetConnection(path); });
    const Reading other = Read([&] {
      return ado::OpenAdoConnection(
          ForProvider(u"Provider=;Data Source=" + path, FromUtf8(provider)));
    });
    out << nlohmann::json{{"file", file}, {"difference", DifferenceOf(engine, other)}} << '\n';
  }
  CoUninitialize();
}

}  // namespace rdv::verify
