#include "ktrctlCheck.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "ktrctlFiles.h"
#include "ktrctlRecords.h"

namespace ktrctl {

namespace {

struct Line {
  unsigned long number;
  std::string what;
};

// The line of the last assignment of `key` (lower case), or 1 when the file has none: a
// finding about the file as a whole is put on its first line.
unsigned long lineOf(const KTR::KTRConfigText& scan, const std::string& key) {
  unsigned long number = 0;
  for (const KTR::KTRAssignmentLine& line : scan.assignments)
    if (MBQ::toLower(line.name) == key) number = line.line;
  return number == 0 ? 1 : number;
}

void checkLines(const KTR::KTRConfigText& scan, std::vector<Line>& findings) {
  for (unsigned long number : scan.otherLines) findings.push_back({number, "not a readable assignment"});
  std::map<std::string, unsigned long> first;
  for (const KTR::KTRAssignmentLine& line : scan.assignments) {
    auto inserted = first.emplace(MBQ::toLower(line.name), line.line);
    if (!inserted.second)
      findings.push_back({line.line, line.name + " is assigned again (first on line " +
                                         std::to_string(inserted.first->second) + ")"});
  }
}

}  // namespace

int checkCommand(const Options& options, const Args& files) {
  std::unique_ptr<RecordCommands> records = loadRecordCommands(options);
  if (!records) return kError;
  int status = kOk;
  std::vector<std::vector<Line>> findings(files.size());
  // (kind, value) -> the file and line that hold it first.
  std::map<std::pair<std::string, std::string>, std::pair<std::size_t, unsigned long>> holders;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const std::string& path = files[i];
    std::string text;
    if (KTR::readConfigFile(path, text) != 0) {
      fail(MBQ::getErrorMessage());
      status = kError;
      continue;
    }
    KTR::KTRConfigText scan;
    KTR::scanConfigText(text, scan);
    checkLines(scan, findings[i]);
    FileReport report;
    if (records->inspect(path, text, report) != kOk) {
      findings[i].push_back({1, "cannot be read as a container: " + report.validationError});
      continue;
    }
    for (const auto& [key, misread] : report.misread)
      findings[i].push_back({lineOf(scan, key), MBQ::toUpper(key) + ": " + misread});
    if (report.validation == kError)
      findings[i].push_back({1, "resource values cannot be validated: " + report.validationError});
    for (const Finding& violation : report.violations) {
      const std::string first = violation.names.empty() ? "" : MBQ::toLower(violation.names.front());
      findings[i].push_back({lineOf(scan, first), "formula " + violation.text});
    }
    std::map<std::pair<std::string, std::string>, bool> own;  // a value held twice by one container is no conflict
    for (const Identity& identity : report.identities) {
      const auto value = std::make_pair(identity.kind, identity.value);
      if (!own.emplace(value, true).second) continue;
      const unsigned long number = lineOf(scan, identity.key);
      auto holder = holders.emplace(value, std::make_pair(i, number));
      if (holder.second) continue;
      findings[i].push_back({number, identity.kind + " " + identity.value + " is also used by " +
                                         files[holder.first->second.first] + ":" +
                                         std::to_string(holder.first->second.second)});
    }
  }
  bool any = false;
  for (std::size_t i = 0; i < files.size(); ++i) {
    std::stable_sort(findings[i].begin(), findings[i].end(),
                     [](const Line& a, const Line& b) { return a.number < b.number; });
    for (const Line& line : findings[i]) std::printf("%s:%lu: %s\n", files[i].c_str(), line.number, line.what.c_str());
    any = any || !findings[i].empty();
  }
  if (status == kError) return kError;
  return any ? kNegative : kOk;
}

int validateCommand(const Options& options, const Args& files) {
  std::unique_ptr<RecordCommands> records = loadRecordCommands(options);
  if (!records) return kError;
  int worst = kOk;
  for (const std::string& path : files) {
    std::string text;
    if (KTR::readConfigFile(path, text) != 0) {
      worst = fail(MBQ::getErrorMessage());
      continue;
    }
    std::vector<Finding> findings;
    const int rc = records->validate(path, text, findings);
    for (const Finding& finding : findings) std::printf("%s%s\n", linePrefix(files, path).c_str(), finding.text.c_str());
    worst = std::max(worst, rc);
  }
  return worst;
}

}  // namespace ktrctl
