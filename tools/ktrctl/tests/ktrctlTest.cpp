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
  const std::string path = file("global.conf", "LOCKDIR=\"/a\"\nTEMPLATE=\"/var/lib/quellix/templates\"\nAGENT_LOG_LEVEL=\"2\"\n");
  Outcome set = ktrctl({"global", "set", path, "LOCKDIR=/b", "AGENT_LOG_LEVEL=3"});
  ASSERT_EQ(0, set.exit) << set.err;
  EXPECT_EQ("LOCKDIR=\"/b\"\nTEMPLATE=\"/var/lib/quellix/templates\"\nAGENT_LOG_LEVEL=\"3\"\n", slurp(path));
  Outcome get = ktrctl({"global", "get", path, "lockdir", "template"});
  EXPECT_EQ(0, get.exit);
  EXPECT_EQ("lockdir=/b\ntemplate=/var/lib/quellix/templates\n", get.out);
}

const std::string kContainer = std::string(KTR_EXAMPLES_DIR) + "/containers/101.conf";

TEST_F(ktrctlTest, GetPrintsWrittenValuesAndTellsKeysWithoutValue) {
  const std::string path = file("101.conf", slurp(kContainer));
  Outcome some = ktrctl({"get", path, "numproc", "Arch", "CPULIMIT", "IP_ADDRESS"});
  EXPECT_EQ(0, some.exit) << some.err;
  EXPECT_EQ("NUMPROC=\"256:256\"\nARCH=\"x86\"\nCPULIMIT=\"25.5\"\nIP_ADDRESS=\"10.0.0.101/24 10.0.0.102/24\"\n",
            some.out);
  Outcome unset = ktrctl({"get", path, "SLMMODE", "NAME"});
  EXPECT_EQ(1, unset.exit);
  EXPECT_EQ("NAME=\"web01\"\n", unset.out);
  expectOneErrorLine(ktrctl({"get", path, "NO_SUCH_KEY"}));
  Outcome all = ktrctl({"get", path});
  EXPECT_EQ(0, all.exit);
  EXPECT_NE(std::string::npos, all.out.find("VE_ROOT=\"/var/lib/quellix/root/$VEID\"\n")) << all.out;
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
  replace("NUMPROC=\"256:256\"", "NUMPROC=\"300:310\"");
  replace("ONBOOT=\"yes\"", "ONBOOT=\"no\"");
  // Lines the record holds are rewritten with their values in the writer's form.
  replace("VE_PRIVATE='/var/lib/quellix/private/$VEID'", "VE_PRIVATE=\"/var/lib/quellix/private/$VEID\"");
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
  EXPECT_NE(std::string::npos, read.out.find("<ktr:ve_root>/var/lib/quellix/root/$VEID</ktr:ve_root>")) << read.out;
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

// ---------------------------------------------------------------- validate

TEST_F(ktrctlTest, ValidatePassesTheShippedContainers) {
  for (const char* name : {"101.conf", "102.conf"}) {
    Outcome run = ktrctl({"validate", std::string(KTR_EXAMPLES_DIR) + "/containers/" + name});
    EXPECT_EQ(0, run.exit) << name << ": " << run.out << run.err;
    EXPECT_EQ("", run.out) << name;
    EXPECT_EQ("", run.err) << name;
  }
}

TEST_F(ktrctlTest, ValidatePrintsOneLinePerViolationAndExitsOne) {
  Outcome run = ktrctl({"validate", std::string(KTR_EXAMPLES_DIR) + "/containers/103.conf"});
  EXPECT_EQ(1, run.exit) << run.err;
  EXPECT_EQ("", run.err);
  EXPECT_EQ(
      "101: QOS.soft <= QOS.hard: openfiles: The barrier of a resource is above its limit.\n"
      "201: kernelmem.soft >= 40kb * avnumproc + dircache.hard: kernelmem,dircache,avnumproc: The kernelmem barrier "
      "must hold 40 KB for each average process plus the dircache limit.\n"
      "301: tcpsendbuf.hard - tcpsendbuf.soft >= 2.5kb * tcpsockets.hard: tcpsockets,tcpsendbuf: The tcpsendbuf limit "
      "must exceed its barrier by 2.5 KB for each TCP socket.\n"
      "501: openfiles.soft >= 32 * avnumproc: avnumproc,openfiles: The openfiles barrier must allow 32 open files for each "
      "average process.\n",
      run.out);
}

TEST_F(ktrctlTest, ValidateUsesTheGivenVocabulary) {
  const std::string head =
      "<vocabulary><technology><name>quellix</name><category><name>qos</name>"
      "<parameter><name>numproc</name><value_type>2</value_type><complexity>1</complexity></parameter>"
      "<parameter><name>openfiles</name><value_type>2</value_type><complexity>1</complexity></parameter>"
      "</category><category><name>tune</name>";
  const std::string tail = "</category></technology></vocabulary>";
  const std::string conf = file("c.conf", "NUMPROC=\"10:20\"\nOPENFILES=\"5\"\nSLMMODE=\"ub\"\n");
  const std::string strict = file("strict.xml", head +
                                                    "<parameter><name>f</name><type>7</type><formula>openfiles &gt;= "
                                                    "numproc.hard</formula><formula_info>few files</formula_info>"
                                                    "</parameter>" + tail);
  Outcome run = ktrctl({"--vocab", strict, "validate", conf});
  EXPECT_EQ(1, run.exit) << run.err;
  EXPECT_EQ("7: openfiles >= numproc.hard: numproc,openfiles: few files\n", run.out);

  // A container in SLM mode "slm" is checked for its memory limit alone.
  const std::string slm = file("slm.conf", "NUMPROC=\"10:20\"\nOPENFILES=\"5\"\nSLMMODE=\"slm\"\n");
  run = ktrctl({"--vocab", strict, "validate", slm});
  EXPECT_EQ(1, run.exit) << run.err;
  EXPECT_EQ("SLMMODE is slm but SLMMEMORYLIMIT is not set\n", run.out);

  // Unusable vocabularies and files: one error line each.
  const char* const unusable[] = {
      "<vocabulary><technology><name>quellix</name></technology></vocabulary>",  // no categories
      "<vocabulary>",                                                              // not XML
  };
  for (const char* text : unusable) expectOneErrorLine(ktrctl({"--vocab", file("u.xml", text), "validate", conf}));
  Outcome noFormulas = ktrctl({"--vocab", file("n.xml", head + tail), "validate", conf});
  expectOneErrorLine(noFormulas);
  EXPECT_NE(std::string::npos, noFormulas.err.find("can not read FORMULAE")) << noFormulas.err;
  Outcome unparsable = ktrctl(
      {"--vocab",
       file("p.xml", head + "<parameter><name>f</name><type>1</type><formula>(numproc)</formula>"
                            "<formula_info>m</formula_info></parameter>" + tail),
       "validate", conf});
  expectOneErrorLine(unparsable);
  EXPECT_NE(std::string::npos, unparsable.err.find("formula '(numproc)' does not parse")) << unparsable.err;
  Outcome absent = ktrctl({"--vocab", strict, "validate", file("a.conf", "NUMPROC=\"10:20\"\n")});
  expectOneErrorLine(absent);
  EXPECT_NE(std::string::npos, absent.err.find("parameter 'openfiles' is absent")) << absent.err;
  expectOneErrorLine(ktrctl({"validate", file("none.conf", "HOSTNAME=\"h\"\n")}));
  expectOneErrorLine(ktrctl({"validate", dir_ + "/absent.conf"}));
  expectOneErrorLine(ktrctl({"validate"}));
}

// ---------------------------------------------------------------- msg

const char* const kUpdateNs = "http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date";

std::string typedRoot(const std::string& type, const std::string& body) {
  return std::string("<update xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:u=\"") + kUpdateNs +
         "\" xsi:type=\"u:" + type + "\">" + body + "</update>";
}

TEST_F(ktrctlTest, MsgTypesListsEveryRecordFamilyAndTagsAreInIdOrder) {
  Outcome types = ktrctl({"msg", "types"});
  ASSERT_EQ(0, types.exit) << types.err;
  for (const char* line : {"KTRUpdate\tupdateType\thttp://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date\n",
                           "KTRMigratorCloneOptions\tclone_optionsType\t", "KTREnvConfig\tvenv_configType\t",
                           "KTRNetVEth\tnet_vethType\t", "KTRQuotaStats\t-\t", "KTRNetConfiguration\t-\t",
                           "KTRUGIDQuotaInfo\t-\t", "KTRPackageHQTemplate\tpackage_hqtemplateType\t",
                           "HardDisk::List::HqFS\tct_hqfs\t", "KTRUpdateConfig\t-\t"})
    EXPECT_NE(std::string::npos, types.out.find(line)) << line;

  Outcome tags = ktrctl({"msg", "tags"});
  ASSERT_EQ(0, tags.exit) << tags.err;
  std::istringstream lines(tags.out);
  int previous = 0;
  int count = 0;
  int id = 0;
  std::string name;
  while (lines >> id >> name) {
    EXPECT_LT(previous, id) << name;
    previous = id;
    ++count;
  }
  EXPECT_GT(count, 100);
  EXPECT_NE(std::string::npos, ("\n" + tags.out).find("\n1002 veid\n"));
}

TEST_F(ktrctlTest, MsgReadChoosesTheClassByTypeAndRoundTrips) {
  const std::string first = file(
      "u.xml", typedRoot("os_template_updateType",
                         "<name>centos</name><app_template xsi:type=\"u:app_template_updateType\"><name>mysql</name>"
                         "</app_template>"));
  Outcome run = ktrctl({"msg", "read", first});
  ASSERT_EQ(0, run.exit) << run.err;
  EXPECT_NE(std::string::npos, run.out.find("os_template_updateType"));
  EXPECT_NE(std::string::npos, run.out.find("app_template_updateType"));
  EXPECT_NE(std::string::npos, run.out.find("mysql"));
  // What msg read prints reads back to the same text.
  Outcome again = ktrctl({"msg", "read", file("again.xml", run.out)});
  ASSERT_EQ(0, again.exit) << again.err;
  EXPECT_EQ(run.out, again.out);

  // --as overrides the declared type: the record is read and written as the class named.
  Outcome as = ktrctl({"msg", "read", "--as", "KTRSystemUpdate", first});
  ASSERT_EQ(0, as.exit) << as.err;
  EXPECT_NE(std::string::npos, as.out.find("system_updateType"));
  EXPECT_EQ(std::string::npos, as.out.find("mysql"));

  Outcome stats = ktrctl(
      {"msg", "read", "--as", "KTRUbc", file("ubc.xml", "<ubc><name>kernelmem</name><usage>12</usage></ubc>")});
  ASSERT_EQ(0, stats.exit) << stats.err;
  EXPECT_NE(std::string::npos, stats.out.find("<usage>12</usage>"));
}

TEST_F(ktrctlTest, MsgReadFailuresGiveOneErrorLine) {
  const std::string untyped = file("r.xml", "<r><type><patch/></type></r>");
  Outcome failing = ktrctl({"msg", "read", "--as", "KTRSystemUpdate", untyped});
  expectOneErrorLine(failing);
  EXPECT_NE(std::string::npos, failing.err.find("status -1")) << failing.err;
  expectOneErrorLine(ktrctl({"msg", "read", untyped}));  // no declared type
  expectOneErrorLine(ktrctl({"msg", "read", file("t.xml", typedRoot("future_updateType", ""))}));
  expectOneErrorLine(ktrctl({"msg", "read", "--as", "NoSuchRecord", untyped}));
  expectOneErrorLine(ktrctl({"msg", "read", "--as", "KTRUbc", file("m.xml", "<r><name>")}));
  expectOneErrorLine(ktrctl({"msg", "read", dir_ + "/absent.xml"}));
  expectOneErrorLine(ktrctl({"msg", "read"}));
  expectOneErrorLine(ktrctl({"msg", "read", "--as"}));
  expectOneErrorLine(ktrctl({"msg", "frobnicate"}));
  expectOneErrorLine(ktrctl({"msg"}));
}

}  // namespace
