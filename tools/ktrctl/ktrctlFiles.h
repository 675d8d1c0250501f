#pragma once

// The files a command works on.

#include <string>

#include "ktrctlOutput.h"

namespace ktrctl {

// The files named, in the order given, a folder standing for its "*.conf" files in byte order
// of their names; a file named twice counts once. kOk, or kError with the error line printed
// when a folder cannot be read.
int expandFiles(const Args& paths, Args& files);

// The prefix of an output line: "FILE: " when a command works on several files, else nothing.
std::string linePrefix(const Args& files, const std::string& file);

}  // namespace ktrctl
