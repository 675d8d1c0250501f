#pragma once

// The commands on the shared template cache file: stat and check.

#include "ktrctlOutput.h"

namespace ktrctl {

// `cache stat [PATH]`: opens the cache as the agent does (creating and initialising a missing
// file, replacing a condemned one) and prints its header fields, heap figures and entry count.
// `cache check [PATH]`: inspects the file read-only and prints one line per problem (exit 1),
// or one "ok" line. PATH defaults to template.cache in the uploads folder (MBQ_UPLOADS_DIR).
int cacheCommand(const Options& options, const Args& args);

}  // namespace ktrctl
