#include "ktrctlGet.h"

#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTREnvConfigKeys.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "ktrctlFiles.h"
#include "ktrctlRecords.h"

namespace ktrctl {

extern const char* const kDefaultResourceKeys[];  // generated from the default vocabulary

namespace {

// The keys of a container file: the fixed ones and the vocabulary's resources. The built-in
// vocabulary's are known without loading it; another vocabulary is read through the records.
int containerKeys(const Options& options, std::set<std::string>& keys) {
  for (const char* key : KTR::kEnvConfigFixedKeys) keys.insert(key);
  if (options.vocabularyPath.empty()) {
    for (const char* const* key = kDefaultResourceKeys; *key != nullptr; ++key) keys.insert(*key);
    return kOk;
  }
  std::unique_ptr<RecordCommands> records = loadRecordCommands(options);
  if (!records) return kError;
  std::vector<std::string> resources;
  if (int rc = records->resourceKeys(resources)) return rc;
  keys.insert(resources.begin(), resources.end());
  return kOk;
}

int getFile(const std::string& kind, const std::set<std::string>& known, const Args& files, const std::string& path,
            const Args& keys) {
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  KTR::KTRConfigText scan;
  KTR::scanConfigText(text, scan);
  if (KTR::checkConfigText(scan) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  const bool container = kind == "container";
  Args names = keys;
  if (names.empty()) {
    std::set<std::string> seen;
    for (const KTR::KTRAssignmentLine& line : scan.assignments) {
      const std::string key = MBQ::toLower(line.name);
      if ((!container || known.count(key) != 0) && seen.insert(key).second) names.push_back(line.name);
    }
  }
  std::vector<const KTR::KTRAssignmentLine*> found;
  int status = kOk;
  for (const std::string& name : names) {
    if (container && known.count(MBQ::toLower(name)) == 0)
      return fail(path + ": unknown key " + MBQ::toUpper(name) + " (raw get reads any key)");
    const KTR::KTRAssignmentLine* line = nullptr;
    // The agent's reader of the global file keeps a key's first value, where bash keeps the last.
    const int rc =
        kind == "global" ? KTR::findGlobalAssignment(scan, name, line) : KTR::findAssignment(scan, name, line);
    if (rc == KTR::kKeyWithoutValue) {
      status = kNegative;
      continue;
    }
    if (rc != 0) return fail(path + ": " + MBQ::getErrorMessage());
    found.push_back(line);
  }
  const std::string prefix = linePrefix(files, path);
  for (const KTR::KTRAssignmentLine* line : found)
    printAssignment(container ? MBQ::toUpper(line->name) : line->name, line->value, prefix);
  return status;
}

}  // namespace

int getCommand(const Options& options, const std::string& kind, const Args& files, const Args& keys) {
  // A path given without -- before it would otherwise pass for a key that is never set.
  for (const std::string& key : keys)
    if (!KTR::isShellName(key)) return fail("'" + key + "' is not a key name (letters, digits and _)");
  std::set<std::string> known;
  if (kind == "container") {
    if (int rc = containerKeys(options, known)) return rc;
  }
  int worst = kOk;
  for (const std::string& file : files) {
    const int rc = getFile(kind, known, files, file, keys);
    if (rc > worst) worst = rc;
  }
  return worst;
}

}  // namespace ktrctl
