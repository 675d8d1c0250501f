#pragma once

// The commands on container configuration files: read, get, set, diff, validate.

#include "ktrctlOutput.h"

namespace ktrctl {

// Runs `command` with its arguments; an unknown command is a usage error.
int containerCommand(const Options& options, const std::string& command, const Args& args);

}  // namespace ktrctl
