#include "app/cli/arguments.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>

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

bool SameFile(const std::string& a, const std::string& b) {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (fs::exists(a, ec) && fs::exists(b, ec)) return fs::equivalent(a, b, ec);
  return fs::weakly_canonical(a, ec) == fs::weakly_canonical(b, ec);
}

const std::string* OverwritesInput(const std::string& input, const std::vector<std::string>& outputs) {
  for (const std::string& out : outputs)
    if (!out.empty() && SameFile(input, out)) return &out;
  return nullptr;
}

}  // namespace cli
