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
#include <iterator>
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

class MBQCacheLogicTest : public ::testing::Test {
 protected:
  CacheSP open(int expected = 0, bool invalidate = true) {
    CacheSP cache(new Cache(path_, 0x1000000, 16, 0x40000000));
    EXPECT_EQ(expected, cache->initialize(true, invalidate)) << getErrorMessage();
    return cache;
  }
  std::vector<unsigned char> bytes() const {
    std::ifstream in(path_, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  std::uint64_t word(std::uint64_t offset, int width = 8) const {
    const auto b = bytes();
    std::uint64_t value = 0;
    std::memcpy(&value, b.data() + offset, width);
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
  const auto b = bytes();
  ASSERT_EQ(8192u, b.size());
  struct Field {
    std::uint64_t offset;
    int width;
    std::uint64_t value;
    const char* name;
  };
  const Field fields[] = {
      {0, 8, 80, "free-list head"}, {8, 8, 1, "sentinel size"}, {16, 8, 384, "used"},
      {24, 8, 8192, "total"},       {32, 8, 80, "lower bound"}, {40, 8, 7864, "snapshot"},
      {48, 1, 0, "lock"},           {49, 4, 0xCACEFE03, "magic"}, {53, 4, 77, "header size"},
      {57, 4, 256, "key size"},     {61, 4, 0xFF01, "version"}, {65, 4, 24, "value layout"},
      {69, 4, 1, "aux"},            {73, 4, 1, "valid"},        {77, 3, 0, "unused"},
      {80, 8, 0, "free block next (back to the sentinel, -80)"}, {88, 8, 488, "free block units"},
      {7888, 8, 1, "snapshot block next (null)"}, {7896, 8, 19, "snapshot block units"},
      {7904, 4, 1, "snapshot reference count"}, {7908, 8, 0, "count"}, {7916, 8, 1, "capacity"},
      {7924 + 256, 8, 1, "unset record's value (null)"},
  };
  for (const Field& f : fields) {
    std::uint64_t value = 0;
    std::memcpy(&value, b.data() + f.offset, f.width);
    if (f.offset == 80) value = value + 80;  // -80 relative to offset 80 is the sentinel
    EXPECT_EQ(f.value, value) << f.name << " at " << f.offset;
  }
  for (int i = 0; i < 256; ++i) ASSERT_EQ(0, b[7924 + i]) << "unset key byte " << i;
  EXPECT_TRUE(check().empty());
}

TEST_F(MBQCacheLogicTest, EachHeaderCheckRefusesWithItsCodeInOrder) {
  struct Case {
    const char* name;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> pokes;  // offset, 32-bit value
    int code;
  };
  const Case cases[] = {
      {"invalid", {{73, 0}}, -14},
      {"header size", {{53, 76}}, -11},
      {"key size", {{57, 255}}, -13},
      {"magic", {{49, 0xCACEFE04}}, -12},
      {"version", {{61, 0xFF02}}, -15},
      {"value layout", {{65, 16}}, -16},
      {"header size before magic", {{49, 1}, {53, 1}}, -11},
      {"key size before magic", {{49, 1}, {57, 1}}, -13},
      {"magic before version", {{49, 1}, {61, 1}, {65, 1}}, -12},
      {"invalid before everything", {{73, 0}, {53, 1}}, -14},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ::unlink(path_.c_str());
    open();
    for (auto [offset, value] : c.pokes) poke(offset, value);
    // Without invalidation the file keeps its valid field; with it, the file is condemned.
    open(c.code, false);
    EXPECT_EQ(c.code == -14 ? 0u : 1u, word(73, 4));
    open(c.code, true);
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
    MBQCacheLogicTest::SetUp();
    CacheSP cache = open();
    for (const char* key : {"alpha", "beta", "delta", "epsilon", "eta", "gamma", "zeta"})
      ASSERT_EQ(0, cache->insert(Key(key), std::string(40, key[0]) + key));
    ASSERT_EQ(0, cache->remove(Key("eta")));
    layout_ = layoutOf(*cache);
    cache.reset();
    good_ = bytes();
    keepAsSeed("populated");
  }
  void restore(std::size_t size) {
    std::ofstream(path_, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(good_.data()), std::min(size, good_.size()));
  }
  // With KTR_CACHE_SEEDS=DIR, the damaged files are kept there as seeds of the cache fuzz target.
  void keepAsSeed(const std::string& name) {
    const char* dir = std::getenv("KTR_CACHE_SEEDS");
    if (dir == nullptr) return;
    std::string file = dir + std::string("/");
    for (char c : name) file += std::isalnum(static_cast<unsigned char>(c)) ? c : '-';
    const auto content = bytes();
    std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(content.data()), content.size());
  }
  // The agent's path: open condemning, else remove and open afresh; the rebuilt file checks.
  // A refused file is condemned (valid := 0), a failed lock included; that one maps nothing
  // and leaves the file at its size.
  int openOrRebuild() {
    CacheSP cache(new Cache(path_, 0x1000000, 16, 0x40000000));
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
  Layout layout_;
  std::vector<unsigned char> good_;
};

TEST_F(MBQCacheDamageTest, EachDamageIsRefusedWithItsCodeAndRebuilt) {
  const Layout& l = layout_;
  const std::uint64_t value0 = l.values[0], value1 = l.values[1];
  const std::int64_t record0Pointer = static_cast<std::int64_t>(value0 - (l.record(0) + 256));
  struct Case {
    const char* name;
    std::uint64_t offset;
    std::uint64_t value;
    int width;
    int code;
  };
  const Case cases[] = {
      {"aux", 69, 2, 4, -14},
      {"valid flag", 73, 5, 4, -14},
      {"sentinel size", 8, 2, 8, -14},
      {"used", 16, 8192 + 16, 8, -14},
      {"total beyond the file", 24, 8192 + 4096, 8, -9},
      {"total below the blocks", 24, 4096, 8, -14},
      {"total misaligned", 24, 8190, 8, -14},
      {"lower bound", 32, 96, 8, -14},
      {"free-list head misaligned", 0, 8, 8, -14},
      {"free-list cycle", l.freeBlock, 0, 8, -14},
      {"free block inside another block", 0, l.freeBlock + 16, 8, -14},
      {"snapshot null", 40, 1, 8, -8},
      {"snapshot -1", 40, ~0ull, 8, -8},
      {"snapshot byte 44", 44, 0x4b, 1, -8},
      {"snapshot inside a block", 40, l.snapshot - 40 + 32, 8, -8},
      {"snapshot references 0", l.snapshot, 0, 4, -8},
      {"snapshot references negative", l.snapshot, 0xfffffffd, 4, -8},
      {"snapshot references at the maximum", l.snapshot, 0x7fffffff, 4, -8},
      {"count above capacity", l.snapshot + 4, 1000, 8, -8},
      {"count lowered: an entry lost", l.snapshot + 4, 5, 8, -14},
      {"value block overlaps the next", value0 - 8, 40, 8, -14},
      {"value references 0", value0, 0, 4, -14},
      {"value size beyond its block", value0 + 8, 1ull << 40, 8, -14},
      {"value bytes changed", value0 + 24, 'X', 1, -14},
      {"key not terminated", l.record(0) + 255, 'x', 1, -14},
      {"keys out of order", l.record(1), 'A', 1, -14},
      {"two records share a value", l.record(1) + 256, static_cast<std::uint64_t>(record0Pointer - 264), 8, -14},
      {"value pointer into a free block", l.record(1) + 256,
       static_cast<std::uint64_t>(static_cast<std::int64_t>(l.freeBlock + 16) -
                                  static_cast<std::int64_t>(l.record(1) + 256)), 8, -14},
      {"value pointer odd", l.record(1) + 256, value1 - (l.record(1) + 256) + 1, 8, -14},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    restore(good_.size());
    poke(c.offset, c.value, c.width);
    keepAsSeed(c.name);
    EXPECT_EQ(c.code, openOrRebuild());
  }
}

TEST_F(MBQCacheDamageTest, TruncationAtEveryStructureIsRefusedOrMadeAnew) {
  std::vector<std::uint64_t> cuts = {0, 8, 16, 40, 48, 76, 80, 96, layout_.snapshot, layout_.snapshot + 20,
                                     layout_.record(3), good_.size() - 16};
  for (std::uint64_t block : layout_.blocks) cuts.insert(cuts.end(), {block, block + 8, block + 16});
  for (std::uint64_t value : layout_.values) cuts.insert(cuts.end(), {value + 8, value + 24, value + 30});
  for (std::uint64_t cut : cuts) {
    SCOPED_TRACE(cut);
    restore(cut);
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
    std::vector<unsigned char> damaged = good_;
    const int changes = 1 + static_cast<int>(next() % 3);
    for (int i = 0; i < changes; ++i) {
      const std::uint64_t at = next() % 4 != 0 ? hot[next() % hot.size()] : next() % damaged.size();
      damaged[at] = next() % 3 == 0 ? damaged[at] ^ (1u << (next() % 8)) : static_cast<unsigned char>(next());
    }
    if (next() % 16 == 0) damaged.resize(next() % damaged.size());
    std::ofstream(path_, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(damaged.data()), damaged.size());
    CacheSP cache(new Cache(path_, 0x1000000, 16, 0x40000000));
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
  struct Case {
    const char* name;
    std::uint64_t offset;
    std::uint64_t value;
    int width;
    int lookupCode;  // what a look-up of "alpha" answers
    int insertCode;
  };
  const Case cases[] = {
      {"snapshot pointer", 40, 0x4b4b4b, 8, -8, -8},
      {"free-list head", 0, 8, 8, 0, -14},
      {"value pointer", layout_.record(0) + 256, 3, 8, -14, -14},
      {"condemned elsewhere", 73, 0, 4, -14, -14},
      {"total beyond the file", 24, 1 << 20, 8, -10, -10},
  };
  for (const Case& c : cases) {
    for (bool lookupFirst : {true, false}) {
      SCOPED_TRACE(std::string(c.name) + (lookupFirst ? " / look-up" : " / insert"));
      restore(good_.size());
      CacheSP cache = open();
      poke(c.offset, c.value, c.width);
      std::string value;
      const int code = lookupFirst ? cache->lookup(Key("alpha"), value) : cache->insert(Key("x"), "y");
      EXPECT_EQ(lookupFirst ? c.lookupCode : c.insertCode, code);
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
        cache = new Cache(path_, 0x1000000, 16, 0x40000000);
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
  std::string value;
  EXPECT_EQ(0, cache->lookup(Key("alpha"), value));  // the orphan still reads as it was
  EXPECT_EQ(-14, cache->insert(Key("x"), "y"));
  EXPECT_FALSE(cache->isAccessible());
  const std::uint64_t heldCount = held->count;
  EXPECT_EQ(6u, heldCount);
  EXPECT_TRUE(held->records()[0].value.get()->intact());
  EXPECT_EQ(-9, cache->releaseSnapshot(held, storage));
  storage.reset();
  EXPECT_EQ(0, fresh->lookup(Key("new"), value));
}

// The file grew under this process's mapping and was then removed: growing the mapping would
// have to open the path again, which may name another file by now, so the cache lets go.
TEST_F(MBQCacheLogicTest, AFileThatGrewAndWasRemovedIsLetGo) {
  CacheSP cache = open(), other = open();
  ASSERT_EQ(0, other->insert(Key("big"), std::string(100000, 'b')));
  ASSERT_EQ(0, removeLockedCacheFile(path_, -14));
  std::string value;
  EXPECT_EQ(-10, cache->lookup(Key("big"), value));
  EXPECT_FALSE(cache->isAccessible());
  EXPECT_NE(std::string::npos, getErrorMessage().find("code -10")) << getErrorMessage();
}

TEST_F(MBQCacheLogicTest, InsertLookupReplaceRemove) {
  CacheSP cache = open();
  std::string value;
  EXPECT_EQ(1, cache->lookup(Key("a"), value));
  EXPECT_EQ(1, cache->remove(Key("a")));
  const std::string longest(255, 'k');
  for (const char* key : {"m", "c", "x", "a"}) EXPECT_EQ(0, cache->insert(Key(key), std::string("v") + key));
  EXPECT_EQ(0, cache->insert(Key(longest), "long"));
  EXPECT_EQ(0, cache->insert(Key(""), "empty key"));
  EXPECT_EQ(0, cache->insert(Key("c"), "replaced"));
  std::uint64_t entries = 0;
  EXPECT_EQ(0, cache->count(entries));
  EXPECT_EQ(6u, entries);
  EXPECT_EQ(0, cache->lookup(Key("c"), value));
  EXPECT_EQ("replaced", value);
  EXPECT_EQ(0, cache->lookup(Key(longest), value));
  EXPECT_EQ("long", value);
  EXPECT_EQ(0, cache->lookup(Key(""), value));
  EXPECT_EQ(0, cache->remove(Key("m")));
  EXPECT_EQ(1, cache->lookup(Key("m"), value));
  EXPECT_EQ(0, cache->lookup(Key("x"), value));
  EXPECT_EQ("vx", value);
  EXPECT_TRUE(check().empty()) << check().front();
  // Another process's view: a second object on the file.
  CacheSP other = open();
  EXPECT_EQ(0, other->lookup(Key("a"), value));
  EXPECT_EQ("va", value);
}

TEST_F(MBQCacheLogicTest, HeldSnapshotIsNeverDisturbedAndFreedOnRelease) {
  CacheSP cache = open();
  for (int i = 0; i < 20; ++i) ASSERT_EQ(0, cache->insert(Key("k" + std::to_string(i)), std::string(100, 'a' + i % 26)));

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
  // Packed fields are copied out before comparing: gtest binds references to its arguments.
  const std::uint64_t heldCount = held->count;
  ASSERT_EQ(20u, heldCount);
  for (std::uint64_t i = 0; i < heldCount; ++i) {
    const auto* value = held->records()[i].value.get();
    ASSERT_TRUE(value->intact());
    const std::uint64_t size = value->size;
    EXPECT_EQ(100u, size);
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
  test::expectCleanExits(test::forkChildren(kChildren, [&](int c) {
    CacheSP cache(new Cache(path_, 0x1000000, 16, 0x40000000));
    if (cache->initialize(true, false) != 0) return 10;
    const std::size_t size = c == 0 ? 20000 : 50;
    for (int k = 0; k < kKeys; ++k) {
      const std::string key = "c" + std::to_string(c) + "k" + std::to_string(k);
      if (cache->insert(Key(key), std::string(size, 'a' + k % 26) + key) != 0) return 11;
      std::string value;
      if (cache->lookup(Key(key), value) != 0 || value != std::string(size, 'a' + k % 26) + key) return 12;
      if (k % 3 == 0 && cache->remove(Key(key)) != 0) return 13;
    }
    return 0;
  }));
  EXPECT_TRUE(check().empty()) << check().front();
  CacheSP cache = open();
  std::uint64_t entries = 0;
  cache->count(entries);
  EXPECT_EQ(std::uint64_t(kChildren * (kKeys - kKeys / 3)), entries);
  for (int c = 0; c < kChildren; ++c) {
    for (int k = 0; k < kKeys; ++k) {
      const std::string key = "c" + std::to_string(c) + "k" + std::to_string(k);
      std::string value;
      ASSERT_EQ(k % 3 == 0 ? 1 : 0, cache->lookup(Key(key), value)) << key;
      if (k % 3 != 0) { EXPECT_EQ(std::string(c == 0 ? 20000 : 50, 'a' + k % 26) + key, value); }
    }
  }
  // The surviving large values alone need 40 x 20000 bytes: the heap grew under the others.
  EXPECT_GT(cache->getHeader()->heap.getSize(), 800000u);
}

TEST_F(MBQCacheLogicTest, ReinitForgetsTheMappingOnly) {
  CacheSP cache = open();
  ASSERT_EQ(0, cache->insert(Key("k"), "v"));
  EXPECT_EQ(0, cache->reinit());
  EXPECT_FALSE(cache->isAccessible());
  std::string value;
  EXPECT_EQ(-9, cache->lookup(Key("k"), value));
  EXPECT_EQ(0, open()->lookup(Key("k"), value));
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
