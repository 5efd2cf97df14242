#pragma once
// Helpers the subcommands share for reading their arguments.
#include <string>
#include <vector>

namespace cli {
// "a,b,,c" → {"a", "b", "", "c"}; an empty text gives one empty item.
std::vector<std::string> SplitList(const std::string& text);
// "1,2.5" → {1, 2.5}: exactly count finite numbers, else false.
bool SplitNumbers(const std::string& text, std::vector<double>& out, std::size_t count);
}  // namespace cli
