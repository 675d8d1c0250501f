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
#include "ktrctlRead.h"
#include "ktrctlValidate.h"

namespace ktrctl {

namespace {

using Parser = KTR::KTREnvConfigBashParser;

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
  if (command == "validate") return validateCommand(options, args);
  for (const auto& [name, run] : commands) {
    if (command != name) continue;
    // The library logs to stderr; the tool speaks there only through its one error line.
    if (!options.verbose) MBQ::Logger::setLevel(-1);
    Session session{options, nullptr, nullptr};
    if (int rc = openParser(options, session)) return rc;
    return run(session, args);
  }
  return fail("unknown command '" + command + "' (see ktrctl --help)");
}

}  // namespace ktrctl
