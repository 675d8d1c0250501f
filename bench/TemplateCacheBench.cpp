// The template cache: its heap against Boost.Interprocess's allocators on one mixed workload,
// a key look-up among 1,000 entries (checked as the cache does it, and the unchecked look-up it
// replaced, on the same file), the lock plus snapshot acquire and release that every access
// pays, the open of a 1,000-entry file and the verification that an open and a change run.
//
// Allocator workload: a fixed random sequence (seeded) of allocations of 16 to 4096 bytes and
// frees of a random live block, with at most 1,000 blocks live; every allocator runs the same
// sequence over a file-backed mapping of the same size. Boost's simple_seq_fit is the first-fit
// algorithm the goal names; rbtree_best_fit (Boost's default) is shown for reference. Both run
// with null_mutex_family: the cache's heap takes no lock of its own (the file lock covers a whole
// cache operation), so a per-call mutex would measure something else.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <boost/interprocess/managed_mapped_file.hpp>
#include <boost/interprocess/mem_algo/rbtree_best_fit.hpp>
#include <boost/interprocess/mem_algo/simple_seq_fit.hpp>
#include <boost/interprocess/sync/mutex_family.hpp>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRTemplateCache.h"
#include "MBQCore/MBQCacheVerifier.h"
#include "MBQCore/MBQMemoryMappedFile.h"
#include "MBQCore/MBQSharedMemoryManager.h"

namespace {

namespace bip = boost::interprocess;

constexpr std::size_t kArena = 64u << 20;
constexpr std::size_t kLiveCap = 1000;
constexpr int kSteps = 1 << 16;

struct Step {
  bool allocate;
  std::size_t size;    // for an allocation
  std::size_t victim;  // for a free: index into the live set (modulo its size)
};

// The same sequence for every allocator.
const std::vector<Step>& workload() {
  static const std::vector<Step> steps = [] {
    std::mt19937 random(42);
    std::uniform_int_distribution<std::size_t> size(16, 4096);
    std::vector<Step> out;
    std::size_t live = 0;
    for (int i = 0; i < kSteps; ++i) {
      const bool allocate = live == 0 || (live < kLiveCap && random() % 2 == 0);
      out.push_back({allocate, size(random), random()});
      live += allocate ? 1 : -1;
    }
    return out;
  }();
  return steps;
}

std::string tempPath(const char* leaf) {
  const char* dir = std::getenv("TMPDIR");
  return std::string(dir && *dir ? dir : "/tmp") + "/ktrbench-" + std::to_string(::getpid()) + "-" + leaf;
}

template <class Allocate, class Free>
void runWorkload(benchmark::State& state, Allocate allocate, Free release) {
  const std::vector<Step>& steps = workload();
  std::vector<void*> live;
  live.reserve(kLiveCap);
  std::size_t at = 0;
  for (auto _ : state) {
    const Step& step = steps[at];
    if (++at == steps.size()) at = 0;
    if (step.allocate && live.size() < kLiveCap) {
      void* p = allocate(step.size);
      if (p == nullptr) {
        state.SkipWithError("allocation failed");
        break;
      }
      live.push_back(p);
    } else if (!live.empty()) {
      const std::size_t index = step.victim % live.size();
      release(live[index]);
      live[index] = live.back();
      live.pop_back();
    }
  }
  for (void* p : live) release(p);
  state.SetItemsProcessed(state.iterations());
}

void BM_Allocator_CacheHeap(benchmark::State& state) {
  const std::string path = tempPath("heap");
  MBQ::MBQMemoryMappedFile file;
  auto* heap = static_cast<MBQ::MBQSharedMemoryManager*>(file.map(path, kArena, MBQ::tFileMappingOptions()));
  ::unlink(path.c_str());
  heap->construct(77, kArena);
  runWorkload(state, [&](std::size_t size) { return heap->allocate(size); },
              [&](void* p) { heap->deallocate(p); });
}
BENCHMARK(BM_Allocator_CacheHeap);

template <class Algorithm>
void boostWorkload(benchmark::State& state, const char* leaf) {
  using File = bip::basic_managed_mapped_file<char, Algorithm, bip::iset_index>;
  const std::string path = tempPath(leaf);
  bip::file_mapping::remove(path.c_str());
  {
    File file(bip::create_only, path.c_str(), kArena);
    runWorkload(state, [&](std::size_t size) { return file.allocate(size, std::nothrow); },
                [&](void* p) { file.deallocate(p); });
  }
  bip::file_mapping::remove(path.c_str());
}

void BM_Allocator_BoostSimpleSeqFit(benchmark::State& state) {
  boostWorkload<bip::simple_seq_fit<bip::null_mutex_family>>(state, "seqfit");
}
BENCHMARK(BM_Allocator_BoostSimpleSeqFit);

void BM_Allocator_BoostRbtreeBestFit(benchmark::State& state) {
  boostWorkload<bip::rbtree_best_fit<bip::null_mutex_family>>(state, "rbtree");
}
BENCHMARK(BM_Allocator_BoostRbtreeBestFit);

// A cache of 1,000 template entries in a file of its own.
struct Cache {
  Cache() : path(tempPath("template.cache")) {
    cache = KTR::KTRTemplateCachePrototype::open(path);
    for (int i = 0; i < 1000; ++i) {
      KTR::KTRTemplateObject object;
      object.setName("template-" + std::to_string(i * 7919 % 100000));
      object.setVersion("1.0");
      object.setOsName(MBQ::MBQOptionalProperty<std::string>("centos"));
      object.setOsVersion(MBQ::MBQOptionalProperty<std::string>("7"));
      object.setTechnologyList({"x86_64"});
      cache->insert(object);
      keys.emplace_back(object.getStringID());
    }
  }
  ~Cache() {
    cache.reset();
    ::unlink(path.c_str());
  }
  std::string path;
  KTR::KTRTemplateCachePrototypeSP cache;
  std::vector<KTR::KTRTemplateCacheKey> keys;
};

// The key look-up itself: lock, binary search, copy of the value bytes, unlock.
void BM_Cache_LookupAmong1000(benchmark::State& state) {
  Cache cache;
  std::string bytes;
  std::size_t i = 0;
  for (auto _ : state) {
    if (cache.cache->lookup(cache.keys[i], bytes) != 0) state.SkipWithError("missing key");
    i = (i + 337) % cache.keys.size();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Cache_LookupAmong1000);

// The look-up as it was before the file was verified: the file lock, the snapshot's pointer
// followed as it is, the binary search, the value's bounds, the copy. Its own mapping of the
// same file, as another process has.
void BM_Cache_LookupAmong1000_Unchecked(benchmark::State& state) {
  using Logic = KTR::KTRTemplateCacheLogic;
  Cache cache;
  MBQ::MBQMemoryMappedFile file;
  const std::size_t size = cache.cache->getHeader()->heap.getSize();
  const auto* header = static_cast<const Logic::CacheHeader*>(file.map(cache.path, size, MBQ::tFileMappingOptions()));
  std::string bytes;
  std::size_t i = 0;
  for (auto _ : state) {
    file.lock(false);
    const Logic::Snapshot* snapshot = header->snapshot.get();
    const std::uint64_t at = snapshot->lowerBound(cache.keys[i]);
    if (at == snapshot->count || !(snapshot->records()[at].key == cache.keys[i])) state.SkipWithError("missing key");
    const auto* value = snapshot->records()[at].value.get();
    if (!header->heap.isInRange(value)) state.SkipWithError("damaged");
    bytes.assign(value->data(), value->size);
    file.unlock();
    i = (i + 337) % cache.keys.size();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Cache_LookupAmong1000_Unchecked);

// Opening a 1,000-entry file as a process does at its first use: map, lock, verify everything
// (checksums included), unlock.
void BM_Cache_OpenWith1000(benchmark::State& state) {
  Cache cache;
  for (auto _ : state) {
    KTR::KTRTemplateCachePrototypeSP opened = KTR::KTRTemplateCachePrototype::open(cache.path);
    if (!opened) state.SkipWithError("open failed");
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Cache_OpenWith1000);

// The verification alone over the 1,000-entry file: without checksums (before every change and
// after a remap) and with them (at the open).
void BM_Cache_Verify1000(benchmark::State& state) {
  using Verifier = MBQ::MBQCacheVerifier<KTR::KTRTemplateCacheLogic>;
  Cache cache;
  const auto* header = cache.cache->getHeader();
  const auto depth = state.range(0) != 0 ? Verifier::kWithChecksums : Verifier::kStructure;
  for (auto _ : state) {
    Verifier verifier(header, header->heap.getSize());
    if (verifier.run(depth) != 0) state.SkipWithError("damaged");
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Cache_Verify1000)->ArgName("checksums")->Arg(0)->Arg(1);

// The same look-up with the template read back from its XML bytes, as a caller gets it.
void BM_Cache_LookupTemplateAmong1000(benchmark::State& state) {
  Cache cache;
  std::vector<std::string> keys;
  for (const auto& key : cache.keys) keys.push_back(key.str());
  KTR::KTRTemplateObject object;
  std::size_t i = 0;
  for (auto _ : state) {
    if (cache.cache->lookup(keys[i], object) != 0) state.SkipWithError("missing key");
    i = (i + 337) % keys.size();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Cache_LookupTemplateAmong1000);

void BM_Cache_LockAcquireRelease(benchmark::State& state) {
  Cache cache;
  for (auto _ : state) {
    KTR::KTRTemplateCacheLogic::storageLockGuard_t guard(*cache.cache);
    KTR::KTRTemplateCacheLogic::storageHandle storage;
    auto* snapshot = cache.cache->acquireSnapshot(storage);
    benchmark::DoNotOptimize(snapshot);
    snapshot->decRef();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Cache_LockAcquireRelease);

}  // namespace
