#pragma once

#include <iosfwd>
#include <map>
#include <string>

namespace driftmark::bench {

/// The measured values by key.
using Figures = std::map<std::string, double>;

/// Prints every key with its value, its bounds, and the bound that it keeps.
void printTable(std::ostream& out, const Figures& figures);

/// Prints the values as one flat JSON object.
void printJson(std::ostream& out, const Figures& figures);

} // namespace driftmark::bench
