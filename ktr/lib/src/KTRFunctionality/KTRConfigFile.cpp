#include "KTRFunctionality/KTRConfigFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <set>
#include <thread>
#include <vector>

#include "MBQCore/MBQError.h"

namespace KTR {

namespace {

int fail(const char* what, const std::string& path) {
  MBQ::setErrorMessage("cannot %s %s: %s", what, path.c_str(), std::strerror(errno));
  return -1;
}

int failWith(const char* what, const std::string& path, const char* reason) {
  MBQ::setErrorMessage("cannot %s %s: %s", what, path.c_str(), reason);
  return -1;
}

// Keeps errno across a cleanup call.
class ErrnoGuard {
 public:
  ErrnoGuard() : saved_(errno) {}
  ~ErrnoGuard() { errno = saved_; }

 private:
  int saved_;
};

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

std::string baseOf(const std::string& path) {
  std::string::size_type slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The name of a file's temporary: fixed length, so that it fits beside a name of any length,
// and the same for every writer of the file, so that a dead writer's temporary is found.
std::string temporaryFor(const std::string& path) {
  std::uint64_t hash = 14695981039346656037ull;
  for (unsigned char c : baseOf(path)) hash = (hash ^ c) * 1099511628211ull;
  char name[64];
  std::snprintf(name, sizeof name, "/.ktr-edit-%016llx", static_cast<unsigned long long>(hash));
  return folderOf(path) + name;
}

// Checks `info` names a regular file small enough to read.
int checkReadable(const char* what, const std::string& path, const struct stat& info) {
  if (!S_ISREG(info.st_mode)) return failWith(what, path, "not a regular file");
  if (static_cast<unsigned long long>(info.st_size) > kMaxConfigFileSize) {
    char reason[96];
    std::snprintf(reason, sizeof reason, "larger than %zu bytes", kMaxConfigFileSize);
    return failWith(what, path, reason);
  }
  return 0;
}

// Reads the open file from its start, refusing to go past the size bound (the file may grow
// after fstat).
int readAll(int fd, const char* what, const std::string& path, std::string& text) {
  std::string content;
  char chunk[65536];
  off_t offset = 0;
  for (;;) {
    ssize_t got = ::pread(fd, chunk, sizeof chunk, offset);
    if (got < 0) {
      if (errno == EINTR || errno == EAGAIN) continue;
      return fail(what, path);
    }
    if (got == 0) break;
    if (content.size() + static_cast<std::size_t>(got) > kMaxConfigFileSize)
      return failWith(what, path, "grew beyond the size bound while being read");
    content.append(chunk, static_cast<std::size_t>(got));
    offset += got;
  }
  text.swap(content);
  return 0;
}

// Opens an existing file without blocking (a FIFO or device never stalls the open) and checks
// that it is a regular file of bounded size. The file is stat'ed first, so that a device's
// open has no chance to act.
// Errors name the file as `shown` (the path the caller gave).
int openRegular(const std::string& path, const std::string& shown, int flags, const char* what, int& fd,
                struct stat& info) {
  struct stat before;
  if (::stat(path.c_str(), &before) != 0) return fail(what, shown);
  if (checkReadable(what, shown, before) != 0) return -1;
  fd = ::open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) return fail(what, shown);
  const int rc = ::fstat(fd, &info) != 0 ? fail(what, shown) : checkReadable(what, shown, info);
  if (rc != 0) {
    ::close(fd);
    fd = -1;
  }
  return rc;
}

// Gives the temporary `fd` the owner, group, extended attributes and mode of `old` (read
// through `oldFd`). The owner goes first: changing it clears the set-id bits that the mode then
// sets again.
int copyAttributes(int fd, int oldFd, const struct stat& old, const std::string& path) {
  struct stat mine;
  if (::fstat(fd, &mine) != 0) return fail("write the temporary of", path);
  if ((mine.st_uid != old.st_uid || mine.st_gid != old.st_gid) && ::fchown(fd, old.st_uid, old.st_gid) != 0)
    return fail("keep the owner and group of", path);
  if (oldFd >= 0) {
    ssize_t size = ::flistxattr(oldFd, nullptr, 0);
    if (size < 0 && errno != ENOTSUP) return fail("read the extended attributes of", path);
    if (size > 0) {
      std::vector<char> names(static_cast<std::size_t>(size));
      size = ::flistxattr(oldFd, names.data(), names.size());
      if (size < 0) return fail("read the extended attributes of", path);
      for (const char* name = names.data(); name < names.data() + size; name += std::strlen(name) + 1) {
        ssize_t length = ::fgetxattr(oldFd, name, nullptr, 0);
        if (length < 0) return fail("read the extended attributes of", path);
        std::vector<char> value(static_cast<std::size_t>(length));
        length = ::fgetxattr(oldFd, name, value.data(), value.size());
        if (length < 0 || ::fsetxattr(fd, name, value.data(), static_cast<std::size_t>(length), 0) != 0)
          return fail("keep the extended attributes of", path);
      }
    }
  }
  if (::fchmod(fd, old.st_mode & 07777) != 0) return fail("keep the mode of", path);
  return 0;
}

// Makes the temporary of `path` and writes `text` to it, flushed. `oldFd`/`old` describe the
// file replaced (oldFd -1: a new file). Any temporary left by a dead writer is removed first:
// callers hold the file's lock, or create a file nobody else edits yet.
int writeTemporary(const std::string& path, const std::string& temporary, int oldFd, const struct stat* old,
                   const std::string& text, bool flush = true) {
  int fd = -1;
  for (int attempt = 0; attempt < 2 && fd < 0; ++attempt) {
    fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0 && errno == EEXIST && attempt == 0) ::unlink(temporary.c_str());
  }
  if (fd < 0) return fail("create a temporary file beside", path);
  int rc = 0;
  if (old != nullptr) {
    rc = copyAttributes(fd, oldFd, *old, path);
  } else {
    mode_t mask = ::umask(0);
    ::umask(mask);
    if (::fchmod(fd, 0644 & ~mask) != 0) rc = fail("write", temporary);
  }
  if (rc == 0 && !(writeAll(fd, text.data(), text.size()) && (!flush || ::fsync(fd) == 0)))
    rc = fail("write", temporary);
  if (::close(fd) != 0 && rc == 0) rc = fail("write", temporary);
  if (rc != 0) {
    ErrnoGuard keep;
    ::unlink(temporary.c_str());
  }
  return rc;
}

// The file a path names after following symbolic links; the path itself when it names nothing
// yet (its folder must exist).
int resolve(const std::string& path, const char* what, std::string& target, bool mayBeMissing) {
  char resolved[PATH_MAX];
  if (::realpath(path.c_str(), resolved) != nullptr) {
    target = resolved;
    return 0;
  }
  if (!(mayBeMissing && errno == ENOENT)) return fail(what, path);
  struct stat info;
  if (::lstat(path.c_str(), &info) == 0) return failWith(what, path, "a symbolic link to nothing");
  target = path;
  return 0;
}

}  // namespace

int readConfigFile(const std::string& path, std::string& text) {
  int fd = -1;
  struct stat info;
  if (openRegular(path, path, O_RDONLY, "read", fd, info) != 0) return -1;
  const int rc = readAll(fd, "read", path, text);
  ::close(fd);
  return rc;
}

int replaceConfigFile(const std::string& path, const std::string& text) {
  std::string target;
  if (resolve(path, "replace", target, true) != 0) return -1;
  int oldFd = -1;
  struct stat old;
  struct stat* oldInfo = nullptr;
  if (::stat(target.c_str(), &old) == 0) {
    if (openRegular(target, path, O_RDONLY, "replace", oldFd, old) != 0) return -1;
    oldInfo = &old;
  }
  const std::string temporary = temporaryFor(target);
  int rc = writeTemporary(target, temporary, oldFd, oldInfo, text);
  if (oldFd >= 0) ::close(oldFd);
  if (rc != 0) return rc;
  if (::rename(temporary.c_str(), target.c_str()) != 0) {
    rc = fail("replace", target);
    ErrnoGuard keep;
    ::unlink(temporary.c_str());
    return rc;
  }
  return syncFolder(folderOf(target));
}

int syncFolder(const std::string& folder) {
  int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dir < 0) return fail("flush the folder", folder);
  int rc = 0;
  if (::fsync(dir) != 0 && errno != EINVAL) rc = fail("flush the folder", folder);
  ::close(dir);
  return rc;
}

KTRConfigFileEdit::~KTRConfigFileEdit() {
  discardTemporary();
  if (fd_ >= 0) ::close(fd_);  // closing the file releases its lock
}

void KTRConfigFileEdit::discardTemporary() {
  if (temporary_.empty()) return;
  ::unlink(temporary_.c_str());
  temporary_.clear();
}

int KTRConfigFileEdit::begin(const std::string& path, unsigned waitMilliseconds) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(waitMilliseconds);
  std::chrono::milliseconds pause(1);
  if (fd_ >= 0) {
    ::close(fd_);
    fd_ = -1;
  }
  for (;;) {
    std::string target;
    if (resolve(path, "edit", target, false) != 0) return -1;
    int fd = -1;
    struct stat info;
    if (openRegular(target, path, O_RDWR, "edit", fd, info) != 0) return -1;
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    bool locked = false;
    for (;;) {
      if (::fcntl(fd, F_OFD_SETLK, &lock) == 0) {
        locked = true;
        break;
      }
      if (errno != EACCES && errno != EAGAIN && errno != EINTR) {
        int rc = fail("lock", target);
        ::close(fd);
        return rc;
      }
      if (Clock::now() >= deadline) break;
      std::this_thread::sleep_for(pause);
      pause = std::min(pause * 2, std::chrono::milliseconds(50));
    }
    if (!locked) {
      ::close(fd);
      char reason[128];
      std::snprintf(reason, sizeof reason, "another process holds its lock (waited %u ms)", waitMilliseconds);
      return failWith("edit", path, reason);
    }
    // A writer that replaced the file while this one waited has made the lock worthless: the
    // name now stands for a new file, which is the one to lock.
    struct stat now;
    if (::stat(target.c_str(), &now) == 0 && now.st_dev == info.st_dev && now.st_ino == info.st_ino) {
      if (readAll(fd, "edit", target, text_) != 0) {
        ::close(fd);
        return -1;
      }
      fd_ = fd;
      info_ = info;
      target_ = target;
      folder_ = folderOf(target);
      return 0;
    }
    ::close(fd);
    if (Clock::now() >= deadline) return failWith("edit", path, "it keeps being replaced by other writers");
  }
}

int KTRConfigFileEdit::prepare(const std::string& newText, bool flush) {
  if (fd_ < 0) return failWith("write", target_, "no edit begun");
  discardTemporary();
  const std::string temporary = temporaryFor(target_);
  if (writeTemporary(target_, temporary, fd_, &info_, newText, flush) != 0) return -1;
  temporary_ = temporary;
  return 0;
}

int KTRConfigFileEdit::flushTemporary() const {
  if (temporary_.empty()) return failWith("flush", target_, "nothing prepared");
  const int fd = ::open(temporary_.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return fail("flush the temporary of", target_);
  int rc = 0;
  if (::fsync(fd) != 0) rc = fail("flush the temporary of", target_);
  ::close(fd);
  return rc;
}

int KTRConfigFileEdit::install() {
  if (temporary_.empty()) return failWith("replace", target_, "nothing prepared");
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
    int rc = fail("replace", target_);
    ErrnoGuard keep;
    discardTemporary();
    return rc;
  }
  temporary_.clear();
  return 0;
}

int KTRConfigFileEdit::commit(const std::string& newText) {
  if (prepare(newText) != 0 || install() != 0) return -1;
  return syncFolder(folder_);
}

int commitConfigFiles(std::vector<KTRConfigFileChange>& changes) {
  std::vector<KTRConfigFileChange*> pending;
  for (KTRConfigFileChange& change : changes) {
    change.error.clear();
    if (change.text == change.edit->text()) continue;
    if (change.edit->prepare(change.text, false) != 0) {
      change.error = MBQ::getErrorMessage();
      continue;
    }
    pending.push_back(&change);
  }
  // Flushes run side by side: the file system commits them together instead of one journal
  // commit after the other. Each worker takes the next change; each change has its own error.
  std::atomic<std::size_t> next{0};
  auto flushSome = [&] {
    for (std::size_t i; (i = next++) < pending.size();)
      if (pending[i]->edit->flushTemporary() != 0) pending[i]->error = MBQ::getErrorMessage();
  };
  std::vector<std::thread> workers;
  const std::size_t workerCount = std::min<std::size_t>(16, pending.size());
  for (std::size_t i = 1; i < workerCount; ++i) workers.emplace_back(flushSome);
  flushSome();
  for (std::thread& worker : workers) worker.join();
  std::set<std::string> folders;
  for (KTRConfigFileChange* change : pending) {
    if (!change->error.empty()) continue;
    if (change->edit->install() != 0) {
      change->error = MBQ::getErrorMessage();
      continue;
    }
    folders.insert(change->edit->folder());
  }
  for (const std::string& folder : folders) {
    if (syncFolder(folder) == 0) continue;
    // The renames happened; only their durability is in doubt. Said for each file concerned.
    for (KTRConfigFileChange* change : pending)
      if (change->error.empty() && change->edit->folder() == folder) change->error = MBQ::getErrorMessage();
  }
  int failures = 0;
  for (const KTRConfigFileChange& change : changes) failures += change.error.empty() ? 0 : 1;
  return failures;
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
