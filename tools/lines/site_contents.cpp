#include "tools/lines/site_contents.h"

#include <algorithm>

#include "tools/command_line/command_line.h"
#include "tools/lines/stored_lines.h"

namespace rdv::lines {
namespace {

std::vector<int16_t> Selected(SiteSession& session, const std::vector<int16_t>& named) {
  if (named.empty()) return ConfigurationsWithLines(session);
  const std::vector<int16_t> known = KnownConfigurations(session);
  std::vector<int16_t> selected = named;
  std::sort(selected.begin(), selected.end());
  selected.erase(std::unique(selected.begin(), selected.end()), selected.end());
  for (const int16_t config : selected) {
    if (std::binary_search(known.begin(), known.end(), config)) continue;
    throw tools::Refusal("configuration " + std::to_string(config) + " is not in the site");
  }
  return selected;
}

}  // namespace

SiteContents ReadSite(const Selection& selection, WithFindings with_findings,
                      const Surroundings& around) {
  SiteSession session(LocateSite(selection.site));
  return ReadConsistently(session, [&] {
    SiteContents contents;
    const std::vector<int16_t> configs = Selected(session, selection.configs);
    UnitReader reader(session);
    std::optional<SiteRules> rules;
    if (with_findings == WithFindings::Yes) rules.emplace(session, reader);
    Progress progress(around.errors, around.on_terminal, "configuration", configs.size());
    contents.settings_failure = reader.SettingsFailure();
    for (const int16_t config : configs) {
      contents.units.push_back(reader.Read(config));
      if (rules) {
        std::vector<Finding> found = rules->Check(contents.units.back());
        std::move(found.begin(), found.end(), std::back_inserter(contents.findings));
      }
      progress.Done(contents.units.size());
    }
    return contents;
  });
}

}  // namespace rdv::lines
