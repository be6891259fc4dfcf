// The commands of a script: what each takes, does and answers.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/play/answers.h"
#include "tools/play/driver.h"
#include "tools/play/script.h"

namespace rdv::play {

class Arguments;

// All commands, what they take and what they do, for people.
std::string ScriptHelp();

class Commands {
 public:
  // Both outlive the object.
  Commands(Driver& driver, Answers& answers) : driver_(driver), answers_(answers) {}

  // One line of a script, not an empty one. Raises ScriptError for a command or an argument that
  // does not exist; nothing has been done then.
  void Run(const std::vector<Token>& line);

  // The table of commands as a text.
  static std::string Help();

 private:
  struct Rule;
  static std::span<const Rule> Rules();
  static const Rule& RuleOf(const Token& command);
  void Answer(const Refusal& refused);

  void Site(const Arguments& given);
  void Create(const Arguments& given);
  void Show(const Arguments& given);
  void Assign(const Arguments& given);
  void Click(const Arguments& given);
  void ClickAt(const Arguments& given);
  void Key(const Arguments& given);
  void ColumnClick(const Arguments& given);
  void ColumnWidth(const Arguments& given);
  void Scroll(const Arguments& given);
  void Pick(const Arguments& given);
  void Type(const Arguments& given);
  void Paste(const Arguments& given);
  void Press(const Arguments& given);
  void QueueAnswer(const Arguments& given);
  void Dump(const Arguments& given);
  void Lines(const Arguments& given);
  void Cards(const Arguments& given);
  void Destroy(const Arguments& given);

  void DumpState();
  void DumpRows();
  void DumpEditors();
  void DumpLists();
  void DumpGeometry();

  Driver& driver_;
  Answers& answers_;
};

}  // namespace rdv::play
