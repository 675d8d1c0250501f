#pragma once

// `ktrctl validate CONF`: the container's resource values against the vocabulary's formulas.

#include "ktrctlOutput.h"

namespace ktrctl {

// Reads the container file args[0] as the agent does and validates its resource values. Prints
// one line per violation on stdout,
//
//   ID: FORMULA: NAME[,NAME...]: MESSAGE
//
// (the formula's id and text, the parameters it read, its message), in the vocabulary's formula
// order. A container in SLM mode "slm" without SLMMEMORYLIMIT is checked by that alone and
// prints "SLMMODE is slm but SLMMEMORYLIMIT is not set". kOk when nothing is violated,
// kNegative when something is, kError (one error line on stderr) when the file, the vocabulary
// or a formula cannot be used, e.g. when a formula reads a parameter the file does not set.
int validateCommand(const Options& options, const Args& args);

}  // namespace ktrctl
