// What the host and the user of a control can see, at one moment. Sizes are in twips.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "runtime/text.h"
#include "widgets/layout.h"

namespace rdv::play {

struct MessageSeen {
  Text text;
  std::optional<Text> title;  // nothing: a box without a title of its own
  int style = 0;
  std::string answer;
};

struct StateSeen {
  bool apply_enabled = false;
  bool configuration_enabled = false;
  Text unit_type;
  int pointer = 0;
  std::optional<std::string> focus;  // a widget's name
};

struct RowSeen {
  bool selected = false;
  std::vector<Text> cells;
};

struct EditorSeen {
  bool visible = false;
  Twips left = 0;
  Twips top = 0;
  Twips width = 0;
  Text text;
  std::optional<int> index;  // of a drop-down list; -1 = nothing selected
};

struct ListSeen {
  struct Entry {
    Text caption;
    int32_t item_data = 0;
  };

  int index = -1;
  Text text;
  std::vector<Entry> entries;
  int drop_down_width = 0;  // in pixels
};

struct GeometrySeen {
  struct RowPlace {
    Twips left = 0;
    Twips top = 0;
    Twips height = 0;
  };
  struct ColumnPlace {
    Twips left = 0;
    Twips width = 0;
  };

  Rectangle grid;
  std::vector<RowPlace> rows;
  std::vector<ColumnPlace> columns;
};

}  // namespace rdv::play
