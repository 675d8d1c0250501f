#include "ktrctlContainer.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "KTRFunctionality/KTRVocabulary.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"
#include "MBQCore/MBQString.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace ktrctl {

namespace {

using Parser = KTR::KTREnvConfigBashParser;
using Assignments = std::vector<std::pair<std::string, std::string>>;

// The put side of a read, telling in --verbose mode which keys it skipped.
class ReportingPut {
 public:
  ReportingPut(Parser::ParameterParserPut& put, const std::string& path, bool verbose)
      : put_(put), path_(path), verbose_(verbose) {}
  int put(const std::string& key, const char* value) {
    int rc = put_.put(key, value);
    if (rc != 0 && verbose_) {
      const char* why = rc == KTR::kUnknownKey ? "unknown key" : "value not taken for key";
      std::fprintf(stderr, "ktrctl: %s: %s %s (skipped)\n", path_.c_str(), why, MBQ::toUpper(key).c_str());
    }
    return rc;
  }

 private:
  Parser::ParameterParserPut& put_;
  const std::string& path_;
  bool verbose_;
};

// A value given on the command line must be what it claims to be. The file reader is lenient
// by design (a flag that is not "yes" reads as no, "12abc" as 12), which is right for files an
// operator cannot fix on the spot but would silently turn a typo on the command line into a
// change nobody asked for.
bool isNumber(const std::string& text) {
  long long number = 0;
  return MBQ::strToLonglong(text, number) == 0;
}

bool isDecimal(const std::string& text) {
  if (text.empty()) return false;
  char* end = nullptr;
  std::strtod(text.c_str(), &end);
  return *end == '\0' && text.find_first_of("xXnNiI") == std::string::npos;
}

bool valueIsValid(const Parser::QoSMap& resources, const std::string& key, const std::string& value) {
  static const char* const flags[] = {"onboot", "disabled", "offline_management", "ratebound"};
  for (const char* flag : flags)
    if (key == flag) return MBQ::toLower(value) == "yes" || MBQ::toLower(value) == "no";
  auto resource = resources.find(key);
  if (resource == resources.end()) return true;
  const KTR::QoS::Declaration& declaration = resource->second.declaration;
  if (declaration.valueType == 2 && declaration.complexity == 1) {
    std::string::size_type colon = value.find(':');
    if (colon == std::string::npos) return isNumber(value);
    return isNumber(value.substr(0, colon)) && isNumber(value.substr(colon + 1));
  }
  if (declaration.valueType == 1 && declaration.complexity == 1) return isNumber(value);
  if (declaration.valueType == 1 && declaration.complexity == 0) return isDecimal(value);
  return false;
}

struct Session {
  const Options& options;
  KTR::KTREnvConfigBashParserSP parser;
};

int openParser(const Options& options, Session& session) {
  MBQ::MBQVocMapSP vocabulary =
      options.vocabularyPath.empty() ? KTR::defaultVocabulary() : KTR::loadVocabulary(options.vocabularyPath);
  if (!vocabulary) return fail(MBQ::getErrorMessage());
  session.parser = Parser::getInstance(vocabulary);
  if (!session.parser) return fail(options.vocabularyPath + ": " + MBQ::getErrorMessage());
  return kOk;
}

// Reads a container file as the agent does, applying `changes` after the file's own lines as if
// they were further lines of it. On failure the error line is already printed.
int readContainer(Session& session, const std::string& path, const std::string& text,
                  const Assignments& changes, KTR::KTREnvConfig& config) {
  Parser::ParameterParserPut put(config, session.parser->getQoSMap());
  ReportingPut reporting(put, path, session.options.verbose);
  std::istringstream in(text);
  if (KTR::parseBashLikeConfig(reporting, in) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  for (const auto& [key, value] : changes) {
    if (!valueIsValid(session.parser->getQoSMap(), key, value))
      return fail(path + ": value '" + value + "' of " + MBQ::toUpper(key) + " does not parse");
    int rc = put.put(key, value.c_str());
    if (rc == KTR::kUnknownKey) return fail(path + ": unknown key " + MBQ::toUpper(key));
    if (rc != 0) return fail(path + ": value '" + value + "' of " + MBQ::toUpper(key) + " does not parse");
  }
  // The rest of a read, as the parser's own getConfig finishes it.
  MBQ::MBQOptionalProperty<std::set<MBQ::MBQQoS>> resources = put.collected();
  resources.specify(true);
  config.setQoSes(resources);
  config.setType(Parser::kTechnologyType);
  if (KTR::createFakeVENet0Device(config) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  return kOk;
}

int loadContainer(Session& session, const std::string& path, KTR::KTREnvConfig& config) {
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  return readContainer(session, path, text, {}, config);
}

void printAssignment(const std::string& key, const std::string& value) {
  std::printf("%s=\"%s\"\n", MBQ::toUpper(key).c_str(), value.c_str());
}

int readCommand(Session& session, const Args& args) {
  if (args.size() != 1) return fail("usage: ktrctl read CONF");
  KTR::KTREnvConfig config;
  if (int rc = loadContainer(session, args[0], config)) return rc;
  MBQ::MBQMessage message;
  const std::string root = std::string("<ktr:venv_config xmlns:ktr=\"") + MBQ::kTypesNamespace + "\"/>";
  if (message.parse(root) != 0 || message.iterator()->putObject(config, KTR::KTREnvConfig::Writer()) != 0)
    return fail(args[0] + ": cannot write the configuration as a message: " + MBQ::getErrorMessage());
  std::fputs(message.toString(true).c_str(), stdout);
  return kOk;
}

int getCommand(Session& session, const Args& args) {
  if (args.empty()) return fail("usage: ktrctl get CONF [KEY...]");
  KTR::KTREnvConfig config;
  if (int rc = loadContainer(session, args[0], config)) return rc;
  // The values writing would give: the addresses come from the host-routed interface.
  KTR::KTREnvConfig written(config);
  Parser::updateIp(written);
  Parser::ParameterParserGet get(written, session.parser->getQoSMap());
  std::vector<std::pair<std::string, std::string>> lines;
  int status = kOk;
  if (args.size() == 1) {
    std::string key;
    while (get.getNext(key) == 0) {
      std::string value;
      if (get.get(key, value) == 0) lines.emplace_back(key, value);
    }
  } else {
    for (auto key = args.begin() + 1; key != args.end(); ++key) {
      std::string value;
      int rc = get.get(MBQ::toLower(*key), value);
      if (rc == KTR::kUnknownKey) return fail(args[0] + ": unknown key " + MBQ::toUpper(*key));
      if (rc == 0)
        lines.emplace_back(*key, value);
      else
        status = kNegative;
    }
  }
  for (const auto& [key, value] : lines) printAssignment(key, value);
  return status;
}

int setCommand(Session& session, const Args& args) {
  bool merge = true;
  Args rest = args;
  if (!rest.empty() && rest[0] == "--no-merge") {
    merge = false;
    rest.erase(rest.begin());
  }
  if (rest.size() < 2) return fail("usage: ktrctl set [--no-merge] CONF KEY=VALUE [KEY=VALUE...]");
  const std::string& path = rest[0];
  Assignments changes;
  for (auto assignment = rest.begin() + 1; assignment != rest.end(); ++assignment) {
    std::string key, value;
    if (KTR::splitAssignment(*assignment, key, value) != 0) return fail(MBQ::getErrorMessage());
    changes.emplace_back(MBQ::toLower(key), value);
  }
  KTR::KTRConfigFileLock lock;
  if (lock.lock(path) != 0) return fail(MBQ::getErrorMessage());
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  KTR::KTREnvConfig config;
  if (int rc = readContainer(session, path, text, changes, config)) return rc;
  std::istringstream old(text);
  std::ostringstream out;
  if (session.parser->putConfig(config, out, merge ? &old : nullptr, merge) != 0)
    return fail(path + ": " + MBQ::getErrorMessage());
  if (KTR::replaceConfigFile(path, out.str()) != 0) return fail(MBQ::getErrorMessage());
  return kOk;
}

int diffCommand(Session& session, const Args& args) {
  if (args.size() != 2) return fail("usage: ktrctl diff OLD NEW");
  KTR::KTREnvConfig oldConfig, newConfig;
  if (int rc = loadContainer(session, args[0], oldConfig)) return rc;
  if (int rc = loadContainer(session, args[1], newConfig)) return rc;
  Parser::Changes changes;
  session.parser->diffConfig(oldConfig, newConfig, changes);
  for (const auto& [key, value] : changes) printAssignment(key, value);
  return changes.empty() ? kOk : kNegative;
}

}  // namespace

int containerCommand(const Options& options, const std::string& command, const Args& args) {
  using Command = int (*)(Session&, const Args&);
  const std::pair<const char*, Command> commands[] = {
      {"read", readCommand}, {"get", getCommand}, {"set", setCommand}, {"diff", diffCommand}};
  if (command == "validate") return fail("validate is not available in this build");
  for (const auto& [name, run] : commands) {
    if (command != name) continue;
    // The library logs to stderr; the tool speaks there only through its one error line.
    if (!options.verbose) MBQ::Logger::setLevel(-1);
    Session session{options, nullptr};
    if (int rc = openParser(options, session)) return rc;
    return run(session, args);
  }
  return fail("unknown command '" + command + "' (see ktrctl --help)");
}

}  // namespace ktrctl
