#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "KTRFunctionality/KTRConfigFile.h"
#include "MBQCore/MBQError.h"

namespace KTR {
namespace {

class KTRConfigFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/ktrconfigfile.XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    dir_ = pattern;
  }
  void TearDown() override { std::system(("rm -rf " + dir_).c_str()); }

  std::string write(const std::string& name, const std::string& text) {
    std::string path = dir_ + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  int filesInDir() {
    int count = 0;
    std::string listing = dir_ + "/listing";
    std::system(("ls -A " + dir_ + " | grep -v '^listing$' > " + listing).c_str());
    std::ifstream in(listing);
    for (std::string line; std::getline(in, line);) ++count;
    return count;
  }

  std::string dir_;
};

TEST_F(KTRConfigFileTest, ReplaceKeepsModeAndLeavesNoTemporaryFile) {
  const std::string path = write("ve.conf", "OLD=\"1\"\n");
  ASSERT_EQ(0, ::chmod(path.c_str(), 0640));
  ASSERT_EQ(0, replaceConfigFile(path, "NEW=\"2\"\n"));
  std::string text;
  ASSERT_EQ(0, readConfigFile(path, text));
  EXPECT_EQ("NEW=\"2\"\n", text);
  struct stat info;
  ASSERT_EQ(0, ::stat(path.c_str(), &info));
  EXPECT_EQ(0640u, info.st_mode & 07777);
  EXPECT_EQ(1, filesInDir());
}

TEST_F(KTRConfigFileTest, FailedReplaceLeavesTheOldFile) {
  const std::string path = write("ve.conf", "OLD=\"1\"\n");
  // A directory in the way of the rename: the write succeeds, the replacement cannot.
  const std::string blocked = dir_ + "/blocked";
  ASSERT_EQ(0, ::mkdir(blocked.c_str(), 0755));
  ASSERT_EQ(0, ::mkdir((blocked + "/inner").c_str(), 0755));
  EXPECT_EQ(-1, replaceConfigFile(blocked, "X"));
  EXPECT_NE(std::string::npos, MBQ::getErrorMessage().find(blocked)) << MBQ::getErrorMessage();
  EXPECT_EQ(-1, replaceConfigFile(dir_ + "/missing/ve.conf", "X"));
  std::string text;
  ASSERT_EQ(0, readConfigFile(path, text));
  EXPECT_EQ("OLD=\"1\"\n", text);
  EXPECT_EQ(2, filesInDir()) << "no temporary file is left behind";
}

TEST_F(KTRConfigFileTest, ReadRefusesWhatIsNoFile) {
  std::string text = "kept";
  EXPECT_EQ(-1, readConfigFile(dir_ + "/absent", text));
  EXPECT_EQ(0u, MBQ::getErrorMessage().find("cannot read " + dir_ + "/absent: "));
  EXPECT_EQ(-1, readConfigFile(dir_, text));
  EXPECT_EQ("kept", text);
}

TEST_F(KTRConfigFileTest, LockOfADeadHolderIsReleased) {
  const std::string path = write("ve.conf", "");
  int ready[2];
  ASSERT_EQ(0, ::pipe(ready));
  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    KTRConfigFileLock lock;
    if (lock.lock(path) != 0) std::_Exit(1);
    char byte = 1;
    if (::write(ready[1], &byte, 1) != 1) std::_Exit(1);
    ::pause();
    std::_Exit(0);
  }
  char byte = 0;
  ASSERT_EQ(1, ::read(ready[0], &byte, 1));
  ::kill(child, SIGKILL);
  int status = 0;
  ::waitpid(child, &status, 0);
  KTRConfigFileLock lock;
  EXPECT_EQ(0, lock.lock(path));
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST(KTRConfigFileAssignmentTest, SplitsAtTheFirstEquals) {
  const struct {
    const char* text;
    int rc;
    const char* key;
    const char* value;
  } cases[] = {
      {"A=1", 0, "A", "1"}, {"A==1", 0, "A", "=1"}, {"A=", 0, "A", ""},
      {"=1", -1, "", ""},   {"A", -1, "", ""},      {"", -1, "", ""},
  };
  for (const auto& c : cases) {
    std::string key, value;
    EXPECT_EQ(c.rc, splitAssignment(c.text, key, value)) << c.text;
    if (c.rc == 0) {
      EXPECT_EQ(c.key, key);
      EXPECT_EQ(c.value, value);
    }
  }
}

}  // namespace
}  // namespace KTR
