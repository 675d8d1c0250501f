#pragma once

// The "msg" commands, for whoever writes or debugs the agent's messages:
//   msg types                 every record the library reads and writes: class, schema type
//                             ("-" without one) and namespace URI, tab-separated
//   msg tags                  the tag table, "id name" per line in id order
//   msg read [--as CLASS] FILE
//                             reads the record FILE holds (the class named, or the one the
//                             root element's schema type names), writes it back with its own
//                             writer and prints that XML
// Exit 0 on success; 2 with one error line on a usage error, an unreadable or malformed file,
// an unknown class or type, or a reader that fails (the line gives the reader's status).

#include "ktrctlOutput.h"

namespace ktrctl {

int msgCommand(const Options& options, const Args& args);

}  // namespace ktrctl
