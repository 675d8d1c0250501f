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

TEST_F(ktrctlCacheTest, StatCreatesTheDefaultFileAndPrintsItsFigures) {
  const Outcome run = cache("stat");
  EXPECT_EQ(0, run.exit) << run.err;
  for (const char* line : {"magic: 0xcacefe03\n", "header size: 77\n", "key size: 256\n", "version: 0xff01\n",
                           "value layout: 24\n", "valid: 1\n", "heap used: 384\n", "heap free: 7808\n",
                           "free blocks: 1\n", "entries: 0\n"})
    EXPECT_NE(std::string::npos, run.out.find(line)) << line << run.out;
  EXPECT_NE(std::string::npos, run.out.find("path: " + path_ + "\n")) << run.out;
  EXPECT_EQ(8192u, slurp(path_).size());
}

TEST_F(ktrctlCacheTest, CheckPassesAGoodFileAndListsEachProblemOfABadOne) {
  ASSERT_EQ(0, cache("stat '" + path_ + "'").exit);
  Outcome run = cache("check");
  EXPECT_EQ(0, run.exit) << run.out;
  EXPECT_NE(std::string::npos, run.out.find(": ok, 0 entries")) << run.out;

  poke(49, 0x12345678, 4);  // foreign magic
  poke(88, 5, 8);           // the free block's size no longer adds up
  run = cache("check '" + path_ + "'");
  EXPECT_EQ(1, run.exit);
  EXPECT_NE(std::string::npos, run.out.find("header refused with code -12")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("differ from the total")) << run.out;
  EXPECT_EQ(2, std::count(run.out.begin(), run.out.end(), '\n')) << run.out;
}

TEST_F(ktrctlCacheTest, CheckRefusesMissingTruncatedAndForeignFiles) {
  Outcome run = cache("check '" + dir_ + "/none'");
  EXPECT_EQ(1, run.exit);
  EXPECT_NE(std::string::npos, run.out.find("can't open")) << run.out;

  std::ofstream(path_, std::ios::binary) << "short";
  run = cache("check");
  EXPECT_EQ(1, run.exit);
  EXPECT_NE(std::string::npos, run.out.find("shorter than the header")) << run.out;

  std::ofstream(path_, std::ios::binary) << std::string(4096, '\xff');
  run = cache("check");
  EXPECT_EQ(1, run.exit);
  EXPECT_FALSE(run.out.empty());
}

TEST_F(ktrctlCacheTest, StatReplacesACondemnedFile) {
  ASSERT_EQ(0, cache("stat").exit);
  poke(73, 0, 4);  // invalid
  EXPECT_EQ(1, cache("check").exit);
  const Outcome run = cache("stat");
  EXPECT_EQ(0, run.exit);
  EXPECT_NE(std::string::npos, run.out.find("valid: 1\n")) << run.out;
  EXPECT_EQ(0, cache("check").exit);
}

TEST_F(ktrctlCacheTest, UsageErrorsAreOneLine) {
  for (const char* args : {"", "bogus", "stat a b"}) {
    const Outcome run = cache(args);
    EXPECT_EQ(2, run.exit) << args;
    EXPECT_EQ(0u, run.err.rfind("ktrctl: usage: ktrctl cache", 0)) << run.err;
  }
}

}  // namespace
