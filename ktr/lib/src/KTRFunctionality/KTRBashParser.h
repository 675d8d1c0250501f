#pragma once

#include <cstdlib>
#include <istream>
#include <ostream>
#include <set>
#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "MBQFunctionalityCore/MBQBashStr.h"

// The line engine shared by the parsers of the node's bash-like configuration files: reading a
// file into a record through a put-side parser, and writing a record back through a get-side
// parser by merging its values into the file's old text, so that no line is ever lost.
//
// A put-side parser offers
//   int put(const std::string& key, const char* value);
// with `key` lower case and `value` unquoted; it returns 0 or a negative code, which the
// reader ignores. A get-side parser offers
//   int get(const std::string& key, std::string& value);   // fills an empty `value`
//   int getNext(std::string& key);                         // 0 per key, then -1
// where get returns 0 when it produced a value, kKeyWithoutValue when the key is known but the
// record holds nothing for it, and kUnknownKey (or any other non-zero code) otherwise.
// getNext walks the parser's keys once, so a get-side parser serves one serialisation.

namespace KTR {

// Codes of the parsers' put and get. None of them ends a read or a write.
constexpr int kUnknownKey = -1001;        // the parser does not know the key
constexpr int kKeyWithoutValue = -1002;   // known key, the record holds no value (writing)
constexpr int kBadResourceValue = -1003;  // a resource value that does not parse (reading)

// readStringFromStream: the line buffer could not grow (out of memory, or a line too long to
// report its length as an int). The error text says so.
constexpr int kLineBufferFailed = -2;

// How a new value is put into a line.
//   kAgent  "value": the agent's files, where values are never escaped (a value holding '"',
//           '$' or a backtick gives a line that reads back differently, or not at all).
//   kShell  "value" with '\\', '"', '$' and '`' escaped by a backslash, except that the
//           container-id placeholder $VEID stays as written: bash then assigns exactly the
//           value (with VEID naming the container) and parseBashStr reads it back unchanged.
//           The value must not hold a newline or NUL byte (isWritableValue).
enum class ValueQuoting { kAgent, kShell };

KTR_EXPORT std::string quoteValue(const std::string& value, ValueQuoting quoting);

// Whether kShell quoting can carry `value`: no newline, no carriage return, no NUL byte.
KTR_EXPORT bool isWritableValue(const std::string& value);

// Whether `name` is a shell variable name: [A-Za-z_][A-Za-z0-9_]*.
KTR_EXPORT bool isShellName(const std::string& name);

// The writing choices of serializeBashLikeConfig. The defaults are the agent's writer.
struct SerializeOptions {
  ValueQuoting quoting = ValueQuoting::kAgent;
  // Appended keys keep the spelling getNext() gives instead of being upper-cased (getNext may
  // then give any case; get() is still asked with the lower-case key).
  bool appendKeysAsGiven = false;
  // An old text whose last line has no newline keeps it that way unless a key is appended.
  bool keepLastLineOpen = false;
};

// Reads one line of `in` (without its newline) into `*buffer` as a NUL-terminated string and
// returns its length. The buffer is the caller's: it starts as a null pointer with `*capacity`
// 0, is grown with realloc to exactly the longest line read plus one, and is released by the
// caller with free. Returns -1 at the end of the stream or on a read error, and
// kLineBufferFailed when the buffer cannot grow; in both cases buffer and capacity are left as
// they were. A line may hold NUL bytes: the length counts them.
KTR_EXPORT int readStringFromStream(std::istream& in, char** buffer, unsigned long* capacity);

// parseBashStr over a line read by readStringFromStream of `length` bytes. A line holding a
// NUL byte is not an assignment (MBQ::kBashStrNotAssignment): bash drops NUL bytes from a
// script, so the text before it is not what bash would read.
KTR_EXPORT int parseBashLine(char* line, int length, char** name, char** value, unsigned long* valueBegin,
                             unsigned long* valueEnd);

// Reads a whole file into a record: every assignment line goes to put() with its name
// lower-cased. Unknown keys and values that do not convert are skipped, so one bad line never
// costs the rest of the file; blank lines, comments and lines that are not plain assignments
// are skipped too. Returns 0 at the end of the stream (a read error counts as the end), or -1,
// with the error text set, when a value is left open at the end of its line or a line could
// not be held in memory; what was put before stays in the record.
template <class Parser>
int parseBashLikeConfig(Parser& put, std::istream& in) {
  char* buffer = nullptr;
  unsigned long capacity = 0;
  unsigned long lineNumber = 0;
  int result = 0;
  for (;;) {
    const int length = readStringFromStream(in, &buffer, &capacity);
    if (length < 0) {
      if (length == kLineBufferFailed) result = -1;
      break;
    }
    ++lineNumber;
    char* name = nullptr;
    char* value = nullptr;
    const int parsed = parseBashLine(buffer, length, &name, &value, nullptr, nullptr);
    if (parsed == MBQ::kBashStrOpenQuote) {
      MBQ::setErrorMessage("line %lu: %s", lineNumber, MBQ::getErrorMessage().c_str());
      result = -1;
      break;
    }
    if (parsed != MBQ::kBashStrAssignment) continue;
    put.put(MBQ::toLower(name), static_cast<const char*>(value));
  }
  std::free(buffer);
  return result;
}

// Writes a record: the old text of the file with the values replaced, then the keys it lacked.
//
// The old text is merged only when `old` is not null, in a good state, and `merge` is true.
// Every old line is written back byte for byte followed by "\n", except that in an assignment
// whose key get() answers with 0 the value as written (quotes included) is replaced by the new
// value in double quotes; the name's spelling and a trailing comment stay. A key found several
// times is rewritten at each place. A line of any other kind, or whose key get() refuses, is
// kept as it is.
//
// Then every key of getNext() that was not rewritten in place and for which get() gives a
// value is appended as KEY="value", the key upper case. getNext() order decides the order, and
// its first -1 ends the appending.
//
// New values are written as they are, without escaping (the agent's files); `options` can ask
// for the operator's tool's way instead (see SerializeOptions). Returns 0, or -1 with the error
// text set when the output stream has failed ("failed to write output stream") or an old line
// could not be held in memory (the output then lacks the rest of the old file and must not
// replace it).
template <class Parser>
int serializeBashLikeConfig(Parser& get, std::ostream& out, std::istream* old, bool merge,
                            const SerializeOptions& options = SerializeOptions()) {
  std::set<std::string> writtenKeys;
  bool lastLineOpen = false;  // the old text's last line had no newline
  if (old != nullptr && old->good() && merge) {
    char* buffer = nullptr;
    unsigned long capacity = 0;
    int length;
    while ((length = readStringFromStream(*old, &buffer, &capacity)) >= 0) {
      if (lastLineOpen) out << "\n";
      std::string outputLine(buffer, static_cast<std::string::size_type>(length));
      char* name = nullptr;
      char* value = nullptr;
      unsigned long valueBegin = 0;
      unsigned long valueEnd = 0;
      if (parseBashLine(buffer, length, &name, &value, &valueBegin, &valueEnd) == MBQ::kBashStrAssignment) {
        const std::string key = MBQ::toLower(name);
        std::string newValue;
        if (get.get(key, newValue) == 0) {
          outputLine.replace(valueBegin, valueEnd - valueBegin + 1, quoteValue(newValue, options.quoting));
          writtenKeys.insert(key);
        }
      }
      out << outputLine;
      lastLineOpen = options.keepLastLineOpen && old->eof();
      if (!lastLineOpen) out << "\n";
    }
    std::free(buffer);
    if (length == kLineBufferFailed) return -1;
  }
  std::string key;
  while (get.getNext(key) == 0) {
    const std::string lowerKey = MBQ::toLower(key);
    if (writtenKeys.count(lowerKey) != 0) continue;
    std::string value;
    if (get.get(lowerKey, value) != 0) continue;
    if (lastLineOpen) out << "\n";
    lastLineOpen = false;
    out << (options.appendKeysAsGiven ? key : MBQ::toUpper(key)) << "=" << quoteValue(value, options.quoting) << "\n";
  }
  if (out.fail()) {
    MBQ::setErrorMessage("failed to write output stream");
    return -1;
  }
  return 0;
}

}  // namespace KTR
