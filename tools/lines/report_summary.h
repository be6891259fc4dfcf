// The beginning of a report: how much there is of what, as figures and as bars.
#pragma once

#include <string>

#include "tools/lines/site_contents.h"

namespace rdv::lines {

void AppendSummary(const SiteContents& contents, std::string& to);

}  // namespace rdv::lines
