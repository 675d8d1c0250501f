#include "ktrctlContainer.h"

#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"
#include "ktrctlRead.h"

namespace ktrctl {

namespace {

using Parser = KTR::KTREnvConfigBashParser;

// Whether XML 1.0 can carry `text`: well-formed UTF-8 without control characters other than
// tab, line feed and carriage return, and without U+FFFE and U+FFFF.
bool isXmlText(const std::string& text) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* end = p + text.size();
  while (p < end) {
    unsigned code = *p;
    int extra = 0;
    if (code < 0x80) {
      if (code < 0x20 && code != '\t' && code != '\n' && code != '\r') return false;
      ++p;
      continue;
    }
    if ((code & 0xe0) == 0xc0) {
      code &= 0x1f;
      extra = 1;
    } else if ((code & 0xf0) == 0xe0) {
      code &= 0x0f;
      extra = 2;
    } else if ((code & 0xf8) == 0xf0) {
      code &= 0x07;
      extra = 3;
    } else {
      return false;
    }
    if (end - p <= extra) return false;
    for (int i = 1; i <= extra; ++i) {
      if ((p[i] & 0xc0) != 0x80) return false;
      code = (code << 6) | (p[i] & 0x3f);
    }
    static const unsigned kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (code < kSmallest[extra] || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff) || code == 0xfffe ||
        code == 0xffff)
      return false;
    p += extra + 1;
  }
  return true;
}

// Reads and checks a container file's text the way every command here needs it.
int scanText(const std::string& path, const std::string& text, KTR::KTRConfigText& scan) {
  KTR::scanConfigText(text, scan);
  if (KTR::checkConfigText(scan) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  return kOk;
}

int readCommand(Session& session, const Args& args) {
  if (args.size() != 1) return fail("usage: ktrctl read CONF");
  const std::string& path = args[0];
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  KTR::KTRConfigText scan;
  KTR::scanConfigText(text, scan);
  for (const KTR::KTRAssignmentLine& line : scan.assignments)
    if (isContainerKey(session, MBQ::toLower(line.name)) && !isXmlText(line.value))
      return fail(path + ": line " + std::to_string(line.line) + ": the value of " + line.name +
                  " holds bytes that XML cannot carry (not UTF-8 text, or control characters)");
  KTR::KTREnvConfig config;
  if (int rc = readContainer(session, path, text, {}, config)) return rc;
  MBQ::MBQMessage message;
  const std::string root = std::string("<ktr:venv_config xmlns:ktr=\"") + MBQ::kTypesNamespace + "\"/>";
  if (message.parse(root) != 0 || message.iterator()->putObject(config, KTR::KTREnvConfig::Writer()) != 0)
    return fail(path + ": cannot write the configuration as a message: " + MBQ::getErrorMessage());
  const std::string xml = message.toString(true);
  // The last guard: what is printed must read back as XML.
  MBQ::MBQMessage check;
  if (check.parse(xml) != 0) return fail(path + ": the configuration does not make well-formed XML");
  std::fputs(xml.c_str(), stdout);
  return kOk;
}

int diffCommand(Session& session, const Args& args) {
  if (args.size() != 2) return fail("usage: ktrctl diff OLD NEW");
  KTR::KTREnvConfig oldConfig, newConfig;
  if (int rc = loadContainer(session, args[0], oldConfig)) return rc;
  if (int rc = loadContainer(session, args[1], newConfig)) return rc;
  Parser::Changes changes;
  session.parser->diffConfig(oldConfig, newConfig, changes);
  for (const auto& [key, value] : changes) printAssignment(MBQ::toUpper(key), value);
  // The agent's difference lists what NEW writes; a key NEW no longer has is a change too.
  KTR::KTREnvConfig oldWritten(oldConfig), newWritten(newConfig);
  Parser::updateIp(oldWritten);
  Parser::updateIp(newWritten);
  Parser::ParameterParserGet oldValues(oldWritten, session.parser->getQoSMap());
  Parser::ParameterParserGet newValues(newWritten, session.parser->getQoSMap());
  std::size_t removed = 0;
  std::string key;
  while (oldValues.getNext(key) == 0) {
    std::string value;
    if (oldValues.get(key, value) != 0 || newValues.get(key, value) == 0) continue;
    std::printf("unset %s\n", MBQ::toUpper(key).c_str());
    ++removed;
  }
  return changes.empty() && removed == 0 ? kOk : kNegative;
}

}  // namespace

int containerCommand(Session& session, const std::string& command, const Args& args) {
  if (command == "read") return readCommand(session, args);
  if (command == "diff") return diffCommand(session, args);
  return fail("unknown command '" + command + "' (see ktrctl --help)");
}

int planContainerSet(Session& session, const std::string& path, const std::string& text,
                     const std::vector<KTR::KTRNamedValue>& changes, std::string& newText) {
  KTR::KTRConfigText scan;
  if (int rc = scanText(path, text, scan)) return rc;
  Assignments lowered;
  for (const KTR::KTRNamedValue& change : changes) lowered.emplace_back(MBQ::toLower(change.name), change.value);
  // The whole file with the new values must read as the agent reads it, each value as given.
  KTR::KTREnvConfig config;
  if (int rc = readContainer(session, path, text, lowered, config)) return rc;
  if (session.options.asAgent) {
    std::istringstream old(text);
    std::ostringstream out;
    if (session.parser->putConfig(config, out, &old, true) != 0) return fail(path + ": " + MBQ::getErrorMessage());
    newText = out.str();
    return kOk;
  }
  if (KTR::setAssignments(text, changes, KTR::KTRAppendedKeys::kUpperCase, newText) != 0)
    return fail(path + ": " + MBQ::getErrorMessage());
  return kOk;
}

}  // namespace ktrctl
