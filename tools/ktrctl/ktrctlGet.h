#pragma once

// get, raw get, global get: what bash assigns, read from the files' text alone.

#include <string>

#include "ktrctlOutput.h"

namespace ktrctl {

// `kind` is "container", "raw" or "global". Prints KEY="value" per key found, prefixed with
// "FILE: " when there are several files; a file that cannot be read prints its error line and
// the others go on. kError when a file failed, else kNegative when a key has no value in a
// file, else kOk.
int getCommand(const Options& options, const std::string& kind, const Args& files, const Args& keys);

}  // namespace ktrctl
