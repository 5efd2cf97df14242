#pragma once
// Text in the host is UTF-8 in std::string. CString is the name the module uses.
#include <string>
#include <string_view>

using CString = std::string;

namespace host {

// Case-insensitive equality that folds ASCII letters only; every other byte
// (Chinese names included) must match exactly.
bool equalsNoCase(std::string_view a, std::string_view b);
// ASCII upper-case copy, used as the key of case-insensitive tables.
std::string foldCase(std::string_view s);
bool containsNoCase(std::string_view haystack, std::string_view needle);

}  // namespace host
