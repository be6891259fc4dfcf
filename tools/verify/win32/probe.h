// What only a program of a word size can say for that word size: the kit starts its own programs of
// both to ask.
#pragma once

#include <iosfwd>
#include <span>
#include <string>

namespace rdv::verify {

// Prints a JSON object: "provider", the one through which this process opens databases or "";
// "lists", whether this process can make drop-down lists.
void PrintProbe(std::ostream& out);

// Opens each database through that provider and through the product's engine and prints a line of
// JSON for each: "file", "difference" ("" where both read the same).
void PrintReadings(const std::string& provider, std::span<const std::string> files,
                   std::ostream& out);

}  // namespace rdv::verify
