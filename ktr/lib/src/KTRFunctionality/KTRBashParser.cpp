#include "KTRFunctionality/KTRBashParser.h"

#include <climits>
#include <cstring>
#include <new>

namespace KTR {

namespace {

bool isNameChar(char c) {
  return c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

int readStringFromStream(std::istream& in, char** buffer, unsigned long* capacity) {
  std::string line;
  try {
    if (!std::getline(in, line)) return -1;
  } catch (const std::bad_alloc&) {
    // Only reached when the caller asked the stream to throw; otherwise getline turns this
    // into a failed stream, which reads as the end.
    MBQ::setErrorMessage("can't hold a line of the configuration file in memory");
    return kLineBufferFailed;
  } catch (const std::exception&) {
    // A stream set to throw at its end or on an error: the same as a failed read.
    return -1;
  }
  if (line.size() >= static_cast<std::string::size_type>(INT_MAX)) {
    MBQ::setErrorMessage("line of %zu bytes is too long for a configuration file", line.size());
    return kLineBufferFailed;
  }
  const unsigned long needed = static_cast<unsigned long>(line.size()) + 1;
  if (*capacity < needed) {
    // The old contents are not needed, but realloc keeps the buffer in the caller's hands
    // when it fails.
    char* grown = static_cast<char*>(std::realloc(*buffer, needed));
    if (grown == nullptr) {
      MBQ::setErrorMessage("can't allocate %lu bytes for a line of the configuration file", needed);
      return kLineBufferFailed;
    }
    *buffer = grown;
    *capacity = needed;
  }
  std::memcpy(*buffer, line.c_str(), needed);
  return static_cast<int>(line.size());
}

int parseBashLine(char* line, int length, char** name, char** value, unsigned long* valueBegin,
                  unsigned long* valueEnd) {
  if (std::memchr(line, '\0', static_cast<std::size_t>(length)) != nullptr) return MBQ::kBashStrNotAssignment;
  return MBQ::parseBashStr(line, name, value, valueBegin, valueEnd);
}

std::string quoteValue(const std::string& value, ValueQuoting quoting) {
  if (quoting == ValueQuoting::kAgent) return "\"" + value + "\"";
  std::string quoted;
  quoted.reserve(value.size() + 2);
  quoted += '"';
  for (std::string::size_type i = 0; i < value.size(); ++i) {
    const char c = value[i];
    const bool placeholder =
        c == '$' && value.compare(i + 1, 4, "VEID") == 0 && (i + 5 == value.size() || !isNameChar(value[i + 5]));
    if ((c == '\\' || c == '"' || c == '$' || c == '`') && !placeholder) quoted += '\\';
    quoted += c;
  }
  quoted += '"';
  return quoted;
}

bool isWritableValue(const std::string& value) {
  return value.find_first_of(std::string("\n\r\0", 3)) == std::string::npos;
}

bool isShellName(const std::string& name) {
  if (name.empty() || (name[0] >= '0' && name[0] <= '9')) return false;
  for (char c : name)
    if (!isNameChar(c)) return false;
  return true;
}

}  // namespace KTR
