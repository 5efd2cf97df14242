#include "app/cli/arguments.h"

#include <cmath>
#include <cstdlib>

namespace cli {

std::vector<std::string> SplitList(const std::string& text) {
  std::vector<std::string> out;
  std::size_t pos = 0;
  while (true) {
    const std::size_t comma = text.find(',', pos);
    out.push_back(text.substr(pos, comma == std::string::npos ? std::string::npos : comma - pos));
    if (comma == std::string::npos) return out;
    pos = comma + 1;
  }
}

bool SplitNumbers(const std::string& text, std::vector<double>& out, std::size_t count) {
  out.clear();
  for (const std::string& part : SplitList(text)) {
    char* end = nullptr;
    const double v = std::strtod(part.c_str(), &end);
    if (part.empty() || *end != 0 || !std::isfinite(v)) return false;
    out.push_back(v);
  }
  return out.size() == count;
}

}  // namespace cli
