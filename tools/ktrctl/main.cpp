// ktrctl: the node operator's tool for the container technology's configuration files.
// Parses the command line, calls the library and prints; the work itself is the library's.
//
// The commands that read files as text (get, raw, global, set of raw and global files) run
// here without loading the library; the others load the records module (ktrctlRecords.h).

#include <cstdio>
#include <string>

#include "ktrctlArgs.h"
#include "ktrctlCheck.h"
#include "ktrctlFiles.h"
#include "ktrctlGet.h"
#include "ktrctlHelp.h"
#include "ktrctlRecords.h"
#include "ktrctlSet.h"

namespace {

using ktrctl::Args;
using ktrctl::fail;

// `ktrctl help [WORDS...]` and `ktrctl WORDS... --help`: the commands whose names start with
// the words given ("raw" gives raw get and raw set).
int help(const Args& words) {
  std::string name;
  for (const std::string& word : words) name += (name.empty() ? "" : " ") + word;
  if (name.empty()) {
    ktrctl::printUsage();
    return ktrctl::kOk;
  }
  bool any = false;
  for (std::size_t i = 0; i < ktrctl::kCommandCount; ++i) {
    const std::string command = ktrctl::kCommands[i].name;
    if (command != name && command.compare(0, name.size() + 1, name + " ") != 0) continue;
    if (any) std::printf("\n");
    ktrctl::printCommandHelp(ktrctl::kCommands[i]);
    any = true;
  }
  return any ? ktrctl::kOk : fail("no command '" + name + "' (see ktrctl --help)");
}

int version(const ktrctl::Options& options) {
  std::printf("ktrctl %s\n", KTRCTL_VERSION);
  std::unique_ptr<ktrctl::RecordCommands> records = ktrctl::loadRecordCommands(options);
  if (!records) return ktrctl::kError;
  std::printf("%s\n", records->library().c_str());
  return ktrctl::kOk;
}

// The usage of a family of commands ("raw" without get or set).
int familyUsage(const std::string& first, const std::string& command) {
  std::string family;
  for (std::size_t i = 0; i < ktrctl::kCommandCount; ++i) {
    const std::string name = ktrctl::kCommands[i].name;
    if (name.compare(0, first.size() + 1, first + " ") == 0)
      family += std::string(family.empty() ? "usage: ktrctl " : " | ") + name + " " + ktrctl::kCommands[i].synopsis;
  }
  return fail(family.empty() ? "unknown command '" + command + "' (see ktrctl --help)" : family);
}

// The files (folders expanded) and items of a command on files.
int filesOf(const ktrctl::CommandLine& line, std::size_t firstWord, Args& files, Args& items) {
  Args paths;
  if (int rc = ktrctl::filesAndItems(line, firstWord, paths, items)) return rc;
  return ktrctl::expandFiles(paths, files);
}

}  // namespace

int main(int argc, char** argv) {
  ktrctl::CommandLine line;
  if (int rc = ktrctl::parseCommandLine(argc, argv, line)) return rc;
  if (line.version) return version(line.options);
  const Args& words = line.words;
  if (line.help) return help(words);
  if (words.empty()) return fail("no command (see ktrctl --help)");
  const std::string& first = words[0];
  if (first == "help") return help(Args(words.begin() + 1, words.end()));
  if (first != "msg" && first != "cache" && ktrctl::findCommand(line.command) == nullptr)
    return familyUsage(first, line.command);

  Args files, items;
  if (first == "get" || first == "set" || first == "raw" || first == "global") {
    const bool family = first == "raw" || first == "global";
    const std::string kind = family ? first : "container";
    if (int rc = filesOf(line, family ? 2 : 1, files, items)) return rc;
    const bool set = (family ? words[1] : first) == "set";
    if (set && items.empty()) return fail("usage: ktrctl " + line.command + " " + ktrctl::findCommand(line.command)->synopsis);
    return set ? ktrctl::setCommand(line.options, kind, files, items)
               : ktrctl::getCommand(line.options, kind, files, items);
  }
  if (first == "validate" || first == "check") {
    Args paths(words.begin() + 1, words.end());
    paths.insert(paths.end(), line.afterDashes.begin(), line.afterDashes.end());
    if (paths.empty() && first == "check") paths.push_back(".");
    if (paths.empty()) return fail("usage: ktrctl validate FILE|DIR...");
    if (int rc = ktrctl::expandFiles(paths, files)) return rc;
    return first == "check" ? ktrctl::checkCommand(line.options, files)
                            : ktrctl::validateCommand(line.options, files);
  }

  // read, diff, msg, cache: the records module's own commands.
  std::unique_ptr<ktrctl::RecordCommands> records = ktrctl::loadRecordCommands(line.options);
  if (!records) return ktrctl::kError;
  Args args(words.begin() + 1, words.end());
  args.insert(args.end(), line.afterDashes.begin(), line.afterDashes.end());
  return records->run(first, args);
}
