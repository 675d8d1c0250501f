#pragma once

// The commands on container files that need the container record: read, diff, and the check of
// a set.

#include <string>
#include <vector>

#include "KTRFunctionality/KTRConfigEdit.h"
#include "ktrctlRead.h"

namespace ktrctl {

// read CONF | diff OLD NEW.
int containerCommand(Session& session, const std::string& command, const Args& args);

// See RecordCommands::planSet.
int planContainerSet(Session& session, const std::string& path, const std::string& text,
                     const std::vector<KTR::KTRNamedValue>& changes, std::string& newText);

}  // namespace ktrctl
