// The small language in which the values of a site's text are written: literals, names, arithmetic
// on whole numbers, and a few functions.
//
//   1  -0.5  "text"  null  yes  no      in texts: \" \\ \n \r \t \uXXXX
//   n % 12 + 1   "Line " & n            the usual order; & joins texts
//   pick(i, a, b, ...)                  a for 0, b for 1 and so on, from the beginning again
//   digit("220", i)                     the digit at this place, from 0
//   counted("remark", 1500)             remark 1; remark 2; ... cut off at so many characters
//   filled("later ", 50)                the text over and over, cut off likewise
//   date("2011-03-14T15:09:26")  hex("00ff")  guid("{...}")
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv::sites {

// What is wrong with a text, without the place.
class TextError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using Cell = std::variant<Null, bool, int64_t, double, DateTime, Guid, Text, Binary>;

// Names that stand for numbers (of a loop) and for expressions.
struct Names {
  std::map<std::string, int64_t, std::less<>> numbers;
  std::map<std::string, std::string, std::less<>> definitions;
};

// Takes a line apart from its front. Everything raises TextError.
class LineReader {
 public:
  // Both must outlive the reader.
  LineReader(std::string_view line, const Names& names) : rest_(line), names_(&names) {}

  bool AtEnd();
  // Takes the word or the sign when it comes next.
  bool Take(std::string_view token);
  void Expect(std::string_view token);
  // A name, also one with dots in it ("Used_Lines.PrimaryKey").
  std::string Name();
  Cell Expression();
  int64_t Number();
  // A number that other numbers may follow: arithmetic only in parentheses.
  int64_t Count();
  // Expressions with commas in between.
  std::vector<Cell> List();
  // The number that comes next, as it stands: up to a comma, a colon or " choosing ", but for what
  // stands in parentheses.
  std::string NumberText();
  void ExpectEnd();

 private:
  void SkipBlanks();
  Cell Sum();
  Cell Product();
  Cell Factor();
  Cell Literal();
  Cell Call(const std::string& name);
  Cell NumberLiteral();
  Text TextLiteral();

  std::string_view rest_;
  const Names* names_;
  int depth_ = 0;  // of definitions inside definitions
};

// Without a comment, which # begins outside of texts, and without blanks at the end.
std::string_view WithoutComment(std::string_view line);

}  // namespace rdv::sites
