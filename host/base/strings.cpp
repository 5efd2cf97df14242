#include "host/base/strings.h"

namespace host {
namespace {
char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
}  // namespace

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (upper(a[i]) != upper(b[i])) return false;
  return true;
}

std::string foldCase(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = upper(c);
  return out;
}

bool containsNoCase(std::string_view haystack, std::string_view needle) {
  return foldCase(haystack).find(foldCase(needle)) != std::string::npos;
}

}  // namespace host
