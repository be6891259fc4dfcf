// The configuration database through the product's own engine.
#pragma once

#include <memory>

#include "data/connection.h"
#include "data/jet/engine.h"
#include "runtime/text.h"

namespace rdv::jet {

// Opens the file. Raises the engine's errors.
std::unique_ptr<Connection> OpenJetConnection(const Text& path, const EngineOptions& options = {});

}  // namespace rdv::jet
