#include "shell/host_path.h"

#include <dlfcn.h>

#include <filesystem>

#include "host/ed/registry.h"

namespace shell {
namespace {

CString TrimBackslashes(CString s) {
  const std::size_t first = s.find_first_not_of('\\');
  if (first == CString::npos) return {};
  const std::size_t last = s.find_last_not_of('\\');
  return s.substr(first, last - first + 1);
}

CString ModuleDirectory() {
  Dl_info info{};
  if (!dladdr(reinterpret_cast<const void*>(&ReadHostPath), &info) || !info.dli_fname) return {};
  const CString file = info.dli_fname;
  const std::size_t cut = file.find_last_of("\\/");
  return cut == CString::npos ? CString() : file.substr(0, cut);
}

CString& HostPath() {
  // Static initialisation: the path is read when the module is loaded.
  static CString path = ReadHostPath();
  return path;
}
[[maybe_unused]] const bool g_readAtLoad = (HostPath(), true);

}  // namespace

CString ReadHostPath() {
  CString value;
  std::error_code ec;
  if (host::ed::readRegistryValue("Software\\VKCAD", "PATH", value) && !value.empty() &&
      std::filesystem::is_directory(value, ec))
    return TrimBackslashes(value);
  return ModuleDirectory();
}

}  // namespace shell

void OutlineHostApi::SetPath(const CString& path) { shell::HostPath() = path; }
CString OutlineHostApi::GetPath() { return shell::HostPath(); }
