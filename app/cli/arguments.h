#pragma once
// Helpers the subcommands share for reading their arguments.
#include <string>
#include <vector>

namespace cli {
// "a,b,,c" → {"a", "b", "", "c"}; an empty text gives one empty item.
std::vector<std::string> SplitList(const std::string& text);
// "1,2.5" → {1, 2.5}: exactly count finite numbers, else false.
bool SplitNumbers(const std::string& text, std::vector<double>& out, std::size_t count);

// Whether two paths name the same file (the same file reached through a
// link or another spelling included; a file not made yet only by its path).
bool SameFile(const std::string& a, const std::string& b);

// The first of outputs that would overwrite input, or null: a command
// never writes its input drawing unless told to work in place.
const std::string* OverwritesInput(const std::string& input, const std::vector<std::string>& outputs);
}  // namespace cli
