#pragma once

// What comes of every call with good arguments: results, what came back in arguments, and codes.

#include <map>
#include <string>

namespace tarvo::test {

// A checksum for each method by its declaration, and for the properties of each class by its name.
using Results = std::map<std::string, std::string, std::less<>>;

Results results_of_all_calls();
Results read_results();
void write_results(const Results& results);

}  // namespace tarvo::test
