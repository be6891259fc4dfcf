// All that reading commands need of a site, from one state of its file.
#pragma once

#include <vector>

#include "tools/lines/commands.h"
#include "tools/lines/findings.h"
#include "tools/lines/unit.h"

namespace rdv::lines {

struct SiteContents {
  std::vector<Unit> units;        // ascending
  std::vector<Finding> findings;  // in the order of units; empty unless asked for
  Text settings_failure;          // why the settings file cannot be read; empty when it can

  bool Flawless() const { return findings.empty() && settings_failure.empty(); }
};

enum class WithFindings { No, Yes };

// Throws tools::Refusal for a configuration that the site does not know, and what the engine raises
// for a site that cannot be read.
SiteContents ReadSite(const Selection& selection, WithFindings with_findings,
                      const Surroundings& around);

}  // namespace rdv::lines
