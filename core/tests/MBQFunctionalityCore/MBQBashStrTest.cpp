#include "MBQFunctionalityCore/MBQBashStr.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQCore/MBQError.h"

namespace MBQ {
namespace {

struct Parsed {
  int result = -99;
  std::string name;
  std::string value;
  unsigned long begin = 77;  // both positions stay as they are unless the line is accepted
  unsigned long end = 88;
};

// parseBashStr on `text`, checked to leave the line, name, value and positions untouched unless it
// accepts, and to give the same without the optional positions.
Parsed parse(const std::string& text) {
  std::string line = text;
  std::string copy = text;
  char* name = nullptr;
  char* value = nullptr;
  Parsed parsed;
  parsed.result = parseBashStr(&line[0], &name, &value, &parsed.begin, &parsed.end);
  if (parsed.result == kBashStrAssignment) {
    parsed.name = name;
    parsed.value = value;
  } else {
    EXPECT_EQ(text, line);
    EXPECT_EQ(nullptr, name) << text;
    EXPECT_EQ(nullptr, value) << text;
    EXPECT_EQ(77u, parsed.begin) << text;
    EXPECT_EQ(88u, parsed.end) << text;
  }
  EXPECT_EQ(parsed.result, parseBashStr(&copy[0], &name, &value, nullptr, nullptr)) << text;
  if (parsed.result == kBashStrAssignment) {
    EXPECT_EQ(parsed.value, value) << text;
  }
  return parsed;
}

TEST(MBQBashStrTest, ReadsLinesAsBashWould) {
  const std::map<std::string, int> results = {{"assignment", kBashStrAssignment}, {"skip", kBashStrSkip},
                                              {"open", kBashStrOpenQuote}, {"refused", kBashStrNotAssignment}};
  for (const auto& c : test::caseRows(__FILE__, "lines")) {
    clearErrorMessage();
    const Parsed parsed = parse(c.at(1));
    ASSERT_EQ(results.at(c[0]), parsed.result) << c[1];
    if (c[0] == "open") { EXPECT_NE(std::string::npos, getErrorMessage().find("A")) << c[1]; }
    if (c[0] != "assignment") continue;
    EXPECT_EQ(c.at(2), parsed.name) << c[1];
    EXPECT_EQ(c.at(3), parsed.value) << c[1];
    EXPECT_EQ(std::stoul(c.at(4)), parsed.begin) << c[1];
    EXPECT_EQ(std::stoul(c.at(5)), parsed.end) << c[1];
  }
}

// Assignment lines in every accepted form, with the value bash assigns for each.
class AssignmentGenerator {
 public:
  explicit AssignmentGenerator(unsigned seed) : random_(seed) {}

  struct Line {
    std::string text;
    std::string name;
    std::string value;
    std::string written;  // the value as written, quotes included
  };

  Line next(int index) {
    Line line;
    line.name = std::string(pick(2) ? "kq" : "KQ") + pickFrom(kNameChars, 4) + "_" + std::to_string(index);
    const int parts = pick(8) == 0 ? 0 : 1 + pick(6);
    for (int i = 0; i < parts; ++i) addPart(line, i == parts - 1);
    line.text = blanks(3) + line.name + "=" + line.written;
    if (pick(3) == 0) {
      line.text += " " + blanks(2);
      if (pick(2)) line.text += "#" + bytesExcept("\n", 12);
    }
    return line;
  }

 private:
  static constexpr const char* kNameChars = "abcXYZ_019";
  static constexpr const char* kPlainExtras = "#*?[]{},!@%^+-.:=/\r\x01\x7f\x80\xc3\xa9\xff";
  static constexpr const char* kDollarFollowers = "%+,./:=]^}";

  int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

  std::string pickFrom(const char* pool, int maxCount) {
    std::string text;
    const std::string chars = pool;
    for (int n = pick(maxCount + 1); n > 0; --n) text += chars[static_cast<std::size_t>(pick(static_cast<int>(chars.size())))];
    return text;
  }

  std::string blanks(int maxCount) { return pickFrom(" \t", maxCount); }

  char byteExcept(const std::string& excluded) {
    for (;;) {
      const char c = static_cast<char>(1 + pick(255));
      if (excluded.find(c) == std::string::npos) return c;
    }
  }

  std::string bytesExcept(const std::string& excluded, int maxCount) {
    std::string text;
    for (int n = pick(maxCount + 1); n > 0; --n) text += pick(3) == 0 ? std::string(1, byteExcept(excluded)) : pickFrom("abc XYZ", 1);
    return text;
  }

  void addPart(Line& line, bool last) {
    switch (pick(6)) {
      case 0: {  // plain bytes
        std::string text = pickFrom("abcdefXYZ0123456789_", 4) + pickFrom(kPlainExtras, 2);
        if (text.empty()) text = "p";
        line.written += text;
        line.value += text;
        break;
      }
      case 1: {  // a backslash before any byte
        const char c = byteExcept("\n");
        line.written += std::string("\\") + c;
        line.value += c;
        break;
      }
      case 2: {  // a dollar sign that stays one, or the container id placeholder
        const std::string follower = pick(4) == 0 ? std::string("VEID/")
                                     : last && pick(2) ? ""
                                                       : std::string(1, kDollarFollowers[pick(10)]);
        line.written += "$" + follower;
        line.value += "$" + follower;
        break;
      }
      case 3: {  // single quotes
        const std::string text = bytesExcept("'\n", 8);
        line.written += "'" + text + "'";
        line.value += text;
        break;
      }
      default: {  // double quotes
        std::string written = "\"";
        for (int n = pick(8); n > 0; --n) {
          switch (pick(5)) {
            case 0: {
              const char c = "\"\\$`"[pick(4)];
              written += std::string("\\") + c;
              line.value += c;
              break;
            }
            case 1: {
              const char c = byteExcept("\n\"\\$`\x01\x7f");
              written += std::string("\\") + c;
              line.value += std::string("\\") + c;
              break;
            }
            case 2: {
              const std::string follower = std::string(1, " \t%+,./:=]^}~"[pick(13)]);
              written += "$" + follower;
              line.value += "$" + follower;
              break;
            }
            default: {
              const std::string text = bytesExcept("\n\"\\$`", 6);
              written += text;
              line.value += text;
            }
          }
        }
        if (pick(4) == 0) {  // a dollar sign right before the closing quote
          written += "$";
          line.value += "$";
        }
        line.written += written + "\"";
      }
    }
  }

  std::mt19937 random_;
};

std::string bashPath() {
  for (const char* path : {"/bin/bash", "/usr/bin/bash"})
    if (access(path, X_OK) == 0) return path;
  return "";
}

// Runs `script` with bash in a clean environment and returns the NUL-ended values it printed.
std::vector<std::string> runBash(const std::string& bash, const std::string& script, const std::string& locale,
                                 const test::TempDir& dir) {
  std::ofstream(dir.file("script"), std::ios::binary) << script;
  // The files' container id placeholder stands for itself, as the library reads it.
  const std::string command = "env -i LC_ALL=" + locale + " VEID='$VEID' " + bash + " --norc --noprofile " +
                              dir.file("script") + " > " + dir.file("out");
  EXPECT_NE(-1, std::system(command.c_str()));
  std::ifstream out(dir.file("out"), std::ios::binary);
  std::vector<std::string> values;
  for (std::string value; std::getline(out, value, '\0') && !out.eof();) values.push_back(value);
  return values;
}

TEST(MBQBashStrTest, AgreesWithBashOnGeneratedAssignments) {
  AssignmentGenerator generator(20240611);
  std::vector<AssignmentGenerator::Line> lines;
  std::string script;
  for (int i = 0; i < 3000; ++i) {
    const AssignmentGenerator::Line& line = lines.emplace_back(generator.next(i));
    script += line.text + "\nprintf '%s\\0' \"$" + line.name + "\"\n";
    const Parsed parsed = parse(line.text);
    const std::string shown = ::testing::PrintToString(line.text);
    ASSERT_EQ(kBashStrAssignment, parsed.result) << shown;
    ASSERT_EQ(line.value, parsed.value) << shown;
    ASSERT_EQ(line.name, parsed.name) << shown;
    const std::string::size_type begin = line.text.find('=') + 1;
    ASSERT_EQ(begin, parsed.begin) << shown;
    ASSERT_EQ(begin + line.written.size() - 1, parsed.end) << shown;
  }
  const std::string bash = bashPath();
  if (bash.empty()) GTEST_SKIP() << "no bash to compare the values with";
  const test::TempDir dir;
  for (const char* locale : {"C", "C.UTF-8"}) {
    const std::vector<std::string> assigned = runBash(bash, script, locale, dir);
    ASSERT_EQ(lines.size(), assigned.size()) << locale;
    for (std::size_t i = 0; i < lines.size(); ++i)
      ASSERT_EQ(assigned[i], lines[i].value) << locale << ": " << ::testing::PrintToString(lines[i].text);
  }
}

TEST(MBQBashStrTest, RefusesValuesBashReadsDifferently) {
  std::vector<std::string> values;
  for (const auto& row : test::caseRows(__FILE__, "bash-differs")) values.insert(values.end(), row.begin(), row.end());
  for (const std::string& value : values) EXPECT_EQ(kBashStrNotAssignment, parse("A=" + value).result) << value;

  const std::string bash = bashPath();
  if (bash.empty()) GTEST_SKIP() << "no bash to compare with";
  const test::TempDir dir;
  for (const std::string& value : values) {
    const std::string line = "A=" + value;
    const std::string script = "exec 2>/dev/null; x=X; HOME=/h; set -- p1 p2; cd " + dir.path() + " || exit 1\n" +
                               line + "\nprintf '%s\\0' \"${A-unset}\"\n";
    const std::vector<std::string> assigned = runBash(bash, script, "C", dir);
    ASSERT_EQ(1u, assigned.size()) << line;
    std::string unquoted;
    for (const char c : value)
      if (c != '"' && c != '\'') unquoted += c;
    EXPECT_NE(value, assigned[0]) << line;
    EXPECT_NE(unquoted, assigned[0]) << line;
  }
}

TEST(MBQBashStrDeathTest, NullArgumentsAreProgrammingErrors) {
  char line[] = "A=b";
  char* name = nullptr;
  char* value = nullptr;
  EXPECT_DEATH(parseBashStr(nullptr, &name, &value, nullptr, nullptr), "assertion failed");
  EXPECT_DEATH(parseBashStr(line, nullptr, &value, nullptr, nullptr), "assertion failed");
  EXPECT_DEATH(parseBashStr(line, &name, nullptr, nullptr, nullptr), "assertion failed");
}

}  // namespace
}  // namespace MBQ
