#include "ktrctlShellFile.h"

#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTRHQConfigBashParser.h"
#include "KTRFunctionality/KTRRawConfigBashParser.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "ktrctlEdit.h"

namespace ktrctl {

namespace {

int getValues(const std::string& path, const Args& keys) {
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  KTR::KTRConfigText scan;
  KTR::scanConfigText(text, scan);
  if (KTR::checkConfigText(scan) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  Args names = keys;
  if (names.empty()) {
    std::set<std::string> seen;
    for (const KTR::KTRAssignmentLine& line : scan.assignments)
      if (seen.insert(MBQ::toLower(line.name)).second) names.push_back(line.name);
  }
  std::vector<const KTR::KTRAssignmentLine*> found;
  int status = kOk;
  for (const std::string& name : names) {
    const KTR::KTRAssignmentLine* line = nullptr;
    const int rc = KTR::findAssignment(scan, name, line);
    if (rc == KTR::kKeyWithoutValue) {
      status = kNegative;
      continue;
    }
    if (rc != 0) return fail(path + ": " + MBQ::getErrorMessage());
    found.push_back(line);
  }
  for (const KTR::KTRAssignmentLine* line : found) printAssignment(line->name, line->value);
  return status;
}

// The agent must still be able to read what is written.
int checkReadable(const std::string& kind, const std::string& path, const std::string& text) {
  std::istringstream in(text);
  int rc = 0;
  if (kind == "global") {
    KTR::KTRVtSettings settings;
    rc = KTR::KTRHQConfigBashParser::getInstance()->getConfig(in, settings);
  } else {
    std::map<std::string, std::string> values;
    rc = KTR::KTRRawConfigBashParser::getInstance()->getConfig(in, values);
  }
  if (rc != 0) return fail(path + ": the new text does not read back: " + MBQ::getErrorMessage());
  return kOk;
}

int setValues(const Options& options, const std::string& kind, const std::string& path, const Args& items) {
  std::vector<KTR::KTRNamedValue> changes;
  if (int rc = parseAssignments(items, changes)) return rc;
  KTR::KTRConfigFileEdit edit;
  if (int rc = beginEdit(options, path, edit)) return rc;
  std::string newText;
  const KTR::KTRAppendedKeys appended =
      kind == "global" ? KTR::KTRAppendedKeys::kUpperCase : KTR::KTRAppendedKeys::kAsGiven;
  if (KTR::setAssignments(edit.text(), changes, appended, newText) != 0)
    return fail(path + ": " + MBQ::getErrorMessage());
  if (int rc = checkReadable(kind, path, newText)) return rc;
  return finishEdit(options, path, edit, newText);
}

}  // namespace

int shellFileCommand(const Options& options, const std::string& kind, const Args& args) {
  if (args.size() < 2 || (args[0] != "get" && args[0] != "set"))
    return fail("usage: ktrctl " + kind + " get FILE [KEY...] | " + kind + " set FILE KEY=VALUE...");
  const std::string& path = args[1];
  const Args rest(args.begin() + 2, args.end());
  return args[0] == "get" ? getValues(path, rest) : setValues(options, kind, path, rest);
}

}  // namespace ktrctl
