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

std::string OverwritesInput(const std::string& input, const std::vector<std::string>& outputs) {
  for (const std::string& out : outputs)
    if (!out.empty() && SameFile(input, out)) return out;
  return {};
}

std::string StdoutClash(bool json, const std::vector<std::string>& outputs) {
  int toStdout = 0;
  for (const std::string& out : outputs) toStdout += out == "-";
  if (toStdout > 1) return "only one output can be '-' (standard output)";
  if (toStdout && json) return "'-' writes to standard output, where --json prints; give a file name";
  return {};
}

std::size_t DisplayWidth(std::string_view utf8) {
  std::size_t width = 0;
  for (std::size_t i = 0; i < utf8.size();) {
    const unsigned char c = static_cast<unsigned char>(utf8[i]);
    const std::size_t len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 1;
    unsigned cp = len == 1 ? c : c & (0xFF >> (len + 1));
    for (std::size_t k = 1; k < len && i + k < utf8.size(); ++k) cp = (cp << 6) | (utf8[i + k] & 0x3F);
    const bool wide = (cp >= 0x1100 && cp <= 0x115F) || (cp >= 0x2E80 && cp <= 0xA4CF) ||
                      (cp >= 0xAC00 && cp <= 0xD7A3) || (cp >= 0xF900 && cp <= 0xFAFF) ||
                      (cp >= 0xFE30 && cp <= 0xFE4F) || (cp >= 0xFF00 && cp <= 0xFF60) ||
                      (cp >= 0xFFE0 && cp <= 0xFFE6) || (cp >= 0x20000 && cp <= 0x3FFFD);
    width += wide ? 2 : 1;
    i += len;
  }
  return width;
}

std::string PadToWidth(const std::string& text, std::size_t width) {
  const std::size_t w = DisplayWidth(text);
  return text + std::string(w < width ? width - w : 1, ' ');
}

}  // namespace cli
