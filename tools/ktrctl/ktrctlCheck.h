#pragma once

// ktrctl check: a node-wide consistency report over container files.

#include "ktrctlOutput.h"

namespace ktrctl {

// One line per finding, "FILE:LINE: what", files in the order given and lines in order within a
// file: lines that are not readable assignments, keys assigned again, violated formulas (at the
// line of the first parameter the formula reads), and values two containers hold (an IPv4 or
// IPv6 address, a MAC address, a UUID, a hostname, a disk image, a private area), reported once,
// at the later container's line, naming the file and line that holds it first. kNegative when
// there is any finding, kOk when none, kError when a file cannot be read at all (its error line
// is printed and the others are still checked).
int checkCommand(const Options& options, const Args& files);

// validate FILE...: one line per violated formula (see RecordCommands::validate), prefixed with
// "FILE: " when there are several files. kError when a file could not be validated (its error
// line printed, the others still validated), else kNegative when a formula is violated.
int validateCommand(const Options& options, const Args& files);

}  // namespace ktrctl
