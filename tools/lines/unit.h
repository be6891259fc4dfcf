// One unit as it is stored and as the control shows it.
#pragma once

#include <cstdint>
#include <vector>

#include "control/grid_loading.h"
#include "data/connection.h"
#include "rules/control_state.h"
#include "rules/grid_rows.h"
#include "rules/line_templates.h"
#include "rules/list_loaders.h"
#include "tools/lines/site_session.h"
#include "widgets/memory/memory_form.h"

namespace rdv::lines {

struct Unit {
  int16_t config = 0;
  RowTable stored;             // its lines, all columns, by line number
  std::vector<RowCells> rows;  // as the control shows them
  // The stored captions of lines that no row shows. The second half of a pair is shown by the
  // first.
  std::vector<RowCells> not_shown;
  Text failure;  // why it cannot show them all; empty when it can

  bool HasLines() const { return !stored.rows.empty(); }
};

// Reads units through the loaders of the control, on a form without windows, and changes nothing: a
// unit without stored lines has no rows here, where the control would make it new ones. Inside a
// Reading or a Writing of the session.
class UnitReader {
 public:
  // Throws std::runtime_error with what keeps every unit of the site from being read.
  explicit UnitReader(SiteSession& session);

  Unit Read(int16_t config);

  // Why the site's settings file cannot be read, which concerns all units; empty when it can.
  const Text& SettingsFailure() const { return settings_failure_; }
  // The lists of the unit that was read last, and those of all units.
  const ControlState& State() const { return state_; }
  const memory::MemoryForm& Widgets() const { return form_; }
  // What the grid shows for a stored volume.
  Text StoredVolume(Code volume, Code line_type);
  // Fills the lists of the editors for lines of a type. False when a loader failed.
  bool LoadListsOf(Code line_type);

 private:
  Text TakeFailure();
  std::vector<RowCells> NotShown(const Unit& unit) const;

  SiteSession& session_;
  memory::MemoryForm form_{kGridContent};
  const Form widgets_;
  ControlState state_;
  ListLoaders loaders_;
  LineTemplates templates_;
  GridLoading grid_loading_;
  Text settings_failure_;
};

// What a report of the control says, its lines joined by semicolons.
Text InOneLine(TextView report);

// What several reports say, on one line; a reason that several of them give is told once.
Text InOneLine(const std::vector<memory::ShownMessage>& reports);

}  // namespace rdv::lines
