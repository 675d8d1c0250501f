#pragma once

#include "MBQCore/MBQExport.h"

namespace MBQ {

// Ends the process for a broken invariant (a programming error, never bad input). Writes one
// line "<module>: assertion failed at <path>:<line> in <function>" to stderr, flushes the
// logger and calls std::abort(). The path is the source's logical location in the tree
// (for example "core/src/MBQMessage/MBQMessageIterator"), not __FILE__, so that the message
// stays stable across build directories.
[[noreturn]] MBQ_EXPORT void abort(const char* module, const char* path, int line,
                                   const char* function);

namespace Debug {
// When `condition` is false, ends the process like MBQ::abort. Active in every build type:
// the checks guard the integrity of messages and shared files, not just development.
MBQ_EXPORT void check(bool condition, const char* module, const char* path, int line,
                      const char* function);
}  // namespace Debug

}  // namespace MBQ
