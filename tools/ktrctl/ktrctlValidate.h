#pragma once

// Validation of a container's resource values against the vocabulary's formulas.

#include <string>
#include <vector>

#include "ktrctlRead.h"
#include "ktrctlRecords.h"

namespace ktrctl {

// Reads the container file's text as the agent does and validates its resource values: one
// finding per violated formula, "ID: FORMULA: NAME[,NAME...]: MESSAGE" (the formula's id and
// text, the parameters it read, its message), in the vocabulary's formula order. A container in
// SLM mode "slm" without SLMMEMORYLIMIT is checked by that alone: "SLMMODE is slm but
// SLMMEMORYLIMIT is not set". kOk when nothing is violated, kNegative when something is, kError
// (one error line on stderr) when the file, the vocabulary or a formula cannot be used, e.g.
// when a formula reads a parameter the file does not set.
int validateText(Session& session, const std::string& path, const std::string& text, std::vector<Finding>& findings);

// The same for a configuration already read from the file at `path`.
int validateConfig(Session& session, const std::string& path, const KTR::KTREnvConfig& config,
                   std::vector<Finding>& findings);

}  // namespace ktrctl
