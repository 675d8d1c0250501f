#pragma once

// ktrctl's commands and options, described once: the usage text, `ktrctl help COMMAND` and the
// manual page are all printed from these tables.

#include <cstddef>
#include <string>

namespace ktrctl {

struct CommandHelp {
  const char* name;      // "set", "raw set"
  const char* synopsis;  // arguments after the name
  const char* summary;   // one line
  const char* details;   // paragraphs separated by "\n\n"; lines are wrapped when printed
  const char* options;   // the option names it takes, space-separated ("" for none)
};

struct OptionHelp {
  const char* name;      // "--wait"
  const char* argument;  // "SECONDS", or "" for a flag
  const char* summary;
};

// A file or environment variable of the manual page.
struct NamedHelp {
  const char* name;
  const char* summary;
};

extern const char* const kDescription;  // what ktrctl is, for the manual page
extern const CommandHelp kCommands[];
extern const std::size_t kCommandCount;
extern const OptionHelp kOptions[];
extern const std::size_t kOptionCount;
extern const char* const kExitStatus;
extern const NamedHelp kFiles[];
extern const std::size_t kFileCount;
extern const NamedHelp kEnvironment[];
extern const std::size_t kEnvironmentCount;

// The command `words` names ("raw set" from {"raw", "set"}), or null.
const CommandHelp* findCommand(const std::string& name);

// Whether `command` (a kCommands name, or its first word) takes `option`.
bool takesOption(const std::string& command, const std::string& option);

void printUsage();                                 // ktrctl --help
void printCommandHelp(const CommandHelp& command);  // ktrctl help COMMAND

}  // namespace ktrctl
