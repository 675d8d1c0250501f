// ktrctl: the node operator's tool for the container technology's configuration files.
// Parses the command line, calls the library and prints; the work itself is the library's.

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTRHQConfigBashParser.h"
#include "KTRFunctionality/KTRLibFunctionality.h"
#include "KTRFunctionality/KTRRawConfigBashParser.h"
#include "KTRFunctionality/KTRVocabulary.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "ktrctlCache.h"
#include "ktrctlContainer.h"
#include "ktrctlMsg.h"
#include "ktrctlOutput.h"

namespace {

const char* const kUsage =
    "usage: ktrctl [--vocab FILE] [--verbose] COMMAND ARGS...\n"
    "\n"
    "Container configuration files:\n"
    "  read CONF                     print CONF as the agent's XML message\n"
    "  get CONF [KEY...]             print KEY=\"value\" lines as writing CONF would give them\n"
    "  set [--no-merge] CONF KEY=VALUE...\n"
    "                                change keys and replace CONF atomically\n"
    "  diff OLD NEW                  print the keys whose written values differ\n"
    "  validate CONF                 check resource values against the vocabulary's formulas\n"
    "\n"
    "Other files:\n"
    "  raw get FILE [KEY...]         print key=value lines of any KEY=\"value\" file\n"
    "  raw set FILE KEY=VALUE...     change keys of such a file atomically\n"
    "  global get FILE [KEY...]      the node's global configuration file, same conventions\n"
    "  global set FILE KEY=VALUE...\n"
    "  cache stat|check [PATH]       the shared template cache (default: uploads folder)\n"
    "  msg types|tags                the records the library exchanges; the tag table\n"
    "  msg read [--as CLASS] FILE    read a message record and print it as written back\n"
    "\n"
    "Options:\n"
    "  --vocab FILE   the vocabulary (XML) to use; default: the built-in vocabulary\n"
    "  --verbose      also report skipped lines and keys on stderr\n"
    "  --help         this text\n"
    "  --version      the library version\n"
    "\n"
    "Exit status: 0 success; 1 a negative answer (differences or violations found, a key\n"
    "without a value); 2 an error.\n";

using ktrctl::Args;
using ktrctl::fail;
using ktrctl::Options;

// Map-shaped files (raw and global) share their get and set: only the parser differs.
struct MapFile {
  std::function<int(std::istream&)> read;
  std::function<int(const std::string& key, std::string& value)> get;
  std::function<int(std::string& key)> next;  // walks the keys: 0 per key, then -1
  std::function<void(const std::string& key, const std::string& value)> assign;
  std::function<int(std::ostream& out, std::istream* old)> write;
};

int mapGet(const Options&, MapFile& file, const std::string& path, const Args& keys) {
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  std::istringstream in(text);
  if (file.read(in) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  int status = 0;
  std::string value;
  if (keys.empty()) {
    std::string key;
    while (file.next(key) == 0) {
      value.clear();
      if (file.get(key, value) == 0) std::printf("%s=%s\n", key.c_str(), value.c_str());
    }
    return 0;
  }
  for (const auto& key : keys) {
    value.clear();
    if (file.get(MBQ::toLower(key), value) == 0)
      std::printf("%s=%s\n", MBQ::toLower(key).c_str(), value.c_str());
    else
      status = 1;
  }
  return status;
}

int mapSet(const Options&, MapFile& file, const std::string& path, const Args& assignments) {
  if (assignments.empty()) return fail("set needs at least one KEY=VALUE");
  std::vector<std::pair<std::string, std::string>> changes;
  for (const auto& assignment : assignments) {
    std::string key, value;
    if (KTR::splitAssignment(assignment, key, value) != 0) return fail(MBQ::getErrorMessage());
    changes.emplace_back(MBQ::toLower(key), value);
  }
  KTR::KTRConfigFileLock lock;
  if (lock.lock(path) != 0) return fail(MBQ::getErrorMessage());
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  std::istringstream in(text);
  if (file.read(in) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  for (const auto& [key, value] : changes) file.assign(key, value);
  std::istringstream old(text);
  std::ostringstream out;
  if (file.write(out, &old) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  if (KTR::replaceConfigFile(path, out.str()) != 0) return fail(MBQ::getErrorMessage());
  return 0;
}

MapFile rawFile(std::map<std::string, std::string>& values, std::unique_ptr<KTR::KTRRawConfigBashParser::ParameterParserGet>& get) {
  auto parser = KTR::KTRRawConfigBashParser::getInstance();
  MapFile file;
  file.read = [parser, &values](std::istream& in) { return parser->getConfig(in, values); };
  file.get = [&values](const std::string& key, std::string& value) {
    auto found = values.find(key);
    if (found == values.end()) return KTR::kUnknownKey;
    value = found->second;
    return 0;
  };
  file.next = [&values, &get](std::string& key) {
    if (!get) get = std::make_unique<KTR::KTRRawConfigBashParser::ParameterParserGet>(values);
    return get->getNext(key);
  };
  file.assign = [&values](const std::string& key, const std::string& value) { values[key] = value; };
  file.write = [parser, &values](std::ostream& out, std::istream* old) {
    return parser->putConfig(values, out, old, true);
  };
  return file;
}

MapFile globalFile(KTR::KTRVtSettings& settings, std::unique_ptr<KTR::KTRHQConfigBashParser::ParameterParserGet>& get) {
  auto parser = KTR::KTRHQConfigBashParser::getInstance();
  MapFile file;
  file.read = [parser, &settings](std::istream& in) { return parser->getConfig(in, settings); };
  file.get = [&settings](const std::string& key, std::string& value) {
    return KTR::KTRHQConfigBashParser::ParameterParserGet(settings).get(key, value);
  };
  file.next = [&settings, &get](std::string& key) {
    if (!get) get = std::make_unique<KTR::KTRHQConfigBashParser::ParameterParserGet>(settings);
    return get->getNext(key);
  };
  // A new value replaces the stored one: the first assignment of a file wins on reading, so
  // the old entry goes before the parser takes the new one.
  file.assign = [&settings](const std::string& key, const std::string& value) {
    auto raw = settings.getSettingsMap();
    raw.erase(key);
    settings.setSettingsMap(raw);
    KTR::KTRHQConfigBashParser::ParameterParserPut(settings).put(key, value.c_str());
  };
  file.write = [parser, &settings](std::ostream& out, std::istream* old) {
    return parser->putConfig(settings, out, old, true);
  };
  return file;
}

int mapCommand(const Options& options, const std::string& kind, const Args& args) {
  if (args.size() < 2 || (args[0] != "get" && args[0] != "set"))
    return fail("usage: ktrctl " + kind + " get FILE [KEY...] | " + kind + " set FILE KEY=VALUE...");
  const std::string& path = args[1];
  const Args rest(args.begin() + 2, args.end());
  std::map<std::string, std::string> values;
  std::unique_ptr<KTR::KTRRawConfigBashParser::ParameterParserGet> rawGet;
  KTR::KTRVtSettings settings;
  std::unique_ptr<KTR::KTRHQConfigBashParser::ParameterParserGet> globalGet;
  MapFile file = kind == "raw" ? rawFile(values, rawGet) : globalFile(settings, globalGet);
  return args[0] == "get" ? mapGet(options, file, path, rest) : mapSet(options, file, path, rest);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  int at = 1;
  for (; at < argc && std::strncmp(argv[at], "--", 2) == 0; ++at) {
    const std::string option = argv[at];
    if (option == "--help") {
      std::fputs(kUsage, stdout);
      return 0;
    }
    if (option == "--version") {
      std::printf("ktrctl %s\n", KTR::ktrLibraryVersion());
      return 0;
    }
    if (option == "--verbose") {
      options.verbose = true;
    } else if (option == "--vocab") {
      if (++at >= argc) return fail("--vocab needs a FILE");
      options.vocabularyPath = argv[at];
    } else {
      return fail("unknown option " + option + " (see ktrctl --help)");
    }
  }
  if (at >= argc) return fail("no command (see ktrctl --help)");
  const std::string command = argv[at];
  const Args args(argv + at + 1, argv + argc);
  if (command == "raw" || command == "global") return mapCommand(options, command, args);
  if (command == "msg") return ktrctl::msgCommand(options, args);
  if (command == "cache") return ktrctl::cacheCommand(options, args);
  return ktrctl::containerCommand(options, command, args);
}
