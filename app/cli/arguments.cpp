#include "app/cli/arguments.h"

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

}  // namespace cli
