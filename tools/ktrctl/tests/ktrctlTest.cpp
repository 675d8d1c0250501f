// ktrctl run as an operator runs it: the transcripts in transcripts/ (their format is in
// transcripts/README.md) and the README's block of ktrctl commands, each run on copies of the
// shipped examples; then the few cases a transcript cannot express.
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::string slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::string::size_type at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

struct Outcome {
  int exit;
  std::string out, err;
};

// A temporary folder `dir_` holding copies of the shipped examples, where commands run with
// `ktrctl` (a script in `root_/bin` starting the built tool) on their PATH.
class ktrctlFolder : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/ktrctl.XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    root_ = pattern;
    dir_ = root_ / "case";
    fs::create_directories(dir_);
    fs::create_directory(root_ / "bin");
    for (const char* name : {"containers", "conflicts", "node.conf"})
      fs::copy(fs::path(KTR_EXAMPLES_DIR) / name, dir_ / name, fs::copy_options::recursive);
    std::ofstream(root_ / "bin/ktrctl") << "#!/bin/sh\nexec '" KTRCTL_PATH "' \"$@\"\n";
    fs::permissions(root_ / "bin/ktrctl", fs::perms::all & ~fs::perms::group_write & ~fs::perms::others_write);
  }
  void TearDown() override { fs::remove_all(root_); }

  // Runs the lines of sh in the folder; `as` prefixes the command that runs them.
  Outcome sh(const std::string& lines, const std::string& as = "") {
    std::ofstream(root_ / "command") << lines << "\n";
    const std::string root = root_.string();
    const std::string command = "cd '" + dir_.string() + "' && PATH='" + root + "/bin':\"$PATH\" MBQ_UPLOADS_DIR=\"$PWD\" " +
                                "KTRCTL_DOCS='" KTRCTL_DOCS "' " + as + " sh '" + root + "/command' >'" + root +
                                "/out' 2>'" + root + "/err' </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(root_ / "out"), slurp(root_ / "err")};
  }

  fs::path root_, dir_;
};

// ---------------------------------------------------------------- transcripts

struct Step {
  std::string command, output;
  int exit;
  unsigned line;
};

// The steps of a transcript; `malformed` names each line that fits no part of the format.
std::vector<Step> parse(const std::string& text, std::string& malformed) {
  std::vector<Step> steps;
  enum { kBetween, kOutput, kAfterExit } state = kBetween;
  std::istringstream lines(text);
  unsigned number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    int code = 0, end = -1;
    if (line.compare(0, 2, "$ ") == 0) {
      steps.push_back({line.substr(2), "", 0, number});
      state = kOutput;
    } else if (line.empty()) {
      state = kBetween;
    } else if (state == kOutput && steps.back().output.empty() && line.compare(0, 2, "> ") == 0) {
      steps.back().command += "\n" + line.substr(2);
    } else if (state == kOutput && std::sscanf(line.c_str(), "(exit %d)%n", &code, &end) == 1 &&
               end == static_cast<int>(line.size())) {
      steps.back().exit = code;
      state = kAfterExit;
    } else if (state == kOutput) {
      steps.back().output += line + "\n";
    } else if (state != kBetween || line[0] != '#') {
      malformed += "line " + std::to_string(number) + ": " + line + "\n";
    }
  }
  return steps;
}

// The README's ktrctl commands: the fenced block after the line that introduces it.
std::string readmeBlock(const std::string& readme) {
  const auto intro = readme.find("\nThe README's main command, on copies of the shipped examples:\n");
  const auto open = readme.find("\n```\n", intro);
  const auto close = readme.find("\n```\n", open + 4);
  return intro == std::string::npos || close == std::string::npos ? "" : readme.substr(open + 5, close - open - 4);
}

class ktrctlTranscript : public ktrctlFolder, public ::testing::WithParamInterface<std::string> {};

TEST_P(ktrctlTranscript, Runs) {
  const std::string name = GetParam();
  const std::string text = name == "README" ? readmeBlock(slurp(KTR_README)) : slurp(fs::path(KTRCTL_TRANSCRIPTS) / name);
  std::string malformed;
  const std::vector<Step> steps = parse(text, malformed);
  ASSERT_EQ("", malformed) << name;
  ASSERT_FALSE(steps.empty()) << name << " holds no command";
  for (const Step& step : steps) {
    const Outcome run = sh(replaced(step.command, "{dir}", dir_.string()));
    const std::string closing = run.exit ? "(exit " + std::to_string(run.exit) + ")\n" : "";
    const std::string shown = replaced(run.out + run.err + closing, dir_.string(), "{dir}");
    const std::string where = name + ":" + std::to_string(step.line) + ": $ " + step.command;
    EXPECT_EQ(step.output + (step.exit ? "(exit " + std::to_string(step.exit) + ")\n" : ""), shown) << where;
    // Error lines go to stderr and nothing else does: the stdout-then-stderr order above then
    // shows which stream each line came from.
    std::istringstream out(run.out), err(run.err);
    for (std::string line; std::getline(out, line);) EXPECT_NE(0u, line.rfind("ktrctl: ", 0)) << where;
    for (std::string line; std::getline(err, line);) EXPECT_EQ(0u, line.rfind("ktrctl: ", 0)) << where;
  }
}

std::vector<std::string> transcripts() {
  std::istringstream list("README " KTRCTL_TRANSCRIPT_NAMES);
  return {std::istream_iterator<std::string>(list), std::istream_iterator<std::string>()};
}

INSTANTIATE_TEST_SUITE_P(, ktrctlTranscript, ::testing::ValuesIn(transcripts()), [](const auto& info) {
  std::string name = info.param.substr(0, info.param.find('.'));
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  return name;
});

// ---------------------------------------------------------------- beyond transcripts

// Values with every character bash treats specially, written by set: bash and get both read
// them back exactly, and nothing runs.
TEST_F(ktrctlFolder, WrittenValuesReadBackExactlyInBashAndGet) {
  const std::vector<std::string> pieces = {"\"", "'", "\\", "$", "`", "$(touch RAN)", "`touch RAN`", ";", " ", "$HOME",
                                           "${x}", "\\n", "é", "\xff", "#", "!", "*", "~", "\t", "$VEIDX"};
  std::mt19937 random(7);
  std::string set = "printf '# values\\n' > v.sh && ktrctl raw set v.sh", values;
  for (int i = 0; i < 60; ++i) {
    std::string value;
    for (int n = random() % 5; n >= 0; --n) value += pieces[random() % pieces.size()];
    values += value + '\0';
    set += " 'V" + std::to_string(i) + "=" + replaced(value, "'", "'\\''") + "'";
  }
  const Outcome written = sh(set);
  ASSERT_EQ(0, written.exit) << written.err;
  // bash prints each value NUL-terminated; VEID names a container, as when the agent's tools
  // source the file.
  std::ofstream(dir_ / "reader.sh") << "VEID=101; source \"$1\" || exit 1\n"
                                       "for i in $(seq 0 59); do v=V$i; printf '%s\\0' \"${!v}\"; done\n";
  EXPECT_EQ(values, sh("bash reader.sh ./v.sh").out);
  // get prints assignments that bash reads back as the same values.
  EXPECT_EQ(values, sh("ktrctl raw get v.sh > printed.sh && bash reader.sh ./printed.sh").out);
  EXPECT_FALSE(fs::exists(dir_ / "RAN")) << "a value ran as a command";
}

// A many-file set replaces every file it can: the one it may not write (as an unprivileged user)
// is named in one error line and left as it was.
TEST_F(ktrctlFolder, ManyFileSetReplacesTheOthersWhenOneIsNotWritable) {
  const Outcome made = sh("mkdir node && for f in a b c; do printf '# %s\\nHOSTNAME=\"old\"\\n' $f > node/$f.conf; done && "
                          "chmod 0444 node/b.conf");
  ASSERT_EQ(0, made.exit) << made.err;
  std::string as;
  if (::geteuid() == 0) {  // root may write anything: the set runs as nobody then
    as = "setpriv --reuid=65534 --regid=65534 --clear-groups";
    if (std::system((as + " '" KTRCTL_PATH "' --version >/dev/null 2>&1").c_str()) != 0)
      GTEST_SKIP() << "an unprivileged user can't run " KTRCTL_PATH " (a folder above it is closed)";
    fs::permissions(root_, fs::perms::all);  // only the folders above the files: the files keep theirs
    ASSERT_EQ(0, std::system(("chown -R 65534:65534 '" + dir_.string() + "'").c_str()));
  }
  const Outcome set = sh("ktrctl set node -- HOSTNAME=new", as);
  EXPECT_EQ(2, set.exit);
  EXPECT_EQ("ktrctl: cannot edit node/b.conf: Permission denied\n", set.err);
  EXPECT_EQ("# a\nHOSTNAME=\"new\"\n# b\nHOSTNAME=\"old\"\n# c\nHOSTNAME=\"new\"\n", sh("cat node/*").out);
}

}  // namespace
