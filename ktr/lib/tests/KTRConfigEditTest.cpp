#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRConfigEdit.h"
#include "MBQCore/MBQError.h"
#include "KTRRecordTesting.h"

namespace KTR {
namespace {

using testing::linesOf;

// The text is left as it was, and the message says why.
TEST(KTRConfigEditTest, RefusesBadNamesRepeatedKeysAndLineBreaks) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "edits")) {
    std::vector<KTRNamedValue> changes;
    for (std::size_t i = 3; i + 1 < c.size(); i += 2) changes.push_back({c[i], c[i + 1]});
    const auto appended = c.at(0) == "upper" ? KTRAppendedKeys::kUpperCase : KTRAppendedKeys::kAsGiven;
    std::string text = "unchanged";
    EXPECT_EQ(-1, setAssignments(c.at(1), changes, appended, text)) << c.at(2);
    EXPECT_EQ("unchanged", text) << c.at(2);
    EXPECT_NE(std::string::npos, MBQ::getErrorMessage().find(c.at(2))) << MBQ::getErrorMessage();
  }
}

// Property: over generated files, setting one key changes that key's lines and no other, and
// what the file then assigns to the key is the value set; files with DOS line ends, or that
// assign the key through a command, are refused.
TEST(KTRConfigEditTest, GeneratedFilesChangeOnlyTheKeySet) {
  std::mt19937 random(20261124);
  const std::vector<std::string> shapes = {
      "# comment $(not run)", "", "   ", "KEY=\"value with spaces\"", "KEY='single \"quoted\"'", "KEY=plain",
      "KEY=\"a\"  # trailing comment", "NETIF=\"ifname=eth0,mac=02:00:00:00:00:01,note=uplink,ip=10.0.0.5/24\"",
      "KEY=$(command)", "echo hello", "KEY=", "\tKEY=\"tabbed\"", "KEY=\"dos\"\r"};
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
