#include "MBQCore/MBQMemoryMappedFile.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "../MBQTestSupport.h"

namespace MBQ {
namespace {

class MBQMemoryMappedFileTest : public ::testing::Test {
 protected:
  static off_t fileSize(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? st.st_size : -1;
  }
  test::TempDir dir_;
  std::string path_ = dir_.file("file");
};

TEST_F(MBQMemoryMappedFileTest, MapCreatesAndExtendsButNeverShrinks) {
  MBQMemoryMappedFile file;
  char* p = static_cast<char*>(file.map(path_, 8192, tFileMappingOptions()));
  ASSERT_NE(nullptr, p);
  EXPECT_EQ(8192, fileSize(path_));
  EXPECT_EQ(8192u, file.size());
  for (int i = 0; i < 8192; ++i) ASSERT_EQ(0, p[i]);
  p[100] = 'x';
  EXPECT_EQ(nullptr, file.map(path_, 8192, tFileMappingOptions()));  // already mapped

  MBQMemoryMappedFile bigger;
  char* q = static_cast<char*>(bigger.remap(16384, nullptr, file));
  ASSERT_NE(nullptr, q);
  EXPECT_EQ(16384, fileSize(path_));
  EXPECT_EQ('x', q[100]);
  q[200] = 'y';
  EXPECT_EQ('y', p[200]);  // both map the same pages

  MBQMemoryMappedFile smaller;
  ASSERT_NE(nullptr, smaller.map(path_, 4096, tFileMappingOptions()));
  EXPECT_EQ(16384, fileSize(path_));
  EXPECT_EQ(0, file.sync());
}

TEST_F(MBQMemoryMappedFileTest, ReadOnlyMappingNeitherCreatesNorExtends) {
  MBQMemoryMappedFile file;
  EXPECT_EQ(nullptr, file.mapReadOnly(path_));
  EXPECT_EQ(-1, fileSize(path_));
  {
    MBQMemoryMappedFile writer;
    static_cast<char*>(writer.map(path_, 100, tFileMappingOptions()))[5] = 'z';
  }
  const char* p = static_cast<const char*>(file.mapReadOnly(path_));
  ASSERT_NE(nullptr, p);
  EXPECT_EQ(100u, file.size());
  EXPECT_EQ('z', p[5]);
  EXPECT_EQ(0, file.lock(false));
}

TEST_F(MBQMemoryMappedFileTest, TwoObjectsExcludeEachOther) {
  MBQMemoryMappedFile a, b;
  ASSERT_NE(nullptr, a.map(path_, 4096, tFileMappingOptions()));
  ASSERT_NE(nullptr, b.map(path_, 4096, tFileMappingOptions()));
  EXPECT_EQ(0, a.lock(false));
  EXPECT_EQ(-1, b.lock(true));
  EXPECT_EQ(0, a.unlock());
  EXPECT_EQ(-1, a.unlock());
  EXPECT_EQ(0, b.lock(true));
  b.close();  // closing drops the lock
  EXPECT_EQ(0, a.lock(true));
  // Identity is the file's, not the path's: a file put in the removed one's place is another.
  ASSERT_NE(nullptr, b.map(path_, 4096, tFileMappingOptions()));
  EXPECT_TRUE(a.isSameFile(b));
  ASSERT_EQ(0, ::unlink(path_.c_str()));
  MBQMemoryMappedFile c;
  ASSERT_NE(nullptr, c.map(path_, 4096, tFileMappingOptions()));
  EXPECT_FALSE(a.isSameFile(c));
  EXPECT_FALSE(a.isSameFile(MBQMemoryMappedFile()));
}

TEST_F(MBQMemoryMappedFileTest, AKilledHolderReleasesTheLock) {
  int ready[2];
  ASSERT_EQ(0, ::pipe(ready));
  const pid_t child = test::forkChildren(1, [&](int) {
    MBQMemoryMappedFile file;
    if (file.map(path_, 4096, tFileMappingOptions()) == nullptr || file.lock(false) != 0) return 1;
    (void)!::write(ready[1], "r", 1);
    for (;;) ::pause();
  })[0];
  ::close(ready[1]);  // a child that fails before it is ready ends the read below
  char c;
  ASSERT_EQ(1, ::read(ready[0], &c, 1));
  MBQMemoryMappedFile file;
  ASSERT_NE(nullptr, file.map(path_, 4096, tFileMappingOptions()));
  EXPECT_EQ(-1, file.lock(true));
  ::kill(child, SIGKILL);
  int status;
  ::waitpid(child, &status, 0);
  ::alarm(30);  // a lock that stays taken ends the test instead of hanging it
  EXPECT_EQ(0, file.lock(false));
  ::alarm(0);
  ::close(ready[0]);
}

TEST_F(MBQMemoryMappedFileTest, RemovedCacheFileComesBackZeroFilled) {
  MBQMemoryMappedFile old;
  char* p = static_cast<char*>(old.map(path_, 4096, tFileMappingOptions()));
  ASSERT_NE(nullptr, p);
  std::memset(p, 0x5a, 4096);
  EXPECT_EQ(0, removeLockedCacheFile(path_, -14));
  EXPECT_EQ(-1, fileSize(path_));
  EXPECT_EQ(0x5a, p[10]);  // the old mapping stays usable
  EXPECT_EQ(0, removeLockedCacheFile(path_, -14));  // nothing to remove
  MBQMemoryMappedFile fresh;
  char* q = static_cast<char*>(fresh.map(path_, 4096, tFileMappingOptions()));
  ASSERT_NE(nullptr, q);
  EXPECT_EQ(0, q[10]);
}

TEST_F(MBQMemoryMappedFileTest, UploadsFolderFollowsTheEnvironment) {
  const char* saved = std::getenv("MBQ_UPLOADS_DIR");
  const std::string keep = saved ? saved : "";
  const std::pair<const char*, const char*> cases[] = {  // the variable (null: unset), the folder
      {nullptr, "/opt/srn/agent/uploads"}, {"", "/opt/srn/agent/uploads"}, {"/srv/up//", "/srv/up"}};
  for (auto [value, folder] : cases) {
    value ? ::setenv("MBQ_UPLOADS_DIR", value, 1) : ::unsetenv("MBQ_UPLOADS_DIR");
    EXPECT_EQ(folder, MBQInstanceFolders::uploads()) << (value ? value : "unset");
  }
  saved ? ::setenv("MBQ_UPLOADS_DIR", keep.c_str(), 1) : ::unsetenv("MBQ_UPLOADS_DIR");
}

TEST_F(MBQMemoryMappedFileTest, ProtectedMappingRefusesWrites) {
  MBQMemoryMappedFile file;
  char* p = static_cast<char*>(file.map(path_, 4096, tFileMappingOptions()));
  ASSERT_NE(nullptr, p);
  EXPECT_EQ(0, file.protect(true));
  EXPECT_DEATH({ p[0] = 1; }, "");  // a fault (or a sanitizer's report of it)
  EXPECT_EQ(0, file.protect(false));
  p[0] = 1;
  EXPECT_EQ(1, p[0]);
}

}  // namespace
}  // namespace MBQ
