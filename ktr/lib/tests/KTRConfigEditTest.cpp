#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "MBQCore/MBQError.h"

namespace KTR {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::string::size_type begin = 0;
  while (begin < text.size()) {
    std::string::size_type end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

TEST(KTRConfigEditTest, RewritesOnlyTheNamedKeysLines) {
  const struct {
    const char* name;
    const char* old;
    std::vector<KTRNamedValue> changes;
    KTRAppendedKeys appended;
    const char* expected;
  } cases[] = {
      {"in place, quotes and comment kept around it", "# c\nA='x'  # note\nB=2\n", {{"a", "y"}},
       KTRAppendedKeys::kUpperCase, "# c\nA=\"y\"  # note\nB=2\n"},
      {"appended upper case", "B=2\n", {{"new", "v"}}, KTRAppendedKeys::kUpperCase, "B=2\nNEW=\"v\"\n"},
      {"appended as given", "B=2\n", {{"new", "v"}}, KTRAppendedKeys::kAsGiven, "B=2\nnew=\"v\"\n"},
      {"escapes what bash would expand", "", {{"A", "$x `y` \"z\" \\w"}}, KTRAppendedKeys::kAsGiven,
       "A=\"\\$x \\`y\\` \\\"z\\\" \\\\w\"\n"},
      {"the container-id placeholder stays", "", {{"R", "/r/$VEID $VEIDX"}}, KTRAppendedKeys::kAsGiven,
       "R=\"/r/$VEID \\$VEIDX\"\n"},
      {"no final newline kept", "A=1\nB=2", {{"A", "3"}}, KTRAppendedKeys::kAsGiven, "A=\"3\"\nB=2"},
      {"no final newline, key appended", "A=1", {{"B", "2"}}, KTRAppendedKeys::kAsGiven, "A=1\nB=\"2\"\n"},
      {"empty value clears", "A=1\n", {{"A", ""}}, KTRAppendedKeys::kAsGiven, "A=\"\"\n"},
  };
  for (const auto& c : cases) {
    std::string text = "unchanged";
    ASSERT_EQ(0, setAssignments(c.old, c.changes, c.appended, text)) << c.name << ": " << MBQ::getErrorMessage();
    EXPECT_EQ(c.expected, text) << c.name;
  }
}

TEST(KTRConfigEditTest, RefusesWhatItCannotWriteSafely) {
  const struct {
    const char* name;
    const char* old;
    std::vector<KTRNamedValue> changes;
    KTRAppendedKeys appended;
    const char* message;
  } cases[] = {
      {"not a name", "", {{"A B", "1"}}, KTRAppendedKeys::kAsGiven, "is not a key name"},
      {"command in name", "", {{"x;touch y;z", "1"}}, KTRAppendedKeys::kAsGiven, "is not a key name"},
      {"given twice", "", {{"A", "1"}, {"a", "2"}}, KTRAppendedKeys::kUpperCase, "given twice"},
      {"newline", "", {{"A", "1\n2"}}, KTRAppendedKeys::kAsGiven, "line break or NUL"},
      {"NUL", "", {{"A", std::string("1\0", 2)}}, KTRAppendedKeys::kAsGiven, "line break or NUL"},
      {"DOS line ends", "A=1\r\n", {{"B", "1"}}, KTRAppendedKeys::kAsGiven, "line 1 ends in a carriage return"},
      {"open quote", "B=1\nA=\"x\n", {{"B", "1"}}, KTRAppendedKeys::kAsGiven, "line 2: the value is not closed"},
      {"assigned by a command", "A=$(date)\n", {{"A", "1"}}, KTRAppendedKeys::kAsGiven, "line 1 assigns A"},
      {"assigned by export", "export A=1\n", {{"A", "1"}}, KTRAppendedKeys::kAsGiven, "line 1 assigns A"},
      {"assigned by declare", "B=1\n  local -r  A=1\n", {{"A", "1"}}, KTRAppendedKeys::kAsGiven, "line 2 assigns A"},
      {"appended to", "A=1\nA+=2\n", {{"A", "1"}}, KTRAppendedKeys::kAsGiven, "line 2 assigns A"},
      {"other spelling", "Path=1\n", {{"PATH", "2"}}, KTRAppendedKeys::kAsGiven, "line 1 spells PATH as Path"},
  };
  for (const auto& c : cases) {
    std::string text = "unchanged";
    EXPECT_EQ(-1, setAssignments(c.old, c.changes, c.appended, text)) << c.name;
    EXPECT_EQ("unchanged", text) << c.name;
    EXPECT_NE(std::string::npos, MBQ::getErrorMessage().find(c.message)) << c.name << ": " << MBQ::getErrorMessage();
  }
}

TEST(KTRConfigEditTest, FindsTheAssignmentBashUses) {
  KTRConfigText scan;
  scanConfigText("A=1\nB='x y'\na=\"2\"\nC=$(cmd)\nC=3\nD=4\nD=`cmd`\n", scan);
  const KTRAssignmentLine* found = nullptr;
  ASSERT_EQ(0, findAssignment(scan, "A", found));
  EXPECT_EQ(3u, found->line);  // the last assignment wins, whatever its case
  EXPECT_EQ("2", found->value);
  ASSERT_EQ(0, findAssignment(scan, "c", found));  // an unreadable line before the last one is harmless
  EXPECT_EQ("3", found->value);
  EXPECT_EQ(-1, findAssignment(scan, "D", found));
  EXPECT_EQ(kKeyWithoutValue, findAssignment(scan, "E", found));
}

// Property: over generated files, setting one key changes that key's lines and no other, and
// what the file then assigns to the key is the value set; files with DOS line ends, or that
// assign the key through a command, are refused.
TEST(KTRConfigEditTest, GeneratedFilesChangeOnlyTheKeySet) {
  std::mt19937 random(20261124);
  const std::vector<std::string> shapes = {
      "# comment $(not run)",
      "",
      "   ",
      "KEY=\"value with spaces\"",
      "KEY='single \"quoted\"'",
      "KEY=plain",
      "KEY=\"a\"  # trailing comment",
      "NETIF=\"ifname=eth0,mac=02:00:00:00:00:01,note=uplink,ip=10.0.0.5/24\"",
      "KEY=$(command)",
      "echo hello",
      "KEY=",
      "\tKEY=\"tabbed\"",
      "KEY=\"dos\"\r",
  };
  const std::vector<std::string> keys = {"A", "B", "HOSTNAME", "NETIF", "X_1"};
  const std::vector<std::string> values = {"", "v", "a b", "$HOME", "`id`", "\"", "\\", "'", "é", "#x", "$VEID"};
  for (int round = 0; round < 400; ++round) {
    std::string text;
    const int count = static_cast<int>(random() % 12);
    for (int i = 0; i < count; ++i) {
      std::string line = shapes[random() % shapes.size()];
      std::string::size_type at = line.find("KEY");
      if (at != std::string::npos) line.replace(at, 3, keys[random() % keys.size()]);
      text += line + "\n";
    }
    if (random() % 4 == 0 && !text.empty()) text.pop_back();  // no final newline
    const std::string key = keys[random() % keys.size()];
    const std::string value = values[random() % values.size()] + values[random() % values.size()];
    KTRConfigText before;
    scanConfigText(text, before);
    std::string changed;
    const int rc = setAssignments(text, {{key, value}}, KTRAppendedKeys::kAsGiven, changed);
    bool refused = before.carriageReturnLine != 0;
    for (const KTRAssignmentLine& line : before.unreadable) refused |= line.name == key;
    if (refused) {
      EXPECT_EQ(-1, rc) << text;
      continue;
    }
    ASSERT_EQ(0, rc) << text << MBQ::getErrorMessage();
    const std::vector<std::string> oldLines = linesOf(text);
    const std::vector<std::string> newLines = linesOf(changed);
    ASSERT_GE(newLines.size(), oldLines.size());
    for (std::size_t i = 0; i < oldLines.size(); ++i) {
      bool ofKey = false;
      for (const KTRAssignmentLine& line : before.assignments) ofKey |= line.line == i + 1 && line.name == key;
      if (!ofKey) {
        EXPECT_EQ(oldLines[i], newLines[i]) << "line " << i + 1 << " of\n" << text;
      }
    }
    KTRConfigText after;
    scanConfigText(changed, after);
    const KTRAssignmentLine* found = nullptr;
    ASSERT_EQ(0, findAssignment(after, key, found)) << changed;
    EXPECT_EQ(value, found->value) << changed;
  }
}

}  // namespace
}  // namespace KTR
