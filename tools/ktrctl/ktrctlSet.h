#pragma once

// set, raw set, global set, on one file or many.

#include <string>

#include "ktrctlOutput.h"

namespace ktrctl {

// `kind` is "container", "raw" or "global"; `items` are the KEY=VALUE arguments.
//
// Every file is read and checked before any is written. Then the files are locked in groups
// (as many as the open-file limit allows at once), read again (a file changed meanwhile is
// checked anew), and replaced, each atomically on its own, with the flushes of a group done
// together. A file that fails prints one error line naming it and is left as it was; the others
// go on. kOk when every file was changed (or printed, with --dry-run), kError when any failed.
int setCommand(const Options& options, const std::string& kind, const Args& files, const Args& items);

}  // namespace ktrctl
