#include "ktrctlSet.h"

#include <sys/resource.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRConfigEdit.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "MBQCore/MBQError.h"
#include "ktrctlEdit.h"
#include "ktrctlRecords.h"

namespace ktrctl {

namespace {

using Planner = std::function<int(const std::string& path, const std::string& text, std::string& newText)>;

struct FilePlan {
  std::string path;
  std::string text;     // as read and checked
  std::string newText;  // what it becomes
  bool failed = false;
};

// How many files may be locked at once: each holds one descriptor until it is replaced.
std::size_t lockBudget() {
  struct rlimit limit;
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return 256;
  if (limit.rlim_cur < limit.rlim_max) {
    limit.rlim_cur = limit.rlim_max == RLIM_INFINITY ? 65536 : limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    ::getrlimit(RLIMIT_NOFILE, &limit);
  }
  // Room for the standard streams, the records module, libraries and the parallel flushes.
  return limit.rlim_cur > 128 ? static_cast<std::size_t>(limit.rlim_cur) - 96 : 32;
}

// Locks, checks again if needed, and replaces one group of planned files.
int writeGroup(const Options& options, const Planner& plan, std::vector<FilePlan*>& group) {
  std::vector<std::unique_ptr<KTR::KTRConfigFileEdit>> edits;
  std::vector<KTR::KTRConfigFileChange> changes;
  std::vector<FilePlan*> planned;
  int status = kOk;
  for (FilePlan* file : group) {
    auto edit = std::make_unique<KTR::KTRConfigFileEdit>();
    if (beginEdit(options, file->path, *edit) != kOk) {
      status = kError;
      continue;
    }
    // Another writer changed the file since it was checked: what it holds now is what counts.
    if (edit->text() != file->text) {
      file->text = edit->text();
      if (plan(file->path, file->text, file->newText) != kOk) {
        status = kError;
        continue;
      }
    }
    changes.push_back({edit.get(), file->newText, ""});
    planned.push_back(file);
    edits.push_back(std::move(edit));
  }
  KTR::commitConfigFiles(changes);
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (changes[i].error.empty()) continue;
    fail(changes[i].error);
    status = kError;
  }
  return status;
}

}  // namespace

int setCommand(const Options& options, const std::string& kind, const Args& files, const Args& items) {
  std::vector<KTR::KTRNamedValue> changes;
  if (int rc = parseAssignments(items, changes)) return rc;
  if (options.asAgent && kind != "container") return fail("--as-agent applies to container files only");

  std::unique_ptr<RecordCommands> records;
  Planner plan;
  if (kind == "container") {
    records = loadRecordCommands(options);
    if (!records) return kError;
    plan = [&](const std::string& path, const std::string& text, std::string& newText) {
      return records->planSet(path, text, changes, newText);
    };
  } else {
    const KTR::KTRAppendedKeys appended =
        kind == "global" ? KTR::KTRAppendedKeys::kUpperCase : KTR::KTRAppendedKeys::kAsGiven;
    plan = [&, appended](const std::string& path, const std::string& text, std::string& newText) {
      if (KTR::setAssignments(text, changes, appended, newText) != 0) return fail(path + ": " + MBQ::getErrorMessage());
      return kOk;
    };
  }

  // Every file read and checked before any is written.
  int status = kOk;
  std::vector<FilePlan> plans(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    FilePlan& file = plans[i];
    file.path = files[i];
    if (KTR::readConfigFile(file.path, file.text) != 0) {
      fail(MBQ::getErrorMessage());
      file.failed = true;
    } else if (plan(file.path, file.text, file.newText) != kOk) {
      file.failed = true;
    }
    if (file.failed) status = kError;
  }
  if (options.dryRun) {
    for (const FilePlan& file : plans)
      if (!file.failed) printDiff(file.path, file.text, file.newText);
    return status;
  }

  std::vector<FilePlan*> pending;
  for (FilePlan& file : plans)
    if (!file.failed && file.newText != file.text) pending.push_back(&file);
  const std::size_t budget = lockBudget();
  for (std::size_t begin = 0; begin < pending.size(); begin += budget) {
    std::vector<FilePlan*> group(pending.begin() + static_cast<long>(begin),
                                 pending.begin() + static_cast<long>(std::min(pending.size(), begin + budget)));
    if (writeGroup(options, plan, group) != kOk) status = kError;
  }
  return status;
}

}  // namespace ktrctl
