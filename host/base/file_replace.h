#pragma once
// Writing a file without ever leaving half of it: the new text goes to a
// temporary file beside the target, which is then renamed into place.
#include <string>

namespace host {
// The temporary file beside path (".NAME.tmp" in its folder).
std::string TempPathBeside(const std::string& path);
// Renames tmp to path; on failure tmp is removed and error names path.
bool MoveIntoPlace(const std::string& tmp, const std::string& path, std::string& error);
}  // namespace host
