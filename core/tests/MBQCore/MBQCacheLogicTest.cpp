#include "MBQCore/MBQCacheLogic.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQCore/limited_length_string.h"

namespace MBQ {
namespace {

// The value stored in the test cache: text as it is.
struct Text {
  std::string text;
  int toBytes(std::string& out) const {
    out = text;
    return 0;
  }
  int fromBytes(const char* data, std::size_t size) {
    text.assign(data, size);
    return 0;
  }
};

using Key = limited_length_string<256>;
using Cache = MBQCacheLogic<Key, MBQObjectItem<Text>, MBQMappedMemoryManager>;
using CacheSP = boost::intrusive_ptr<Cache>;

// What a look-up answers: the value, or its code in angle brackets.
std::string found(Cache& cache, const std::string& key) {
  std::string value;
  const int code = cache.lookup(Key(key), value);
  return code == 0 ? value : "<" + std::to_string(code) + ">";
}

class MBQCacheLogicTest : public ::testing::Test {
 protected:
  CacheSP make() const { return new Cache(path_, 0x1000000, 16, 0x40000000); }
  CacheSP open(int expected = 0, bool invalidate = true) {
    CacheSP cache = make();
    EXPECT_EQ(expected, cache->initialize(true, invalidate)) << getErrorMessage();
    return cache;
  }
  std::string bytes() const { return test::slurp(path_); }
  void write(const std::string& content) const { std::ofstream(path_, std::ios::binary | std::ios::trunc) << content; }
  std::uint64_t word(std::uint64_t offset, int width = 8) const {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes().data() + offset, width);
    return value;
  }
  void poke(std::uint64_t offset, std::uint64_t value, int width = 4) {
    std::fstream f(path_, std::ios::in | std::ios::out | std::ios::binary);
    f.seekp(offset);
    f.write(reinterpret_cast<const char*>(&value), width);
  }
  std::vector<std::string> check(Cache::Report* report = nullptr) {
    Cache::Report ignored;
    std::vector<std::string> problems;
    Cache::checkFile(path_, report != nullptr ? *report : ignored, problems);
    return problems;
  }
  test::TempDir dir_;
  std::string path_ = dir_.file("template.cache");
};

TEST_F(MBQCacheLogicTest, NewFileIsLaidOutByteByByte) {
  ASSERT_EQ(4096, ::sysconf(_SC_PAGESIZE));
  CacheSP cache = open();
  ASSERT_TRUE(cache->isAccessible());
  ASSERT_EQ(8192u, bytes().size());
  for (const auto& field : test::caseRows(__FILE__, "layout")) {
    const std::uint64_t value = std::stoll(field[2], nullptr, 0);
    EXPECT_EQ(value, word(std::stoull(field[0]), std::stoi(field[1]))) << field[3] << " at " << field[0];
  }
  EXPECT_EQ(std::string(256, '\0'), bytes().substr(7924, 256)) << "the unset record's key";
  EXPECT_TRUE(check().empty());
}

TEST_F(MBQCacheLogicTest, EachHeaderCheckRefusesWithItsCodeInOrder) {
  for (const auto& c : test::caseRows(__FILE__, "header")) {
    SCOPED_TRACE(c[1]);
    const int code = std::stoi(c[0]);
    ::unlink(path_.c_str());
    open();
    for (std::size_t i = 2; i + 1 < c.size(); i += 2) poke(std::stoull(c[i]), std::stoull(c[i + 1], nullptr, 0));
    // Without invalidation the file keeps its valid field; with it, the file is condemned.
    open(code, false);
    EXPECT_EQ(code == -14 ? 0u : 1u, word(73, 4));
    open(code, true);
    EXPECT_EQ(0u, word(73, 4));
    open(-14, true);
    EXPECT_FALSE(check().empty());
  }
  EXPECT_EQ(0, removeLockedCacheFile(path_, -14));
  open(0);
}

// The published FNV-1a 64 test vectors: a checksum computed from the documentation matches.
TEST(MBQObjectItemTest, ChecksumIsFnv1a64) {
  using Item = MBQObjectItem<Text>;
  EXPECT_EQ(0xcbf29ce484222325ull, Item::hash("", 0));
  EXPECT_EQ(0xaf63dc4c8601ec8cull, Item::hash("a", 1));
  EXPECT_EQ(0x85944171f73967e8ull, Item::hash("foobar", 6));
}

// Offsets of the structures of a populated file, found through a mapping of it.
struct Layout {
  std::uint64_t snapshot = 0;          // the current snapshot's data
  std::vector<std::uint64_t> values;   // each record's value, in record order
  std::vector<std::uint64_t> blocks;   // every block header, in address order
  std::uint64_t freeBlock = 0;         // the first free block
  std::uint64_t record(std::size_t i) const { return snapshot + sizeof(Cache::Snapshot) + i * sizeof(Cache::Record); }
};

Layout layoutOf(const Cache& cache) {
  Layout layout;
  const auto* header = cache.getHeader();
  const char* base = reinterpret_cast<const char*>(header);
  const Cache::Snapshot* snapshot = header->snapshot.get();
  layout.snapshot = reinterpret_cast<const char*>(snapshot) - base;
  for (std::uint64_t i = 0; i < snapshot->count; ++i)
    layout.values.push_back(reinterpret_cast<const char*>(snapshot->records()[i].value.get()) - base);
  for (std::uint64_t at = 80; at < header->heap.getSize();
       at += reinterpret_cast<const block_ctrl*>(base + at)->size * 16)
    layout.blocks.push_back(at);
  layout.freeBlock = static_cast<std::uint64_t>(header->heap.freeListHead());
  return layout;
}

class MBQCacheDamageTest : public MBQCacheLogicTest {
 protected:
  // A file with six entries and a free block between values (one entry was removed).
  void SetUp() override {
    CacheSP cache = open();
    for (const char* key : {"alpha", "beta", "delta", "epsilon", "eta", "gamma", "zeta"})
      ASSERT_EQ(0, cache->insert(Key(key), std::string(40, key[0]) + key));
    ASSERT_EQ(0, cache->remove(Key("eta")));
    layout_ = layoutOf(*cache);
    cache.reset();
    good_ = bytes();
    keepAsSeed("populated");
  }
  // With KTR_CACHE_SEEDS=DIR, the damaged files are kept there as seeds of the cache fuzz target.
  void keepAsSeed(const std::string& name) {
    const char* dir = std::getenv("KTR_CACHE_SEEDS");
    if (dir == nullptr) return;
    std::string file = dir + std::string("/");
    for (char c : name) file += std::isalnum(static_cast<unsigned char>(c)) ? c : '-';
    std::ofstream(file, std::ios::binary) << bytes();
  }
  // The agent's path: open condemning, else remove and open afresh; the rebuilt file checks.
  // A refused file is condemned (valid := 0), a failed lock included; that one maps nothing
  // and leaves the file at its size.
  int openOrRebuild() {
    CacheSP cache = make();
    const int code = cache->initialize(true, true);
    if (code != 0) {
      EXPECT_FALSE(cache->isAccessible());
      if (bytes().size() >= 77) { EXPECT_EQ(0u, word(73, 4)); }
      if (code == -9) { EXPECT_EQ(good_.size(), bytes().size()); }
      EXPECT_EQ(0, removeLockedCacheFile(path_, code));
      EXPECT_EQ(0, cache->initialize(true, false)) << getErrorMessage();
    }
    EXPECT_TRUE(check().empty()) << check().front();
    return code;
  }
  // A place in the file as the cases name it: a number, or snapshot (its data), free (the first
  // free block), record0/1 or value0/1, plus or minus bytes ("value0+8"). "->place" is a pointer
  // to that place from `field`, as the file's pointers are relative to where they are stored.
  std::uint64_t place(const std::string& text, std::uint64_t field = 0) const {
    if (text.compare(0, 2, "->") == 0) return place(text.substr(2)) - field;
    const std::size_t sign = std::min(text.find_first_of("+-", 1), text.size());
    const std::map<std::string, std::uint64_t> named = {
        {"snapshot", layout_.snapshot}, {"free", layout_.freeBlock}, {"record0", layout_.record(0)},
        {"record1", layout_.record(1)}, {"value0", layout_.values[0]}, {"value1", layout_.values[1]}};
    const auto it = named.find(text.substr(0, sign));
    const std::uint64_t base = it != named.end() ? it->second : std::stoull(text.substr(0, sign), nullptr, 0);
    return base + (sign < text.size() ? std::stoll(text.substr(sign)) : 0);
  }
  // Changes the field that a row's last three fields name: its place, width and value.
  void damage(const std::vector<std::string>& row) {
    const std::uint64_t offset = place(row[row.size() - 3]);
    poke(offset, place(row.back(), offset), std::stoi(row[row.size() - 2]));
  }
  Layout layout_;
  std::string good_;
};

TEST_F(MBQCacheDamageTest, EachDamageIsRefusedWithItsCodeAndRebuilt) {
  for (const auto& c : test::caseRows(__FILE__, "damage")) {
    SCOPED_TRACE(c[1]);
    write(good_);
    damage(c);
    keepAsSeed(c[1]);
    EXPECT_EQ(std::stoi(c[0]), openOrRebuild());
  }
}

TEST_F(MBQCacheDamageTest, TruncationAtEveryStructureIsRefusedOrMadeAnew) {
  std::vector<std::uint64_t> cuts = {0, 8, 16, 40, 48, 76, 80, 96, layout_.snapshot, layout_.snapshot + 20,
                                     layout_.record(3), good_.size() - 16};
  for (std::uint64_t block : layout_.blocks) cuts.insert(cuts.end(), {block, block + 8, block + 16});
  for (std::uint64_t value : layout_.values) cuts.insert(cuts.end(), {value + 8, value + 24, value + 30});
  for (std::uint64_t cut : cuts) {
    SCOPED_TRACE(cut);
    write(good_.substr(0, cut));
    keepAsSeed("cut at " + std::to_string(cut));
    const int code = openOrRebuild();
    if (code == 0) {  // a file cut before the used field reads as a new, empty one
      EXPECT_LT(cut, 24u);
      std::uint64_t entries = 1;
      open()->count(entries);
      EXPECT_EQ(0u, entries);
    }
  }
}

// Random damage of a populated file: nothing crashes, a file the open accepts is one check
// accepts, and work on an accepted file goes on.
TEST_F(MBQCacheDamageTest, RandomDamageNeverCrashesAndOpenAgreesWithCheck) {
  std::vector<std::uint64_t> hot;  // every field the cache follows, where damage matters most
  for (std::uint64_t i = 0; i < 80; ++i) hot.push_back(i);
  for (std::uint64_t block : layout_.blocks)
    for (std::uint64_t i = 0; i < 16; ++i) hot.push_back(block + i);
  for (std::uint64_t i = 0; i < 20; ++i) hot.push_back(layout_.snapshot + i);
  for (std::size_t r = 0; r < 8; ++r)
    for (std::uint64_t i = 0; i < 8; ++i) hot.push_back(layout_.record(r) + 256 + i);
  for (std::uint64_t value : layout_.values)
    for (std::uint64_t i = 0; i < 24; ++i) hot.push_back(value + i);

  std::uint64_t state = 0x9E3779B97F4A7C15ull;
  auto next = [&state] {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
  };
  int accepted = 0;
  const int kCases = 4000;
  for (int n = 0; n < kCases; ++n) {
    std::string damaged = good_;
    const int changes = 1 + static_cast<int>(next() % 3);
    for (int i = 0; i < changes; ++i) {
      const std::uint64_t at = next() % 4 != 0 ? hot[next() % hot.size()] : next() % damaged.size();
      damaged[at] = static_cast<char>(next() % 3 == 0 ? damaged[at] ^ (1u << (next() % 8)) : next());
    }
    if (next() % 16 == 0) damaged.resize(next() % damaged.size());
    write(damaged);
    CacheSP cache = make();
    if (cache->initialize(true, true) == 0) {
      ++accepted;
      ASSERT_TRUE(check().empty()) << "case " << n << ": " << check().front();
      std::string value;
      for (const char* key : {"alpha", "beta", "delta", "gamma", "zeta", "none"}) cache->lookup(Key(key), value);
      cache->insert(Key("new"), std::string(500, 'n'));
      cache->remove(Key("beta"));
    } else {
      ASSERT_FALSE(cache->isAccessible());
    }
  }
  // Most damage is refused; what is accepted is damage of bytes nothing reads.
  EXPECT_LT(accepted, kCases / 2);
}

// Damage made by another process after this one opened the file: the next access finds it,
// refuses it, and lets go of the file, which the next open makes anew.
TEST_F(MBQCacheDamageTest, DamageAfterTheOpenCondemnsTheFileAtTheNextAccess) {
  for (const auto& c : test::caseRows(__FILE__, "after open")) {
    for (int access : {0, 1}) {  // a look-up, an insert
      SCOPED_TRACE(c[2] + (access == 0 ? " / look-up" : " / insert"));
      write(good_);
      CacheSP cache = open();
      damage(c);
      std::string value;
      const int code = access == 0 ? cache->lookup(Key("alpha"), value) : cache->insert(Key("x"), "y");
      EXPECT_EQ(std::stoi(c[access]), code);
      if (code != 0) {
        EXPECT_FALSE(cache->isAccessible());
        EXPECT_EQ(0u, word(73, 4));
      }
      cache.reset();
      openOrRebuild();
    }
  }
}

// One process damages the file under the lock while others look up, insert and remove, reopening
// as the agent does when their cache lets go of a condemned file: none of them is taken down.
TEST_F(MBQCacheDamageTest, AProcessDamagingTheFileNeverTakesTheOthersDown) {
  const auto children = test::forkChildren(3, [this](int c) {
    CacheSP cache;
    int failedOpens = 0;  // the damager may spoil a new file before its first open; try again
    for (int i = 0; i < 1500; ++i) {
      if (!cache || !cache->isAccessible()) {
        cache = make();
        const int code = cache->initialize(true, true);
        if (code != 0 && (removeLockedCacheFile(path_, code) != 0 || cache->initialize(true, false) != 0)) {
          if (++failedOpens == 100) return 10;
          continue;
        }
        failedOpens = 0;
      }
      const std::string key = "c" + std::to_string(c) + "k" + std::to_string(i % 50);
      std::string value;
      cache->insert(Key(key), std::string(i % 7 == 0 ? 9000 : 60, 'v'));
      cache->lookup(Key(key), value);
      cache->lookup(Key("alpha"), value);
      if (i % 3 == 0) cache->remove(Key(key));
    }
    return 0;
  });
  std::uint64_t state = 88172645463325252ull;
  for (int round = 0; round < 300; ++round) {
    const int fd = ::open(path_.c_str(), O_RDWR);
    if (fd < 0) continue;
    ::flock(fd, LOCK_EX);
    struct stat st;
    ::fstat(fd, &st);
    for (int i = 0; i < 2 && st.st_size > 0; ++i) {
      state ^= state << 13, state ^= state >> 7, state ^= state << 17;
      const off_t at = static_cast<off_t>(state % 2 == 0 ? (state >> 8) % 80 : (state >> 8) % st.st_size);
      const unsigned char byte = static_cast<unsigned char>(state >> 32);
      (void)!::pwrite(fd, &byte, 1, at);
    }
    ::flock(fd, LOCK_UN);
    ::close(fd);
    ::usleep(500);
  }
  test::expectCleanExits(children);
}

// A file removed and made anew by another process is let go of at the next change; a snapshot
// held meanwhile stays readable, and its release writes nothing to the orphan.
TEST_F(MBQCacheDamageTest, ARemovedFileIsLetGoAndHeldSnapshotsStayReadable) {
  CacheSP cache = open();
  Cache::storageHandle storage;
  Cache::Snapshot* held;
  {
    Cache::storageLockGuard_t guard(*cache);
    held = cache->acquireSnapshot(storage);
  }
  ASSERT_EQ(0, removeLockedCacheFile(path_, -14));
  CacheSP fresh = open();
  ASSERT_EQ(0, fresh->insert(Key("new"), "file"));
  EXPECT_EQ(std::string(40, 'a') + "alpha", found(*cache, "alpha"));  // the orphan still reads as it was
  EXPECT_EQ(-14, cache->insert(Key("x"), "y"));
  EXPECT_FALSE(cache->isAccessible());
  EXPECT_EQ(6u, std::uint64_t(held->count));  // a copy: gtest can't bind a reference to a packed field
  EXPECT_TRUE(held->records()[0].value.get()->intact());
  EXPECT_EQ(-9, cache->releaseSnapshot(held, storage));
  storage.reset();
  EXPECT_EQ("file", found(*fresh, "new"));
}

// The file grew under this process's mapping and was then removed: growing the mapping would
// have to open the path again, which may name another file by now, so the cache lets go.
TEST_F(MBQCacheLogicTest, AFileThatGrewAndWasRemovedIsLetGo) {
  CacheSP cache = open(), other = open();
  ASSERT_EQ(0, other->insert(Key("big"), std::string(100000, 'b')));
  ASSERT_EQ(0, removeLockedCacheFile(path_, -14));
  EXPECT_EQ("<-10>", found(*cache, "big"));
  EXPECT_FALSE(cache->isAccessible());
  EXPECT_NE(std::string::npos, getErrorMessage().find("code -10")) << getErrorMessage();
}

TEST_F(MBQCacheLogicTest, InsertLookupReplaceRemove) {
  CacheSP cache = open();
  EXPECT_EQ("<1>", found(*cache, "a"));
  EXPECT_EQ(1, cache->remove(Key("a")));
  const std::string longest(255, 'k');
  for (const char* key : {"m", "c", "x", "a"}) EXPECT_EQ(0, cache->insert(Key(key), std::string("v") + key));
  EXPECT_EQ(0, cache->insert(Key(longest), "long"));
  EXPECT_EQ(0, cache->insert(Key(""), "empty key"));
  EXPECT_EQ(0, cache->insert(Key("c"), "replaced"));
  std::uint64_t entries = 0;
  EXPECT_EQ(0, cache->count(entries));
  EXPECT_EQ(6u, entries);
  EXPECT_EQ("replaced", found(*cache, "c"));
  EXPECT_EQ("long", found(*cache, longest));
  EXPECT_EQ("empty key", found(*cache, ""));
  EXPECT_EQ(0, cache->remove(Key("m")));
  EXPECT_EQ("<1>", found(*cache, "m"));
  EXPECT_EQ("vx", found(*cache, "x"));
  EXPECT_TRUE(check().empty()) << check().front();
  // Another process's view: a second object on the file.
  EXPECT_EQ("va", found(*open(), "a"));
}

TEST_F(MBQCacheLogicTest, HeldSnapshotIsNeverDisturbedAndFreedOnRelease) {
  CacheSP cache = open();
  for (int i = 0; i < 20; ++i) ASSERT_EQ(0, cache->insert(Key("k" + std::to_string(i)), std::string(100, 'a' + i)));

  Cache::storageHandle storage;
  Cache::Snapshot* held;
  {
    Cache::storageLockGuard_t guard(*cache);
    ASSERT_TRUE(guard.isLocked());
    held = cache->acquireSnapshot(storage);
    ASSERT_NE(nullptr, held);
    EXPECT_TRUE(held->isAcquired());
  }
  CacheSP writer = open();
  for (int i = 0; i < 20; i += 2) ASSERT_EQ(0, writer->remove(Key("k" + std::to_string(i))));
  ASSERT_EQ(0, writer->insert(Key("k1"), "new"));
  for (int i = 0; i < 200; ++i) ASSERT_EQ(0, writer->insert(Key("g" + std::to_string(i)), std::string(3000, 'g')));

  // The held snapshot still lists every old entry with its old value.
  ASSERT_EQ(20u, std::uint64_t(held->count));
  for (std::uint64_t i = 0; i < 20; ++i) {
    const auto* value = held->records()[i].value.get();
    ASSERT_TRUE(value->intact());
    EXPECT_EQ(100u, std::uint64_t(value->size));
  }
  EXPECT_EQ(0, cache->releaseSnapshot(held, storage));
  for (int i = 0; i < 200; ++i) ASSERT_EQ(0, writer->remove(Key("g" + std::to_string(i))));
  for (int i = 1; i < 20; i += 2) ASSERT_EQ(0, writer->remove(Key("k" + std::to_string(i))));
  Cache::Report report;
  EXPECT_TRUE(check(&report).empty()) << check().front();
  EXPECT_EQ(0u, report.entries);
  // Nothing of the old snapshots or values is left behind: only the current snapshot's block.
  EXPECT_EQ(80 + (Cache::Snapshot::bytesFor(report.capacity) + 15) / 16 * 16 + 16, report.used);
  EXPECT_GT(report.total, 8192u);
}

// Children insert, look up and remove at once; one of them stores large values so that the
// heap grows under the others.
TEST_F(MBQCacheLogicTest, ConcurrentProcessesKeepTheFileConsistent) {
  open();
  const int kChildren = 4, kKeys = 60;
  const auto keyOf = [](int c, int k) { return "c" + std::to_string(c) + "k" + std::to_string(k); };
  const auto valueOf = [&](int c, int k) { return std::string(c == 0 ? 20000 : 50, 'a' + k % 26) + keyOf(c, k); };
  test::expectCleanExits(test::forkChildren(kChildren, [&](int c) {
    CacheSP cache = make();
    if (cache->initialize(true, false) != 0) return 10;
    for (int k = 0; k < kKeys; ++k) {
      if (cache->insert(Key(keyOf(c, k)), valueOf(c, k)) != 0) return 11;
      if (found(*cache, keyOf(c, k)) != valueOf(c, k)) return 12;
      if (k % 3 == 0 && cache->remove(Key(keyOf(c, k))) != 0) return 13;
    }
    return 0;
  }));
  EXPECT_TRUE(check().empty()) << check().front();
  CacheSP cache = open();
  std::uint64_t entries = 0;
  cache->count(entries);
  EXPECT_EQ(std::uint64_t(kChildren * (kKeys - kKeys / 3)), entries);
  for (int c = 0; c < kChildren; ++c)
    for (int k = 0; k < kKeys; ++k) EXPECT_EQ(k % 3 == 0 ? "<1>" : valueOf(c, k), found(*cache, keyOf(c, k)));
  // The surviving large values alone need 40 x 20000 bytes: the heap grew under the others.
  EXPECT_GT(cache->getHeader()->heap.getSize(), 800000u);
}

TEST_F(MBQCacheLogicTest, ReinitForgetsTheMappingOnly) {
  CacheSP cache = open();
  ASSERT_EQ(0, cache->insert(Key("k"), "v"));
  EXPECT_EQ(0, cache->reinit());
  EXPECT_FALSE(cache->isAccessible());
  EXPECT_EQ("<-9>", found(*cache, "k"));
  EXPECT_EQ("v", found(*open(), "k"));
}

TEST(MBQCacheLogicDeathTest, AReferenceCountBelowZeroAborts) {
  EXPECT_DEATH(
      {
        MBQCachedItemRefCounterBase<int> refs{-1};
        refs.decRef();
      },
      "MBQCacheLogic:66 in decRef");
  MBQCachedItemRefCounterBase<int> zero{0};
  zero.decRef();  // passes and leaves -1
  EXPECT_EQ(-1, zero.count);
}

// A damaged file is condemned at the destructor's lock like at any other; only a file lock that
// can't be taken (here: its descriptor closed behind the cache's back) is a broken invariant.
TEST_F(MBQCacheLogicTest, DestroyingACacheWhoseLockFailsAborts) {
  {
    CacheSP cache = open();
    poke(24, 0x7fffffffffffull, 8);  // a total no mapping can reach
    cache.reset();
    EXPECT_EQ(0u, word(73, 4));
  }
  ::unlink(path_.c_str());
  EXPECT_DEATH(
      {
        CacheSP cache = open();
        for (int fd = 3; fd < 1024; ++fd) {
          char link[64] = {};
          if (::readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), link, sizeof link - 1) > 0 &&
              path_ == link)
            ::close(fd);
        }
        cache.reset();
      },
      "MBQCacheLogic:573 in ~MBQCacheLogic");
}

}  // namespace
}  // namespace MBQ
