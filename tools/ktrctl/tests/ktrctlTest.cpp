#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Outcome {
  int exit = -1;
  std::string out;
  std::string err;
};

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

class ktrctlTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/ktrctl.XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    dir_ = pattern;
  }
  void TearDown() override { std::system(("rm -rf " + dir_).c_str()); }

  // Runs ktrctl with the arguments (each quoted for the shell) and collects what it printed.
  Outcome ktrctl(const std::vector<std::string>& args) {
    std::string command = std::string("'") + KTRCTL_PATH + "'";
    for (const auto& arg : args) {
      std::string quoted;
      for (char c : arg) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
      command += " '" + quoted + "'";
    }
    command += " >" + dir_ + "/.out 2>" + dir_ + "/.err";
    Outcome run;
    int status = std::system(command.c_str());
    run.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = slurp(dir_ + "/.out");
    run.err = slurp(dir_ + "/.err");
    return run;
  }

  std::string file(const std::string& name, const std::string& text) {
    std::string path = dir_ + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  std::string dir_;
};

// One error line, starting with "ktrctl: ".
void expectOneErrorLine(const Outcome& run) {
  EXPECT_EQ(2, run.exit);
  EXPECT_EQ(0u, run.err.rfind("ktrctl: ", 0)) << run.err;
  EXPECT_EQ(1, std::count(run.err.begin(), run.err.end(), '\n')) << run.err;
}

TEST_F(ktrctlTest, HelpAndVersionTellTheTruth) {
  Outcome help = ktrctl({"--help"});
  EXPECT_EQ(0, help.exit);
  for (const char* command : {"read CONF", "get CONF", "set [--no-merge] CONF", "diff OLD NEW", "validate CONF",
                              "raw get FILE", "raw set FILE", "global get FILE", "global set FILE", "--vocab FILE"})
    EXPECT_NE(std::string::npos, help.out.find(command)) << command;
  Outcome version = ktrctl({"--version"});
  EXPECT_EQ(0, version.exit);
  EXPECT_EQ("ktrctl 7.0\n", version.out);
}

TEST_F(ktrctlTest, UsageErrorsAreOneLine) {
  expectOneErrorLine(ktrctl({}));
  expectOneErrorLine(ktrctl({"--frobnicate"}));
  expectOneErrorLine(ktrctl({"frobnicate"}));
  expectOneErrorLine(ktrctl({"raw"}));
  expectOneErrorLine(ktrctl({"raw", "get", dir_ + "/missing"}));
  expectOneErrorLine(ktrctl({"raw", "set", file("a", ""), "NOEQUALS"}));
}

TEST_F(ktrctlTest, RawGetPrintsStoredValuesAndMissingKeysGiveOne) {
  const std::string path = file("raw.conf", "# comment\nFoo=\"bar baz\"\nfoo=second\nQux='x'\n");
  Outcome all = ktrctl({"raw", "get", path});
  EXPECT_EQ(0, all.exit);
  EXPECT_EQ("foo=bar baz\nqux=x\n", all.out);
  Outcome some = ktrctl({"raw", "get", path, "QUX", "absent", "foo"});
  EXPECT_EQ(1, some.exit);
  EXPECT_EQ("qux=x\nfoo=bar baz\n", some.out);
  EXPECT_EQ("", some.err);
}

TEST_F(ktrctlTest, RawSetRewritesInPlaceKeepsOtherLinesAndAppendsNewKeys) {
  const std::string path = file("raw.conf", "# keep me\nFoo=\"old\"  # trailing\n\nOther=1\n");
  Outcome set = ktrctl({"raw", "set", path, "foo=new value", "Added=yes"});
  ASSERT_EQ(0, set.exit) << set.err;
  EXPECT_EQ("# keep me\nFoo=\"new value\"  # trailing\n\nOther=\"1\"\nADDED=\"yes\"\n", slurp(path));
}

TEST_F(ktrctlTest, GlobalSetReplacesInterpretedAndRawKeys) {
  const std::string path = file("global.conf", "LOCKDIR=\"/a\"\nTEMPLATE=\"/vz/template\"\nVE0CPUUNITS=\"1000\"\n");
  Outcome set = ktrctl({"global", "set", path, "LOCKDIR=/b", "VE0CPUUNITS=2000"});
  ASSERT_EQ(0, set.exit) << set.err;
  EXPECT_EQ("LOCKDIR=\"/b\"\nTEMPLATE=\"/vz/template\"\nVE0CPUUNITS=\"2000\"\n", slurp(path));
  Outcome get = ktrctl({"global", "get", path, "lockdir", "template"});
  EXPECT_EQ(0, get.exit);
  EXPECT_EQ("lockdir=/b\ntemplate=/vz/template\n", get.out);
}

const std::string kContainer = std::string(KTR_EXAMPLES_DIR) + "/containers/101.conf";

TEST_F(ktrctlTest, GetPrintsWrittenValuesAndTellsKeysWithoutValue) {
  const std::string path = file("101.conf", slurp(kContainer));
  Outcome some = ktrctl({"get", path, "numproc", "Arch", "CPULIMIT", "IP_ADDRESS"});
  EXPECT_EQ(0, some.exit) << some.err;
  EXPECT_EQ("NUMPROC=\"240:240\"\nARCH=\"x86\"\nCPULIMIT=\"25.5\"\nIP_ADDRESS=\"10.0.0.101/24 10.0.0.102/24\"\n",
            some.out);
  Outcome unset = ktrctl({"get", path, "SLMMODE", "NAME"});
  EXPECT_EQ(1, unset.exit);
  EXPECT_EQ("NAME=\"web01\"\n", unset.out);
  expectOneErrorLine(ktrctl({"get", path, "NO_SUCH_KEY"}));
  Outcome all = ktrctl({"get", path});
  EXPECT_EQ(0, all.exit);
  EXPECT_NE(std::string::npos, all.out.find("VE_ROOT=\"/vz/root/$VEID\"\n")) << all.out;
  EXPECT_EQ(std::string::npos, all.out.find("LOCAL_NOTE")) << "unknown keys are not the record's";
}

TEST_F(ktrctlTest, SetChangesOnlyTheGivenValuesAndKeepsEveryOtherLine) {
  const std::string original = slurp(kContainer);
  const std::string path = file("101.conf", original);
  Outcome set = ktrctl({"set", path, "NUMPROC=300:310", "onboot=no"});
  ASSERT_EQ(0, set.exit) << set.err;
  std::string expected = original;
  auto replace = [&expected](const std::string& from, const std::string& to) {
    expected.replace(expected.find(from), from.size(), to);
  };
  replace("NUMPROC=\"240:240\"", "NUMPROC=\"300:310\"");
  replace("ONBOOT=\"yes\"", "ONBOOT=\"no\"");
  // Lines the record holds are rewritten with their values in the writer's form.
  replace("VE_PRIVATE='/vz/private/$VEID'", "VE_PRIVATE=\"/vz/private/$VEID\"");
  replace("IPTABLES=\"iptable_filter iptable_mangle ipt_REJECT\"", "IPTABLES=\"ipt_REJECT iptable_filter iptable_mangle\"");
  EXPECT_EQ(expected, slurp(path));
}

TEST_F(ktrctlTest, FailedSetLeavesTheFileUntouched) {
  const std::string original = slurp(kContainer);
  const std::string path = file("101.conf", original);
  for (const char* bad : {"NO_SUCH_KEY=1", "NUMPROC=many", "NUMPROC=1:x", "ONBOOT=1", "CPULIMIT=fast", "novalue"}) {
    expectOneErrorLine(ktrctl({"set", path, "NAME=changed", bad}));
    EXPECT_EQ(original, slurp(path)) << bad;
  }
}

TEST_F(ktrctlTest, SetWithoutMergeWritesOnlyTheRecordsKeys) {
  const std::string path = file("101.conf", slurp(kContainer));
  ASSERT_EQ(0, ktrctl({"set", "--no-merge", path, "NAME=web09"}).exit);
  const std::string text = slurp(path);
  EXPECT_EQ(std::string::npos, text.find('#'));
  EXPECT_EQ(std::string::npos, text.find("LOCAL_NOTE"));
  EXPECT_NE(std::string::npos, text.find("NAME=\"web09\"\n"));
}

TEST_F(ktrctlTest, DiffListsChangedKeysAndExitsOne) {
  const std::string a = file("a.conf", slurp(kContainer));
  Outcome same = ktrctl({"diff", a, a});
  EXPECT_EQ(0, same.exit);
  EXPECT_EQ("", same.out);
  ASSERT_EQ(0, ktrctl({"set", file("b.conf", slurp(kContainer)), "ONBOOT=no", "NUMPROC=1:2"}).exit);
  Outcome changed = ktrctl({"diff", a, dir_ + "/b.conf"});
  EXPECT_EQ(1, changed.exit);
  EXPECT_EQ("ONBOOT=\"no\"\nNUMPROC=\"1:2\"\n", changed.out);
}

TEST_F(ktrctlTest, ReadPrintsTheTypedConfiguration) {
  Outcome read = ktrctl({"read", kContainer});
  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_NE(std::string::npos, read.out.find("xsi:type=\"ktr:venv_configType\"")) << read.out;
  EXPECT_NE(std::string::npos, read.out.find("<ktr:ve_root>/vz/root/$VEID</ktr:ve_root>")) << read.out;
}

TEST_F(ktrctlTest, MalformedFileIsOneErrorLineWithFileAndLine) {
  const std::string path = file("bad.conf", "A=\"1\"\nNAME=\"open\nB=2\n");
  Outcome read = ktrctl({"read", path});
  expectOneErrorLine(read);
  EXPECT_NE(std::string::npos, read.err.find(path + ": line 2")) << read.err;
  expectOneErrorLine(ktrctl({"read", dir_ + "/absent.conf"}));
  expectOneErrorLine(ktrctl({"--vocab", dir_ + "/absent.xml", "read", kContainer}));
  expectOneErrorLine(ktrctl({"--vocab", file("v.xml", "<vocabulary>"), "read", kContainer}));
}

// Two writers on one file at once: both changes must land.
TEST_F(ktrctlTest, ConcurrentSetsOnOneFileLoseNothing) {
  const std::string path = file("shared.conf", "# shared\n");
  const int kPerWriter = 15;
  std::vector<pid_t> writers;
  for (int w = 0; w < 2; ++w) {
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      for (int i = 0; i < kPerWriter; ++i) {
        std::string command = std::string("'") + KTRCTL_PATH + "' raw set '" + path + "' W" + std::to_string(w) +
                              "_" + std::to_string(i) + "=" + std::to_string(i) + " >/dev/null 2>&1";
        if (std::system(command.c_str()) != 0) std::_Exit(1);
      }
      std::_Exit(0);
    }
    writers.push_back(pid);
  }
  for (pid_t pid : writers) {
    int status = 0;
    ::waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  const std::string text = slurp(path);
  for (int w = 0; w < 2; ++w)
    for (int i = 0; i < kPerWriter; ++i) {
      std::string line = "W" + std::to_string(w) + "_" + std::to_string(i) + "=\"" + std::to_string(i) + "\"\n";
      EXPECT_NE(std::string::npos, text.find(line)) << line << " missing from\n" << text;
    }
}

}  // namespace
