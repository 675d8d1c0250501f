#pragma once

#include "MBQCore/MBQExport.h"

namespace MBQ {

// Results of parseBashStr.
constexpr int kBashStrAssignment = 0;     // a NAME=value line: name and value are set
constexpr int kBashStrSkip = 1;           // a blank line or a comment line
constexpr int kBashStrNotAssignment = 2;  // anything else; a writer keeps such a line as it is
constexpr int kBashStrOpenQuote = -1;     // the value continues on the next line (open quote)

// Reads one line of a bash-like configuration file (without its newline) as a shell variable
// assignment. The rule is: whenever the line is accepted, `value` is exactly what bash would
// assign when running the line in a script. Lines where that would take guessing (expansions,
// command separators, several words) are not accepted; the grammar is above the parser in
// MBQBashStr.cpp and the decisions are in docs/DESIGN.md.
//
// Returns:
//   kBashStrAssignment     `*name` points at the NUL-terminated name, `*value` at the value
//                          with quotes and escapes removed; both point into `line`, which is
//                          overwritten for that, and stay valid as long as `line` does.
//   kBashStrSkip           blank (spaces and tabs only, or empty) or a comment line.
//   kBashStrNotAssignment  not a plain NAME=value line.
//   kBashStrOpenQuote      a NAME= line whose value leaves a quote open or ends in a
//                          backslash, so that bash would go on reading the next line; the
//                          error text says where.
// For every result but kBashStrAssignment, `line`, `*name`, `*value` and the positions are
// left unchanged.
//
// `valueBegin` and `valueEnd` may be null. When given they receive the positions, in the line
// as it was before the call, of the first and the last byte of the value as written (quotes
// included). An empty value has an empty span: `*valueBegin` is the position right after the
// '=' and `*valueEnd` is `*valueBegin - 1` (never below 1), so `*valueEnd - *valueBegin + 1`
// is the length of the written value in every case.
//
// `line`, `name` and `value` must not be null (the process ends otherwise). The work is
// linear in the length of the line.
MBQ_EXPORT int parseBashStr(char* line, char** name, char** value, unsigned long* valueBegin,
                            unsigned long* valueEnd);

}  // namespace MBQ
