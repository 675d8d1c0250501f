#pragma once

// What `check` needs of one container file through its record: violated formulas and the
// values no other container may hold.

#include <string>

#include "ktrctlRead.h"
#include "ktrctlRecords.h"

namespace ktrctl {

// See RecordCommands::inspect. `id` is the container's id (the file's name without ".conf"),
// which stands for $VEID in its private area path.
int inspectContainer(Session& session, const std::string& path, const std::string& id, const std::string& text,
                     FileReport& report);

}  // namespace ktrctl
