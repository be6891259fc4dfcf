#include "tools/lines/site_session.h"

#include <stdexcept>
#include <utility>

#include "data/jet/sql/execution.h"
#include "data/jet/sql/parameters.h"
#include "data/jet/sql/statement_parser.h"
#include "tools/database_file/explained.h"
#include "tools/database_file/missing_parts.h"

namespace rdv::lines {
namespace {

// A large site lies in memory as a whole.
constexpr size_t kCachedPages = 16384;

jet::EngineOptions Options() {
  jet::EngineOptions options;
  options.cache_pages = kCachedPages;
  return options;
}

Text KeyOf(TextView statement, std::span<const Argument> arguments) {
  Text key(statement);
  for (const Argument& argument : arguments) {
    key += u'\0';
    key += argument ? *argument : Text(u"\1");
  }
  return key;
}

bool IsReferenceQuery(TextView statement) {
  return statement.find(u"FROM SR_") != TextView::npos;
}

// With the next step where the file is damaged: this tool mends nothing.
std::string WithNextStep(const RuntimeError& error, const Text& path) {
  const bool damaged = error.Description().find(u"file may be corrupt") != Text::npos;
  return Explained(error, path) +
         (damaged ? "; rdvsite check " + ToUtf8(path) + " tells what is damaged" : "");
}

std::unique_ptr<jet::Engine> OpenDatabase(const Text& path) {
  try {
    return jet::Engine::Open(path, Options());
  } catch (const RuntimeError& error) {
    throw std::runtime_error(WithNextStep(error, path));
  }
}

}  // namespace

// What a DataBase gets: it opens and closes nothing.
class SiteSession::Forwarding : public Connection {
 public:
  explicit Forwarding(SiteSession& session) : session_(session) {}

  using Connection::Execute;
  CommandResult Execute(TextView statement, std::span<const Argument> arguments,
                        std::span<const Parameter>) override {
    return session_.Execute(statement, arguments);
  }
  void Close() override {}

 private:
  SiteSession& session_;
};

SiteSession::SiteSession(SiteLocation location)
    : location_(std::move(location)), engine_(OpenDatabase(location_.database)) {}

SiteSession::~SiteSession() = default;

SiteSession::Reading::Reading(SiteSession& session)
    : session_(session),
      scope_(*session.engine_),
      in_place_(session.location_.suite_folder, [&session] { return session.Connect(); }) {
  session_.ForgetRows();
}

SiteSession::Reading::~Reading() {
  session_.ForgetRows();
}

SiteSession::Writing::Writing(SiteSession& session) try
    : session_(session),
      scope_(*session.engine_),
      in_place_(session.location_.suite_folder, [&session] { return session.Connect(); }) {
  session_.ForgetRows();
  session_.RequireParts();
} catch (const RuntimeError& error) {
  if (IsMissingRight(error)) throw NoRightToWrite(Explained(error, session.Database()));
  session.RaiseExplained(error);
}

SiteSession::Writing::~Writing() {
  session_.ForgetRows();
}

void SiteSession::RequireParts() {
  // One lock and one copy are of one file: what lies in another could be lost.
  std::string missing;
  for (const std::string& part : MissingParts(*engine_, Links::Refused)) {
    missing += (missing.empty() ? "" : "; ") + part;
  }
  if (!missing.empty()) RaiseUnusable(missing);
}

void SiteSession::RaiseUnusable(const std::string& why) const {
  throw std::runtime_error(Quoted(Database()) + " cannot be used: " + why);
}

void SiteSession::RaiseExplained(const RuntimeError& error) const {
  throw std::runtime_error(WithNextStep(error, Database()));
}

std::unique_ptr<Connection> SiteSession::Connect() {
  return std::make_unique<Forwarding>(*this);
}

void SiteSession::ForgetRows() {
  reference_rows_.clear();
  last_rows_.reset();
}

const jet::sql::Statement& SiteSession::Parsed(TextView statement) {
  const auto known = statements_.find(statement);
  if (known != statements_.end()) return known->second;
  return statements_.emplace(Text(statement), jet::sql::ParseStatement(statement)).first->second;
}

CommandResult SiteSession::Execute(TextView text, std::span<const Argument> arguments) {
  const jet::sql::Statement& statement = Parsed(text);
  if (std::holds_alternative<jet::sql::Select>(statement)) {
    CommandResult result;
    result.rows = Rows(text, arguments);
    return result;
  }
  ForgetRows();
  return Run(statement, arguments);
}

CommandResult SiteSession::Run(const jet::sql::Statement& statement,
                               std::span<const Argument> arguments) {
  engine_->BeginStatement();
  const jet::TableDefinition& table = engine_->Table(jet::sql::TableOf(statement));
  return jet::sql::MakePlan(statement, table)->Run(*engine_, arguments);
}

RowTable SiteSession::Rows(TextView text, std::span<const Argument> arguments) {
  Text key = KeyOf(text, arguments);
  if (last_rows_ && last_rows_->first == key) return last_rows_->second;
  const auto known = reference_rows_.find(key);
  if (known != reference_rows_.end()) return known->second;
  RowTable rows = Run(Parsed(text), arguments).rows.value();
  if (IsReferenceQuery(text)) {
    reference_rows_.emplace(std::move(key), rows);
  } else {
    last_rows_.emplace(std::move(key), rows);
  }
  return rows;
}

}  // namespace rdv::lines
