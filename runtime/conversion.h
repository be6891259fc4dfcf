// Numbers read from text, as the grid's cells, the editors and the database's fields hold them.
#pragma once

#include <cstdint>
#include <optional>

#include "runtime/text.h"

namespace rdv {

// The number that the whole text stands for, blanks around it allowed: an optional sign, digits
// with an optional decimal point, an optional exponent. Nothing for any other text.
std::optional<double> ParseNumber(TextView text);

bool IsNumeric(TextView text);

// Rounds a fraction half to even. Raise 13 (Type mismatch) for text that is no number and 6
// (Overflow) for a number outside the range of the result.
int16_t CInt(TextView text);
int32_t CLng(TextView text);

// Raises 13 for text that is no number. For comparing a cell with a number.
double CDbl(TextView text);

// Half to even; raise 6 outside the range.
int16_t RoundToInt16(double number);
int32_t RoundToInt32(double number);

}  // namespace rdv
