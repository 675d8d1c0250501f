#pragma once

// A key/value cache shared between processes through one memory-mapped file: a fixed header,
// a heap (MBQSharedMemoryManager) and a sorted array of records published as a reference-counted
// snapshot. The byte layout is in docs/template-cache.md. The file is the only copy of the
// contents; each process maps it at its own address and takes the file lock around every access.

#include <unistd.h>

#include <algorithm>
#include <boost/intrusive_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQCacheStatus.h"
#include "MBQCore/MBQCacheVerifier.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"
#include "MBQCore/MBQMemoryMappedFile.h"
#include "MBQCore/MBQRefCounter.h"
#include "MBQCore/MBQSharedMemoryManager.h"

namespace MBQ {

// The reference count of an object that may be handed to a child process by fork(): the count
// is plain process memory, so the child's copy starts with the parent's handles and goes its own
// way. The cache's file lock does not follow (see MBQMemoryMappedFile): a child re-opens caches.
class MBQ_EXPORT MBQForkableRefCounter : public virtual MBQRefCounter {
 protected:
  MBQForkableRefCounter() = default;
};

#pragma pack(push, 1)

// A reference count stored inside the shared file. Changed only under the file lock, so plain
// arithmetic suffices. Releasing below zero is a programming error; a release at 0 passes the
// check and leaves -1 (kept as it is: callers never release what they did not acquire).
template <class Int>
struct MBQCachedItemRefCounterBase {
  Int count;
  void incRef() { ++count; }
  void decRef() {
    Debug::check(count >= 0, "KTRFunctionality", "core/src/MBQCore/MBQCacheLogic", 66, "decRef");
    --count;
  }
};

// A value stored in the heap: a 24-byte header, then the value's bytes. The header's size is
// the cache header's value-layout field (24). T provides `int toBytes(std::string&) const` and
// `int fromBytes(const char*, std::size_t)`; the bytes are opaque to the cache.
template <class T>
struct MBQObjectItem {
  static constexpr std::uint32_t kLayout = 24;

  MBQCachedItemRefCounterBase<std::int32_t> refs;  // snapshots whose records point here
  std::uint32_t reserved;                          // 0
  std::uint64_t size;                              // bytes after the header
  std::uint64_t checksum;                          // FNV-1a 64 of those bytes

  static std::size_t bytesFor(std::size_t valueBytes) { return kLayout + valueBytes; }
  static std::uint64_t hash(const char* data, std::size_t size) {
    std::uint64_t h = 14695981039346656037ull;  // the FNV-1a 64 offset basis
    for (std::size_t i = 0; i < size; ++i) h = (h ^ static_cast<unsigned char>(data[i])) * 1099511628211ull;
    return h;
  }
  const char* data() const { return reinterpret_cast<const char*>(this) + kLayout; }
  char* data() { return reinterpret_cast<char*>(this) + kLayout; }
  // Fills a freshly allocated item (reference count 0).
  void store(const std::string& bytes) {
    refs.count = 0;
    reserved = 0;
    size = bytes.size();
    std::memcpy(data(), bytes.data(), bytes.size());
    checksum = hash(bytes.data(), bytes.size());
  }
  bool intact() const { return hash(data(), size) == checksum; }
  int read(T& object) const { return object.fromBytes(data(), size); }
};

#pragma pack(pop)

// File-backed storage for the cache: each Storage is one mapping of the cache file.
class MBQ_EXPORT MBQMappedMemoryManager {
 public:
  class MBQ_EXPORT Storage : public MBQRefCounter {
   public:
    explicit Storage(const std::string& path) : path_(path) {}
    // Maps the file at `size` bytes, or anew relative to `previous` (see MBQMemoryMappedFile::
    // remap), retrying up to 100 times with a yield in between. Null on failure, and for a
    // storage that is already mapped (which is then only synced).
    void* getStorage(std::size_t size, const Storage* previous) {
      if (file_.size() != 0) {
        file_.sync();
        return nullptr;
      }
      for (int attempt = 0; attempt < 100; ++attempt) {
        void* address = previous == nullptr ? file_.map(path_, size, tFileMappingOptions(7, 2, 1, 1), nullptr)
                                            : file_.remap(size, nullptr, previous->file_);
        if (address != nullptr) return address;
        schedYield();
      }
      return nullptr;
    }
    MBQMemoryMappedFile& file() { return file_; }
    const std::string& path() const { return path_; }

   private:
    std::string path_;
    MBQMemoryMappedFile file_;
  };
  // Memory of a file-backed manager is always accessible once mapped.
  static bool isAccessible(const void*) { return true; }
};

// The cache logic over a mapped file (docs/template-cache.md). Key is a fixed-size, trivially
// copyable key with operator< and operator== (limited_length_string<256>); Value is the value
// wrapper (MBQObjectItem<T>); MemoryManager provides Storage (MBQMappedMemoryManager).
//
// One object is used by one thread at a time. Codes are MBQCacheStatus values; the entry
// operations add 1 (key absent) and -1 (other failure, with the error text).
//
// The file is shared and outlives crashes, so its bytes are never trusted: the whole structure is
// verified (MBQCacheVerifier) when the file is opened, after every remap and before every change;
// a look-up bounds-checks what it reads. Damage found after the open condemns the file (valid :=
// 0) and forgets the mapping, so that the next open makes a new file. Each lock notices a file
// that another process condemned, each change one that it removed or cut short, and lets go of
// it the same way.
template <class Key, class Value, class MemoryManager>
class MBQCacheLogic : public virtual MBQForkableRefCounter {
 public:
  using KeyType = Key;
  using ValueType = Value;
  using Storage = typename MemoryManager::Storage;
  using storageHandle = boost::intrusive_ptr<Storage>;

#pragma pack(push, 1)
  struct Record {
    Key key;
    pointer_type<Value> value;
    // Copies re-encode the value pointer for the destination; records never move by memcpy.
    Record& operator=(const Record& other) {
      std::memcpy(static_cast<void*>(&key), &other.key, sizeof key);
      value = other.value;
      return *this;
    }
    void clear() {
      std::memset(static_cast<void*>(&key), 0, sizeof key);
      value.setNull();
    }
  };

  struct Snapshot {
    MBQCachedItemRefCounterBase<std::int32_t> refs;  // the header's reference counts as 1
    std::uint64_t count;
    std::uint64_t capacity;

    static std::size_t bytesFor(std::uint64_t capacity) { return sizeof(Snapshot) + capacity * sizeof(Record); }
    Record* records() { return reinterpret_cast<Record*>(this + 1); }
    const Record* records() const { return reinterpret_cast<const Record*>(this + 1); }
    bool isAcquired() const { return refs.count > 1; }
    void incRef() { refs.incRef(); }
    void decRef() { refs.decRef(); }
    // The index of the first record not below `key`.
    std::uint64_t lowerBound(const Key& key) const {
      const Record* first = records();
      std::uint64_t low = 0, high = count;
      while (low < high) {
        const std::uint64_t middle = (low + high) / 2;
        if (first[middle].key < key) low = middle + 1;
        else high = middle;
      }
      return low;
    }
  };

  struct CacheHeader {
    static constexpr std::uint32_t kMagic = 0xCACEFE03;
    static constexpr std::uint32_t kVersion = 0xFF01;

    MBQSharedMemoryManager heap;
    pointer_type<Snapshot> snapshot;
    char lock;
    std::uint32_t magic;
    std::uint32_t headerSize;
    std::uint32_t keySize;
    std::uint32_t version;
    std::uint32_t valueLayout;
    std::uint32_t aux;
    std::uint32_t valid;

    // First failing check wins: -14 invalid, -11 header size, -13 key size, -12 magic,
    // -15 version, -16 value layout; else 0.
    int validate() const {
      if (valid == 0) return kCacheInvalid;
      if (headerSize != sizeof(CacheHeader)) return kCacheHeaderSize;
      if (keySize != sizeof(Key)) return kCacheKeySize;
      if (magic != kMagic) return kCacheMagic;
      if (version != kVersion) return kCacheVersion;
      if (valueLayout != Value::kLayout) return kCacheValueLayout;
      return 0;
    }
  };
#pragma pack(pop)
  static_assert(sizeof(CacheHeader) == 77, "file layout");

  // Holds the file lock for a scope; unlocks only when the lock succeeded. The guard refers to
  // the cache without counting a reference (the cache may be locked from its own constructor
  // or destructor, or before any handle owns it); the caller keeps the cache alive.
  class storageLockGuard_t {
   public:
    explicit storageLockGuard_t(MBQCacheLogic& cache) : cache_(&cache) { result_ = cache_->lock(storage_); }
    ~storageLockGuard_t() {
      if (result_ == 0) cache_->unlock(storage_);
    }
    storageLockGuard_t(const storageLockGuard_t&) = delete;
    storageLockGuard_t& operator=(const storageLockGuard_t&) = delete;
    bool isLocked() const { return result_ == 0; }
    int result() const { return result_; }

   private:
    MBQCacheLogic* cache_;
    storageHandle storage_;
    int result_;
  };

  // `growStep`: bytes added to the file at least per growth (capped by the file's size so far);
  // `spareRecords`: free record slots a copied snapshot gets; `maxSize`: the largest file.
  MBQCacheLogic(const std::string& path, std::uint64_t growStep, std::uint64_t spareRecords, std::uint64_t maxSize)
      : path_(path), protect_(true), sizes_{growStep, spareRecords, maxSize, 0} {}

  // Locks and unlocks once when mapped (maps a growth and proves the lock still works); a file
  // lock that fails here is an assertion failure. A damaged file found here is condemned, as
  // at any other lock.
  virtual ~MBQCacheLogic() {
    if (header_ != nullptr) {
      storageHandle storage;
      const int result = lock(storage);
      Debug::check(result != kCacheLockFailed, "KTRFunctionality", "core/src/MBQCore/MBQCacheLogic", 573,
                   "~MBQCacheLogic");
      unlock(storage);
    }
    path_.clear();
    storage_.reset();
  }

  // Maps, locks and validates the file, constructing the header in a new (zero-filled) file.
  // 0 or a negative code; with `invalidateOnFailure`, a failed check or a missing snapshot also
  // marks the file invalid (later opens get -14 until the file is removed). The first flag is
  // accepted and not used.
  int initialize(bool, bool invalidateOnFailure) {
    protect_ = false;
    verified_ = false;
    storage_ = new Storage(path_);
    const long page = ::sysconf(_SC_PAGESIZE);
    const std::size_t initial = (kInitialBytes / page + 1) * page;
    void* address = storage_->getStorage(initial, nullptr);
    if (address == nullptr) {
      forget();
      return kCacheNotMapped;
    }
    header_ = static_cast<CacheHeader*>(address);
    storageLockGuard_t guard(*this);
    if (!guard.isLocked()) {
      if (headerIsBacked()) header_->valid = 0;
      forget();
      return kCacheLockFailed;
    }
    if (!header_->heap.isInitialized(storage_->file().size())) {
      construct(storage_->file().size());
    } else {
      const int code = header_->validate();
      if (code != 0) {
        if (invalidateOnFailure) header_->valid = 0;
        setErrorMessage("cache file %s refused: code %d", path_.c_str(), code);
        forget();
        return code;
      }
    }
    unsafe_checkSize();
    // Everything, checksums included: a file that opens is one that `checkFile` passes.
    std::vector<std::string> problems;
    const int code = Verifier(header_, storage_->file().size()).run(Verifier::kWithChecksums, nullptr, &problems);
    if (code != 0) {
      if (invalidateOnFailure) header_->valid = 0;
      setErrorMessage("cache file %s refused (code %d): %s", path_.c_str(), code, problems.front().c_str());
      forget();
      return code;
    }
    storageHandle handle;
    Snapshot* snapshot = acquireSnapshot(handle);
    Debug::check(snapshot != nullptr && snapshot->isAcquired(), "KTRFunctionality", "core/src/MBQCore/MBQCacheLogic",
                 745, "initialize");
    snapshot->decRef();
    storage_->file().sync();
    verified_ = true;
    return 0;
  }

  bool isAccessible() const { return header_ != nullptr; }

  // Takes the file lock; on success `storage` holds the locked storage until unlock. Also maps
  // a growth made by another process (-10 when that fails, the lock then released).
  int lock(storageHandle& storage) {
    if (header_ == nullptr || !storage_) {
      setErrorMessage("cache %s is not mapped", path_.c_str());
      return kCacheLockFailed;
    }
    storage = storage_;
    if (storage->file().lock(false) != 0) {
      storage.reset();
      return kCacheLockFailed;
    }
    if (protect_) storage->file().protect(false);
    const int result = verified_ ? unsafe_checkFile() : unsafe_checkSize();
    if (result == 0) return 0;
    storage->file().unlock();
    storage.reset();
    return result;
  }
  int unlock(storageHandle& storage) {
    if (protect_ && storage_) storage_->file().protect(true);
    if (!storage) return -1;
    const int result = storage->file().unlock();
    storage.reset();
    return result;
  }

  // The current snapshot with its count raised, and `storage` pointed at the mapping it lives
  // in; null when the header has none. Caller holds the lock.
  Snapshot* acquireSnapshot(storageHandle& storage) {
    Snapshot* snapshot = const_cast<Snapshot*>(Verifier::usableSnapshot(*header_));
    if (snapshot == nullptr || !MemoryManager::isAccessible(snapshot)) return nullptr;
    storage = storage_;
    snapshot->incRef();
    return snapshot;
  }
  // Drops a reference taken by acquireSnapshot (takes the lock itself); the last reference
  // frees the snapshot and the values only it held. 0 or a lock code.
  int releaseSnapshot(Snapshot* snapshot, storageHandle& storage) {
    storageLockGuard_t guard(*this);
    if (!guard.isLocked()) return guard.result();
    Verifier verifier(header_, storage_->file().size());
    const int code = unsafe_verifyForChange(verifier);
    if (code != 0) return code;
    Snapshot* current = translate(snapshot, storage);
    if (!verifier.canRelease(current)) {
      condemn(kCacheInvalid, "a held snapshot is damaged");
      return kCacheInvalid;
    }
    unsafe_release(current);
    storage.reset();
    return 0;
  }

  // Forgets the mapping without touching the file.
  virtual int reinit() {
    header_ = nullptr;
    storage_.reset();
    verified_ = false;
    return 0;
  }

  // The value bytes of `key` into `bytes`: 0, 1 when absent, a lock code, or the code of the
  // damage found (the file is then condemned). The lookup reads the snapshot current at the time
  // of the call.
  int lookup(const Key& key, std::string& bytes) {
    storageLockGuard_t guard(*this);
    if (!guard.isLocked()) return guard.result();
    const Snapshot* snapshot = Verifier::usableSnapshot(*header_);
    if (snapshot == nullptr) {
      condemn(kCacheNoSnapshot, "the snapshot is damaged");
      return kCacheNoSnapshot;
    }
    const std::uint64_t position = snapshot->lowerBound(key);
    if (position == snapshot->count || !(snapshot->records()[position].key == key)) return 1;
    // Bounds only: hashing every value on every look-up would double its cost; the open verifies
    // checksums, and a typed caller's parse refuses garbage anyway.
    const pointer_type<Value>& field = snapshot->records()[position].value;
    const std::uint64_t offset = offsetOf(&field) + static_cast<std::uint64_t>(field.raw());
    if (field.isNull() || !valueInHeap(offset)) {
      condemn(kCacheInvalid, (std::string("the value of ") + key.c_str() + " leaves the heap").c_str());
      return kCacheInvalid;
    }
    const Value* value = reinterpret_cast<const Value*>(at(offset));
    bytes.assign(value->data(), value->size);
    return 0;
  }

  // Stores `bytes` under `key`, replacing an earlier value. A snapshot that someone holds is
  // never changed: a new one is published and the old one lives until its last release. The
  // file grows when the heap is full. 0, -1 (the cache would exceed its maximum size), or a lock
  // or remap code.
  int insert(const Key& key, const std::string& bytes) {
    storageLockGuard_t guard(*this);
    if (!guard.isLocked()) return guard.result();
    Verifier verifier(header_, storage_->file().size());
    const int code = unsafe_verifyForChange(verifier);
    return code != 0 ? code : unsafe_change(key, &bytes);
  }
  // Removes `key`: 0, 1 when absent, or a failure code as for insert.
  int remove(const Key& key) {
    storageLockGuard_t guard(*this);
    if (!guard.isLocked()) return guard.result();
    Verifier verifier(header_, storage_->file().size());
    const int code = unsafe_verifyForChange(verifier);
    return code != 0 ? code : unsafe_change(key, nullptr);
  }
  // The number of entries in the current snapshot; 0, a lock code or kCacheNoSnapshot.
  int count(std::uint64_t& entries) {
    storageLockGuard_t guard(*this);
    if (!guard.isLocked()) return guard.result();
    const Snapshot* snapshot = Verifier::usableSnapshot(*header_);
    if (snapshot == nullptr) {
      condemn(kCacheNoSnapshot, "the snapshot is damaged");
      return kCacheNoSnapshot;
    }
    entries = snapshot->count;
    return 0;
  }

  using Report = MBQCacheReport;
  // How long checkFile waits for the file lock before it gives up.
  static constexpr int kCheckLockSeconds = 10;
  // Inspects a cache file through a read-only mapping of its real size, under the file lock, and
  // never writes to it: MBQCacheVerifier with checksums. One line per problem in `problems`.
  // Returns 0 when there is none, -1 for a damaged file, -2 for one that can't be mapped or locked.
  static int checkFile(const std::string& path, Report& report, std::vector<std::string>& problems) {
    MBQMemoryMappedFile file;
    const void* base = file.mapReadOnly(path);
    if (base == nullptr) {
      problems.push_back(getErrorMessage());
      return -2;
    }
    for (int attempt = 0; file.lock(true) != 0; ++attempt) {
      if (attempt == kCheckLockSeconds * 100) {
        problems.push_back("the file stays locked by another process");
        return -2;
      }
      ::usleep(10000);
    }
    return Verifier(base, file.size()).run(Verifier::kWithChecksums, &report, &problems) == 0 ? 0 : -1;
  }

  const std::string& getPath() const { return path_; }
  // The mapped header, for inspection (null when unmapped).
  const CacheHeader* getHeader() const { return header_; }

 protected:
  // 77 header bytes, the first snapshot (284 bytes) and sixteen 280-byte units.
  static constexpr std::size_t kInitialBytes = 77 + 284 + 16 * 280;

  // Caller holds the lock. Maps the header's total when another process grew the heap: 0 or -10
  // (a total beyond the maximum size or beyond the file's length is refused unmapped).
  int unsafe_checkSize() {
    const std::uint64_t total = header_->heap.getSize();
    if (total <= storage_->file().size()) return 0;
    std::size_t fileBytes = 0;
    bool removed = false;
    // A removed file's path may name another file by now: growing means mapping the path again.
    if (total > sizes_[2] || storage_->file().fileState(fileBytes, removed) != 0 || removed || total > fileBytes) {
      setErrorMessage("cache file %s declares %llu bytes, more than its maximum or its length", path_.c_str(),
                      static_cast<unsigned long long>(total));
      return kCacheRemapFailed;
    }
    return remapTo(total) == 0 ? 0 : kCacheRemapFailed;
  }

 private:
  using Verifier = MBQCacheVerifier<MBQCacheLogic>;

  void forget() {
    header_ = nullptr;
    storage_.reset();
    verified_ = false;
  }

  // Whether the file still holds the header's page, so that writing the header can't fault.
  bool headerIsBacked() const {
    std::size_t fileBytes = 0;
    bool removed = false;
    return storage_->file().fileState(fileBytes, removed) == 0 && fileBytes >= sizeof(CacheHeader);
  }

  // Caller holds the lock. A file declared unusable, in use by other processes, is never written
  // again: valid := 0 tells them at their next lock, and the next open makes a new file.
  void condemn(int code, const char* why) {
    if (header_ != nullptr && headerIsBacked()) header_->valid = 0;
    setErrorMessage("cache file %s is damaged (%s, code %d); it will be made anew", path_.c_str(), why, code);
    Logger::put(kWarning, "KTRFunctionality", "%s", getErrorMessage().c_str());
    forget();
  }

  // Caller holds the lock of an opened file, before a change: lets go of a file that another
  // process removed (and made anew) or cut shorter than the mapping, without writing to it; then
  // runs `verifier` over the current mapping, condemning the file when it fails. 0 or a code.
  // (Look-ups skip the fstat: an orphan still reads consistently, and they stay as cheap as before.)
  int unsafe_verifyForChange(Verifier& verifier) {
    std::size_t fileBytes = 0;
    bool removed = false;
    if (storage_->file().fileState(fileBytes, removed) != 0 || removed || fileBytes < storage_->file().size()) {
      setErrorMessage("cache file %s was removed or cut short by another process", path_.c_str());
      forget();
      return kCacheInvalid;
    }
    return unsafe_verify(verifier);
  }
  // Caller holds the lock of an opened file. Runs `verifier` over the current mapping, condemning
  // the file when it fails. 0 or the failure's code.
  int unsafe_verify(Verifier& verifier) {
    std::vector<std::string> problems;
    const int code = verifier.run(Verifier::kStructure, nullptr, &problems);
    if (code != 0) condemn(code, problems.front().c_str());
    return code;
  }

  // Caller has just taken the lock of an opened file: lets go of a file that another process
  // condemned (it is never written again), then maps a growth, which is verified before anything
  // in it is followed. 0 or a code.
  int unsafe_checkFile() {
    if (header_->valid == 0) {
      setErrorMessage("cache file %s was condemned by another process", path_.c_str());
      forget();
      return kCacheInvalid;
    }
    const std::size_t mapped = storage_->file().size();
    int code = unsafe_checkSize();
    if (code != 0) {
      condemn(code, "its total can't be mapped");
      return code;
    }
    if (storage_->file().size() == mapped) return 0;
    Verifier verifier(header_, storage_->file().size());
    return unsafe_verify(verifier);
  }

  int remapTo(std::uint64_t size) {
    storageHandle fresh = new Storage(path_);
    void* address = fresh->getStorage(size, storage_.get());
    if (address == nullptr) {
      setErrorMessage("can't map cache file %s at %llu bytes: %s", path_.c_str(),
                      static_cast<unsigned long long>(size), getErrorMessage().c_str());
      return -1;
    }
    // The lock is held on the file mapped so far; a file put in its place since is not ours to
    // change (its own users lock it, not this one).
    if (!fresh->file().isSameFile(storage_->file())) {
      setErrorMessage("cache file %s was replaced while mapped", path_.c_str());
      return -1;
    }
    if (protect_) storage_->file().protect(true);
    storage_ = fresh;
    header_ = static_cast<CacheHeader*>(address);
    return 0;
  }

  void construct(std::size_t mappedSize) {
    header_->heap.construct(sizeof(CacheHeader), mappedSize);
    header_->snapshot.setNull();
    header_->magic = CacheHeader::kMagic;
    header_->headerSize = sizeof(CacheHeader);
    header_->keySize = sizeof(Key);
    header_->valid = 1;
    header_->version = CacheHeader::kVersion;
    header_->valueLayout = Value::kLayout;
    header_->aux = 1;
    void* memory = header_->heap.allocate(Snapshot::bytesFor(1));
    std::memset(memory, 0, Snapshot::bytesFor(1));
    Snapshot* snapshot = static_cast<Snapshot*>(memory);
    snapshot->refs.count = 0;
    snapshot->count = 0;
    snapshot->capacity = 1;
    snapshot->records()[0].clear();
    snapshot->refs.count = 1;
    header_->snapshot = snapshot;
  }

  // The same object in the current mapping as `pointer` in `storage`'s.
  template <class T>
  T* translate(T* pointer, const storageHandle& storage) {
    if (!storage || storage == storage_) return pointer;
    const char* oldBase = static_cast<const char*>(storage->file().address());
    return reinterpret_cast<T*>(reinterpret_cast<char*>(header_) + (reinterpret_cast<char*>(pointer) - oldBase));
  }

  // Caller holds the lock.
  void unsafe_release(Snapshot* snapshot) {
    snapshot->decRef();
    if (snapshot->refs.count != 0) return;
    Record* records = snapshot->records();
    for (std::uint64_t i = 0; i < snapshot->count; ++i) releaseValue(records[i].value.get());
    header_->heap.deallocate(snapshot);
  }
  void releaseValue(Value* value) {
    if (value == nullptr) return;
    value->refs.decRef();
    if (value->refs.count == 0) header_->heap.deallocate(value);
  }

  // Grows the file and the heap by at least `bytes`; 0, -1 at the maximum size, -10.
  int growBy(std::uint64_t bytes) {
    const std::uint64_t page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    const std::uint64_t total = header_->heap.getSize();
    std::uint64_t step = std::max<std::uint64_t>(bytes + 4 * MBQSharedMemoryManager::kUnit,
                                                 std::min<std::uint64_t>(total, sizes_[0]));
    std::uint64_t newTotal = (total + step + page - 1) / page * page;
    if (newTotal > sizes_[2]) {
      setErrorMessage("cache file %s would exceed its maximum size", path_.c_str());
      return -1;
    }
    if (storage_->file().size() < newTotal && remapTo(newTotal) != 0) return kCacheRemapFailed;
    header_->heap.grow(newTotal - total);
    return 0;
  }

  // Caller holds the lock. `bytes` null removes.
  int unsafe_change(const Key& key, const std::string* bytes) {
    {
      Snapshot* current = header_->snapshot.get();
      if (current == nullptr) return kCacheNoSnapshot;
      const std::uint64_t at = current->lowerBound(key);
      if (bytes == nullptr && (at == current->count || !(current->records()[at].key == key))) return 1;
    }
    // Allocate everything first, growing until it fits; every pointer is taken afresh after a
    // growth, which may have moved the mapping.
    const std::size_t valueBytes = bytes ? Value::bytesFor(bytes->size()) : 0;
    std::uint64_t valueOffset = 0, snapshotOffset = 0;
    for (int attempt = 0;; ++attempt) {
      Snapshot* current = header_->snapshot.get();
      const bool inPlace = !current->isAcquired() &&
                           (bytes == nullptr || current->count < current->capacity ||
                            (current->lowerBound(key) < current->count &&
                             current->records()[current->lowerBound(key)].key == key));
      const std::uint64_t capacity = current->count + 1 + sizes_[1];
      const std::size_t snapshotBytes = inPlace ? 0 : Snapshot::bytesFor(capacity);
      void* value = valueBytes ? header_->heap.allocate(valueBytes) : nullptr;
      void* snapshot = snapshotBytes && (value || !valueBytes) ? header_->heap.allocate(snapshotBytes) : nullptr;
      if ((value || !valueBytes) && (snapshot || !snapshotBytes)) {
        valueOffset = value ? offsetOf(value) : 0;
        snapshotOffset = snapshot ? offsetOf(snapshot) : 0;
        break;
      }
      if (value) header_->heap.deallocate(value);
      if (attempt == 3) {
        setErrorMessage("cache file %s has no room for the entry", path_.c_str());
        return -1;
      }
      const int grown = growBy(valueBytes + snapshotBytes + 2 * MBQSharedMemoryManager::kUnit);
      if (grown != 0) return grown;
    }

    Snapshot* current = header_->snapshot.get();
    Value* value = nullptr;
    if (bytes) {
      value = reinterpret_cast<Value*>(at(valueOffset));
      value->store(*bytes);
    }
    const std::uint64_t position = current->lowerBound(key);
    const bool present = position < current->count && current->records()[position].key == key;
    if (snapshotOffset == 0) {
      changeInPlace(*current, position, present, key, value);
    } else {
      Snapshot* next = reinterpret_cast<Snapshot*>(at(snapshotOffset));
      copyWithChange(*current, *next, position, present, key, value);
      next->refs.count = 1;
      header_->snapshot = next;
      unsafe_release(current);
    }
    return 0;
  }

  // Nobody but the header holds `snapshot`: change it directly, moving records one by one (each
  // copy re-encodes its value pointer).
  void changeInPlace(Snapshot& snapshot, std::uint64_t position, bool present, const Key& key, Value* value) {
    Record* records = snapshot.records();
    if (value == nullptr) {  // remove
      releaseValue(records[position].value.get());
      for (std::uint64_t i = position; i + 1 < snapshot.count; ++i) records[i] = records[i + 1];
      records[--snapshot.count].clear();
      return;
    }
    if (present) {
      releaseValue(records[position].value.get());
    } else {
      for (std::uint64_t i = snapshot.count; i > position; --i) records[i] = records[i - 1];
      ++snapshot.count;
      std::memcpy(static_cast<void*>(&records[position].key), &key, sizeof key);
    }
    records[position].value = value;
    value->refs.incRef();
  }

  void copyWithChange(const Snapshot& from, Snapshot& to, std::uint64_t position, bool present, const Key& key,
                      Value* value) {
    const std::uint64_t capacity = from.count + 1 + sizes_[1];
    to.refs.count = 0;
    to.capacity = capacity;
    to.count = 0;
    const Record* source = from.records();
    Record* target = to.records();
    for (std::uint64_t i = 0; i < capacity; ++i) target[i].clear();
    for (std::uint64_t i = 0; i < from.count; ++i) {
      if (i == position) {
        if (value != nullptr) {
          std::memcpy(static_cast<void*>(&target[to.count].key), &key, sizeof key);
          target[to.count++].value = value;
          value->refs.incRef();
        }
        if (present) continue;
      }
      target[to.count++] = source[i];
      source[i].value.get()->refs.incRef();
    }
    if (position == from.count && value != nullptr) {
      std::memcpy(static_cast<void*>(&target[to.count].key), &key, sizeof key);
      target[to.count++].value = value;
      value->refs.incRef();
    }
  }

  // Whether the value at `offset` from the header is aligned as block data and all its bytes lie
  // inside the heap (so reading it stays in the mapping). Offsets, not pointers: a wild distance
  // must not make a wild pointer.
  bool valueInHeap(std::uint64_t offset) const {
    const std::uint64_t total = header_->heap.getSize();
    if (offset < header_->heap.getLowerBound() || offset >= total || offset % MBQSharedMemoryManager::kUnit != 0 ||
        total - offset < Value::kLayout)
      return false;
    return reinterpret_cast<const Value*>(at(offset))->size <= total - offset - Value::kLayout;
  }

  std::uint64_t offsetOf(const void* address) const {
    return static_cast<std::uint64_t>(static_cast<const char*>(address) - reinterpret_cast<const char*>(header_));
  }
  char* at(std::uint64_t offset) { return reinterpret_cast<char*>(header_) + offset; }
  const char* at(std::uint64_t offset) const { return reinterpret_cast<const char*>(header_) + offset; }

  CacheHeader* header_ = nullptr;
  storageHandle storage_;
  std::string path_;
  bool protect_;
  bool verified_ = false;  // the mapped file passed the open's checks; later locks watch it
  std::uint64_t sizes_[4];
};

}  // namespace MBQ
