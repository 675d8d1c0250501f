#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "MBQCore/MBQError.h"
#include "KTRRecordTesting.h"

namespace KTR {
namespace {

using testing::linesOf;

TEST(KTRConfigEditTest, RewritesOnlyTheNamedKeysLinesOrRefuses) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "edits")) {
    const std::string& expected = c.at(2);
    std::vector<KTRNamedValue> changes;
    for (std::size_t i = 3; i + 1 < c.size(); i += 2) changes.push_back({c[i], c[i + 1]});
    const auto appended = c.at(0) == "upper" ? KTRAppendedKeys::kUpperCase : KTRAppendedKeys::kAsGiven;
    const bool refused = expected.rfind("refused:", 0) == 0;
    std::string text = "unchanged";
    ASSERT_EQ(refused ? -1 : 0, setAssignments(c.at(1), changes, appended, text)) << expected << MBQ::getErrorMessage();
    if (!refused) {
      EXPECT_EQ(expected, text);
    } else {
      EXPECT_EQ("unchanged", text) << expected;
      EXPECT_NE(std::string::npos, MBQ::getErrorMessage().find(expected.substr(8))) << MBQ::getErrorMessage();
    }
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
