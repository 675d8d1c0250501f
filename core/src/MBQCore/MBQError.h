#pragma once

#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// The per-thread error text: a failing call leaves one message here saying what failed and
// where; the caller reads it back with getErrorMessage(). Each thread has its own text, so a
// failure in one thread never overwrites another's. The text is replaced, not appended, and is
// never truncated; an argument may be the current text itself (wrapping "outer: %s" around
// getErrorMessage().c_str() is fine). A new thread starts with an empty text. The reference
// from getErrorMessage stays valid until the same thread sets or clears the text.
MBQ_EXPORT void setErrorMessage(const char* format, ...) __attribute__((format(printf, 1, 2)));
MBQ_EXPORT const std::string& getErrorMessage();
MBQ_EXPORT void clearErrorMessage();

}  // namespace MBQ
