// The lines of a unit as the database holds them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "data/connection.h"
#include "data/recordset.h"
#include "runtime/text.h"
#include "tools/lines/site_session.h"

namespace rdv::lines {

// The lines that a unit may have: the two pairs for music on hold are the last.
inline constexpr int16_t kFirstLine = 1;
inline constexpr int16_t kLastLine = 12;

// All columns of all stored lines of the unit, by line number.
RowTable ReadStoredLines(SiteSession& session, int16_t config);
// The unit's card, no row or one.
RowTable ReadStoredCard(SiteSession& session, int16_t config);

// The configurations of which lines are stored, ascending.
std::vector<int16_t> ConfigurationsWithLines(SiteSession& session);
// Those that the site knows at all, by their settings, partitions or lines, ascending.
std::vector<int16_t> KnownConfigurations(SiteSession& session);

// How many lines the units of the site can show: what is stored, and what the control fills units
// up with.
size_t MostLines(SiteSession& session);

// The position of a column, without regard to case. Raises 3265 for a name that is none.
size_t ColumnAt(const RowTable& table, TextView name);

// What a stored value looks like to people: Null is "".
Text Shown(const Value& value);

}  // namespace rdv::lines
