#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <set>
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

// A transcript: each step runs ktrctl with its arguments ("{dir}" stands for the test's folder)
// and must give the exit code and stdout shown; a step that fails (exit 2) prints one error
// line holding `err`.
struct Step {
  std::vector<std::string> args;
  int exit;
  std::string out;
  std::string err = "";
};

const std::string kContainer = std::string(KTR_EXAMPLES_DIR) + "/containers/101.conf";

class ktrctlTranscript : public ktrctlTest {
 protected:
  void run(const std::vector<Step>& steps) {
    auto expand = [this](std::string text) {
      for (std::string::size_type at; (at = text.find("{dir}")) != std::string::npos;) text.replace(at, 5, dir_);
      return text;
    };
    for (const Step& step : steps) {
      std::vector<std::string> args;
      std::string shown;
      for (const std::string& arg : step.args) {
        args.push_back(expand(arg));
        shown += " " + args.back();
      }
      Outcome outcome = ktrctl(args);
      EXPECT_EQ(step.exit, outcome.exit) << "ktrctl" << shown << "\n" << outcome.err;
      EXPECT_EQ(expand(step.out), outcome.out) << "ktrctl" << shown;
      if (step.exit == 2) {
        expectOneErrorLine(outcome);
        EXPECT_NE(std::string::npos, outcome.err.find(expand(step.err))) << "ktrctl" << shown << "\n" << outcome.err;
      } else {
        EXPECT_EQ("", outcome.err) << "ktrctl" << shown;
      }
    }
  }
};

TEST_F(ktrctlTranscript, CommandLine) {
  Outcome usage = ktrctl({"--help"});
  EXPECT_EQ(0, usage.exit);
  EXPECT_EQ(0u, usage.out.find("usage: ktrctl [OPTIONS] COMMAND ARGS...\n"));
  Outcome help = ktrctl({"help", "set"});
  EXPECT_EQ(0u, help.out.find("usage: ktrctl set CONF KEY=VALUE...\n")) << help.out;
  EXPECT_EQ(help.out, ktrctl({"set", "--help"}).out);
  EXPECT_EQ(help.out, ktrctl({"-h", "set"}).out);
  EXPECT_NE(std::string::npos, ktrctl({"raw", "--help"}).out.find("usage: ktrctl raw set"));
  EXPECT_EQ("ktrctl 7.0\nlibKTRFunctionality.so.7 7.0\n", ktrctl({"--version"}).out);
  const std::string conf = file("c.conf", "HOSTNAME=\"h\"\nNUMPROC=\"1:2\"\n");
  run({
      {{"get", "{dir}/c.conf", "--verbose", "hostname"}, 0, "HOSTNAME=\"h\"\n"},
      {{"set", "--wait=0.5", "{dir}/c.conf", "NAME=n"}, 0, ""},
      {{"get", "{dir}/c.conf", "--"}, 0, "HOSTNAME=\"h\"\nNUMPROC=\"1:2\"\nNAME=\"n\"\n"},
      {{"get", "{dir}/c.conf", "--", "numproc"}, 0, "NUMPROC=\"1:2\"\n"},
      {{"get", "--", "{dir}/c.conf"}, 2, "", "usage: ktrctl get"},
      {{}, 2, "", "no command"},
      {{"frobnicate"}, 2, "", "unknown command 'frobnicate'"},
      {{"--frobnicate", "get", "{dir}/c.conf"}, 2, "", "unknown option --frobnicate"},
      {{"raw", "get", "{dir}/c.conf", "--vocab", "{dir}/v.xml"}, 2, "", "--vocab does not apply to raw get"},
      {{"get", "{dir}/c.conf", "--dry-run"}, 2, "", "--dry-run does not apply to get"},
      {{"set", "--wait", "soon", "{dir}/c.conf", "A=1"}, 2, "", "--wait needs a number of seconds"},
      {{"help", "frobnicate"}, 2, "", "no command 'frobnicate'"},
      {{"raw"}, 2, "", "usage: ktrctl raw"},
      {{"set", "{dir}/c.conf"}, 2, "", "usage: ktrctl set CONF KEY=VALUE..."},
  });
}

// The manual page is written from the table --help prints: the same commands and options.
TEST_F(ktrctlTranscript, ManualPageAndHelpNameTheSameCommandsAndOptions) {
  const std::string help = ktrctl({"--help"}).out;
  const std::string manual = slurp(KTRCTL_MANUAL);
  ASSERT_FALSE(manual.empty());
  std::set<std::string> helpCommands, helpOptions, manualCommands, manualOptions;
  std::istringstream lines(help);
  std::string section;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line[0] != ' ') section = line;
    if (line.compare(0, 2, "  ") != 0 || line.size() < 3 || line[2] == ' ') continue;
    std::istringstream words(line.substr(2, line.find("  ", 2) - 2));  // the name and synopsis column
    std::string word, name;
    if (section == "Commands:") {
      while (words >> word && word.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos)
        name += (name.empty() ? "" : " ") + word;
      helpCommands.insert(name);
    } else if (section.compare(0, 8, "Options ") == 0 && words >> word) {
      helpOptions.insert(word);
    }
  }
  std::istringstream page(manual);
  section.clear();
  for (std::string line; std::getline(page, line);) {
    if (line.compare(0, 4, ".SH ") == 0) section = line.substr(4);
    if (line.compare(0, 3, "\\fB") != 0) continue;
    std::string name = line.substr(3, line.find("\\fR") - 3);
    for (std::string::size_type at; (at = name.find("\\-")) != std::string::npos;) name.erase(at, 1);
    if (section == "COMMANDS") manualCommands.insert(name);
    if (section == "OPTIONS") manualOptions.insert(name);
  }
  EXPECT_GT(helpCommands.size(), 10u);
  EXPECT_EQ(helpCommands, manualCommands);
  EXPECT_EQ(helpOptions, manualOptions);

  // The bash completion comes from the same table.
  const std::string completion = std::string(KTRCTL_MANUAL).replace(std::string(KTRCTL_MANUAL).size() - 8, 8, "ktrctl.bash-completion");
  const std::string script = file("complete.sh",
                                  "source '" + completion + "'\n"
                                  "COMP_WORDS=(ktrctl raw ''); COMP_CWORD=2; _ktrctl; echo \"${COMPREPLY[*]}\"\n"
                                  "COMP_WORDS=(ktrctl set --dr); COMP_CWORD=2; _ktrctl; echo \"${COMPREPLY[*]}\"\n");
  ASSERT_EQ(0, std::system(("bash " + script + " > " + dir_ + "/completed").c_str()));
  EXPECT_EQ("get set\n--dry-run\n", slurp(dir_ + "/completed"));
}

// get and raw get print what bash assigns: the last assignment of a key, quoted so that the
// printed line assigns the same value.
TEST_F(ktrctlTranscript, GetReportsWhatBashAssigns) {
  file("c.conf",
       "# comment\nHOSTNAME=first\nNAME='a \"b\" $c'\nhostname=\"second\"\nDESCRIPTION=$(date)\nLOCAL=1\n");
  run({
      {{"get", "{dir}/c.conf", "HOSTNAME", "name"}, 0, "HOSTNAME=\"second\"\nNAME=\"a \\\"b\\\" \\$c\"\n"},
      {{"get", "{dir}/c.conf"}, 0, "HOSTNAME=\"second\"\nNAME=\"a \\\"b\\\" \\$c\"\n"},
      {{"get", "{dir}/c.conf", "NAME", "ONBOOT"}, 1, "NAME=\"a \\\"b\\\" \\$c\"\n"},
      {{"get", "{dir}/c.conf", "DESCRIPTION"}, 2, "", "line 5 assigns DESCRIPTION in a form that is not read"},
      {{"get", "{dir}/c.conf", "LOCAL"}, 2, "", "unknown key LOCAL (raw get reads any key)"},
      {{"raw", "get", "{dir}/c.conf", "local", "hostname"}, 0, "LOCAL=\"1\"\nhostname=\"second\"\n"},
      {{"raw", "get", "{dir}/c.conf", "absent"}, 1, ""},
      {{"global", "get", "{dir}/c.conf", "NAME"}, 0, "NAME=\"a \\\"b\\\" \\$c\"\n"},
      {{"raw", "get", "{dir}/absent"}, 2, "", "cannot read {dir}/absent"},
  });
  file("dos.conf", "A=\"1\"\r\nB=\"2\"\r\n");
  run({{{"raw", "get", "{dir}/dos.conf"}, 2, "", "line 1 ends in a carriage return"},
       {{"raw", "set", "{dir}/dos.conf", "A=3"}, 2, "", "line 1 ends in a carriage return"}});
}

// set changes the lines of the keys named and nothing else, whatever the record would write
// for the other lines.
TEST_F(ktrctlTranscript, SetChangesOnlyTheKeysNamed) {
  const std::string original =
      "NETIF=\"ifname=eth0,mac=02:00:00:00:00:01,note=uplink,ip=10.0.0.5/24\"\n"
      "SEARCHDOMAIN=\"example.test corp.test\"\nFEATURES=\"ipv6:off fuse:on\"\n"
      "IPTABLES=\"iptable_mangle iptable_filter\"\nVE_PRIVATE='/srv/private/$VEID'\nHOSTNAME=\"old\"\n"
      "NUMPROC=\"100:200\"";
  const std::string path = file("c.conf", original);
  run({{{"set", "{dir}/c.conf", "HOSTNAME=new", "DESCRIPTION=cost $5"}, 0, ""},
       {{"get", "{dir}/c.conf", "DESCRIPTION"}, 0, "DESCRIPTION=\"cost \\$5\"\n"}});
  std::string expected = original;
  expected.replace(expected.find("HOSTNAME=\"old\""), 14, "HOSTNAME=\"new\"");
  EXPECT_EQ(expected + "\nDESCRIPTION=\"cost \\$5\"\n", slurp(path));

  const std::string raw = file("r.sh", "var='Some \"funny\" value'\nA='x\"y'\nX='`cmd`'\nB=1\nB=2\n");
  run({{{"raw", "set", "{dir}/r.sh", "B=x y"}, 0, ""}});
  EXPECT_EQ("var='Some \"funny\" value'\nA='x\"y'\nX='`cmd`'\nB=\"x y\"\nB=\"x y\"\n", slurp(raw));
}

TEST_F(ktrctlTranscript, SetRefusesValuesThatDoNotReadBackAndLeavesTheFile) {
  const std::string original = slurp(kContainer);
  const std::string path = file("101.conf", original);
  run({
      {{"set", "{dir}/101.conf", "NETIF=garbage"}, 2, "", "NETIF=garbage: the agent would read this as \"\""},
      {{"set", "{dir}/101.conf", "DISK=x"}, 2, "", "DISK=x: the agent would read this as \"image=,size=0"},
      {{"set", "{dir}/101.conf", "NETIF=ifname=eth1,note=uplink"}, 2, "", "the agent would read this as \"ifname=eth1"},
      {{"set", "{dir}/101.conf", "CPULIMIT=1e400"}, 2, "", "CPULIMIT=1e400: the value does not parse"},
      {{"set", "{dir}/101.conf", "CPULIMIT=12.345"}, 2, "", "the agent would read this as \"12.34\""},
      {{"set", "{dir}/101.conf", "NUMPROC=1:x"}, 2, "", "NUMPROC=1:x: the value does not parse"},
      {{"set", "{dir}/101.conf", "ONBOOT=1"}, 2, "", "ONBOOT=1: the value does not parse"},
      {{"set", "{dir}/101.conf", "ONBOOT="}, 2, "", "a flag or number cannot be cleared"},
      {{"set", "{dir}/101.conf", "NO_SUCH_KEY=1"}, 2, "", "unknown key NO_SUCH_KEY"},
      {{"set", "{dir}/101.conf", "NAME=x", "name=y"}, 2, "", "name is given twice"},
      {{"set", "{dir}/101.conf", "DESCRIPTION=a\nb"}, 2, "", "holds a line break or NUL byte"},
      {{"raw", "set", "{dir}/101.conf", "x;touch PWNED;y=1"}, 2, "", "is not a key name"},
      {{"raw", "set", "{dir}/101.conf", "hostname=x"}, 2, "", "spells hostname as HOSTNAME"},
      {{"set", "{dir}/absent.conf", "NAME=x"}, 2, "", "cannot read {dir}/absent.conf"},
  });
  EXPECT_EQ(original, slurp(path));
  // Every value the shipped file holds reads back as given.
  std::vector<std::string> same = {"set", path};
  std::istringstream lines(original);
  for (std::string line; std::getline(lines, line);) {
    const std::string::size_type equals = line.find("=\"");
    if (equals != std::string::npos && line.back() == '"' && line.compare(0, 5, "LOCAL") != 0)
      same.push_back(line.substr(0, equals) + "=" + line.substr(equals + 2, line.size() - equals - 3));
  }
  Outcome unchanged = ktrctl(same);
  EXPECT_EQ(0, unchanged.exit) << unchanged.err;
  EXPECT_EQ(original, slurp(path));
}

TEST_F(ktrctlTranscript, DryRunShowsTheChangeAndAsAgentWritesTheWholeRecord) {
  const std::string original = "# c\nVE_PRIVATE='/p/$VEID'\nHOSTNAME=\"a\"\nNUMPROC=\"1:2\"";
  const std::string path = file("c.conf", original);
  run({{{"set", "--dry-run", "{dir}/c.conf", "HOSTNAME=b", "NAME=n"}, 0,
        "--- {dir}/c.conf\n+++ {dir}/c.conf\n@@ -3,2 +3,2 @@\n-HOSTNAME=\"a\"\n-NUMPROC=\"1:2\"\n"
        "\\ No newline at end of file\n+HOSTNAME=\"b\"\n+NUMPROC=\"1:2\"\n@@ -4,0 +5,1 @@\n+NAME=\"n\"\n"}});
  EXPECT_EQ(original, slurp(path));
  run({{{"set", "--as-agent", "{dir}/c.conf", "HOSTNAME=b"}, 0, ""}});
  const std::string agent = slurp(path);
  EXPECT_EQ(0u, agent.find("# c\nVE_PRIVATE=\"/p/$VEID\"\nHOSTNAME=\"b\"\nNUMPROC=\"1:2\"\n")) << agent;
  EXPECT_NE(std::string::npos, agent.find("IP_ADDRESS=\"\"\n")) << "the agent's writer appends its keys";
}

// Values with every character bash treats specially, written by set: bash and get both read
// them back exactly, and nothing runs.
TEST_F(ktrctlTranscript, WrittenValuesReadBackExactlyInBashAndGet) {
  const std::string marker = dir_ + "/RAN";
  const std::vector<std::string> pieces = {"\"",   "'",   "\\",  "$",    "`",    "$(touch " + marker + ")",
                                           "`touch " + marker + "`", ";",  " ",   "$HOME", "${x}", "\\n",
                                           "é",    "\xff", "#",   "!",    "*",    "~",     "\t",   "$VEIDX"};
  std::mt19937 random(7);
  std::vector<std::string> args = {"raw", "set", file("v.sh", "# values\n")};
  std::vector<std::string> values;
  for (int i = 0; i < 60; ++i) {
    std::string value;
    for (int n = random() % 5; n >= 0; --n) value += pieces[random() % pieces.size()];
    values.push_back(value);
    args.push_back("V" + std::to_string(i) + "=" + value);
  }
  Outcome set = ktrctl(args);
  ASSERT_EQ(0, set.exit) << set.err;
  // bash prints each value NUL-terminated; VEID names a container, as when the agent's tools
  // source the file.
  const std::string reader = file("reader.sh",
                                  "VEID=101; source \"$1\" || exit 1\n"
                                  "for i in $(seq 0 59); do v=V$i; printf '%s\\0' \"${!v}\"; done\n");
  auto bashReads = [&](const std::string& sourced) {
    const std::string out = dir_ + "/bash.out";
    EXPECT_EQ(0, std::system(("bash " + reader + " " + sourced + " > " + out + " < /dev/null").c_str()));
    return slurp(out);
  };
  const std::string fromBash = bashReads(dir_ + "/v.sh");
  std::string::size_type at = 0;
  for (int i = 0; i < 60; ++i) {
    const std::string::size_type end = fromBash.find('\0', at);
    ASSERT_NE(std::string::npos, end);
    EXPECT_EQ(values[i], fromBash.substr(at, end - at)) << "V" << i;
    at = end + 1;
  }
  // get prints assignments that bash reads back as the same values.
  Outcome get = ktrctl({"raw", "get", dir_ + "/v.sh"});
  ASSERT_EQ(0, get.exit) << get.err;
  EXPECT_EQ(fromBash, bashReads(file("printed.sh", get.out)));
  EXPECT_NE(0, ::access(marker.c_str(), F_OK)) << "a value ran as a command";
}

TEST_F(ktrctlTranscript, DiffReadAndMalformedFiles) {
  file("a.conf", "HOSTNAME=\"a\"\nNAME=\"n\"\nONBOOT=\"yes\"\n");
  file("b.conf", "HOSTNAME=\"b\"\nONBOOT=\"yes\"\n");
  file("open.conf", "A=\"1\"\nNAME=\"open\nB=2\n");
  file("latin1.conf", "HOSTNAME=\"caf\xe9\"\n");
  run({
      {{"diff", "{dir}/a.conf", "{dir}/a.conf"}, 0, ""},
      {{"diff", "{dir}/a.conf", "{dir}/b.conf"}, 1, "HOSTNAME=\"b\"\nunset NAME\n"},
      {{"read", "{dir}/open.conf"}, 2, "", "{dir}/open.conf: line 2"},
      {{"read", "{dir}/latin1.conf"}, 2, "", "line 1: the value of HOSTNAME holds bytes that XML cannot carry"},
      {{"--vocab", "{dir}/absent.xml", "read", "{dir}/a.conf"}, 2, "", "absent.xml"},
  });
  Outcome read = ktrctl({"read", kContainer});
  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_NE(std::string::npos, read.out.find("xsi:type=\"ktr:venv_configType\"")) << read.out;
  EXPECT_NE(std::string::npos, read.out.find("<ktr:ve_root>/var/lib/quellix/root/$VEID</ktr:ve_root>")) << read.out;
}

// ---------------------------------------------------------------- many files

// A container file of a generated node: every value that must be unique derives from `id`.
std::string generatedContainer(int id) {
  const std::string n = std::to_string(id);
  char mac[32];
  std::snprintf(mac, sizeof mac, "02:00:00:00:%02x:%02x", id / 256, id % 256);
  char uuid[48];
  std::snprintf(uuid, sizeof uuid, "00000000-0000-4000-8000-%012d", id);
  std::string text = slurp(kContainer);
  auto replaceLine = [&text](const std::string& key, const std::string& line) {
    const std::string::size_type at = text.find("\n" + key + "=") + 1;
    text.replace(at, text.find('\n', at) - at, line);
  };
  replaceLine("HOSTNAME", "HOSTNAME=\"ct" + n + ".example.test\"");
  replaceLine("IP_ADDRESS", "IP_ADDRESS=\"10.1." + std::to_string(id / 250) + "." + std::to_string(id % 250 + 1) + "/16 fd00::" + n + "/64\"");
  replaceLine("NETIF", std::string("NETIF=\"ifname=eth0,mac=") + mac + ",ip=192.168." + std::to_string(id / 250) + "." +
                           std::to_string(id % 250 + 1) + "/16\"");
  replaceLine("DISK", "DISK=\"image=/var/lib/quellix/private/" + n + "/disk.img,size=1048576,uuid={" + uuid + "}\"");
  replaceLine("UUID", std::string("UUID=\"") + uuid + "\"");
  return text;
}

// The 1-based line of the first line starting with `key=`.
unsigned lineOf(const std::string& text, const std::string& key) {
  return static_cast<unsigned>(std::count(text.begin(), text.begin() + static_cast<long>(text.find("\n" + key + "=")), '\n')) + 2;
}

TEST_F(ktrctlTranscript, CheckFindsEachPlantedConflictOnceAndNothingOnACleanNode) {
  ::mkdir((dir_ + "/node").c_str(), 0755);
  std::vector<std::string> texts;
  for (int id = 1; id <= 40; ++id) texts.push_back(generatedContainer(id));
  auto writeNode = [&] {
    for (int id = 1; id <= 40; ++id) file("node/" + std::to_string(100 + id) + ".conf", texts[id - 1]);
  };
  writeNode();
  run({{{"check", "{dir}/node"}, 0, ""}});

  // Each kind of conflict planted between two files; plus a line bash computes and a repeated key.
  struct Plant {
    int from, to;
    std::string key, what;
  };
  auto copyValue = [&](int from, int to, const std::string& key) {
    std::string& target = texts[to - 1];
    const std::string& source = texts[from - 1];
    const std::string::size_type s = source.find("\n" + key + "=") + 1;
    const std::string::size_type t = target.find("\n" + key + "=") + 1;
    target.replace(t, target.find('\n', t) - t, source.substr(s, source.find('\n', s) - s));
  };
  copyValue(3, 7, "HOSTNAME");
  copyValue(4, 9, "UUID");
  copyValue(5, 12, "DISK");
  copyValue(6, 20, "NETIF");  // MAC and IPv4 address
  copyValue(8, 30, "IP_ADDRESS");  // IPv4 and IPv6 address
  {
    std::string& text = texts[34];
    const std::string::size_type at = text.find("\nVE_PRIVATE=") + 1;
    text.replace(at, text.find('\n', at) - at, "VE_PRIVATE=\"/var/lib/quellix/private/101\"");
    text += "echo \"$(id)\"\nHOSTNAME=\"late.example.test\"\n";
  }
  writeNode();
  const std::string node = dir_ + "/node/";
  auto at = [&](int id, const std::string& key) {
    return node + std::to_string(100 + id) + ".conf:" + std::to_string(lineOf(texts[id - 1], key));
  };
  const unsigned tail = static_cast<unsigned>(std::count(texts[34].begin(), texts[34].end(), '\n'));
  const std::string expected =
      at(7, "HOSTNAME") + ": hostname ct3.example.test is also used by " + at(3, "HOSTNAME") + "\n" +
      at(9, "UUID") + ": UUID 00000000-0000-4000-8000-000000000004 is also used by " + at(4, "UUID") + "\n" +
      at(12, "DISK") + ": disk image /var/lib/quellix/private/5/disk.img is also used by " + at(5, "DISK") + "\n" +
      at(20, "NETIF") + ": IPv4 address 192.168.0.7 is also used by " + at(6, "NETIF") + "\n" +
      at(20, "NETIF") + ": MAC address 02:00:00:00:00:06 is also used by " + at(6, "NETIF") + "\n" +
      at(30, "IP_ADDRESS") + ": IPv4 address 10.1.0.9 is also used by " + at(8, "IP_ADDRESS") + "\n" +
      at(30, "IP_ADDRESS") + ": IPv6 address fd00::8 is also used by " + at(8, "IP_ADDRESS") + "\n" +
      node + "135.conf:" + std::to_string(lineOf(texts[34], "VE_PRIVATE")) +
      ": private area /var/lib/quellix/private/101 is also used by " + node + "101.conf:" +
      std::to_string(lineOf(texts[0], "VE_PRIVATE")) + "\n" +
      node + "135.conf:" + std::to_string(tail - 1) + ": not a readable assignment\n" +
      node + "135.conf:" + std::to_string(tail) + ": HOSTNAME is assigned again (first on line " +
      std::to_string(lineOf(texts[34], "HOSTNAME")) + ")\n";
  Outcome check = ktrctl({"check", dir_ + "/node"});
  EXPECT_EQ(1, check.exit) << check.err;
  EXPECT_EQ(expected, check.out);
  EXPECT_EQ("", check.err);
}

TEST_F(ktrctlTranscript, ManyFileSetReplacesTheOthersWhenOneFails) {
  const std::string folder = dir_ + "/node";
  ::mkdir(folder.c_str(), 0755);
  std::vector<std::string> names = {"a.conf", "b.conf", "c.conf", "d.conf", "e.conf"};
  for (const std::string& name : names) file("node/" + name, "# " + name + "\nHOSTNAME=\"old\"\n");
  ::chmod((folder + "/b.conf").c_str(), 0444);  // not writable
  ::unlink((folder + "/d.conf").c_str());
  ASSERT_EQ(0, ::mkfifo((folder + "/d.conf").c_str(), 0644));  // not a regular file
  // Root may write anything: the set runs as an unprivileged user then.
  std::string as;
  if (::geteuid() == 0) {
    as = "setpriv --reuid=65534 --regid=65534 --clear-groups ";
    if (std::system((as + "'" + KTRCTL_PATH + "' --version >/dev/null 2>&1").c_str()) != 0)
      GTEST_SKIP() << "an unprivileged user can't run " << KTRCTL_PATH << " (a folder above it is closed)";
    ASSERT_EQ(0, std::system(("chown -R 65534:65534 " + dir_).c_str()));
  }
  const std::string command = as + "'" + KTRCTL_PATH + "' set '" + folder + "' -- HOSTNAME=new NAME=n >" + dir_ +
                              "/out 2>" + dir_ + "/err";
  const int status = std::system(command.c_str());
  EXPECT_EQ(2, WEXITSTATUS(status));
  const std::string err = slurp(dir_ + "/err");
  EXPECT_EQ(2, std::count(err.begin(), err.end(), '\n')) << err;
  EXPECT_NE(std::string::npos, err.find(folder + "/b.conf: Permission denied")) << err;
  EXPECT_NE(std::string::npos, err.find(folder + "/d.conf: not a regular file")) << err;
  for (const char* name : {"a.conf", "c.conf", "e.conf"})
    EXPECT_EQ(std::string("# ") + name + "\nHOSTNAME=\"new\"\nNAME=\"n\"\n", slurp(folder + "/" + name)) << name;
  EXPECT_EQ("# b.conf\nHOSTNAME=\"old\"\n", slurp(folder + "/b.conf"));
  // Output names the file on every line when there are several.
  run({{{"get", "{dir}/node/a.conf", "{dir}/node/e.conf", "--", "hostname"}, 0,
        "{dir}/node/a.conf: HOSTNAME=\"new\"\n{dir}/node/e.conf: HOSTNAME=\"new\"\n"}});
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
  EXPECT_NE(std::string::npos, failing.err.find("reading KTRSystemUpdate failed: type: unknown option patch")) << failing.err;
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
