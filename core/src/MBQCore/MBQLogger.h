#pragma once

#include <cstdio>
#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// Levels: lower is more severe. The threshold (default kInfo) drops every message whose level
// is above it. The environment variable MBQ_LOG_LEVEL (a whole number 0-4, blanks around it
// allowed) sets it when the logger is first used; any other value is ignored, and later changes
// to the variable are not seen. setLevel overrides it at any time.
enum LogLevel { kFatal = 0, kError = 1, kWarning = 2, kInfo = 3, kDebug = 4 };

class MBQ_EXPORT Logger {
 public:
  // One line per message: "<LEVEL> <module>: <text>", LEVEL being FATAL, ERROR, WARNING, INFO
  // or DEBUG. putAt adds the location after the level, "<LEVEL> <file>:<line> <module>: <text>",
  // with only the last component of `file` (so __FILE__ may be passed as is). Thread-safe; each
  // line, newline included, is written with a single call, and FATAL and ERROR lines are flushed
  // at once. Messages are never truncated.
  static void put(int level, const char* module, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
  static void putAt(int level, const char* module, const char* file, int line,
                    const char* format, ...) __attribute__((format(printf, 5, 6)));

  static void setLevel(int level);
  static int level();
  static bool enabled(int level) { return level <= Logger::level(); }

  // Where lines go; stderr by default; null discards them. The stream is not owned: the old one
  // is flushed and no longer used once setStream returns, so the caller may close it then.
  static void setStream(std::FILE* stream);
  static void flush();
};

}  // namespace MBQ

// Log2(level, module, format, ...): a message with its source location.
#define Log2(level, module, ...) ::MBQ::Logger::putAt((level), (module), __FILE__, __LINE__, __VA_ARGS__)
