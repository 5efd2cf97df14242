#include "host/ed/registry.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "host/base/strings.h"

namespace host::ed {
namespace {

std::vector<std::string> readLines(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

bool isSection(const std::string& line, std::string& key) {
  if (line.size() < 2 || line.front() != '[' || line.back() != ']') return false;
  key = line.substr(1, line.size() - 2);
  return true;
}

}  // namespace

std::string registryFile() {
  if (const char* f = std::getenv("ENVLINE_REGISTRY"); f && *f) return f;
  std::string dir;
  if (const char* x = std::getenv("XDG_CONFIG_HOME"); x && *x) dir = x;
  else if (const char* h = std::getenv("HOME"); h && *h) dir = std::string(h) + "/.config";
  else dir = ".";
  return dir + "/envline/registry.ini";
}

bool readRegistryValue(const std::string& key, const std::string& name, std::string& value) {
  std::string section;
  bool inKey = false;
  for (const std::string& line : readLines(registryFile())) {
    if (isSection(line, section)) {
      inKey = equalsNoCase(section, key);
      continue;
    }
    const std::size_t eq = line.find('=');
    if (inKey && eq != std::string::npos && equalsNoCase(line.substr(0, eq), name)) {
      value = line.substr(eq + 1);
      return true;
    }
  }
  return false;
}

bool writeRegistryValue(const std::string& key, const std::string& name, const std::string& value) {
  const std::string path = registryFile();
  std::vector<std::string> lines = readLines(path);
  std::string section;
  bool inKey = false, done = false;
  std::size_t keyEnd = lines.size();
  bool keyFound = false;
  for (std::size_t i = 0; i < lines.size() && !done; ++i) {
    if (isSection(lines[i], section)) {
      if (inKey) keyEnd = i;
      inKey = equalsNoCase(section, key);
      keyFound = keyFound || inKey;
      continue;
    }
    const std::size_t eq = lines[i].find('=');
    if (inKey && eq != std::string::npos && equalsNoCase(lines[i].substr(0, eq), name)) {
      lines[i] = name + "=" + value;
      done = true;
    }
  }
  if (!done) {
    if (!keyFound) {
      lines.push_back("[" + key + "]");
      keyEnd = lines.size();
    } else if (inKey) {
      keyEnd = lines.size();
    }
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(keyEnd), name + "=" + value);
  }
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
  const std::string tmp = path + ".tmp";
  {
    std::ofstream out(tmp, std::ios::trunc);
    for (const std::string& l : lines) out << l << '\n';
    out.flush();
    if (!out) return false;
  }
  std::filesystem::rename(tmp, path, ec);
  return !ec;
}

}  // namespace host::ed
