#include "MBQCore/MBQError.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace MBQ {

namespace {

std::string& threadErrorText() {
  thread_local std::string text;
  return text;
}

}  // namespace

void setErrorMessage(const char* format, ...) {
  if (format == nullptr) {
    threadErrorText().clear();
    return;
  }
  // Format into a fresh string and only then replace the stored text: callers commonly wrap
  // the previous message ("can't load: %s", getErrorMessage().c_str()), so an argument may
  // point into the very text being replaced.
  std::string message;
  char small[256];
  std::va_list args;
  va_start(args, format);
  std::va_list retry;
  va_copy(retry, args);
  int length = std::vsnprintf(small, sizeof(small), format, args);
  va_end(args);
  if (length < 0) {
    // An encoding error in a conversion; the format itself still says where the failure was.
    message = format;
  } else if (static_cast<std::size_t>(length) < sizeof(small)) {
    message.assign(small, static_cast<std::size_t>(length));
  } else {
    // The probe told us the full length: a long message is kept whole, never cut.
    message.resize(static_cast<std::size_t>(length));
    std::vsnprintf(&message[0], message.size() + 1, format, retry);
  }
  va_end(retry);
  threadErrorText() = std::move(message);
}

const std::string& getErrorMessage() { return threadErrorText(); }

void clearErrorMessage() { threadErrorText().clear(); }

}  // namespace MBQ
