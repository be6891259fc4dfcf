#include "data/connection_route.h"

#include <cstdlib>

#include "data/jet/sql/jet_connection.h"
#include "runtime/error.h"

#ifdef _WIN32
#include "data/ado/ado_connection.h"
#endif

namespace rdv {
namespace {

#ifdef _WIN32

bool ProviderIsRegistered() {
  return ado::JetProviderIsRegistered();
}

std::unique_ptr<Connection> OpenAdoConnection(const Text& connection_string) {
  return ado::OpenAdoConnection(connection_string);
}

#else

bool ProviderIsRegistered() {
  return false;
}

std::unique_ptr<Connection> OpenAdoConnection(const Text&) {
  throw RuntimeError(429, u"ActiveX component can't create object", Text(kProductSource));
}

#endif

// The path is the last attribute; it may hold any character.
TextView DataSource(TextView connection_string) {
  constexpr TextView kAttribute = u"Data Source=";
  const size_t start = connection_string.find(kAttribute);
  return start == TextView::npos ? TextView() : connection_string.substr(start + kAttribute.size());
}

}  // namespace

DatabaseRoute ChooseDatabaseRoute() {
  const char* variable = std::getenv("RDV_DATABASE_ROUTE");
  const Text forced = variable == nullptr ? Text() : FromUtf8(variable);
  if (EqualsIgnoringCase(forced, u"ado")) return DatabaseRoute::Ado;
  if (EqualsIgnoringCase(forced, u"jet")) return DatabaseRoute::Jet;
  return ProviderIsRegistered() ? DatabaseRoute::Ado : DatabaseRoute::Jet;
}

std::unique_ptr<Connection> OpenConnection(const Text& connection_string) {
  if (ChooseDatabaseRoute() == DatabaseRoute::Ado) return OpenAdoConnection(connection_string);
  return jet::OpenJetConnection(Text(DataSource(connection_string)));
}

}  // namespace rdv
