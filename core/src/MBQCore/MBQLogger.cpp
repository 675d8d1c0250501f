#include "MBQCore/MBQLogger.h"

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "MBQCore/MBQString.h"

namespace MBQ {

namespace {

struct LoggerState {
  std::mutex mutex;  // serialises writers and stream changes
  std::atomic<int> threshold{kInfo};
  std::FILE* stream = stderr;  // guarded by mutex
};

// The threshold comes from MBQ_LOG_LEVEL once, when the logger is first used. Anything other
// than a whole number 0-4 is ignored rather than guessed at, so a typo leaves the default.
int thresholdFromEnvironment() {
  const char* text = std::getenv("MBQ_LOG_LEVEL");
  long long value = 0;
  if (text != nullptr && strToLonglong(text, value) == 0 && value >= kFatal && value <= kDebug) {
    return static_cast<int>(value);
  }
  return kInfo;
}

// Static initialisers of other libraries log while they register, possibly before this file's
// own statics exist, and static destructors may log after they are gone. A state built on first
// use and never destroyed serves both.
LoggerState& state() {
  static LoggerState* instance = [] {
    auto* created = new LoggerState;
    created->threshold.store(thresholdFromEnvironment(), std::memory_order_relaxed);
    return created;
  }();
  return *instance;
}

const char* levelWord(int level) {
  static const char* const kWords[] = {"FATAL", "ERROR", "WARNING", "INFO", "DEBUG"};
  if (level < kFatal) return kWords[kFatal];
  if (level > kDebug) return kWords[kDebug];
  return kWords[level];
}

// Only the file name: __FILE__ holds whatever path the build used, which says nothing useful
// and changes with the build directory.
const char* baseName(const char* path) {
  if (path == nullptr) return "?";
  const char* slash = std::strrchr(path, '/');
  return slash ? slash + 1 : path;
}

void appendFormatted(std::string& line, const char* format, std::va_list args) {
  if (format == nullptr) return;
  std::va_list retry;
  va_copy(retry, args);
  char small[512];
  int length = std::vsnprintf(small, sizeof(small), format, args);
  if (length < 0) {
    line += format;
  } else if (static_cast<std::size_t>(length) < sizeof(small)) {
    line.append(small, static_cast<std::size_t>(length));
  } else {
    std::size_t start = line.size();
    line.resize(start + static_cast<std::size_t>(length));
    std::vsnprintf(&line[start], static_cast<std::size_t>(length) + 1, format, retry);
  }
  va_end(retry);
}

void write(int level, const std::string& line) {
  LoggerState& logger = state();
  std::lock_guard<std::mutex> hold(logger.mutex);
  if (logger.stream == nullptr) return;
  // The whole line, newline included, in one call: readers of a shared log never see two
  // messages woven into each other, even from other processes appending to the same file.
  std::fwrite(line.data(), 1, line.size(), logger.stream);
  // Errors must reach the file even if the process dies right after; chattier levels may wait
  // for the buffer.
  if (level <= kError) std::fflush(logger.stream);
}

// "<LEVEL> [<file>:<line> ]<module>: <text>\n", built whole before the lock is taken so that
// formatting never holds up other threads.
void emit(int level, const char* module, const char* file, int line, bool located,
          const char* format, std::va_list args) {
  std::string text = levelWord(level);
  text += ' ';
  if (located) {
    text += baseName(file);
    text += ':';
    text += std::to_string(line);
    text += ' ';
  }
  if (module != nullptr) text += module;
  text += ": ";
  appendFormatted(text, format, args);
  text += '\n';
  write(level, text);
}

}  // namespace

void Logger::put(int level, const char* module, const char* format, ...) {
  if (!enabled(level)) return;
  std::va_list args;
  va_start(args, format);
  emit(level, module, nullptr, 0, false, format, args);
  va_end(args);
}

void Logger::putAt(int level, const char* module, const char* file, int line,
                   const char* format, ...) {
  if (!enabled(level)) return;
  std::va_list args;
  va_start(args, format);
  emit(level, module, file, line, true, format, args);
  va_end(args);
}

void Logger::setLevel(int level) { state().threshold.store(level, std::memory_order_relaxed); }

int Logger::level() { return state().threshold.load(std::memory_order_relaxed); }

void Logger::setStream(std::FILE* stream) {
  LoggerState& logger = state();
  std::lock_guard<std::mutex> hold(logger.mutex);
  // Hand the old stream back with nothing of ours left in its buffer, so the caller may close it.
  if (logger.stream != nullptr) std::fflush(logger.stream);
  logger.stream = stream;
}

void Logger::flush() {
  LoggerState& logger = state();
  std::lock_guard<std::mutex> hold(logger.mutex);
  if (logger.stream != nullptr) std::fflush(logger.stream);
}

}  // namespace MBQ
