#pragma once

// Reads the structures of a mapped cache file without trusting any of them: every offset is
// bounds-checked before it is followed, every walk is bounded, and nothing is written. The
// cache runs it when it opens a file, after every remap and before every change; `ktrctl cache
// check` runs it on a read-only mapping. The layout is in docs/template-cache.md.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "MBQCore/MBQCacheStatus.h"
#include "MBQCore/MBQSharedMemoryManager.h"

namespace MBQ {

// The figures of a cache file, as far as they could be read.
struct MBQCacheReport {
  std::uint64_t fileSize = 0;
  std::uint32_t magic = 0, headerSize = 0, keySize = 0, version = 0, valueLayout = 0, aux = 0, valid = 0;
  std::uint64_t total = 0, used = 0, lowerBound = 0;
  MBQSharedMemoryManager::Stats heap;
  std::uint64_t blocks = 0;
  std::uint64_t entries = 0, capacity = 0;
  std::int32_t snapshotRefs = 0;
  // Allocated bytes that the current snapshot does not reach: snapshots still held by running
  // processes, with the values only they use, or blocks leaked by a process that died mid-change.
  std::uint64_t unreachableBytes = 0;
  int validation = 0;  // the header checks' code
};

// `Logic` is an MBQCacheLogic; its nested layout types describe the file.
template <class Logic>
class MBQCacheVerifier {
 public:
  using CacheHeader = typename Logic::CacheHeader;
  using Snapshot = typename Logic::Snapshot;
  using Record = typename Logic::Record;
  using Value = typename Logic::ValueType;

  enum Depth { kStructure, kWithChecksums };

  // A snapshot's reference count above this is damage, not processes holding it.
  static constexpr std::int32_t kMaxReferences = 1 << 30;

  // `base` is the mapped file, `mappedBytes` how much of it may be read.
  MBQCacheVerifier(const void* base, std::uint64_t mappedBytes)
      : base_(static_cast<const char*>(base)), mapped_(mappedBytes) {}

  // Checks the header, the heap (every block and the free list), the current snapshot and its
  // records, and with kWithChecksums every value's checksum. Returns 0 or the status code of the
  // first problem found; with `problems`, one line for each problem (some end the walk early).
  int run(Depth depth, MBQCacheReport* report = nullptr, std::vector<std::string>* problems = nullptr) {
    problems_ = problems;
    code_ = 0;
    starts_.clear();
    free_.clear();
    MBQCacheReport local;
    MBQCacheReport& r = report != nullptr ? *report : local;
    if (mapped_ < sizeof(CacheHeader) + 3) {
      fail(kCacheInvalid, "file of " + std::to_string(mapped_) + " bytes is shorter than the header");
      return code_;
    }
    const CacheHeader& header = *reinterpret_cast<const CacheHeader*>(base_);
    readHeader(header, r);
    if (!checkHeap(header, r)) return code_;
    checkSnapshot(header, depth, r);
    return code_;
  }

  // After run() returned 0: whether `offset` is the data of an allocated block with at least
  // `bytes` of room.
  bool isAllocatedData(std::uint64_t offset, std::uint64_t bytes) const {
    return isAllocated(blockOfData(offset), bytes);
  }
  // After run() returned 0: whether a snapshot that the header no longer points to (held by
  // some process until now) can be released: its block, counts and the values it would free.
  bool canRelease(const Snapshot* snapshot) const {
    const std::uint64_t offset = offsetOf(snapshot);
    const Block block = blockOfData(offset);
    if (!isAllocated(block, sizeof(Snapshot))) return false;
    if (snapshot->refs.count < 1 || snapshot->refs.count > kMaxReferences) return false;
    if (!fits(*snapshot, roomOf(block))) return false;
    if (snapshot->refs.count > 1) return true;
    const Record* records = snapshot->records();
    for (std::uint64_t i = 0; i < snapshot->count; ++i) {
      const std::uint64_t value = targetOf(&records[i].value);
      if (!isAllocatedData(value, Value::kLayout)) return false;
      if (reinterpret_cast<const Value*>(base_ + value)->refs.count < 1) return false;
    }
    return true;
  }

  // Cheap checks of the current snapshot for a look-up, which then reads only inside it: the
  // pointer lands in the heap, aligned, and the records fit before the heap's end.
  static const Snapshot* usableSnapshot(const CacheHeader& header) {
    const std::int64_t raw = header.snapshot.raw();
    if (raw == 1) return nullptr;
    const std::uint64_t offset = kSnapshotField + static_cast<std::uint64_t>(raw);
    const std::uint64_t total = header.heap.getSize();
    if (offset % MBQSharedMemoryManager::kUnit != 0 || offset < header.heap.getLowerBound() + 16 ||
        offset >= total || total - offset < sizeof(Snapshot))
      return nullptr;
    const Snapshot* snapshot = reinterpret_cast<const Snapshot*>(reinterpret_cast<const char*>(&header) + offset);
    if (snapshot->refs.count < 1 || snapshot->refs.count > kMaxReferences || !fits(*snapshot, total - offset))
      return nullptr;
    return snapshot;
  }

 private:
  // A block of the walk, as found from a data offset.
  struct Block {
    std::uint64_t units;
    bool free;
  };
  static constexpr std::uint64_t kSnapshotField = 40;  // offset of the header's snapshot pointer

  void fail(int code, const std::string& text) {
    if (code_ == 0) code_ = code;
    if (problems_ != nullptr) problems_->push_back(text);
  }

  static bool fits(const Snapshot& snapshot, std::uint64_t room) {
    if (room < sizeof(Snapshot) || snapshot.count > snapshot.capacity) return false;
    return snapshot.capacity <= (room - sizeof(Snapshot)) / sizeof(Record);
  }
  static std::uint64_t roomOf(const Block& block) { return block.units * MBQSharedMemoryManager::kUnit - 16; }
  std::uint64_t offsetOf(const void* address) const {
    return static_cast<std::uint64_t>(static_cast<const char*>(address) - base_);
  }
  // The offset a self-relative pointer field points at (wrapping arithmetic: a wild distance
  // gives a wild offset, which the block map then refuses).
  template <class Pointer>
  std::uint64_t targetOf(const Pointer* field) const {
    return offsetOf(field) + static_cast<std::uint64_t>(field->raw());
  }
  // The block whose data starts at `offset`; units 0 when no block of the walk starts there.
  Block blockOfData(std::uint64_t offset) const {
    const std::uint64_t unit = MBQSharedMemoryManager::kUnit;
    if (offset < unit || offset % unit != 0 || (offset - unit) / unit >= starts_.size()) return Block{0, false};
    const std::uint64_t index = (offset - unit) / unit;
    if (!starts_[index]) return Block{0, false};
    return Block{reinterpret_cast<const block_ctrl*>(base_ + offset - unit)->size, free_[index]};
  }
  static bool isAllocated(const Block& block, std::uint64_t bytes) {
    return block.units != 0 && !block.free && roomOf(block) >= bytes;
  }

  void readHeader(const CacheHeader& header, MBQCacheReport& r) {
    r.fileSize = mapped_;
    r.magic = header.magic;
    r.headerSize = header.headerSize;
    r.keySize = header.keySize;
    r.version = header.version;
    r.valueLayout = header.valueLayout;
    r.aux = header.aux;
    r.valid = header.valid;
    r.total = header.heap.getSize();
    r.used = header.heap.getUsed();
    r.lowerBound = header.heap.getLowerBound();
    r.validation = header.validate();
    if (r.validation != 0) fail(r.validation, "header refused with code " + std::to_string(r.validation));
    if (header.valid > 1) fail(kCacheInvalid, "valid flag is " + std::to_string(header.valid) + ", not 1");
    if (header.aux != 1) fail(kCacheInvalid, "aux field is " + std::to_string(header.aux) + ", not 1");
  }

  // The free list (MBQSharedMemoryManager::check), then every block from the lower bound to the
  // total, each free-list entry being one of them. False when the heap can't be walked further.
  bool checkHeap(const CacheHeader& header, MBQCacheReport& r) {
    std::vector<std::string> heapProblems;
    if (header.heap.check(mapped_, heapProblems, &r.heap) != 0) {
      for (const std::string& text : heapProblems) fail(kCacheInvalid, text);
      return false;
    }
    const std::uint64_t total = header.heap.getSize();
    // One bit per unit: bounded by the mapping (1/128 of it), however the blocks are cut.
    starts_.assign(total / MBQSharedMemoryManager::kUnit, false);
    free_.assign(starts_.size(), false);
    for (std::uint64_t offset = header.heap.getLowerBound(); offset < total;) {
      const std::uint64_t units = reinterpret_cast<const block_ctrl*>(base_ + offset)->size;
      if (units < 2 || units > (total - offset) / MBQSharedMemoryManager::kUnit) {
        fail(kCacheInvalid, "block at offset " + std::to_string(offset) + " has size " + std::to_string(units) +
                                " units, which does not fit the heap");
        return false;
      }
      starts_[offset / MBQSharedMemoryManager::kUnit] = true;
      ++r.blocks;
      offset += units * MBQSharedMemoryManager::kUnit;
    }
    // The free list is sane (ascending, bounded); each entry must start a block of the walk.
    std::uint64_t offset = static_cast<std::uint64_t>(header.heap.freeListHead());
    while (offset != 0) {
      if (!starts_[offset / MBQSharedMemoryManager::kUnit]) {
        fail(kCacheInvalid, "free block at offset " + std::to_string(offset) + " lies inside another block");
        return false;
      }
      free_[offset / MBQSharedMemoryManager::kUnit] = true;
      offset += static_cast<std::uint64_t>(reinterpret_cast<const block_ctrl*>(base_ + offset)->next.raw());
    }
    return true;
  }

  void checkSnapshot(const CacheHeader& header, Depth depth, MBQCacheReport& r) {
    if (header.snapshot.isNull()) {
      fail(kCacheNoSnapshot, "header has no snapshot");
      return;
    }
    const std::uint64_t offset = targetOf(&header.snapshot);
    const Block block = blockOfData(offset);
    if (!isAllocated(block, sizeof(Snapshot))) {
      fail(kCacheNoSnapshot, "snapshot pointer does not lead to an allocated block");
      return;
    }
    const Snapshot& snapshot = *reinterpret_cast<const Snapshot*>(base_ + offset);
    r.entries = snapshot.count;
    r.capacity = snapshot.capacity;
    r.snapshotRefs = snapshot.refs.count;
    if (snapshot.refs.count < 1 || snapshot.refs.count > kMaxReferences)
      fail(kCacheNoSnapshot, "snapshot reference count " + std::to_string(snapshot.refs.count) + " is out of range");
    if (!fits(snapshot, roomOf(block))) {
      fail(kCacheNoSnapshot, "snapshot count " + std::to_string(snapshot.count) + " / capacity " +
                                 std::to_string(snapshot.capacity) + " do not fit its block");
      return;
    }
    std::uint64_t reached = block.units * MBQSharedMemoryManager::kUnit;
    std::vector<std::uint64_t> values;
    values.reserve(snapshot.count);
    const Record* records = snapshot.records();
    for (std::uint64_t i = 0; i < snapshot.count; ++i) {
      const Record& record = records[i];
      const char* key = reinterpret_cast<const char*>(&record.key);
      const std::string where = "record " + std::to_string(i);
      if (key[sizeof record.key - 1] != '\0') {
        fail(kCacheInvalid, where + ": key is not terminated");
        continue;
      }
      const std::string named = where + " (" + key + ")";
      if (i > 0 && std::strncmp(reinterpret_cast<const char*>(&records[i - 1].key), key, sizeof record.key) >= 0)
        fail(kCacheInvalid, named + ": key is not above the key before it");
      const std::uint64_t valueOffset = targetOf(&record.value);
      const Block valueBlock = record.value.isNull() ? Block{0, false} : blockOfData(valueOffset);
      if (!isAllocated(valueBlock, Value::kLayout)) {
        fail(kCacheInvalid, named + ": value pointer does not lead to an allocated block");
        continue;
      }
      const Value& value = *reinterpret_cast<const Value*>(base_ + valueOffset);
      if (value.size > roomOf(valueBlock) - Value::kLayout) {
        fail(kCacheInvalid, named + ": value size exceeds its block");
        continue;
      }
      if (value.refs.count < 1 || value.refs.count > kMaxReferences)
        fail(kCacheInvalid, named + ": value reference count " + std::to_string(value.refs.count) + " is out of range");
      if (depth == kWithChecksums && !value.intact()) fail(kCacheInvalid, named + ": value checksum mismatch");
      values.push_back(valueOffset);
    }
    std::sort(values.begin(), values.end());
    const auto shared = std::adjacent_find(values.begin(), values.end());
    if (shared != values.end()) fail(kCacheInvalid, "two records share the value at offset " + std::to_string(*shared));
    for (std::uint64_t offset : values) reached += blockOfData(offset).units * MBQSharedMemoryManager::kUnit;
    // Slots past the count are unset; a set one is an entry the count lost (its value leaks).
    for (std::uint64_t i = snapshot.count; i < snapshot.capacity; ++i) {
      static const char kZeros[sizeof(Record::key)] = {};
      if (std::memcmp(&records[i].key, kZeros, sizeof kZeros) != 0 || !records[i].value.isNull()) {
        fail(kCacheInvalid, "record " + std::to_string(i) + " past the count of " + std::to_string(snapshot.count) +
                                " is set: its entry is lost");
        break;
      }
    }
    const std::uint64_t allocated = header.heap.getUsed() - header.heap.getLowerBound();
    r.unreachableBytes = allocated > reached ? allocated - reached : 0;
  }

  const char* base_;
  std::uint64_t mapped_;
  std::vector<std::string>* problems_ = nullptr;
  int code_ = 0;
  std::vector<bool> starts_;  // per unit of the heap: a block of the walk starts here
  std::vector<bool> free_;    // ... and it is on the free list
};

}  // namespace MBQ
