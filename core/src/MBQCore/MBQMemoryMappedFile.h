#pragma once

// A file mapped shared into the process, with a cross-process lock on it. The template cache
// (docs/template-cache.md) keeps its heap in such a file; every process maps it at its own
// address and takes the file lock around every access.

#include <cstddef>
#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// How a file is mapped. The four codes are the ones the cache passes, (7, 2, 1, 1); on Linux
// they all mean the same thing: a shared, read-write, file-backed mapping of a file that is
// created when missing and extended (with zeros) to the mapping size when shorter. The codes
// are kept so that callers say what they need, not how this platform provides it.
struct MBQ_EXPORT tFileMappingOptions {
  tFileMappingOptions(int flags = 7, int fileOption = 2, int accessOption = 1, int mapSizeOption = 1)
      : flags(flags), fileOption(fileOption), accessOption(accessOption), mapSizeOption(mapSizeOption) {}
  int flags;
  int fileOption;     // 2: open read-write, create when missing
  int accessOption;   // 1: shared read-write mapping
  int mapSizeOption;  // 1: extend the file to the mapping size
};

// One mapping of one file. Not copyable; not safe for concurrent use by several threads
// (each thread or process uses its own object, or serialises access itself).
//
// The lock is an flock(2) on this object's own open file description: two objects, even in
// one process, exclude each other, and the kernel drops the lock when its holder dies, however
// it dies. A child created by fork() shares the parent's open descriptions, and so its locks:
// a child must open its own object rather than lock through an inherited one.
//
// The mapping is never shrunk and the file never truncated, so an address inside the mapping
// stays readable for the object's lifetime, whatever other processes do to the file, except
// removeLockedCacheFile, which unlinks the file: mappings of the old file stay valid.
class MBQ_EXPORT MBQMemoryMappedFile {
 public:
  MBQMemoryMappedFile() = default;
  ~MBQMemoryMappedFile();
  MBQMemoryMappedFile(const MBQMemoryMappedFile&) = delete;
  MBQMemoryMappedFile& operator=(const MBQMemoryMappedFile&) = delete;

  // Opens `path` and maps its first `size` bytes (size > 0), extending the file first when it
  // is shorter. `hint` is an address suggestion, may be null. Returns the mapped address, or
  // null with the error text set (the object then stays unmapped). Fails on an object that is
  // already mapped.
  void* map(const std::string& path, std::size_t size, const tFileMappingOptions& options, void* hint = nullptr);
  // Maps the file of `previous` anew at `size` bytes, through a fresh open of its path (so this
  // object's lock is its own). `previous` stays mapped and usable. Same results as map.
  void* remap(std::size_t size, void* hint, const MBQMemoryMappedFile& previous);
  // Maps the whole existing file read-only, without creating or extending it (for inspection of
  // a file that must not be changed). Null with the error text for a missing or empty file.
  const void* mapReadOnly(const std::string& path);
  // Unmaps and closes; releases the lock if held. Idempotent.
  void close();

  void* address() const { return address_; }
  // The mapped size; 0 when unmapped.
  std::size_t size() const { return size_; }
  const std::string& path() const { return path_; }

  // Writes dirty pages back to the file (msync, synchronous). 0 or -1.
  int sync();
  // Makes the mapping read-only (true) or read-write (false). 0 or -1.
  int protect(bool readOnly);

  // What the file under the mapping is now: its size in `bytes`, and whether it has been
  // removed from its folder (`removed`; the mapping then belongs to an orphan). 0 or -1.
  int fileState(std::size_t& bytes, bool& removed) const;
  // Whether `other` maps the very file this one maps (same device and inode), not merely one
  // found at the same path.
  bool isSameFile(const MBQMemoryMappedFile& other) const;

  // Takes the exclusive file lock; with `tryOnly`, gives up at once when another holder has it.
  // Returns 0, or -1 (not mapped, would block with tryOnly, or an I/O error) with the error text.
  int lock(bool tryOnly);
  // Releases the lock. 0, or -1 when not held.
  int unlock();
  bool isLocked() const { return locked_; }

 private:
  void* mapFile(const std::string& path, std::size_t size, const tFileMappingOptions& options, void* hint);

  std::string path_;
  tFileMappingOptions options_;
  int fd_ = -1;
  void* address_ = nullptr;
  std::size_t size_ = 0;
  bool locked_ = false;
};

// Disposes of a cache file that could not be used, so that the next map of `path` finds a new,
// zero-filled file: waits for the file lock (a process inside the file finishes first), then
// unlinks the file. Processes that still map the old file keep a valid but orphaned mapping.
// `code` is the failure that condemned the file; it is logged. Returns 0 (also when the file
// does not exist) or -1 with the error text.
MBQ_EXPORT int removeLockedCacheFile(const std::string& path, int code);

// Gives the processor to another runnable thread (sched_yield); used between retries.
MBQ_EXPORT void schedYield();

// The agent's folders.
class MBQ_EXPORT MBQInstanceFolders {
 public:
  // The uploads folder, where the shared cache files live: the value of the environment
  // variable MBQ_UPLOADS_DIR when set and non-empty, else "/opt/srn/agent/uploads". Read on
  // each call (no caching), without a trailing slash.
  static std::string uploads();
};

}  // namespace MBQ
