#pragma once
// Helpers the subcommands share for reading their arguments.
#include <string>
#include <vector>

namespace cli {
// "a,b,,c" → {"a", "b", "", "c"}; an empty text gives one empty item.
std::vector<std::string> SplitList(const std::string& text);
}  // namespace cli
