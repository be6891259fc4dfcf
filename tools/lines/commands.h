// What each command does, once its words are understood. Each gives the exit code.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "runtime/text.h"
#include "tools/lines/progress.h"

namespace rdv::lines {

// What a command works with besides its own words.
struct Surroundings {
  std::ostream& out;
  std::ostream& errors;
  bool on_terminal = false;
  std::function<void()> before_writing;
  Text command;  // the words as they were given, for the record of a change
};

// Which site, and which of its configurations: all of which lines are stored when none is named.
struct Selection {
  std::optional<Text> site;
  std::vector<int16_t> configs;
};

enum class Format { Text, Csv, Json };

int Show(const Selection& selection, Format format, const Surroundings& around);
int Check(const Selection& selection, Format format, const Surroundings& around);
// Both without a file to `out`.
int Export(const Selection& selection, const std::optional<Text>& file, const Surroundings& around);
// `title` is the heading of the page.
int Report(const Selection& selection, const std::optional<Text>& file, const Text& title,
           const Surroundings& around);
int Compare(const Text& left, const Text& right, Format format, const Surroundings& around);

// A value for a column, as in "Volume=High".
struct Assignment {
  int column = 0;
  Text value;
};
struct LineRange {
  int first = 0;
  int last = 0;
};

// Without ranges, all lines that the control shows.
int Set(const Selection& selection, const std::vector<LineRange>& lines,
        const std::vector<Assignment>& assignments, bool dry_run, const Surroundings& around);
int Restore(const Selection& selection, const Text& unit_type, bool dry_run,
            const Surroundings& around);
int Import(const std::optional<Text>& site, const Text& file, bool dry_run,
           const Surroundings& around);
int Undo(const std::optional<Text>& site, bool dry_run, const Surroundings& around);

}  // namespace rdv::lines
