#include "ktrctlEdit.h"

#include <cstdio>
#include <set>

#include "KTRFunctionality/KTRBashParser.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"

namespace ktrctl {

namespace {

struct Line {
  std::string text;
  bool ended;  // followed by a newline
};

std::vector<Line> splitLines(const std::string& text) {
  std::vector<Line> lines;
  std::string::size_type begin = 0;
  while (begin < text.size()) {
    std::string::size_type end = text.find('\n', begin);
    if (end == std::string::npos) {
      lines.push_back({text.substr(begin), false});
      break;
    }
    lines.push_back({text.substr(begin, end - begin), true});
    begin = end + 1;
  }
  return lines;
}

void printLine(char mark, const Line& line) {
  std::printf("%c%s\n", mark, line.text.c_str());
  if (!line.ended) std::printf("\\ No newline at end of file\n");
}

bool same(const Line& a, const Line& b) { return a.text == b.text && a.ended == b.ended; }

}  // namespace

int parseAssignments(const Args& items, std::vector<KTR::KTRNamedValue>& changes) {
  if (items.empty()) return fail("set needs at least one KEY=VALUE");
  std::set<std::string> seen;
  for (const std::string& item : items) {
    std::string key, value;
    if (KTR::splitAssignment(item, key, value) != 0) return fail(MBQ::getErrorMessage());
    if (!KTR::isShellName(key)) return fail("'" + key + "' is not a key name (letters, digits and _)");
    if (!seen.insert(MBQ::toLower(key)).second) return fail(key + " is given twice");
    if (!KTR::isWritableValue(value))
      return fail("the value of " + key + " holds a line break or NUL byte, which the file cannot hold");
    changes.push_back({key, value});
  }
  return kOk;
}

int beginEdit(const Options& options, const std::string& path, KTR::KTRConfigFileEdit& edit) {
  if (edit.begin(path, options.waitMilliseconds) != 0) return fail(MBQ::getErrorMessage());
  return kOk;
}

void printDiff(const std::string& path, const std::string& oldText, const std::string& newText) {
  if (oldText == newText) return;
  const std::vector<Line> oldLines = splitLines(oldText);
  const std::vector<Line> newLines = splitLines(newText);
  std::printf("--- %s\n+++ %s\n", path.c_str(), path.c_str());
  const std::size_t common = std::min(oldLines.size(), newLines.size());
  std::size_t i = 0;
  while (i < common) {
    if (same(oldLines[i], newLines[i])) {
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < common && !same(oldLines[end], newLines[end])) ++end;
    std::printf("@@ -%zu,%zu +%zu,%zu @@\n", i + 1, end - i, i + 1, end - i);
    for (std::size_t k = i; k < end; ++k) printLine('-', oldLines[k]);
    for (std::size_t k = i; k < end; ++k) printLine('+', newLines[k]);
    i = end;
  }
  if (oldLines.size() > common) {
    std::printf("@@ -%zu,%zu +%zu,0 @@\n", common + 1, oldLines.size() - common, common);
    for (std::size_t k = common; k < oldLines.size(); ++k) printLine('-', oldLines[k]);
  } else if (newLines.size() > common) {
    std::printf("@@ -%zu,0 +%zu,%zu @@\n", common, common + 1, newLines.size() - common);
    for (std::size_t k = common; k < newLines.size(); ++k) printLine('+', newLines[k]);
  }
}

}  // namespace ktrctl
