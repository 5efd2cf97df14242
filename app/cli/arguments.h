#pragma once
// Helpers the subcommands share for reading their arguments.
#include <string>
#include <string_view>
#include <vector>

namespace cli {
// "a,b,,c" → {"a", "b", "", "c"}; an empty text gives one empty item.
std::vector<std::string> SplitList(const std::string& text);
// "1,2.5" → {1, 2.5}: exactly count finite numbers, else false.
bool SplitNumbers(const std::string& text, std::vector<double>& out, std::size_t count);

// Whether two paths name the same file (the same file reached through a
// link or another spelling included; a file not made yet only by its path).
bool SameFile(const std::string& a, const std::string& b);

// The first of outputs that would overwrite input, or empty: a command
// never writes its input drawing unless told to work in place.
std::string OverwritesInput(const std::string& input, const std::vector<std::string>& outputs);
// Why the outputs cannot be written, or empty: '-' (standard output) names
// at most one of them, and not when --json prints there.
std::string StdoutClash(bool json, const std::vector<std::string>& outputs);
// Columns a UTF-8 text takes in a terminal: East Asian wide characters
// (Chinese, Japanese, Korean, full-width forms) take two.
std::size_t DisplayWidth(std::string_view utf8);
// text followed by spaces up to width columns (at least one space after it).
std::string PadToWidth(const std::string& text, std::size_t width);
}  // namespace cli
