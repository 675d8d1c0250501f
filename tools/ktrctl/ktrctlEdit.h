#pragma once

// What every editing command shares: reading KEY=VALUE arguments, locking a file, and printing
// a change (--dry-run).

#include <string>
#include <vector>

#include "KTRFunctionality/KTRConfigEdit.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "ktrctlOutput.h"

namespace ktrctl {

// KEY=VALUE arguments, checked as setAssignments will check them (a shell name, given once, a
// value the file can hold). kOk, or kError with the error line printed.
int parseAssignments(const Args& items, std::vector<KTR::KTRNamedValue>& changes);

// Locks and reads the file. kOk, or kError with the error line printed.
int beginEdit(const Options& options, const std::string& path, KTR::KTRConfigFileEdit& edit);

// Prints the unified diff (no context lines) that turns `oldText` into `newText`, where the
// new text changes lines in place and appends others, as the line engine does.
void printDiff(const std::string& path, const std::string& oldText, const std::string& newText);

}  // namespace ktrctl
