#include "data/connection_route.h"

#include <optional>
#include <utility>

#include "data/jet/sql/jet_connection.h"
#include "runtime/environment.h"
#include "runtime/error.h"

#ifdef _WIN32
#include "data/ado/ado_connection.h"
#include "data/ado/provider.h"
#endif

namespace rdv {
namespace {

constexpr TextView kProvider = u"Provider=";
constexpr TextView kDataSource = u"Data Source=";

// The path is the last attribute; it may hold any character.
TextView DataSource(TextView connection_string) {
  const size_t start = connection_string.find(kDataSource);
  return start == TextView::npos ? TextView()
                                 : connection_string.substr(start + kDataSource.size());
}

std::optional<DatabaseRoute> DemandedRoute() {
  const Text demanded = ValueOf(EnvironmentVariable::DatabaseRoute);
  if (EqualsIgnoringCase(demanded, u"ado")) return DatabaseRoute::Ado;
  if (EqualsIgnoringCase(demanded, u"jet")) return DatabaseRoute::Jet;
  return std::nullopt;
}

#ifdef _WIN32

// The connection string's first attribute.
TextView NamedProvider(TextView connection_string) {
  if (!connection_string.starts_with(kProvider)) return {};
  connection_string.remove_prefix(kProvider.size());
  return connection_string.substr(0, connection_string.find(u';'));
}

bool HasProvider(TextView connection_string) {
  return ado::FindProvider(NamedProvider(connection_string)).has_value();
}

// Null when no provider is there. One that turns out not to be is not asked again.
std::unique_ptr<Connection> TryProviders(const Text& connection_string) {
  while (const auto provider = ado::FindProvider(NamedProvider(connection_string))) {
    try {
      return ado::OpenAdoConnection(ForProvider(connection_string, *provider));
    } catch (const RuntimeError& error) {
      if (!ado::SaysThatProviderIsMissing(error)) throw;
      ado::SetAsideProvider(*provider);
    }
  }
  return nullptr;
}

// By the provider that can be created, or, to have its error, by the named one.
std::unique_ptr<Connection> OpenByProvider(const Text& connection_string) {
  auto connection = TryProviders(connection_string);
  return connection ? std::move(connection)
                    : ado::OpenAdoConnection(
                          ForProvider(connection_string, NamedProvider(connection_string)));
}

#else

bool HasProvider(TextView) {
  return false;
}

std::unique_ptr<Connection> TryProviders(const Text&) {
  return nullptr;
}

std::unique_ptr<Connection> OpenByProvider(const Text&) {
  throw RuntimeError(429, u"ActiveX component can't create object", Text(kProductSource));
}

#endif

}  // namespace

Text ForProvider(TextView connection_string, TextView provider) {
  Text text(kProvider);
  text.append(provider).append(u";").append(kDataSource).push_back(u'"');
  for (const char16_t unit : DataSource(connection_string)) {
    if (unit == u'"') text.push_back(unit);  // twice, as one would end the value
    text.push_back(unit);
  }
  text.push_back(u'"');
  return text;
}

DatabaseRoute ChooseDatabaseRoute(TextView connection_string) {
  if (const auto demanded = DemandedRoute()) return *demanded;
  return HasProvider(connection_string) ? DatabaseRoute::Ado : DatabaseRoute::Jet;
}

std::unique_ptr<Connection> OpenConnection(const Text& connection_string) {
  const auto demanded = DemandedRoute();
  if (demanded == DatabaseRoute::Ado) return OpenByProvider(connection_string);
  if (!demanded) {
    if (auto connection = TryProviders(connection_string)) return connection;
  }
  return jet::OpenJetConnection(Text(DataSource(connection_string)));
}

}  // namespace rdv
