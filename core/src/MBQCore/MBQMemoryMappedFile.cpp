#include "MBQCore/MBQMemoryMappedFile.h"

#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"

namespace MBQ {

namespace {

const char* const kModule = "MBQCore";

int lockFd(int fd, int operation) {
  for (;;) {
    if (::flock(fd, operation) == 0) return 0;
    if (errno != EINTR) return -1;
  }
}

}  // namespace

MBQMemoryMappedFile::~MBQMemoryMappedFile() { close(); }

void* MBQMemoryMappedFile::mapFile(const std::string& path, std::size_t size, const tFileMappingOptions& options,
                                   void* hint) {
  if (address_ != nullptr) {
    setErrorMessage("can't map %s: already mapped", path.c_str());
    return nullptr;
  }
  if (size == 0) {
    setErrorMessage("can't map %s: empty mapping", path.c_str());
    return nullptr;
  }
  // The cache is the agent's own: a user who could open it could hold its lock forever.
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0) {
    setErrorMessage("can't open %s: %s", path.c_str(), std::strerror(errno));
    return nullptr;
  }
  struct stat st;
  if (::fstat(fd, &st) != 0) {
    setErrorMessage("can't stat %s: %s", path.c_str(), std::strerror(errno));
    ::close(fd);
    return nullptr;
  }
  // fallocate only ever extends: a process that wants less than another one has already
  // made the file never cuts it back, which ftruncate would (and the other's pages would fault).
  // Blocks are reserved now, so a full disk fails here instead of faulting in a later write.
  if (static_cast<std::size_t>(st.st_size) < size && ::fallocate(fd, 0, 0, static_cast<off_t>(size)) != 0) {
    setErrorMessage("can't extend %s to %zu bytes: %s", path.c_str(), size, std::strerror(errno));
    ::close(fd);
    return nullptr;
  }
  void* address = ::mmap(hint, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  if (address == MAP_FAILED) {
    setErrorMessage("can't map %s (%zu bytes): %s", path.c_str(), size, std::strerror(errno));
    ::close(fd);
    return nullptr;
  }
  path_ = path;
  options_ = options;
  fd_ = fd;
  address_ = address;
  size_ = size;
  return address;
}

void* MBQMemoryMappedFile::map(const std::string& path, std::size_t size, const tFileMappingOptions& options,
                               void* hint) {
  return mapFile(path, size, options, hint);
}

void* MBQMemoryMappedFile::remap(std::size_t size, void* hint, const MBQMemoryMappedFile& previous) {
  return mapFile(previous.path_, size, previous.options_, hint);
}

const void* MBQMemoryMappedFile::mapReadOnly(const std::string& path) {
  if (address_ != nullptr) {
    setErrorMessage("can't map %s: already mapped", path.c_str());
    return nullptr;
  }
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    setErrorMessage("can't open %s: %s", path.c_str(), std::strerror(errno));
    return nullptr;
  }
  struct stat st;
  if (::fstat(fd, &st) != 0 || st.st_size <= 0) {
    setErrorMessage("can't map %s: the file is empty or can't be read", path.c_str());
    ::close(fd);
    return nullptr;
  }
  const std::size_t size = static_cast<std::size_t>(st.st_size);
  void* address = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
  if (address == MAP_FAILED) {
    setErrorMessage("can't map %s (%zu bytes): %s", path.c_str(), size, std::strerror(errno));
    ::close(fd);
    return nullptr;
  }
  path_ = path;
  fd_ = fd;
  address_ = address;
  size_ = size;
  return address;
}

void MBQMemoryMappedFile::close() {
  if (address_ != nullptr) ::munmap(address_, size_);
  if (fd_ >= 0) ::close(fd_);  // also drops the flock
  fd_ = -1;
  address_ = nullptr;
  size_ = 0;
  locked_ = false;
}

int MBQMemoryMappedFile::sync() {
  if (address_ == nullptr) return -1;
  if (::msync(address_, size_, MS_SYNC) != 0) {
    setErrorMessage("can't sync %s: %s", path_.c_str(), std::strerror(errno));
    return -1;
  }
  return 0;
}

int MBQMemoryMappedFile::protect(bool readOnly) {
  if (address_ == nullptr) return -1;
  if (::mprotect(address_, size_, readOnly ? PROT_READ : PROT_READ | PROT_WRITE) != 0) {
    setErrorMessage("can't protect %s: %s", path_.c_str(), std::strerror(errno));
    return -1;
  }
  return 0;
}

int MBQMemoryMappedFile::fileState(std::size_t& bytes, bool& removed) const {
  struct stat st;
  if (fd_ < 0 || ::fstat(fd_, &st) != 0) {
    setErrorMessage("can't stat %s: %s", path_.c_str(), fd_ < 0 ? "not mapped" : std::strerror(errno));
    return -1;
  }
  bytes = static_cast<std::size_t>(st.st_size);
  removed = st.st_nlink == 0;
  return 0;
}

bool MBQMemoryMappedFile::isSameFile(const MBQMemoryMappedFile& other) const {
  struct stat mine, theirs;
  return fd_ >= 0 && other.fd_ >= 0 && ::fstat(fd_, &mine) == 0 && ::fstat(other.fd_, &theirs) == 0 &&
         mine.st_dev == theirs.st_dev && mine.st_ino == theirs.st_ino;
}

int MBQMemoryMappedFile::lock(bool tryOnly) {
  if (fd_ < 0) {
    setErrorMessage("can't lock: no file mapped");
    return -1;
  }
  if (lockFd(fd_, LOCK_EX | (tryOnly ? LOCK_NB : 0)) != 0) {
    setErrorMessage("can't lock %s: %s", path_.c_str(), std::strerror(errno));
    return -1;
  }
  locked_ = true;
  return 0;
}

int MBQMemoryMappedFile::unlock() {
  if (!locked_) return -1;
  locked_ = false;
  if (lockFd(fd_, LOCK_UN) != 0) {
    setErrorMessage("can't unlock %s: %s", path_.c_str(), std::strerror(errno));
    return -1;
  }
  return 0;
}

int removeLockedCacheFile(const std::string& path, int code) {
  Logger::put(kWarning, kModule, "removing cache file %s (failure %d)", path.c_str(), code);
  const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
  if (fd < 0) {
    if (errno == ENOENT) return 0;
    setErrorMessage("can't open %s: %s", path.c_str(), std::strerror(errno));
    return -1;
  }
  // Under the lock nobody is inside the file; whoever opens it after the unlink gets a new one.
  lockFd(fd, LOCK_EX);
  int result = 0;
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
    setErrorMessage("can't remove %s: %s", path.c_str(), std::strerror(errno));
    result = -1;
  }
  ::close(fd);
  return result;
}

void schedYield() { ::sched_yield(); }

std::string MBQInstanceFolders::uploads() {
  const char* value = std::getenv("MBQ_UPLOADS_DIR");
  std::string folder = value != nullptr && *value != '\0' ? value : "/opt/srn/agent/uploads";
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

}  // namespace MBQ
