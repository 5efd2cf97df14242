#include "host/base/safe_write.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>

namespace host {
namespace {

namespace fs = std::filesystem;

// Temporary files are named ".NAME.envline-XXXXXX" beside their target.
constexpr std::string_view kTempMark = ".envline-";
constexpr std::time_t kStrayAge = 10 * 60;  // seconds

std::string reason() { return std::strerror(errno); }

// The file a path finally names, following symbolic links (also one that
// points to a file not made yet).
fs::path followLinks(fs::path p) {
  std::error_code ec;
  for (int i = 0; i < 40 && fs::is_symlink(fs::symlink_status(p, ec)); ++i) {
    const fs::path to = fs::read_symlink(p, ec);
    if (ec) break;
    p = to.is_absolute() ? to : p.parent_path() / to;
  }
  return p;
}

mode_t newFileMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

SafeFile::SafeFile(std::string target)
    : m_target(target == "-" ? target : followLinks(fs::path(target)).string()), m_stdout(target == "-") {}

SafeFile::~SafeFile() {
  if (m_fd >= 0) ::close(m_fd);
  if (!m_done && !m_temp.empty()) ::unlink(m_temp.c_str());
}

bool SafeFile::open(std::string& error) {
  const fs::path target(m_stdout ? "envline-stdout" : m_target);
  std::error_code ec;
  const fs::path dir = m_stdout                  ? fs::temp_directory_path(ec)
                       : target.has_parent_path() ? target.parent_path()
                                                  : fs::path(".");
  removeStrayTemporaries(dir.string());
  // Appended piece by piece: GCC 12 at -O3 warns falsely (-Wrestrict) about
  // "." + std::string.
  std::string name(1, '.');
  name += target.filename().string();
  name += kTempMark;
  name += "XXXXXX";
  std::string tmpl = (dir / name).string();
  m_fd = ::mkstemp(tmpl.data());
  if (m_fd < 0) {
    error = m_target + ": cannot create a file in " + dir.string() + " (" + reason() + ")";
    return false;
  }
  ::fcntl(m_fd, F_SETFD, FD_CLOEXEC);
  m_temp = tmpl;
  return true;
}

bool SafeFile::write(std::string_view bytes, std::string& error) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(m_fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error = m_target + ": write failed (" + (n < 0 ? reason() : std::string("nothing written")) + ")";
      return false;
    }
    done += static_cast<std::size_t>(n);
  }
  return true;
}

bool SafeFile::commit(std::string& error) {
  if (m_stdout) return copyToStandardOutput(error);
  // The mode of the file replaced, or a new file's.
  struct stat st {};
  const mode_t mode = ::stat(m_target.c_str(), &st) == 0 ? (st.st_mode & 07777) : newFileMode();
  if (::fchmod(m_fd, mode) != 0) {
    error = m_target + ": cannot set the file's permissions (" + reason() + ")";
    return false;
  }
  if (::fsync(m_fd) != 0) {
    error = m_target + ": could not flush the file to disk (" + reason() + ")";
    return false;
  }
  const int fd = m_fd;
  m_fd = -1;
  if (::close(fd) != 0) {
    error = m_target + ": could not close the file (" + reason() + ")";
    return false;
  }
  if (::rename(m_temp.c_str(), m_target.c_str()) != 0) {
    error = m_target + ": could not move the new file into place (" + reason() + ")";
    return false;
  }
  m_done = true;
  // The rename itself is made durable by syncing the folder.
  const fs::path dir = fs::path(m_target).has_parent_path() ? fs::path(m_target).parent_path() : fs::path(".");
  if (const int dfd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); dfd >= 0) {
    ::fsync(dfd);
    ::close(dfd);
  }
  return true;
}

bool SafeFile::copyToStandardOutput(std::string& error) {
  // Read back by name: a writer that wrote the temporary file by name may
  // have replaced what the descriptor sees.
  const int in = ::open(m_temp.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) {
    error = "standard output: cannot read back what was written (" + reason() + ")";
    return false;
  }
  char buf[1 << 16];
  bool ok = true;
  for (ssize_t n; ok && (n = ::read(in, buf, sizeof buf)) != 0;) {
    if (n < 0 && errno == EINTR) continue;
    ok = n > 0;
    for (ssize_t done = 0; ok && done < n;) {
      const ssize_t w = ::write(STDOUT_FILENO, buf + done, static_cast<std::size_t>(n - done));
      if (w < 0 && errno == EINTR) continue;
      ok = w > 0;
      done += w > 0 ? w : 0;
    }
  }
  if (!ok) error = "standard output: write failed (" + reason() + ")";
  ::close(in);
  return ok;
}

bool writeFileSafely(const std::string& path, std::string_view bytes, std::string& error) {
  SafeFile file(path);
  return file.open(error) && file.write(bytes, error) && file.commit(error);
}

void removeStrayTemporaries(const std::string& dir) {
  std::error_code ec;
  const std::time_t now = std::time(nullptr);
  for (fs::directory_iterator it(dir.empty() ? "." : dir, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    const std::size_t mark = name.rfind(kTempMark);
    if (name.empty() || name[0] != '.' || mark == std::string::npos || name.size() != mark + kTempMark.size() + 6)
      continue;
    struct stat st {};
    if (::lstat(it->path().c_str(), &st) != 0 || !S_ISREG(st.st_mode) || now - st.st_mtime < kStrayAge) continue;
    ::unlink(it->path().c_str());
  }
}

}  // namespace host
