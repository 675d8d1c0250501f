#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"

namespace KTR {
namespace {

class KTRConfigFileTest : public ::testing::Test {
 protected:
  void SetUp() override { ::chmod(dir_.c_str(), 0755); }

  std::string write(const std::string& name, const std::string& text) {
    std::string path = dir_ + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  // The folder's names, sorted, each followed by a blank.
  std::string listing() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir_)) names.insert(entry.path().filename());
    std::string joined;
    for (const std::string& name : names) joined += name + " ";
    return joined;
  }

  testing::TempDir folder_;
  const std::string dir_ = folder_.path();
};

// That a set keeps the file's owner, group and mode, set-id bits included, leaves nothing beside
// it and follows a symbolic link is shown by ktrctl in set.t; extended attributes need tools a
// transcript cannot count on.
TEST_F(KTRConfigFileTest, CommitReplacesTheTextAndKeepsExtendedAttributes) {
  const std::string path = write("ve.conf", "OLD=\"1\"\n");
  const bool xattrs = ::setxattr(path.c_str(), "user.origin", "ops", 3, 0) == 0 &&
                      ::setxattr(path.c_str(), "user.team", "net", 3, 0) == 0;
  KTRConfigFileEdit edit;
  ASSERT_EQ(0, edit.begin(path, 1000)) << MBQ::getErrorMessage();
  EXPECT_EQ("OLD=\"1\"\n", edit.text());
  ASSERT_EQ(0, edit.commit("NEW=\"2\"\n")) << MBQ::getErrorMessage();
  EXPECT_EQ("NEW=\"2\"\n", testing::slurp(path));
  if (xattrs) {
    char value[8] = {};
    EXPECT_EQ(3, ::getxattr(path.c_str(), "user.origin", value, sizeof value));
    EXPECT_STREQ("ops", value);
    EXPECT_EQ(3, ::getxattr(path.c_str(), "user.team", value, sizeof value));
    EXPECT_STREQ("net", value);
  }
}

// What a read refuses and why, and a file of the largest size read, are shown by ktrctl in get.t.
TEST_F(KTRConfigFileTest, RefusesWhatIsNotARegularFileAtOnce) {
  const std::string fifo = dir_ + "/fifo";
  ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0644));
  const std::string big = write("big.conf", "");
  ASSERT_EQ(0, ::truncate(big.c_str(), static_cast<off_t>(kMaxConfigFileSize) + 1));
  const struct {
    std::string path;
    const char* reason;
  } cases[] = {{fifo, "not a regular file"}, {dir_, "not a regular file"},       {"/dev/null", "not a regular file"},
               {big, "larger than"},         {dir_ + "/absent", "No such file"}, {dir_ + "/dangling", "No such file"}};
  ASSERT_EQ(0, ::symlink("nowhere", (dir_ + "/dangling").c_str()));
  ::alarm(10);  // a FIFO must never block the open
  for (const auto& c : cases) {
    KTRConfigFileEdit edit;
    EXPECT_EQ(-1, edit.begin(c.path, 0)) << c.path;
    EXPECT_EQ(0u, MBQ::getErrorMessage().find("cannot edit " + c.path + ": " + c.reason)) << MBQ::getErrorMessage();
  }
  ::alarm(0);
}

// A writer holding the lock makes the next one wait, for a bounded time; a writer killed while
// it held the lock and had written its temporary leaves the lock free and its temporary to the
// next writer, which removes it.
TEST_F(KTRConfigFileTest, LockIsBoundedAndAKilledWritersDebrisIsCleanedUp) {
  const std::string path = write("ve.conf", "A=1\n");
  int ready[2];
  ASSERT_EQ(0, ::pipe(ready));
  const pid_t holder = MBQ::test::forkChildren(1, [&](int) {
    KTRConfigFileEdit edit;
    const char byte = 1;
    if (edit.begin(path, 1000) != 0 || edit.prepare("HALF=written\n") != 0) return 1;
    if (::write(ready[1], &byte, 1) != 1) return 1;
    ::pause();
    return 0;
  })[0];
  ASSERT_GT(holder, 0);
  char byte = 0;
  ASSERT_EQ(1, ::read(ready[0], &byte, 1));
  KTRConfigFileEdit waiting;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(-1, waiting.begin(path, 200));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  EXPECT_NE(std::string::npos, MBQ::getErrorMessage().find("another process holds its lock"));
  ::kill(holder, SIGKILL);
  ::waitpid(holder, nullptr, 0);
  EXPECT_NE(std::string::npos, listing().find(".ktr-edit-")) << "the killed writer's temporary";
  KTRConfigFileEdit next;
  ASSERT_EQ(0, next.begin(path, 1000)) << MBQ::getErrorMessage();
  EXPECT_EQ("A=1\n", next.text());
  ASSERT_EQ(0, next.commit("A=2\n"));
  EXPECT_EQ("ve.conf ", listing());
  ::close(ready[0]);
  ::close(ready[1]);
}

// Only a user who may write the file can take its lock, so nobody else can stall its writers.
TEST_F(KTRConfigFileTest, AUserWhoCannotWriteTheFileCannotLockIt) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
  const std::string path = write("ve.conf", "A=1\n");
  ASSERT_EQ(0, ::chmod(path.c_str(), 0644));
  MBQ::test::expectCleanExits(MBQ::test::forkChildren(1, [&path](int) {
    if (::setgid(65534) != 0 || ::setuid(65534) != 0) return 3;
    KTRConfigFileEdit edit;
    if (edit.begin(path, 0) == 0) return 1;
    return MBQ::getErrorMessage().find("Permission denied") != std::string::npos ? 0 : 2;
  }));
}

TEST_F(KTRConfigFileTest, ReplaceCreatesOrReplacesAndAFailureLeavesTheOldFile) {
  const std::string fresh = dir_ + "/new.conf";
  ASSERT_EQ(0, replaceConfigFile(fresh, "A=1\n")) << MBQ::getErrorMessage();
  EXPECT_EQ("A=1\n", testing::slurp(fresh));
  ASSERT_EQ(0, replaceConfigFile(fresh, "A=2\n"));
  EXPECT_EQ("A=2\n", testing::slurp(fresh));
  // Refused: a folder in the way (not empty, so no rename could replace it), and a missing folder.
  const std::string blocked = dir_ + "/blocked";
  ASSERT_EQ(0, ::mkdir(blocked.c_str(), 0755));
  ASSERT_EQ(0, ::mkdir((blocked + "/inner").c_str(), 0755));
  EXPECT_EQ(-1, replaceConfigFile(blocked, "X"));
  EXPECT_EQ(-1, replaceConfigFile(dir_ + "/missing/ve.conf", "X"));
  EXPECT_EQ("A=2\n", testing::slurp(fresh));
  EXPECT_EQ("blocked new.conf ", listing()) << "no temporary file is left behind";
}

}  // namespace
}  // namespace KTR
