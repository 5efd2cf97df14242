#include "host/base/file_replace.h"

#include <filesystem>

namespace host {

std::string TempPathBeside(const std::string& path) {
  const std::filesystem::path target(path);
  return (target.parent_path() / ("." + target.filename().string() + ".tmp")).string();
}

bool MoveIntoPlace(const std::string& tmp, const std::string& path, std::string& error) {
  std::error_code ec;
  std::filesystem::rename(tmp, path, ec);
  if (!ec) return true;
  std::filesystem::remove(tmp, ec);
  error = path + ": could not move the new file into place";
  return false;
}

}  // namespace host
