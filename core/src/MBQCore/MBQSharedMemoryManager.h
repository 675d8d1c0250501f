#pragma once

// The heap inside a shared cache file: a first-fit allocator with eager merging whose every
// pointer is self-relative, so that each process may map the file at its own address. The
// byte layout is in docs/template-cache.md; callers hold the file lock around every call.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "MBQCore/MBQExport.h"

namespace MBQ {

#pragma pack(push, 1)

// A pointer stored in a shared file: the signed byte distance from this field to the target;
// 1 is null (targets are 16-byte aligned, so never at an odd distance). Copying re-encodes the
// distance for the destination field. Never move a pointer_type with memcpy unless its target
// moves by the same distance.
template <class T>
class pointer_type {
 public:
  pointer_type() { offset_ = 1; }
  pointer_type(const pointer_type& other) { set(other.get()); }
  pointer_type& operator=(const pointer_type& other) {
    set(other.get());
    return *this;
  }
  pointer_type& operator=(T* target) {
    set(target);
    return *this;
  }

  T* get() const {
    return offset_ == 1 ? nullptr
                        : reinterpret_cast<T*>(const_cast<char*>(reinterpret_cast<const char*>(this)) + offset_);
  }
  void set(const T* target) {
    offset_ = target == nullptr ? 1
                                : reinterpret_cast<const char*>(target) - reinterpret_cast<const char*>(this);
  }
  void setNull() { offset_ = 1; }
  bool isNull() const { return offset_ == 1; }
  T* operator->() const { return get(); }
  // The stored distance, for checks and tests.
  std::int64_t raw() const { return offset_; }

 private:
  std::int64_t offset_;
};

// The 16-byte header before every heap block.
struct block_ctrl {
  pointer_type<block_ctrl> next;  // next free block, in ascending address order; only while free
  std::uint64_t size;             // in 16-byte units, this header included
};

// The heap's header, at offset 0 of the file; its first 16 bytes are the sentinel of the
// circular free list. All offsets are from the header's own address, which is the file start.
class MBQ_EXPORT MBQSharedMemoryManager {
 public:
  static constexpr std::uint64_t kUnit = 16;

  // Lays the heap out over `size` bytes starting at this header, with the first `reserved`
  // bytes (rounded up to whole units) kept for the header and whatever the caller puts after it:
  // one free block covers the rest. `size` is rounded down to whole units.
  void construct(std::uint64_t reserved, std::uint64_t size);

  // A block of at least `size` bytes, 16-byte aligned; null for 0 or when no free block is large
  // enough (the heap never grows by itself). First fit with a shortcut: a block whose leftover
  // would be at most a quarter of it is taken at once, else the smallest fitting block (the
  // earliest among equals); a split hands out the tail and keeps the front on the free list.
  void* allocate(std::size_t size);
  // Returns the block of `pointer` (from allocate) and merges it with free neighbours. A pointer
  // outside the heap, misaligned, or a block larger than the used bytes is an assertion failure.
  void deallocate(void* pointer);
  // Appends `bytes` (rounded down to whole units) at the upper end as free memory. The caller
  // must already map the file that far.
  void grow(std::uint64_t bytes);

  // True once a heap has been constructed here (a zero-filled file has no used bytes). `size`,
  // the mapped size, is not needed by this layout and is accepted for the caller's symmetry.
  bool isInitialized(std::size_t size) const;
  std::uint64_t getSize() const { return total_; }
  std::uint64_t getUsed() const { return used_; }
  std::uint64_t getLowerBound() const { return lower_; }
  // The free list's first block as an offset from the header; 0 (the sentinel) when empty.
  std::int64_t freeListHead() const { return sentinel_.next.raw(); }
  // True for an address in [lower bound, total) of this heap.
  bool isInRange(const void* address) const;

  // What a walk of the free list finds, for tools and tests.
  struct Stats {
    std::uint64_t freeBytes = 0;
    std::uint64_t freeBlocks = 0;
  };
  // Checks the heap without trusting it (never reads outside [this, this + mappedSize), never
  // asserts): bounds and alignment of the header fields; a free list that is ascending, inside
  // the heap, without overlapping or adjacent (unmerged) blocks; used plus free bytes equal to
  // the total. Appends one line per problem to `problems`; returns 0 when none, else -1.
  int check(std::size_t mappedSize, std::vector<std::string>& problems, Stats* stats = nullptr) const;

 private:
  char* base() { return reinterpret_cast<char*>(this); }
  const char* base() const { return reinterpret_cast<const char*>(this); }
  static char* end(block_ctrl* block) { return reinterpret_cast<char*>(block) + block->size * kUnit; }

  block_ctrl sentinel_;
  std::uint64_t used_;
  std::uint64_t total_;
  std::uint64_t lower_;
};

#pragma pack(pop)

static_assert(sizeof(pointer_type<int>) == 8, "file layout");
static_assert(sizeof(block_ctrl) == 16, "file layout");
static_assert(sizeof(MBQSharedMemoryManager) == 40, "file layout");

}  // namespace MBQ
