#pragma once

// The command line: options may stand anywhere before "--"; what follows "--" is never an
// option.

#include <string>

#include "ktrctlOutput.h"

namespace ktrctl {

struct CommandLine {
  Options options;
  bool help = false;
  bool version = false;
  Args words;         // the command's words and arguments before "--", in order
  bool dashes = false;
  Args afterDashes;   // the arguments after "--"
  std::string command;  // "set", "raw set", "msg read"...: the words naming the command
};

// Parses argv. Options the command does not take are errors; the "cache" and "msg" commands get
// options this parser does not know in `words`, in place, for their own parsers. Returns kOk, or
// kError with the error line printed.
int parseCommandLine(int argc, char** argv, CommandLine& line);

// The files and the items (KEY=VALUE or KEY) of a command on files: with "--", the words are the
// files and what follows are the items; without, the first word is the one file. Returns kOk, or
// kError with the error line printed when no file is given.
int filesAndItems(const CommandLine& line, std::size_t firstWord, Args& files, Args& items);

}  // namespace ktrctl
