#include "ktrctlArgs.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "ktrctlHelp.h"

namespace ktrctl {

namespace {

// The words that name a command: one, or two for the families.
std::string commandOf(const Args& words) {
  if (words.empty()) return "";
  const std::string& first = words[0];
  if ((first == "raw" || first == "global" || first == "cache" || first == "msg") && words.size() > 1)
    return first + " " + words[1];
  return first;
}

bool passesUnknownOptions(const std::string& command) {
  return command.compare(0, 4, "msg ") == 0 || command.compare(0, 6, "cache ") == 0 || command == "msg" ||
         command == "cache";
}

int parseWait(const std::string& text, unsigned& milliseconds) {
  char* end = nullptr;
  const double seconds = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(seconds) || seconds < 0 || seconds > 86400)
    return fail("--wait needs a number of seconds from 0 to 86400, not '" + text + "'");
  milliseconds = static_cast<unsigned>(seconds * 1000);
  return kOk;
}

}  // namespace

int parseCommandLine(int argc, char** argv, CommandLine& line) {
  Args unknown;  // options not known here, in the order given
  std::vector<std::string> given;
  for (int at = 1; at < argc; ++at) {
    std::string arg = argv[at];
    if (arg == "--") {
      line.dashes = true;
      line.afterDashes.assign(argv + at + 1, argv + argc);
      break;
    }
    if (arg.size() < 2 || arg[0] != '-') {
      line.words.push_back(arg);
      continue;
    }
    std::string value;
    bool hasValue = false;
    const std::string::size_type equals = arg.find('=');
    if (arg.compare(0, 2, "--") == 0 && equals != std::string::npos) {
      value = arg.substr(equals + 1);
      arg.erase(equals);
      hasValue = true;
    }
    auto takeValue = [&](std::string& into) {
      if (hasValue) {
        into = value;
        return kOk;
      }
      if (at + 1 >= argc) return fail(arg + " needs a value");
      into = argv[++at];
      return kOk;
    };
    if (arg == "--help" || arg == "-h") {
      line.help = true;
    } else if (arg == "--version") {
      line.version = true;
    } else if (arg == "--verbose") {
      line.options.verbose = true;
    } else if (arg == "--dry-run") {
      line.options.dryRun = true;
    } else if (arg == "--as-agent") {
      line.options.asAgent = true;
    } else if (arg == "--vocab") {
      if (takeValue(line.options.vocabularyPath) != kOk) return kError;
      if (line.options.vocabularyPath.empty()) return fail("--vocab needs a FILE");
    } else if (arg == "--wait") {
      std::string seconds;
      if (takeValue(seconds) != kOk || parseWait(seconds, line.options.waitMilliseconds) != kOk) return kError;
    } else {
      // Not ours: kept in place for a command with its own options (msg read --as CLASS).
      line.words.push_back(argv[at]);
      unknown.push_back(argv[at]);
      continue;
    }
    if (arg != "--help" && arg != "-h" && arg != "--version" && arg != "--verbose") given.push_back(arg);
  }
  line.command = commandOf(line.words);
  if (!unknown.empty() && !passesUnknownOptions(line.command))
    return fail("unknown option " + unknown.front() + " (see ktrctl --help)");
  if (line.help || line.version || line.command.empty()) return kOk;
  for (const std::string& option : given)
    if (!takesOption(line.command, option))
      return fail(option + " does not apply to " + line.command + " (see ktrctl help " + line.command + ")");
  return kOk;
}

int filesAndItems(const CommandLine& line, std::size_t firstWord, Args& files, Args& items) {
  const Args rest(line.words.begin() + static_cast<long>(std::min(firstWord, line.words.size())), line.words.end());
  if (line.dashes) {
    files = rest;
    items = line.afterDashes;
  } else if (!rest.empty()) {
    files.assign(rest.begin(), rest.begin() + 1);
    items.assign(rest.begin() + 1, rest.end());
  }
  if (files.empty()) return fail("usage: ktrctl " + line.command + " " + findCommand(line.command)->synopsis);
  return kOk;
}

}  // namespace ktrctl
