#pragma once
// The host path: the installation directory offered to the embedding
// environment. Read once when the module is loaded: the value "PATH" of the
// registry key "Software\\VKCAD" when it names an existing directory (with
// leading and trailing backslashes trimmed), otherwise the directory of the
// module's own file. Nothing in the module reads it.
#include "host/base/strings.h"

class OutlineHostApi {
 public:
  static void SetPath(const CString& path);
  static CString GetPath();
};

namespace shell {
// The path as the module computes it at load (exposed for tests).
CString ReadHostPath();
}  // namespace shell
