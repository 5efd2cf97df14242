#pragma once
// Writing a file so that a reader, a crash or a full disk never sees half of
// it: the bytes go to a temporary file with a unique name in the target's
// folder, which is flushed, synced and closed with every step checked, and
// only then renamed over the target. The target keeps its permissions (a
// new file gets 0666 less the umask); a symbolic link at the target is
// followed, so the file it points to is replaced and the link stays. A
// failed write removes its temporary file; temporaries left by a write that
// was killed are removed by the next write into the same folder. The target
// "-" is standard output: the bytes go there once they are complete.
#include <string>
#include <string_view>

namespace host {

class SafeFile {
 public:
  explicit SafeFile(std::string target);
  ~SafeFile();  // an uncommitted temporary file is removed
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  // Creates the temporary file. False with the reason in error.
  bool open(std::string& error);
  // The temporary file, for writers that open a file by name themselves.
  const std::string& tempPath() const { return m_temp; }
  bool write(std::string_view bytes, std::string& error);
  // Flushes the temporary file (also what another writer wrote to it by
  // name), gives it the target's mode and renames it into place.
  bool commit(std::string& error);

 private:
  bool copyToStandardOutput(std::string& error);

  std::string m_target;  // the file finally replaced (symbolic links followed)
  std::string m_temp;
  int m_fd = -1;
  bool m_stdout = false;  // the target is "-"
  bool m_done = false;
};

// The whole of bytes written to path the safe way; false with "PATH: what
// failed (reason)" in error.
bool writeFileSafely(const std::string& path, std::string_view bytes, std::string& error);

// Removes temporary files of writes into dir that were killed before they
// finished (older than a few minutes, so that a write in progress is left
// alone).
void removeStrayTemporaries(const std::string& dir);

}  // namespace host
