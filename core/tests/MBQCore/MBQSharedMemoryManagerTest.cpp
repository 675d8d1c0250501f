#include "MBQCore/MBQSharedMemoryManager.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <random>
#include <vector>

namespace MBQ {
namespace {

using FreeList = std::vector<std::pair<std::uint64_t, std::uint64_t>>;  // offset, units

// A heap in an aligned buffer, with raw access to its bytes.
class Heap {
 public:
  explicit Heap(std::size_t size) : size_(size), memory_(static_cast<char*>(std::aligned_alloc(4096, size))) {
    std::memset(memory_, 0, size);
    manager()->construct(77, size);
  }
  ~Heap() { std::free(memory_); }
  MBQSharedMemoryManager* manager() { return reinterpret_cast<MBQSharedMemoryManager*>(memory_); }
  std::uint64_t word(std::uint64_t offset) const {
    std::uint64_t value;
    std::memcpy(&value, memory_ + offset, 8);
    return value;
  }
  std::uint64_t offsetOf(const void* p) const { return static_cast<const char*>(p) - memory_; }
  void* at(std::uint64_t offset) { return memory_ + offset; }
  void set(std::uint64_t offset, std::uint64_t value) { std::memcpy(memory_ + offset, &value, 8); }
  // The free list read from the bytes: (offset, units) in list order.
  FreeList freeList() const {
    FreeList list;
    std::uint64_t offset = word(0);
    while (offset != 0 && list.size() < size_ / 16) {
      list.emplace_back(offset, word(offset + 8));
      offset = offset + word(offset);
    }
    return list;
  }
  std::vector<char> bytes() const { return std::vector<char>(memory_, memory_ + size_); }

 private:
  std::size_t size_;
  char* memory_;
};

TEST(MBQSharedMemoryManagerTest, NewHeapHoldsOneFreeBlockAfterTheRoundedHeader) {
  Heap heap(8192);
  EXPECT_EQ(1u, heap.word(8));    // sentinel size
  EXPECT_EQ(80u, heap.word(16));  // used
  EXPECT_EQ(8192u, heap.word(24));
  EXPECT_EQ(80u, heap.word(32));
  EXPECT_EQ((FreeList{{80, 507}}), heap.freeList());  // the head (at 0) is the block at 80
  EXPECT_TRUE(heap.manager()->isInitialized(8192));
  std::vector<std::string> problems;
  EXPECT_EQ(0, heap.manager()->check(8192, problems)) << problems.front();
  // The heap is [lower bound, total): what a look-up may read a value from.
  const char* base = reinterpret_cast<const char*>(heap.manager());
  const std::pair<int, bool> bounds[] = {{79, false}, {80, true}, {8191, true}, {8192, false}};  // offset, inside
  for (auto [offset, inside] : bounds) EXPECT_EQ(inside, heap.manager()->isInRange(base + offset)) << offset;
}

TEST(MBQSharedMemoryManagerTest, RefusedAllocationsLeaveTheHeapAlone) {
  Heap heap(8192);
  const std::vector<char> before = heap.bytes();
  EXPECT_EQ(nullptr, heap.manager()->allocate(0));
  EXPECT_EQ(nullptr, heap.manager()->allocate(8192 - 80 - 16 + 1));  // above total - used - 16
  EXPECT_EQ(nullptr, heap.manager()->allocate(std::size_t(-1)));
  EXPECT_TRUE(before == heap.bytes());
  // Exactly total - used - 16 passes the size test and takes the whole block.
  ASSERT_NE(nullptr, heap.manager()->allocate(8192 - 80 - 16));
  EXPECT_TRUE(heap.freeList().empty());
  EXPECT_EQ(8192u, heap.manager()->getUsed());
  std::vector<std::string> problems;
  EXPECT_EQ(0, heap.manager()->check(8192, problems)) << "a full heap is sound";
}

TEST(MBQSharedMemoryManagerTest, GrowMergesWithAFreeBlockAtTheOldEnd) {
  Heap heap(16384);
  std::memset(heap.at(8192), 0xEE, 8192);  // growth must not depend on what lies beyond
  MBQSharedMemoryManager& m = *heap.manager();
  m.construct(77, 8192);
  m.grow(8192);
  EXPECT_EQ(16384u, m.getSize());
  EXPECT_EQ(80u, m.getUsed());
  EXPECT_EQ((FreeList{{80, (16384 - 80) / 16}}), heap.freeList());

  // With the old end busy, the growth stands alone.
  Heap bigger(32768);
  MBQSharedMemoryManager& n = *bigger.manager();
  n.construct(77, 8192);
  ASSERT_NE(nullptr, n.allocate(8192 - 80 - 16));
  n.grow(4096);
  EXPECT_EQ((FreeList{{8192, 256}}), bigger.freeList());
}

// The allocator's rules replayed on a plain sorted list of free blocks: a block within a quarter
// of the need is taken at once, else the smallest (earliest) fitting one; one unit over the need
// is taken whole.
class Model {
 public:
  Model(std::uint64_t lower, std::uint64_t total) : used_(lower), total_(total) { free_[lower] = (total - lower) / 16; }
  // Returns the data offset, or 0.
  std::uint64_t allocate(std::size_t size) {
    if (size == 0 || total_ - used_ < 16 || total_ - used_ - 16 < size) return 0;
    std::uint64_t needed = (size + 15) / 16 + 1;
    auto best = free_.end();
    for (auto it = free_.begin(); it != free_.end(); ++it) {
      if (it->second < needed) continue;
      if ((it->second - needed) * 4 <= it->second) {
        best = it;
        break;
      }
      if (best == free_.end() || best->second > it->second) best = it;
    }
    if (best == free_.end()) return 0;
    std::uint64_t block = best->first;
    if (best->second > needed + 1) {  // split: the allocation is the block's end
      best->second -= needed;
      block += best->second * 16;
    } else {
      needed = best->second;
      free_.erase(best);
    }
    needed_[block] = needed;
    used_ += needed * 16;
    return block + 16;
  }
  // The block goes back to the list and merges with a free neighbour on either side.
  void deallocate(std::uint64_t data) {
    const std::uint64_t units = needed_.extract(data - 16).mapped();
    used_ -= units * 16;
    const auto block = free_.emplace(data - 16, units).first;
    const auto next = std::next(block);
    if (next != free_.end() && block->first + block->second * 16 == next->first) {
      block->second += next->second;
      free_.erase(next);
    }
    const auto previous = block == free_.begin() ? free_.end() : std::prev(block);
    if (previous != free_.end() && previous->first + previous->second * 16 == block->first) {
      previous->second += block->second;
      free_.erase(block);
    }
  }
  FreeList freeList() const { return FreeList(free_.begin(), free_.end()); }
  std::uint64_t used() const { return used_; }

 private:
  std::map<std::uint64_t, std::uint64_t> free_;
  std::map<std::uint64_t, std::uint64_t> needed_;
  std::uint64_t used_;
  std::uint64_t total_;
};

TEST(MBQSharedMemoryManagerTest, RandomSequencesMatchTheModelAndKeepTheInvariants) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::size_t size = 1 << 16;
    Heap heap(size);
    MBQSharedMemoryManager& m = *heap.manager();
    Model model(80, size);
    std::vector<std::pair<void*, std::size_t>> live;  // data, requested size
    for (int step = 0; step < 600; ++step) {
      if (live.empty() || random() % 100 < 55) {
        const std::size_t request = random() % 3 == 0 ? random() % 40 : random() % 4000;
        void* got = m.allocate(request);
        ASSERT_EQ(model.allocate(request), got ? heap.offsetOf(got) : 0) << "step " << step << " request " << request;
        if (got) {
          // Fill the whole block's data: a neighbour's allocation or free must never touch it.
          std::memset(got, static_cast<int>(heap.offsetOf(got) & 0x7f), request);
          live.emplace_back(got, request);
        }
      } else {
        const std::size_t index = random() % live.size();
        auto [data, request] = live[index];
        const unsigned char fill = static_cast<unsigned char>(heap.offsetOf(data) & 0x7f);
        for (std::size_t i = 0; i < request; ++i)
          ASSERT_EQ(fill, static_cast<unsigned char*>(data)[i]) << "overwritten: the block at " << heap.offsetOf(data);
        m.deallocate(data);
        model.deallocate(heap.offsetOf(data));
        live.erase(live.begin() + index);
      }
      ASSERT_EQ(model.freeList(), heap.freeList()) << "step " << step;
      ASSERT_EQ(model.used(), m.getUsed());
      std::vector<std::string> problems;
      ASSERT_EQ(0, m.check(size, problems)) << problems.front();
    }
  }
}

TEST(MBQSharedMemoryManagerTest, CheckReportsDamagedFreeLists) {
  struct Case {
    const char* name;
    void (*damage)(Heap&);
    const char* expected;
  };
  const Case cases[] = {
      {"block outside", [](Heap& h) { h.set(0, 1u << 20); }, "outside the heap"},
      {"zero size", [](Heap& h) { h.set(88, 0); }, "size 0"},
      {"total beyond mapping", [](Heap& h) { h.set(24, 1u << 20); }, "beyond"},
      {"used off", [](Heap& h) { h.set(16, 96); }, "differ from the total"},
      {"cycle", [](Heap& h) { h.set(80, 0); }, "overlaps or precedes"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Heap heap(8192);
    c.damage(heap);
    std::vector<std::string> problems;
    EXPECT_EQ(-1, heap.manager()->check(8192, problems));
    ASSERT_FALSE(problems.empty());
    EXPECT_NE(std::string::npos, problems.front().find(c.expected)) << problems.front();
  }
}

TEST(MBQSharedMemoryManagerDeathTest, BrokenPointersAndBlocksAbort) {
  struct Case {
    void (*act)(Heap&);
    const char* where;
  };
  const Case cases[] = {
      {[](Heap& h) { h.manager()->deallocate(h.at(8192 + 64)); }, "MBQSharedMemoryManager:275 in deallocate"},
      {[](Heap& h) { h.manager()->deallocate(static_cast<char*>(h.manager()->allocate(64)) + 8); },
       "MBQSharedMemoryManager:280 in deallocate"},
      {[](Heap& h) {
         void* p = h.manager()->allocate(64);
         h.set(h.offsetOf(p) - 8, 10000);  // a block larger than the used bytes
         h.manager()->deallocate(p);
       },
       "MBQSharedMemoryManager:281 in deallocate"},
      {[](Heap& h) { h.set(88, 0); h.manager()->allocate(64); }, "MBQSharedMemoryManager:209 in allocate"},
      {[](Heap& h) { h.set(0, 1u << 20); h.manager()->allocate(64); }, "MBQSharedMemoryManager:207 in allocate"},
  };
  for (const Case& c : cases) {
    EXPECT_DEATH(
        {
          Heap heap(8192);
          c.act(heap);
        },
        c.where);
  }
}

}  // namespace
}  // namespace MBQ
