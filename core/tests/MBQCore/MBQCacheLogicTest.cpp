#include "MBQCore/MBQCacheLogic.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

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
  void SetUp() override {
    char pattern[] = "/tmp/mbqcacheXXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    dir_ = pattern;
    path_ = dir_ + "/template.cache";
  }
  void TearDown() override {
    ::unlink(path_.c_str());
    ::rmdir(dir_.c_str());
  }
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
  std::vector<std::string> check() {
    Cache::Report report;
    std::vector<std::string> problems;
    Cache::checkFile(path_, report, problems);
    return problems;
  }
  std::string dir_;
  std::string path_;
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

TEST_F(MBQCacheLogicTest, MissingSnapshotIsRefusedAndInvalidates) {
  open();
  poke(40, 1, 8);
  open(-8, true);
  EXPECT_EQ(0u, word(73, 4));
  open(-14);
}

TEST_F(MBQCacheLogicTest, AnUnreachableTotalFailsTheLockAndInvalidates) {
  open();
  poke(24, 0x40000000ull + 4096, 8);  // beyond the 1 GiB maximum
  open(-9, false);                     // the failed lock condemns the file even so
  EXPECT_EQ(0u, word(73, 4));
  EXPECT_EQ(8192u, bytes().size());  // nothing was mapped or extended to the declared size
}

TEST_F(MBQCacheLogicTest, ForeignAndTruncatedFilesAreRefusedWithoutCrashing) {
  const std::vector<std::string> contents = {
      std::string(30, 'x'), std::string(100, '\xff'), std::string(5000, '\x01'),
      std::string("\x00\x00\x00\x00\x00\x00\x00\x00\x01\x00\x00\x00\x00\x00\x00\x00\x50", 17)};
  for (const std::string& content : contents) {
    SCOPED_TRACE(content.size());
    { std::ofstream(path_, std::ios::binary) << content; }
    CacheSP cache(new Cache(path_, 0x1000000, 16, 0x40000000));
    const int code = cache->initialize(true, true);
    EXPECT_LT(code, 0);
    EXPECT_FALSE(cache->isAccessible());
    EXPECT_FALSE(check().empty());
    EXPECT_EQ(0, removeLockedCacheFile(path_, code));
    EXPECT_EQ(0, cache->initialize(true, false));
  }
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
  EXPECT_TRUE(check().empty()) << check().front();
  Cache::Report report;
  std::vector<std::string> problems;
  Cache::checkFile(path_, report, problems);
  EXPECT_EQ(0u, report.entries);
  // Nothing of the old snapshots or values is left behind: only the current snapshot's block.
  EXPECT_EQ(80 + (Cache::Snapshot::bytesFor(report.capacity) + 15) / 16 * 16 + 16, report.used);
  EXPECT_GT(report.total, 8192u);
}

TEST_F(MBQCacheLogicTest, AnotherProcessGrowthIsMappedAtTheNextLock) {
  CacheSP reader = open();
  CacheSP writer = open();
  const std::string big(100000, 'b');
  ASSERT_EQ(0, writer->insert(Key("big"), big));
  EXPECT_GT(writer->getHeader()->heap.getSize(), 8192u);
  std::string value;
  ASSERT_EQ(0, reader->lookup(Key("big"), value));
  EXPECT_EQ(big, value);
  EXPECT_EQ(writer->getHeader()->heap.getSize(), reader->getHeader()->heap.getSize());
}

// Children insert, look up and remove at once; one of them stores large values so that the
// heap grows under the others.
TEST_F(MBQCacheLogicTest, ConcurrentProcessesKeepTheFileConsistent) {
  open();
  const int kChildren = 4, kKeys = 60;
  std::vector<pid_t> children;
  for (int c = 0; c < kChildren; ++c) {
    const pid_t pid = ::fork();
    if (pid == 0) {
      CacheSP cache(new Cache(path_, 0x1000000, 16, 0x40000000));
      if (cache->initialize(true, false) != 0) ::_exit(10);
      const std::size_t size = c == 0 ? 20000 : 50;
      for (int k = 0; k < kKeys; ++k) {
        const std::string key = "c" + std::to_string(c) + "k" + std::to_string(k);
        if (cache->insert(Key(key), std::string(size, 'a' + k % 26) + key) != 0) ::_exit(11);
        std::string value;
        if (cache->lookup(Key(key), value) != 0 || value != std::string(size, 'a' + k % 26) + key) ::_exit(12);
        if (k % 3 == 0 && cache->remove(Key(key)) != 0) ::_exit(13);
      }
      ::_exit(0);
    }
    children.push_back(pid);
  }
  for (pid_t pid : children) {
    int status = 0;
    ASSERT_EQ(pid, ::waitpid(pid, &status, 0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
  }
  EXPECT_TRUE(check().empty()) << check().front();
  CacheSP cache = open();
  std::uint64_t entries = 0;
  cache->count(entries);
  EXPECT_EQ(std::uint64_t(kChildren * (kKeys - kKeys / 3)), entries);
  for (int c = 0; c < kChildren; ++c) {
    const std::size_t size = c == 0 ? 20000 : 50;
    for (int k = 0; k < kKeys; ++k) {
      const std::string key = "c" + std::to_string(c) + "k" + std::to_string(k);
      std::string value;
      if (k % 3 == 0) {
        EXPECT_EQ(1, cache->lookup(Key(key), value)) << key;
      } else {
        ASSERT_EQ(0, cache->lookup(Key(key), value)) << key;
        EXPECT_EQ(std::string(size, 'a' + k % 26) + key, value);
      }
    }
  }
  // The surviving large values alone need 40 x 20000 bytes: the heap grew under the others.
  EXPECT_GT(cache->getHeader()->heap.getSize(), 800000u);
}

TEST_F(MBQCacheLogicTest, AKilledLockHolderDoesNotBlockTheOthers) {
  open();
  int ready[2];
  ASSERT_EQ(0, ::pipe(ready));
  const pid_t child = ::fork();
  if (child == 0) {
    CacheSP cache(new Cache(path_, 0x1000000, 16, 0x40000000));
    if (cache->initialize(true, false) != 0) ::_exit(1);
    Cache::storageLockGuard_t guard(*cache);
    char c = 'r';
    (void)!::write(ready[1], &c, 1);
    for (;;) ::pause();
  }
  char c;
  ASSERT_EQ(1, ::read(ready[0], &c, 1));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  ::alarm(30);
  CacheSP cache = open();
  EXPECT_EQ(0, cache->insert(Key("after"), "kill"));
  ::alarm(0);
  ::close(ready[0]);
  ::close(ready[1]);
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

TEST(MBQCacheLogicDeathTest, BrokenInvariantsAbort) {
  EXPECT_DEATH(
      {
        MBQCachedItemRefCounterBase<int> refs{-1};
        refs.decRef();
      },
      "MBQCacheLogic:66 in decRef");
  MBQCachedItemRefCounterBase<int> zero{0};
  zero.decRef();  // passes and leaves -1
  EXPECT_EQ(-1, zero.count);
  EXPECT_DEATH({ Key key(std::string(256, 'k')); }, "MBQContainers:95 in operator=");
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
