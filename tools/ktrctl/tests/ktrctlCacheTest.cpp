// `ktrctl cache`, run as an operator runs it, on cache files in a temporary uploads folder.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace {

struct Outcome {
  int exit = -1;
  std::string out;
  std::string err;
};

class ktrctlCacheTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/ktrctlcache.XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    dir_ = pattern;
    path_ = dir_ + "/template.cache";
  }
  void TearDown() override { std::system(("rm -rf '" + dir_ + "'").c_str()); }

  static std::string slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  // Runs `ktrctl cache ARGS` with the uploads folder set to the test's folder.
  Outcome cache(const std::string& args) {
    const std::string command = "MBQ_UPLOADS_DIR='" + dir_ + "' '" + KTRCTL_PATH + "' cache " + args + " >'" +
                                dir_ + "/.out' 2>'" + dir_ + "/.err'";
    Outcome run;
    const int status = std::system(command.c_str());
    run.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = slurp(dir_ + "/.out");
    run.err = slurp(dir_ + "/.err");
    return run;
  }
  void poke(std::uint64_t offset, std::uint64_t value, int width) {
    std::fstream f(path_, std::ios::in | std::ios::out | std::ios::binary);
    f.seekp(offset);
    f.write(reinterpret_cast<const char*>(&value), width);
  }
  std::string dir_;
  std::string path_;
};

TEST_F(ktrctlCacheTest, InspectionNeedsAFileAndResetMakesOne) {
  for (const char* command : {"stat", "check"}) {
    const Outcome run = cache(command);
    EXPECT_EQ(2, run.exit) << command;
    EXPECT_EQ(0u, run.err.rfind("ktrctl: can't read cache " + path_ + ": ", 0)) << run.err;
    EXPECT_EQ(1, std::count(run.err.begin(), run.err.end(), '\n')) << run.err;
  }
  EXPECT_NE(0, ::access(path_.c_str(), F_OK));
  { std::ofstream empty(path_); }
  Outcome run = cache("check");
  EXPECT_EQ(2, run.exit);
  EXPECT_NE(std::string::npos, run.err.find(": the file is empty")) << run.err;

  run = cache("reset");
  EXPECT_EQ(0, run.exit) << run.err;
  EXPECT_EQ(path_ + ": made anew, 0 entries\n", run.out);
  run = cache("stat '" + path_ + "'");
  EXPECT_EQ(0, run.exit) << run.err;
  for (const char* line : {"magic: 0xcacefe03\n", "header size: 77\n", "key size: 256\n", "version: 0xff01\n",
                           "value layout: 24\n", "valid: 1\n", "heap used: 384\n", "heap free: 7808\n",
                           "free blocks: 1\n", "blocks: 2\n", "entries: 0\n", "problems: 0\n"})
    EXPECT_NE(std::string::npos, run.out.find(line)) << line << run.out;
  run = cache("check");
  EXPECT_EQ(0, run.exit) << run.out;
  EXPECT_EQ(path_ + ": ok, 0 entries, 384 of 8192 heap bytes used\n", run.out);
}

// Inspection of a damaged file reports and leaves every byte as it was; reset repairs it.
TEST_F(ktrctlCacheTest, InspectionNeverWritesAndResetRepairs) {
  struct Damage {
    std::uint64_t offset;
    std::uint64_t value;
    int width;
    const char* finding;
  };
  const Damage damages[] = {
      {49, 0x12345678, 4, "header refused with code -12"},
      {73, 0, 4, "header refused with code -14"},
      {69, 7, 4, "aux field is 7, not 1"},
      {24, 0x40000000, 8, "heap total 1073741824"},
      {88, 5, 8, "used bytes plus free bytes (464) differ from the total (8192)"},
      {44, 0x4b, 1, "snapshot pointer does not lead to an allocated block"},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.finding);
    ASSERT_EQ(0, cache("reset").exit);
    poke(damage.offset, damage.value, damage.width);
    const std::string before = slurp(path_);
    Outcome run = cache("check");
    EXPECT_EQ(1, run.exit);
    EXPECT_NE(std::string::npos, run.out.find(path_ + ": " + damage.finding)) << run.out;
    run = cache("stat");
    EXPECT_EQ(0, run.exit) << run.err;
    EXPECT_EQ(std::string::npos, run.out.find("problems: 0\n")) << run.out;
    EXPECT_EQ("", run.err);
    EXPECT_EQ(before, slurp(path_));
    ASSERT_EQ(0, cache("reset").exit);
    EXPECT_EQ(0, cache("check").exit);
  }
}

TEST_F(ktrctlCacheTest, UsageErrorsAreOneLine) {
  for (const char* args : {"", "bogus", "stat a b", "reset a b"}) {
    const Outcome run = cache(args);
    EXPECT_EQ(2, run.exit) << args;
    EXPECT_EQ(0u, run.err.rfind("ktrctl: usage: ktrctl cache", 0)) << run.err;
  }
}

}  // namespace
