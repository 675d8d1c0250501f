#include "MBQCore/MBQAbort.h"

#include <cstdio>
#include <cstdlib>

#include "MBQCore/MBQLogger.h"

namespace MBQ {

namespace {

// The process is already broken when we get here; a null name must not turn the report of one
// fault into a second one inside printf.
const char* orPlaceholder(const char* text) { return text ? text : "?"; }

}  // namespace

void abort(const char* module, const char* path, int line, const char* function) {
  // One fprintf call so that the line is not split by output from other threads; stderr is
  // unbuffered, but flush anyway in case a caller made it buffered.
  std::fprintf(stderr, "%s: assertion failed at %s:%d in %s\n", orPlaceholder(module),
               orPlaceholder(path), line, orPlaceholder(function));
  std::fflush(stderr);
  // Lines logged just before the fault are the most useful ones; a file stream may still hold
  // them in its buffer, and std::abort() does not flush stdio.
  Logger::flush();
  std::abort();
}

namespace Debug {

void check(bool condition, const char* module, const char* path, int line,
           const char* function) {
  if (__builtin_expect(!condition, 0)) MBQ::abort(module, path, line, function);
}

}  // namespace Debug

}  // namespace MBQ
