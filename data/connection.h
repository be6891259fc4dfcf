// The seam between the configuration database's named commands and what executes them: the
// product's own engine (data/jet) or the platform's data access (data/ado).
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv {

// A command argument: text, converted by the executing side to the type of the column that it
// meets; nothing stands for Null.
using Argument = std::optional<Text>;

// What the columns hold that a parameter is compared with or written to.
enum class ParameterKind { AnyText, WholeNumber };

struct Parameter {
  TextView name;
  ParameterKind kind = ParameterKind::AnyText;
};

// The rows of a command, complete and independent of the connection that delivered them.
struct RowTable {
  std::vector<Text> columns;
  std::vector<std::vector<Value>> rows;  // each as long as `columns`
};

struct CommandResult {
  std::optional<RowTable> rows;  // for a statement that returns rows, even when there are none
  int rows_written = 0;
};

// Not thread-safe. Closing flushes the data to disk, once, if anything was written. Destroying the
// object closes the connection, too, but an error of the flush is lost then.
class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection() = default;

  // Runs one statement of the stored commands, its parameters bound by position to `arguments`.
  // Raises RuntimeError with the number, description and source of the data access; a statement
  // that raises has written nothing. `parameters` declares as many from the first on as it has;
  // the rest meet texts. (A provider has to be told; the engine looks at the columns themselves.)
  virtual CommandResult Execute(TextView statement, std::span<const Argument> arguments,
                                std::span<const Parameter> parameters) = 0;
  CommandResult Execute(TextView statement, std::span<const Argument> arguments) {
    return Execute(statement, arguments, {});
  }

  // The last call. Raises when what was written may not have reached the disk.
  virtual void Close() = 0;
};

}  // namespace rdv
