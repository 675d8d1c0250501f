#pragma once

// The commands on files of shell variable assignments: raw get|set (any such file) and
// global get|set (the node's global configuration file).

#include <string>

#include "ktrctlOutput.h"

namespace ktrctl {

// `kind` is "raw" or "global"; args[0] is "get" or "set", the rest its arguments.
int shellFileCommand(const Options& options, const std::string& kind, const Args& args);

}  // namespace ktrctl
