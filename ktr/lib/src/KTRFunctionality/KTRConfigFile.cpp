#include "KTRFunctionality/KTRConfigFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "MBQCore/MBQError.h"

namespace KTR {

namespace {

// Writes all of `data`, retrying short writes and interrupted calls.
bool writeAll(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    ssize_t written = ::write(fd, data, size);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

std::string folderOf(const std::string& path) {
  std::string::size_type slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

int fail(const char* what, const std::string& path) {
  MBQ::setErrorMessage("cannot %s %s: %s", what, path.c_str(), std::strerror(errno));
  return -1;
}

}  // namespace

int readConfigFile(const std::string& path, std::string& text) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return fail("read", path);
  struct stat info;
  if (::fstat(fd, &info) != 0) {
    int rc = fail("read", path);
    ::close(fd);
    return rc;
  }
  if (!S_ISREG(info.st_mode)) {
    ::close(fd);
    MBQ::setErrorMessage("cannot read %s: not a regular file", path.c_str());
    return -1;
  }
  std::string content;
  char chunk[65536];
  for (;;) {
    ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got < 0) {
      if (errno == EINTR) continue;
      int rc = fail("read", path);
      ::close(fd);
      return rc;
    }
    if (got == 0) break;
    content.append(chunk, static_cast<std::size_t>(got));
  }
  ::close(fd);
  text.swap(content);
  return 0;
}

int replaceConfigFile(const std::string& path, const std::string& text) {
  struct stat old;
  const bool exists = ::stat(path.c_str(), &old) == 0;
  std::string temp = path + ".XXXXXX";
  std::vector<char> name(temp.begin(), temp.end());
  name.push_back('\0');
  int fd = ::mkstemp(name.data());
  if (fd < 0) return fail("create a temporary file beside", path);
  temp = name.data();
  // mkstemp makes 0600; keep the old file's mode, or give a new one the usual 0644 less umask.
  mode_t mode = 0644;
  if (exists) {
    mode = old.st_mode & 07777;
  } else {
    mode_t mask = ::umask(0);
    ::umask(mask);
    mode &= ~mask;
  }
  bool ok = ::fchmod(fd, mode) == 0 && writeAll(fd, text.data(), text.size()) && ::fsync(fd) == 0;
  if (exists && ok && ::geteuid() == 0) ok = ::fchown(fd, old.st_uid, old.st_gid) == 0;
  int savedErrno = errno;
  if (::close(fd) != 0 && ok) {
    ok = false;
    savedErrno = errno;
  }
  if (!ok) {
    ::unlink(temp.c_str());
    errno = savedErrno;
    return fail("write", temp);
  }
  if (::rename(temp.c_str(), path.c_str()) != 0) {
    savedErrno = errno;
    ::unlink(temp.c_str());
    errno = savedErrno;
    return fail("replace", path);
  }
  // Make the rename itself durable.
  int dir = ::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dir >= 0) {
    ::fsync(dir);
    ::close(dir);
  }
  return 0;
}

KTRConfigFileLock::~KTRConfigFileLock() {
  if (fd_ >= 0) ::close(fd_);  // closing releases the flock
}

int KTRConfigFileLock::lock(const std::string& path) {
  const std::string lockPath = path + ".lock";
  int fd = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return fail("open lock file", lockPath);
  while (::flock(fd, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    int rc = fail("lock", lockPath);
    ::close(fd);
    return rc;
  }
  if (fd_ >= 0) ::close(fd_);
  fd_ = fd;
  return 0;
}

int splitAssignment(const std::string& text, std::string& key, std::string& value) {
  std::string::size_type equals = text.find('=');
  if (equals == std::string::npos || equals == 0) {
    MBQ::setErrorMessage("'%s' is not KEY=VALUE", text.c_str());
    return -1;
  }
  key = text.substr(0, equals);
  value = text.substr(equals + 1);
  return 0;
}

}  // namespace KTR
