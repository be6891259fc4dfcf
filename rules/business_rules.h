// What the control edits: set through the control and readable by its host.
#pragma once

#include <cstdint>

namespace rdv {

struct Business_Rules {
  int16_t ConfigID = 0;     // the configuration being edited
  int16_t PartitionID = 0;  // the partition of the line that was clicked last
};

}  // namespace rdv
