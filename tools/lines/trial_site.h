// A place for a trial where nothing may be written: a copy of the site that goes when it is over.
#pragma once

#include "tools/database_file/temporary_copy.h"
#include "tools/lines/site_session.h"

namespace rdv::lines {

// Runs `work`, which takes a session and may raise NoRightToWrite before it has done anything. A
// trial then has its way on a copy.
template <typename Work>
auto WithTrialSite(SiteSession& session, bool is_trial, Work work) {
  try {
    return work(session);
  } catch (const NoRightToWrite&) {
    if (!is_trial) throw;
  }
  const TemporaryCopy copy(session.Database(), jet::Suspects::Refused);
  SiteSession on_copy({copy.Path(), session.Location().suite_folder});
  return work(on_copy);
}

}  // namespace rdv::lines
