// Columns of text under one another, as a terminal shows them.
#pragma once

#include <string>
#include <vector>

#include "runtime/text.h"

namespace rdv::lines {

// How many places a text takes; characters that are drawn over another take none, those of East
// Asian scripts two.
size_t DisplayWidth(TextView text);

// The first row is the heading. No blanks at the ends of lines; what would break a line becomes a
// blank.
std::string AlignedTable(const std::vector<std::vector<Text>>& rows);

// A text as a message may have it: what would break its line, or change how a terminal shows what
// follows, becomes a blank. UTF-8.
std::string OnOneLine(TextView text);

// A text in quotes, as it is: for a message that goes through OnOneLine as a whole.
Text InQuotes(TextView text);

// A text in quotes for a message: what would break the line becomes a blank.
std::string Quotation(TextView text);

}  // namespace rdv::lines
