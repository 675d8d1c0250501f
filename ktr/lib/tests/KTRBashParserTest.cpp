#include "KTRFunctionality/KTRBashParser.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "MBQCore/MBQError.h"

namespace KTR {
namespace {

// Put side that records every call and answers with a fixed code.
struct RecordingPut {
  std::vector<std::pair<std::string, std::string>> puts;
  int result = 0;
  int put(const std::string& key, const char* value) {
    puts.emplace_back(key, value);
    return result;
  }
};

// Get side answering from a map: kKeyWithoutValue for the keys in `withoutValue`, kUnknownKey
// for the rest. It appends to the value it is given, so text left in it would show. getNext
// walks `order`, where an empty entry answers -1 once.
struct ScriptedGet {
  std::map<std::string, std::string> values;
  std::set<std::string> withoutValue;
  std::vector<std::string> order;
  std::size_t next = 0;

  int get(const std::string& key, std::string& value) {
    if (withoutValue.count(key) != 0) return kKeyWithoutValue;
    const auto found = values.find(key);
    if (found == values.end()) return kUnknownKey;
    value += found->second;
    return 0;
  }
  int getNext(std::string& key) {
    if (next >= order.size() || order[next].empty()) {
      ++next;
      return -1;
    }
    key = order[next++];
    return 0;
  }
};

using Puts = std::vector<std::pair<std::string, std::string>>;

Puts readAll(const std::string& text, int* result = nullptr, int putResult = 0) {
  RecordingPut put;
  put.result = putResult;
  std::istringstream in(text);
  const int read = parseBashLikeConfig(put, in);
  if (result != nullptr) *result = read;
  return put.puts;
}

std::string writeMerged(ScriptedGet get, const std::string& oldText) {
  std::istringstream old(oldText);
  std::ostringstream out;
  EXPECT_EQ(0, serializeBashLikeConfig(get, out, &old, true));
  return out.str();
}

TEST(KTRBashParserTest, ReadsLinesIntoOneBufferThatOnlyGrows) {
  std::istringstream in(std::string("ab\n\nlonger line\nx\0y", 19));
  char* buffer = nullptr;
  unsigned long capacity = 0;
  const std::vector<std::string> expected = {"ab", "", "longer line", std::string("x\0y", 3)};
  const std::vector<unsigned long> capacities = {3, 3, 12, 12};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_EQ(static_cast<int>(expected[i].size()), readStringFromStream(in, &buffer, &capacity)) << i;
    EXPECT_EQ(expected[i], std::string(buffer, expected[i].size())) << i;
    EXPECT_EQ('\0', buffer[expected[i].size()]) << i;
    EXPECT_EQ(capacities[i], capacity) << i;
  }
  char* const kept = buffer;
  EXPECT_EQ(-1, readStringFromStream(in, &buffer, &capacity));
  EXPECT_EQ(kept, buffer);
  EXPECT_EQ(12u, capacity);
  std::free(buffer);
}

// Whatever put answers, reading goes on.
TEST(KTRBashParserTest, ReadingPutsEachAssignmentLowerCasedUntilAValueLeftOpen) {
  const std::string file =
      "# VE_ROOT=/commented\n"
      "\n"
      "  \t\n"
      "Foo=\"a b\"  # trailing\n"
      "echo hi\n"
      "HOME_DIR=$HOME\n"
      "export BAR=1\n"
      "BAR='x'\\ y\n" +
      // bash drops the NUL and would read NUL=1x; the text before the NUL is not the value.
      std::string("NUL=1\0x\n", 8) +
      "EMPTY=\n"
      "LAST=no newline";
  int result = -99;
  const Puts puts = readAll(file, &result, kUnknownKey);
  EXPECT_EQ(0, result);
  // "LAST=no newline" is two words (bash would run "newline" with LAST in its environment).
  EXPECT_EQ((Puts{{"foo", "a b"}, {"bar", "x y"}, {"empty", ""}}), puts);
  EXPECT_TRUE(readAll("", &result).empty());
  EXPECT_EQ(0, result);
  // A value left open stops the read; its message ("line 2: value of NAME is not closed on its
  // line") is shown by ktrctl in diff.t.
  EXPECT_EQ((Puts{{"a", "1"}}), readAll("A=1\n# c\nB=\"open\nC=3\n\"\n", &result));
  EXPECT_EQ(-1, result);
}

// No old stream, one not to be merged, an empty one or one that failed: nothing to keep.
TEST(KTRBashParserTest, WritingWithoutOldTextAppendsOneLinePerKeyAndReportsAFailedOutput) {
  ScriptedGet get;
  get.values = {{"ve_root", "/var/lib/quellix/root"}, {"onboot", "yes"}};
  get.order = {"onboot", "ve_root"};
  std::istringstream unmerged("ONBOOT=no\n# comment\n"), empty(""), failed("ONBOOT=no\n");
  failed.setstate(std::ios::failbit);
  const std::pair<std::istream*, bool> olds[] = {{nullptr, true}, {&unmerged, false}, {&empty, true}, {&failed, true}};
  for (const auto& [old, merge] : olds) {
    ScriptedGet fresh = get;
    std::ostringstream out;
    EXPECT_EQ(0, serializeBashLikeConfig(fresh, out, old, merge));
    EXPECT_EQ("ONBOOT=\"yes\"\nVE_ROOT=\"/var/lib/quellix/root\"\n", out.str());
  }
  std::ostream failing(nullptr);  // without a buffer every write fails
  std::istringstream comment("# comment\n");
  MBQ::clearErrorMessage();
  EXPECT_EQ(-1, serializeBashLikeConfig(get, failing, &comment, true));
  EXPECT_EQ("failed to write output stream", MBQ::getErrorMessage());
}

TEST(KTRBashParserTest, WritingAppendsInGetNextOrderUntilItsFirstEnd) {
  ScriptedGet get;
  get.values = {{"a", "1"}, {"b", "2"}, {"c", "3"}, {"mix", "4"}};
  get.withoutValue = {"w"};
  get.order = {"b", "unknown", "mix", "w", "a", "", "c"};
  // "mix" is rewritten in place under its own spelling; "c" comes after the first end.
  EXPECT_EQ("Mixed_Case_m=nope\nmIx=\"4\"\nB=\"2\"\nA=\"1\"\n", writeMerged(get, "Mixed_Case_m=nope\nmIx=5"));
}

// Files of every kind of line; writing them back with merge must keep each line that is not a
// rewritten assignment byte for byte, change only the value as written in the others, and
// append the keys the file lacks.
class ConfigFileGenerator {
 public:
  explicit ConfigFileGenerator(unsigned seed) : random_(seed) {}

  struct Line {
    std::string text;
    std::string key;  // lower-case key of an assignment that the get side may rewrite
    std::string::size_type valueBegin = 0;
    std::string::size_type valueLength = 0;
  };

  std::vector<Line> file(bool& finalNewline) {
    std::vector<Line> lines(static_cast<std::size_t>(pick(25)));
    for (Line& line : lines) line = next();
    finalNewline = pick(3) != 0;
    // Without a final newline an empty last line would not be a line at all.
    if (!finalNewline && !lines.empty() && lines.back().text.empty()) lines.back().text = " ";
    return lines;
  }

  int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

  std::string spell(const std::string& key) {
    std::string spelled = key;
    for (char& c : spelled)
      if (pick(2)) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return spelled;
  }

 private:
  std::string blanks() { return std::string(static_cast<std::size_t>(pick(3)), pick(2) ? ' ' : '\t'); }

  std::string value() {
    static const char* const kForms[] = {"",           "plain",         "\"double quoted\"", "'single $quoted'",
                                         "a\\ b'c'\"d\"", "\"\\\"esc\\\\\"", "x#y",              "\"\"",
                                         "$",          "/path/$/x"};
    return kForms[pick(10)];
  }

  std::string trailer() {
    static const char* const kTrailers[] = {" # comment \"with' quotes", "\t", "", ""};
    return kTrailers[pick(4)];
  }

  Line next() {
    static const char* const kOthers[] = {"echo hi",  "export ALPHA=1", "ALPHA+=2", "ALPHA=$HOME",
                                          "BETA=b c", "GAMMA=\"open",   "\r",       "ALPHA =1"};
    static const char* const kKeys[] = {"alpha", "beta", "gamma", "delta"};
    Line line;
    const int kind = pick(8);
    if (kind == 0) line.text = blanks() + "# " + spell("alpha") + "=commented";
    if (kind == 1) line.text = blanks();
    if (kind == 2) line.text = blanks() + "UNKNOWN_" + std::to_string(pick(5)) + "=" + value() + trailer();
    if (kind == 3) line.text = kOthers[pick(8)];
    if (kind == 4) line.text = std::string("ALPHA=x\0y", 9);
    if (kind < 5) return line;
    // Three kinds in eight: an assignment of a key the get side may rewrite.
    line.key = kKeys[pick(4)];
    const std::string written = value();
    line.text = blanks() + spell(line.key) + "=";
    line.valueBegin = line.text.size();
    line.valueLength = written.size();
    line.text += written + trailer();
    return line;
  }

  std::mt19937 random_;
};

TEST(KTRBashParserTest, MergingChangesNothingButTheValuesItRewrites) {
  ConfigFileGenerator generator(4711);
  const std::vector<std::string> keys = {"alpha", "beta", "gamma", "delta", "epsilon"};
  for (int round = 0; round < 300; ++round) {
    bool finalNewline = true;
    const std::vector<ConfigFileGenerator::Line> lines = generator.file(finalNewline);
    std::string old;
    for (std::size_t i = 0; i < lines.size(); ++i) old += lines[i].text + (i + 1 < lines.size() || finalNewline ? "\n" : "");

    ScriptedGet get;
    for (const std::string& key : keys) {
      const int kind = generator.pick(3);  // a value, none, or a key the get side does not know
      if (kind == 0) get.values[key] = "v" + std::to_string(round) + (generator.pick(2) ? "\"$q" : "");
      if (kind == 1) get.withoutValue.insert(key);
      get.order.push_back(key);
    }
    std::shuffle(get.order.begin(), get.order.end(), std::mt19937(static_cast<unsigned>(round)));

    std::string expected;
    std::set<std::string> rewritten;
    for (const ConfigFileGenerator::Line& line : lines) {
      std::string text = line.text;
      const auto found = get.values.find(line.key);
      if (!line.key.empty() && found != get.values.end()) {
        text.replace(line.valueBegin, line.valueLength, "\"" + found->second + "\"");
        rewritten.insert(line.key);
      }
      expected += text + "\n";
    }
    for (const std::string& key : get.order) {
      const auto found = get.values.find(key);
      if (found != get.values.end() && rewritten.count(key) == 0)
        expected += MBQ::toUpper(key) + "=\"" + found->second + "\"\n";
    }
    ASSERT_EQ(expected, writeMerged(get, old)) << "round " << round << ", old text:\n" << old;
  }
}

// Produces `prefix`, then `size` bytes 'a' and a newline, without holding the long line.
class LongLineBuffer : public std::streambuf {
 public:
  LongLineBuffer(const std::string& prefix, std::size_t size) : prefix_(prefix), left_(size + 1) {
    std::memset(chunk_, 'a', sizeof chunk_);
    setg(&prefix_[0], &prefix_[0], &prefix_[0] + prefix_.size());
  }

 protected:
  int_type underflow() override {
    if (left_ == 0) return traits_type::eof();
    const std::size_t size = std::min(left_, sizeof chunk_);
    left_ -= size;
    if (left_ == 0) chunk_[size - 1] = '\n';
    setg(chunk_, chunk_, chunk_ + size);
    return traits_type::to_int_type(chunk_[0]);
  }

 private:
  std::string prefix_;
  std::size_t left_;  // bytes still to come, the newline included
  char chunk_[1 << 16];
};

bool sanitized() {
#if defined(__SANITIZE_ADDRESS__)
  return true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
  return true;
#endif
#endif
  return false;
}

// Limits the process's address space so that a line of `kLongLine` bytes still fits in the
// stream's string (which peaks at 1.5 times its size while growing) but not a second time in
// the line buffer.
constexpr std::size_t kLongLine = 15 * (std::size_t{1} << 22) - 64;

void limitMemoryForOneLongLine() {
  std::ifstream statm("/proc/self/statm");
  unsigned long pages = 0;
  statm >> pages;
  const rlim_t limit = pages * static_cast<unsigned long>(sysconf(_SC_PAGESIZE)) + kLongLine / 4 * 7;
  const rlimit rl = {limit, limit};
  setrlimit(RLIMIT_AS, &rl);
}

TEST(KTRBashParserDeathTest, ALineThatDoesNotFitInMemoryFailsTheReadAndTheWrite) {
  if (sanitized()) GTEST_SKIP() << "address space limits do not work under the sanitizers";
  EXPECT_EXIT(
      {
        limitMemoryForOneLongLine();
        LongLineBuffer lines("A=1\n", kLongLine);
        std::istream in(&lines);
        RecordingPut put;
        const int result = parseBashLikeConfig(put, in);
        const bool reported = MBQ::getErrorMessage().find("can't allocate") != std::string::npos;
        std::exit(result == -1 && reported && put.puts.size() == 1 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        limitMemoryForOneLongLine();
        LongLineBuffer lines("# kept\n", kLongLine);
        std::istream old(&lines);
        std::ostringstream out;
        ScriptedGet get;
        std::exit(serializeBashLikeConfig(get, out, &old, true) == -1 && out.str() == "# kept\n" ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace KTR
