// The providers through which the configuration database can be opened. Windows only.
#pragma once

#include <optional>

#include "runtime/error.h"
#include "runtime/text.h"

namespace rdv::ado {

// Whether this process can create the provider: its name leads to a class that has an in-process
// server in the registry as this process sees it. The name alone proves nothing, because programs
// of both word sizes share the names and each has classes of its own.
bool CanCreateProvider(TextView name);

// The named provider, or else the first of its successors, that this process can create and that
// was not set aside. Nothing when there is none.
std::optional<Text> FindProvider(TextView named);

// Never finds the provider again in this process. May be called from any thread.
void SetAsideProvider(TextView name);

// Whether an error of opening a connection says that its provider, or the data access itself, is
// not there.
bool SaysThatProviderIsMissing(const RuntimeError& error);

}  // namespace rdv::ado
