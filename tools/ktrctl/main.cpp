// ktrctl: the node operator's tool for the container technology's configuration files.
// Parses the command line, calls the library and prints; the work itself is the library's.

#include <cstdio>
#include <string>

#include "KTRFunctionality/KTRLibFunctionality.h"
#include "ktrctlArgs.h"
#include "ktrctlCache.h"
#include "ktrctlContainer.h"
#include "ktrctlHelp.h"
#include "ktrctlMsg.h"
#include "ktrctlShellFile.h"

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

// The arguments of a command on one file: FILE then its items, from either spelling of the
// command line.
int oneFile(const ktrctl::CommandLine& line, std::size_t firstWord, Args& args) {
  Args files, items;
  if (int rc = ktrctl::filesAndItems(line, firstWord, files, items)) return rc;
  if (files.size() != 1) return fail(line.command + " takes one file");
  args = files;
  args.insert(args.end(), items.begin(), items.end());
  return ktrctl::kOk;
}

}  // namespace

int main(int argc, char** argv) {
  ktrctl::CommandLine line;
  if (int rc = ktrctl::parseCommandLine(argc, argv, line)) return rc;
  if (line.version) {
    std::printf("ktrctl %s\n", KTR::ktrLibraryVersion());
    return ktrctl::kOk;
  }
  const Args& words = line.words;
  if (line.help) return help(words);
  if (words.empty()) return fail("no command (see ktrctl --help)");
  const std::string& first = words[0];
  if (first == "help") return help(Args(words.begin() + 1, words.end()));
  if (first == "msg") return ktrctl::msgCommand(line.options, Args(words.begin() + 1, words.end()));
  if (first == "cache") return ktrctl::cacheCommand(line.options, Args(words.begin() + 1, words.end()));
  if (ktrctl::findCommand(line.command) == nullptr) {
    std::string family;
    for (std::size_t i = 0; i < ktrctl::kCommandCount; ++i) {
      const std::string name = ktrctl::kCommands[i].name;
      if (name.compare(0, first.size() + 1, first + " ") == 0)
        family += std::string(family.empty() ? "usage: ktrctl " : " | ") + name + " " + ktrctl::kCommands[i].synopsis;
    }
    return fail(family.empty() ? "unknown command '" + line.command + "' (see ktrctl --help)" : family);
  }

  Args args;
  if (first == "raw" || first == "global") {
    if (int rc = oneFile(line, 2, args)) return rc;
    args.insert(args.begin(), words[1]);
    return ktrctl::shellFileCommand(line.options, first, args);
  }
  if (first == "diff") {
    args.assign(words.begin() + 1, words.end());
    args.insert(args.end(), line.afterDashes.begin(), line.afterDashes.end());
    return ktrctl::containerCommand(line.options, first, args);
  }
  if (int rc = oneFile(line, 1, args)) return rc;
  return ktrctl::containerCommand(line.options, first, args);
}
