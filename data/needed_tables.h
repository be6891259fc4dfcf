// What the control needs of the configuration database: the tables and columns that its commands
// name and that it reads from their rows. A database that lacks one of them can be sound as a file,
// and the control fails on it all the same.
#pragma once

#include <span>

#include "runtime/text.h"

namespace rdv {

struct NeededTable {
  TextView name;
  std::span<const TextView> columns;
};

// By name; all names are found without regard to case.
std::span<const NeededTable> NeededTables();
// Of one of them, those by which its rows are told apart first.
std::span<const TextView> ColumnsOf(TextView table);

}  // namespace rdv
