// One database file that is kept open while many units of it are read and written, each through
// the same connections and rules as in the control.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

#include "data/connection.h"
#include "data/jet/engine.h"
#include "data/jet/format/errors.h"
#include "data/jet/sql/statement.h"
#include "data/site_in_place.h"
#include "runtime/error.h"
#include "tools/lines/site_location.h"

namespace rdv::lines {

// What a Writing raises where the system keeps this user from writing the database or beside it.
class NoRightToWrite : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Every access lies in a Reading or a Writing. While one is open, every DataBase of this process
// works in it: on one state of the file, or inside the one change that Commit makes. Not
// thread-safe. A database that cannot be opened, or not written, raises std::runtime_error with a
// sentence for the user; everything else RuntimeError.
class SiteSession {
 public:
  explicit SiteSession(SiteLocation location);
  SiteSession(const SiteSession&) = delete;
  SiteSession& operator=(const SiteSession&) = delete;
  ~SiteSession();

  const Text& Database() const { return location_.database; }
  const SiteLocation& Location() const { return location_; }

  class Reading {
   public:
    explicit Reading(SiteSession& session);
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading();

    // False when a program that knows nothing of the engine's locks has written meanwhile.
    bool StillValid() const { return scope_.StillValid(); }

   private:
    SiteSession& session_;
    const jet::Engine::ReadScope scope_;
    const SiteInPlace in_place_;
  };

  // Given up without Commit, nothing of what was written is in the file.
  class Writing {
   public:
    explicit Writing(SiteSession& session);
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;
    ~Writing();

    void Commit() { scope_.Commit(); }

   private:
    SiteSession& session_;
    jet::Engine::WriteScope scope_;
    const SiteInPlace in_place_;
  };

  // Throws where a table or a column is missing. Inside a Reading; a Writing does it by itself.
  void RequireParts();
  // Throws std::runtime_error with the file's name and the reason.
  [[noreturn]] void RaiseUnusable(const std::string& why) const;
  // Throws it with what the user can do about it.
  [[noreturn]] void RaiseExplained(const RuntimeError& error) const;

  // Inside a Reading or a Writing.
  CommandResult Execute(TextView statement, std::span<const Argument> arguments);
  // For a statement that returns rows.
  RowTable Rows(TextView statement, std::span<const Argument> arguments = {});
  jet::Engine& Engine() { return *engine_; }

  // Flushes what was written to the disk and lets the file go.
  void Close() { engine_->Close(); }

 private:
  class Forwarding;

  std::unique_ptr<Connection> Connect();
  CommandResult Run(const jet::sql::Statement& statement, std::span<const Argument> arguments);
  const jet::sql::Statement& Parsed(TextView statement);
  void ForgetRows();

  const SiteLocation location_;
  std::unique_ptr<jet::Engine> engine_;
  std::map<Text, jet::sql::Statement, std::less<>> statements_;
  // Rows that were read in this scope, by statement and arguments: the reference tables are asked
  // for anew for every unit, and a unit's lines are asked for twice.
  std::map<Text, RowTable, std::less<>> reference_rows_;
  std::optional<std::pair<Text, RowTable>> last_rows_;
};

// Runs `read` on one state of the file, again when another program has changed it meanwhile.
template <typename Read>
auto ReadConsistently(SiteSession& session, Read read) {
  constexpr int kAttempts = 5;
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    const SiteSession::Reading reading(session);
    try {
      session.RequireParts();
      auto result = read();
      if (reading.StillValid()) return result;
    } catch (const RuntimeError& error) {
      if (reading.StillValid()) session.RaiseExplained(error);
    } catch (const std::exception&) {
      // What was read from a file that changed meanwhile says nothing about the file.
      if (reading.StillValid()) throw;
    }
  }
  jet::RaiseFileInUse(session.Database());
}

}  // namespace rdv::lines
