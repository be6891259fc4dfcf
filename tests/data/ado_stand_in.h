// A stand-in for the platform's data access: the part of its object model that the product uses, in
// this process, on top of the product's own engine. It notes what it is sent and refuses what the
// real one refuses: operations on closed objects, values of the wrong type, parameters that are not
// fully declared, texts compared with columns of numbers, providers that are not there. Windows
// only.
#pragma once

#ifdef _WIN32

#include <windows.h>

#include <memory>
#include <optional>
#include <vector>

#include "data/connection.h"
#include "runtime/error.h"
#include "runtime/text.h"

namespace rdv::test {

struct SentParameter {
  int32_t type = 0;
  int32_t direction = 0;
  int32_t size = 0;
  Argument value;

  bool operator==(const SentParameter&) const = default;
};

struct SentCommand {
  int32_t type = 0;
  Text statement;
  std::vector<SentParameter> parameters;
};

struct AdoNotes {
  std::vector<Text> connection_strings;  // of the connections that were opened
  std::vector<SentCommand> commands;     // that were executed
  int open_connections = 0;
  int open_recordsets = 0;
  // The only ones that are there.
  std::vector<Text> providers = {u"Microsoft.Jet.OLEDB.4.0"};
  // Raised, if there is one, in the place of executing a command, or of opening a connection.
  std::optional<RuntimeError> failure;
  std::optional<RuntimeError> opening_failure;
};

// For its life the classes "ADODB.Connection" and "ADODB.Command" are those of the stand-in.
class AdoStandIn {
 public:
  AdoStandIn();
  AdoStandIn(const AdoStandIn&) = delete;
  AdoStandIn& operator=(const AdoStandIn&) = delete;
  ~AdoStandIn();

  // False where the classes have no identifiers on this machine.
  bool Usable() const { return registrations_.size() == 2; }
  const AdoNotes& Notes() const { return *notes_; }
  void FailWith(const RuntimeError& error) { notes_->failure = error; }
  void FailOpeningWith(const RuntimeError& error) { notes_->opening_failure = error; }
  void Provide(const Text& provider) { notes_->providers.push_back(provider); }

 private:
  std::shared_ptr<AdoNotes> notes_;
  std::vector<DWORD> registrations_;
};

}  // namespace rdv::test

#endif
