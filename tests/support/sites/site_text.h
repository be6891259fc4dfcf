// A site as its text says it: tables, rows in the order in which they are stored, changes of rows,
// settings files, and damage that is done to the finished database. One file a site lies in
// tests/sites, NAME.site:
//
//   # What the site is for.
//   like plain                        all that the other site has
//   like plain: rows, settings        a part of it: tables, rows, settings, damage
//   without Used_Cards                a table that is not made after all; its rows neither
//
//   table Used_Lines                  takes the place of a table of this name that there is
//     Rec Long autonumber             TYPE is Boolean, Byte, Integer, Long, Currency, Single,
//     Double, Label Text 50 required          DateTime, Binary N, Text N, Ole, Memo, Guid or
//     Numeric P S key Config_ID, Line             the index PrimaryKey index Down: Line desc, Rec
//     behind the name: unique, required, ignoring-nulls
//
//   insert Used_Lines                 a row a line; see expression.h
//     1, "Front desk"                 for all columns but autonumbers, in the order of the table
//   insert Used_Lines for n = 1 .. 36000: Line, Label
//     n % 12 + 1, "Line " & n         each line once for each n; for the columns named
//   insert Used_Lines for n = 1 .. 36000 with c = n / 12, line = n % 12 + 1
//                                   numbers that each line can use besides
//   insert Used_Lines for n = 1 .. 36000 with kind = n % 2 choosing kind
//                                   one of the lines for each n: the first for 0, the second for 1
//   let label = "Line " & n           a name for an expression, in all lines that use it
//   update Used_Lines: Line; Label    the rows with these values in the columns before the
//   semicolon
//     4, "Moved"                      get those behind it
//   overwrite Used_Lines: Line; Label the same for texts of the same length, but written over the
//   old
//     4, "\u53d7"                     ones past the engine: indexes keep the keys that they have
//   delete Used_Lines: Line           the rows with these values
//     9
//   relationship Name: Used_Lines.Config_ID refers orvsettings.ConfigID cascading-updates
//
//   settings ini-china                ORVANTPlus.ini in a folder of this name, word for word
//     [IMPEDANCE]
//
//   damage                            see damage.h
//     cut 1000
//
// A comment begins with #, blanks at a line's beginning mean that it belongs to the line above, and
// a line that ends with a comma goes on in the next one. Reading raises SiteTextError with file and
// line.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/jet/catalog/table_spec.h"
#include "runtime/value.h"
#include "tests/support/sites/expression.h"

namespace rdv::sites {

class SiteTextError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Where a line stands, for the texts of errors.
struct Line {
  std::string file;
  int number = 0;
  std::string text;

  [[noreturn]] void Fail(const std::string& why) const;
};

struct Statement {
  enum class Kind { Insert, Update, Overwrite, Delete, Relate };
  Kind kind = Kind::Insert;
  std::string table;
  std::vector<Text> sought;  // columns that tell the rows
  std::vector<Text> given;   // columns that get values; an insertion's without any: all of them
  std::string counter;       // "" where each line stands for one row
  int64_t first = 0;
  int64_t last = 0;
  std::vector<std::pair<std::string, std::string>> with;  // numbers for each round
  std::string choosing;  // the number of the line that is meant; "": each of them
  std::vector<Line> rows;
  jet::RelationshipSpec relationship;
  Line line;
};

struct Settings {
  std::string folder;
  std::string content;  // lines end in CR LF
};

struct Site {
  std::string name;
  std::vector<jet::TableSpec> tables;
  std::vector<Statement> statements;
  std::vector<Settings> settings;
  std::vector<Line> damage;
  Names names;

  // Null when there is none.
  const jet::TableSpec* Table(std::string_view table) const;
};

// Of the text NAME.site in the folder of the sites' texts: "plain", "broken/03-no-bytes".
Site ReadSite(const std::string& name);
// Of a text that a test brings along.
Site ParseSite(const std::string& name, std::string_view text);

// The names of all texts, or of those below one folder, sorted: "broken/03-no-bytes".
std::vector<std::string> SiteNames(const std::string& folder = "");

}  // namespace rdv::sites
