#include "MBQFunctionalityCore/MBQBashStr.h"

#include <cstring>

#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQError.h"

namespace MBQ {

namespace {

constexpr const char* kSourcePath = "core/src/MBQFunctionalityCore/MBQBashStr";

bool isBlank(char c) { return c == ' ' || c == '\t'; }

bool isNameStart(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }

bool isNameChar(char c) { return isNameStart(c) || (c >= '0' && c <= '9'); }

// Unquoted bytes that end the word, start a command substitution or redirection, or make bash
// expand the text (a tilde after '=' or ':' becomes a home directory; bash versions differ on
// exactly where, so an unquoted tilde is never accepted).
bool isUnquotedSpecial(char c) { return c != '\0' && std::strchr(";&|<>()`~", c) != nullptr; }

// A '$' stays a dollar sign only when bash cannot read it as the start of an expansion: before
// the end of the word or of a double-quoted part, or before one of these bytes. Everything
// else (names, digits, special parameters, '{', '(', '[', quotes, backslash...) is refused
// rather than enumerated.
bool dollarIsLiteral(char next) {
  return next == '\0' || isBlank(next) || std::strchr("%+,./:=]^}~", next) != nullptr;
}

// "$VEID" is the container id placeholder of the node's files (for example
// VE_ROOT="/var/lib/quellix/root/$VEID"): the files are read with VEID standing for itself and
// the library substitutes the id later, so the placeholder is kept as written, exactly as bash
// assigns it when VEID holds the text "$VEID". Only this spelling is kept; "${VEID}" is refused
// like any other expansion.
bool isVeidPlaceholder(const char* dollar) {
  return std::strncmp(dollar + 1, "VEID", 4) == 0 && !isNameChar(dollar[5]);
}

// Inside double quotes a backslash only escapes these; before anything else it stays.
bool isDoubleQuoteEscapable(char c) { return c == '"' || c == '\\' || c == '$' || c == '`'; }

// Checks the value word starting at `begin` and sets `end` to one past its last byte.
// Scanning stops at the first construct that decides the result.
int scanValue(const char* line, unsigned long begin, unsigned long& end) {
  unsigned long i = begin;
  for (;;) {
    const char c = line[i];
    if (c == '\0' || isBlank(c)) break;
    if (c == '\'') {
      const char* close = std::strchr(line + i + 1, '\'');
      if (close == nullptr) return kBashStrOpenQuote;
      i = static_cast<unsigned long>(close - line) + 1;
    } else if (c == '"') {
      for (++i;; ++i) {
        const char q = line[i];
        if (q == '\0') return kBashStrOpenQuote;
        if (q == '"') break;
        if (q == '`') return kBashStrNotAssignment;
        if (q == '$' && line[i + 1] != '"' && !dollarIsLiteral(line[i + 1]) && !isVeidPlaceholder(line + i))
          return kBashStrNotAssignment;
        if (q == '\\') {
          // A backslash before the end of the line continues the quoted text on the next one.
          if (line[i + 1] == '\0') return kBashStrOpenQuote;
          // bash keeps its own quoting marks in the bytes 0x01 and 0x7f, and a backslash before
          // one of them inside double quotes loses bytes around it in most words (seen with
          // bash 5.2); refused rather than modelled.
          if (line[i + 1] == '\x01' || line[i + 1] == '\x7f') return kBashStrNotAssignment;
          ++i;
        }
      }
      ++i;
    } else if (c == '\\') {
      // Line continuation: bash would join the next line to this value.
      if (line[i + 1] == '\0') return kBashStrOpenQuote;
      i += 2;
    } else if (c == '$') {
      if (!dollarIsLiteral(line[i + 1]) && !isVeidPlaceholder(line + i)) return kBashStrNotAssignment;
      ++i;
    } else if (isUnquotedSpecial(c)) {
      return kBashStrNotAssignment;
    } else {
      ++i;
    }
  }
  end = i;
  return kBashStrAssignment;
}

// Removes quotes and escapes of an already checked value in place; the text only shrinks, so
// writing never overtakes reading.
void unquoteValue(char* line, unsigned long begin, unsigned long end) {
  unsigned long out = begin;
  unsigned long i = begin;
  while (i < end) {
    const char c = line[i];
    if (c == '\'') {
      for (++i; line[i] != '\''; ++i) line[out++] = line[i];
      ++i;
    } else if (c == '"') {
      for (++i; line[i] != '"'; ++i) {
        if (line[i] == '\\' && isDoubleQuoteEscapable(line[i + 1])) ++i;
        line[out++] = line[i];
      }
      ++i;
    } else if (c == '\\') {
      line[out++] = line[i + 1];
      i += 2;
    } else {
      line[out++] = c;
      ++i;
    }
  }
  line[out] = '\0';
}

}  // namespace

// The accepted lines, bytes as in the file (any byte but NUL may appear in quotes, comments
// and plain text):
//
//   line        = blanks [ comment ]                          -> kBashStrSkip
//               | blanks name "=" value blanks [ comment ]    -> kBashStrAssignment
//   blanks      = { " " | TAB }
//   comment     = "#" { any byte }
//   name        = ( letter | "_" ) { letter | digit | "_" }     (ASCII only)
//   value       = { plain | escaped | dollar | single | double }   (may be empty)
//   plain       = any byte but blank, "\", "'", '"', "$" and ; & | < > ( ) ` ~
//   escaped     = "\" any byte                                 -> that byte
//   dollar      = "$" followed by the end of the word or one of % + , . / : = ] ^ } ~
//                                                              -> "$"
//               | "$VEID" not followed by a name character      -> "$VEID" (the placeholder)
//   single      = "'" { any byte but "'" } "'"                 -> the bytes between
//   double      = '"' { dq-byte | "\" any byte but 0x01 and 0x7f | dq-dollar } '"'
//   dq-byte     = any byte but '"', "\", "$" and `
//                 ("\" before '"', "\", "$" or ` gives that byte; before any other byte
//                  both bytes stay)
//   dq-dollar   = "$" followed by '"' or a byte allowed after `dollar`  -> "$"
//               | the "$VEID" placeholder as above
//
// A "#" inside the value is a plain byte: bash starts a comment only at the start of a word.
// Globbing characters (* ? [) are plain too, since bash does not expand them in assignments.
// Every other line starting with `blanks name "="` is kBashStrOpenQuote when its value leaves
// a quote open or ends in a backslash before anything refused appears, and
// kBashStrNotAssignment otherwise; lines that do not start so are kBashStrNotAssignment.
int parseBashStr(char* line, char** name, char** value, unsigned long* valueBegin, unsigned long* valueEnd) {
  Debug::check(line != nullptr, "MBQFunctionalityCore", kSourcePath, __LINE__, "parseBashStr");
  Debug::check(name != nullptr && value != nullptr, "MBQFunctionalityCore", kSourcePath, __LINE__,
               "parseBashStr");

  unsigned long i = 0;
  while (isBlank(line[i])) ++i;
  if (line[i] == '\0' || line[i] == '#') return kBashStrSkip;
  if (!isNameStart(line[i])) return kBashStrNotAssignment;

  const unsigned long nameBegin = i;
  while (isNameChar(line[i])) ++i;
  if (line[i] != '=') return kBashStrNotAssignment;
  const unsigned long nameEnd = i;

  const unsigned long begin = nameEnd + 1;
  unsigned long end = begin;
  const int scanned = scanValue(line, begin, end);
  if (scanned == kBashStrOpenQuote) {
    setErrorMessage("value of %.*s is not closed on its line", static_cast<int>(nameEnd - nameBegin),
                    line + nameBegin);
    return kBashStrOpenQuote;
  }
  if (scanned != kBashStrAssignment) return scanned;

  unsigned long rest = end;
  while (isBlank(line[rest])) ++rest;
  if (line[rest] != '\0' && line[rest] != '#') return kBashStrNotAssignment;

  if (valueBegin != nullptr) *valueBegin = begin;
  if (valueEnd != nullptr) *valueEnd = end - 1;
  unquoteValue(line, begin, end);
  line[nameEnd] = '\0';
  *name = line + nameBegin;
  *value = line + begin;
  return kBashStrAssignment;
}

}  // namespace MBQ
