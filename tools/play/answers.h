// The answers of a scenario: one line of JSON each, written out at once.
#pragma once

#include <ostream>
#include <string_view>
#include <utility>
#include <vector>

#include "data/connection.h"
#include "tools/play/json_writer.h"
#include "tools/play/snapshot.h"

namespace rdv::play {

// Members come in the order in which they are declared to users of the scripts; tests compare whole
// lines.
class Answers {
 public:
  template <class Seen>
  using Named = std::vector<std::pair<std::string_view, Seen>>;

  explicit Answers(std::ostream& out) : out_(out) {}

  void Done(std::string_view command, bool result = true);  // {"create":true}
  void Nothing(std::string_view command);                   // {"assign":null}
  void Refused(TextView reason);

  void State(const StateSeen& state, int remove_me, const std::vector<MessageSeen>& messages);
  void Rows(const std::vector<RowSeen>& rows);
  void Editors(const Named<EditorSeen>& editors);
  void Lists(const Named<ListSeen>& lists);
  void Geometry(const GeometrySeen& geometry);
  // One object for each row, with all columns of the table.
  void Stored(std::string_view what, const RowTable& table);

 private:
  void Write(const JsonWriter& json);

  std::ostream& out_;
};

}  // namespace rdv::play
