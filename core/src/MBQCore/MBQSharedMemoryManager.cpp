#include "MBQCore/MBQSharedMemoryManager.h"

#include <cmath>
#include <cstdio>

#include "MBQCore/MBQAbort.h"

namespace MBQ {

namespace {

// The cache's assertions carry the name of the library that owns the cache.
const char* const kModule = "KTRFunctionality";
const char* const kSource = "core/src/MBQCore/MBQSharedMemoryManager";

std::string format(const char* fmt, unsigned long long a, unsigned long long b = 0) {
  char text[160];
  std::snprintf(text, sizeof text, fmt, a, b);
  return text;
}

}  // namespace

void MBQSharedMemoryManager::construct(std::uint64_t reserved, std::uint64_t size) {
  const std::uint64_t lower = (reserved + kUnit - 1) / kUnit * kUnit;
  sentinel_.size = 1;
  sentinel_.next = &sentinel_;
  total_ = used_ = lower_ = lower;
  const std::uint64_t rest = size / kUnit * kUnit;
  if (rest > lower) grow(rest - lower);
}

bool MBQSharedMemoryManager::isInitialized(std::size_t) const { return used_ != 0; }

bool MBQSharedMemoryManager::isInRange(const void* address) const {
  const char* at = static_cast<const char*>(address);
  return at >= base() + lower_ && at < base() + total_;
}

void* MBQSharedMemoryManager::allocate(std::size_t size) {
  if (size == 0 || total_ - used_ < kUnit || total_ - used_ - kUnit < size) return nullptr;
  const std::uint64_t needed = static_cast<std::uint64_t>(std::ceil(static_cast<double>(size) / kUnit)) + 1;

  block_ctrl* previous = &sentinel_;
  block_ctrl* best = nullptr;
  block_ctrl* bestPrevious = nullptr;
  for (block_ctrl* block = sentinel_.next.get(); block != &sentinel_; previous = block, block = block->next.get()) {
    Debug::check(isInRange(block) || block == &sentinel_, kModule, kSource, 207, "allocate");
    Debug::check(block->size != 0, kModule, kSource, 209, "allocate");
    if (block->size < needed) continue;
    if ((block->size - needed) * 4 <= block->size) {
      best = block;
      bestPrevious = previous;
      break;
    }
    if (best == nullptr || best->size > block->size) {
      best = block;
      bestPrevious = previous;
    }
  }
  if (best == nullptr) return nullptr;

  block_ctrl* taken;
  if (best->size > needed + 1) {
    best->size -= needed;
    taken = reinterpret_cast<block_ctrl*>(end(best));
    Debug::check(isInRange(taken), kModule, kSource, 248, "allocate");
    taken->size = needed;
  } else {
    bestPrevious->next = best->next.get();
    taken = best;
  }
  taken->next.setNull();
  used_ += taken->size * kUnit;
  char* data = reinterpret_cast<char*>(taken + 1);
  Debug::check((data - base()) % kUnit == 0, kModule, kSource, 262, "allocate");
  return data;
}

void MBQSharedMemoryManager::deallocate(void* pointer) {
  char* data = static_cast<char*>(pointer);
  block_ctrl* block = reinterpret_cast<block_ctrl*>(data) - 1;
  Debug::check(isInRange(data), kModule, kSource, 275, "deallocate");
  Debug::check(isInRange(block), kModule, kSource, 279, "deallocate");
  Debug::check((data - base()) % kUnit == 0, kModule, kSource, 280, "deallocate");
  Debug::check(used_ >= block->size * kUnit, kModule, kSource, 281, "deallocate");
  used_ -= block->size * kUnit;

  block_ctrl* at = &sentinel_;
  for (block_ctrl* next = at->next.get(); next > at && next <= block; next = at->next.get()) at = next;

  auto mergeWithNext = [](block_ctrl* first) {
    block_ctrl* second = first->next.get();
    if (reinterpret_cast<block_ctrl*>(end(first)) == second) {
      first->size += second->size;
      first->next = second->next.get();
    }
  };
  if (at != &sentinel_ && reinterpret_cast<block_ctrl*>(end(at)) == block) {
    at->size += block->size;
    mergeWithNext(at);
  } else {
    block->next = at->next.get();
    at->next = block;
    mergeWithNext(block);
  }
}

void MBQSharedMemoryManager::grow(std::uint64_t bytes) {
  const std::uint64_t units = bytes / kUnit;
  if (units < 2) return;  // a block needs its header and at least one unit of data
  block_ctrl* block = reinterpret_cast<block_ctrl*>(base() + total_);
  block->size = units;
  total_ += units * kUnit;
  used_ += units * kUnit;
  deallocate(block + 1);
}

int MBQSharedMemoryManager::check(std::size_t mappedSize, std::vector<std::string>& problems, Stats* stats) const {
  const std::size_t before = problems.size();
  if (lower_ < sizeof(MBQSharedMemoryManager) || lower_ % kUnit != 0)
    problems.push_back(format("heap lower bound %llu is not a unit boundary after the header", lower_));
  if (total_ % kUnit != 0 || total_ > mappedSize || total_ < lower_)
    problems.push_back(format("heap total %llu is misaligned, below the lower bound or beyond the %llu mapped bytes",
                              total_, mappedSize));
  if (used_ < lower_ || used_ > total_)
    problems.push_back(format("heap used %llu is outside [lower bound, total %llu]", used_, total_));
  if (sentinel_.size != 1) problems.push_back(format("sentinel size is %llu, not 1", sentinel_.size));
  if (problems.size() != before) return -1;

  Stats found;
  const std::int64_t sentinelNext = sentinel_.next.raw();
  std::uint64_t offset = static_cast<std::uint64_t>(sentinelNext);  // the sentinel is at offset 0
  std::uint64_t previousEnd = 0;
  const std::uint64_t maxBlocks = total_ / kUnit;
  while (offset != 0) {
    if (found.freeBlocks > maxBlocks) {
      problems.push_back("free list does not come back to the sentinel");
      break;
    }
    if (offset % kUnit != 0 || offset < lower_ || offset > total_ - kUnit) {
      problems.push_back(format("free block at offset %llu is outside the heap or misaligned", offset));
      break;
    }
    if (offset < previousEnd) {
      problems.push_back(format("free block at offset %llu overlaps or precedes the block before it (end %llu)",
                                offset, previousEnd));
      break;
    }
    if (offset == previousEnd && found.freeBlocks != 0)
      problems.push_back(format("free block at offset %llu was not merged with the free block before it", offset));
    const block_ctrl* block = reinterpret_cast<const block_ctrl*>(base() + offset);
    if (block->size == 0 || block->size > (total_ - offset) / kUnit) {
      problems.push_back(format("free block at offset %llu has size %llu units, not inside the heap", offset,
                                block->size));
      break;
    }
    ++found.freeBlocks;
    found.freeBytes += block->size * kUnit;
    previousEnd = offset + block->size * kUnit;
    const std::int64_t next = block->next.raw();
    if (next == 1) {
      problems.push_back(format("free block at offset %llu has a null next pointer", offset));
      break;
    }
    offset += static_cast<std::uint64_t>(next);  // wraps for a wild distance, which the next round refuses
  }
  if (problems.size() == before && used_ + found.freeBytes != total_)
    problems.push_back(format("used bytes plus free bytes (%llu) differ from the total (%llu)",
                              used_ + found.freeBytes, total_));
  if (stats != nullptr) *stats = found;
  return problems.size() == before ? 0 : -1;
}

}  // namespace MBQ
