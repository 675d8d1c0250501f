#pragma once

#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"

namespace KTR {

// What an operator's editor needs of a configuration file's text: which lines assign which
// names, the values bash gives them, and edits that change the named keys' lines and nothing
// else. The agent's own reading and writing (the parsers' getConfig and putConfig) are not
// touched by any of this.

// One assignment line.
struct KTRAssignmentLine {
  unsigned long line = 0;  // 1-based
  std::string name;        // as spelled in the file
  std::string value;       // as bash assigns it (empty for an unreadable line)
};

// A text scanned line by line.
struct KTRConfigText {
  // Lines read as NAME=value, in file order.
  std::vector<KTRAssignmentLine> assignments;
  // Lines that assign a name in a form the reader does not take (an expansion, a command, two
  // assignments on one line, `export NAME=...`, `NAME+=...`): a line that starts, after blanks
  // and an optional `export`, `readonly` or `declare` word with its flags, with NAME= or NAME+=
  // and is not a plain assignment.
  std::vector<KTRAssignmentLine> unreadable;
  // Every line that is neither blank, a comment nor a plain assignment (those above included,
  // and lines whose value is left open).
  std::vector<unsigned long> otherLines;
  unsigned long carriageReturnLine = 0;  // first line ending in "\r"; 0 for none
  unsigned long openQuoteLine = 0;       // first line whose value goes on to the next line
};

KTR_EXPORT void scanConfigText(const std::string& text, KTRConfigText& scan);

// Refuses a text that no editor should touch: a line ending in a carriage return (bash reads
// the "\r" into the value, so such a file does not mean what it shows) or a value left open at
// the end of its line (the agent cannot read the file at all). Returns 0, or -1 with the error
// text "line N: ...".
KTR_EXPORT int checkConfigText(const KTRConfigText& scan);

// The value bash ends up with for `name`, matched without regard to case as the agent matches
// keys: the last line assigning it. Returns 0 with `found` set; kKeyWithoutValue when no line
// assigns the name; -1 with the error text set when the last line assigning it is unreadable
// (bash's value then depends on what the line runs).
KTR_EXPORT int findAssignment(const KTRConfigText& scan, const std::string& name, const KTRAssignmentLine*& found);

// The value the agent's reader of the node's global file takes for `name`: the first line
// assigning it (the file's settings keep their first value), but for LOCKDIR and TEMPLATE the
// last, as findAssignment gives it. Returns as findAssignment does; -1 when the line that decides
// is unreadable (for the first line: an unreadable line before any readable one).
KTR_EXPORT int findGlobalAssignment(const KTRConfigText& scan, const std::string& name,
                                    const KTRAssignmentLine*& found);

// One change of an edit: `name` gets `value`.
struct KTRNamedValue {
  std::string name;
  std::string value;
};

// How setAssignments spells keys it appends.
enum class KTRAppendedKeys { kUpperCase, kAsGiven };

// Rewrites `oldText` through the line engine so that every assignment line of each named key
// (matched without case) holds the new value, quoted so that bash assigns exactly that value
// (ValueQuoting::kShell); a key the text does not assign is appended. Every other line stays
// byte for byte, and so does a missing newline at the end unless a key is appended.
//
// Refused, with -1, the error text set and `newText` untouched: a name that is not a shell
// name, a name given twice, a value holding a newline, carriage return or NUL byte, a text that
// checkConfigText refuses, a key that a line assigns in an unreadable form (rewriting the other
// lines would not change what bash reads), and, with kAsGiven, a key the text spells otherwise
// (bash would read two different variables).
KTR_EXPORT int setAssignments(const std::string& oldText, const std::vector<KTRNamedValue>& changes,
                              KTRAppendedKeys appended, std::string& newText);

}  // namespace KTR
