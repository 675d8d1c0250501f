#include "ktrctlRead.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTRVocabulary.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"

namespace ktrctl {

namespace {

using Parser = KTR::KTREnvConfigBashParser;

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

// A number as the text says it, and nothing else: the file reader is lenient by design (a flag
// that is not "yes" reads as no, "12abc" as 12, a huge number saturates), which is right for
// files an operator cannot fix on the spot but would turn a typo on the command line into a
// change nobody asked for.
bool readNumber(const std::string& text, double& number) {
  if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos) return false;
  char* end = nullptr;
  errno = 0;
  number = std::strtod(text.c_str(), &end);
  return *end == '\0' && errno != ERANGE && std::isfinite(number);
}

bool isInteger(const std::string& text) {
  long long number = 0;
  return MBQ::strToLonglong(text, number) == 0;
}

bool valueIsValid(const Parser::QoSMap& resources, const std::string& key, const std::string& value) {
  static const char* const flags[] = {"onboot", "disabled", "offline_management", "ratebound"};
  for (const char* flag : flags)
    if (key == flag) return MBQ::toLower(value) == "yes" || MBQ::toLower(value) == "no";
  auto resource = resources.find(key);
  if (resource == resources.end()) return true;
  const KTR::QoS::Declaration& declaration = resource->second.declaration;
  double number = 0;
  if (declaration.valueType == 2 && declaration.complexity == 1) {
    std::string::size_type colon = value.find(':');
    if (colon == std::string::npos) return isInteger(value);
    return isInteger(value.substr(0, colon)) && isInteger(value.substr(colon + 1));
  }
  if (declaration.valueType == 1 && declaration.complexity == 1) return isInteger(value);
  if (declaration.valueType == 1 && declaration.complexity == 0) return readNumber(value, number);
  return false;
}

// One atom of a value in a form that ignores how it is spelled: numbers by their value, a
// GUID with or without braces, letters in any case.
std::string canonicalAtom(const std::string& atom) {
  std::string text = MBQ::toLower(atom);
  text.erase(std::remove(text.begin(), text.end(), '{'), text.end());
  text.erase(std::remove(text.begin(), text.end(), '}'), text.end());
  double number = 0;
  if (!readNumber(text, number)) return text;
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.17g", number);
  return buffer;
}

// A value as its items (separated by blanks or ";"), each the sorted list of its pieces
// (separated by "," and, within a piece, parts by ":"), every part canonical.
std::vector<std::vector<std::string>> canonicalItems(const std::string& value) {
  std::string spaced = value;
  std::replace(spaced.begin(), spaced.end(), ';', ' ');
  std::istringstream words(spaced);
  std::vector<std::vector<std::string>> items;
  std::string item;
  while (words >> item) {
    std::vector<std::string> pieces;
    std::string::size_type begin = 0;
    while (begin <= item.size()) {
      std::string::size_type end = item.find(',', begin);
      if (end == std::string::npos) end = item.size();
      std::string piece = item.substr(begin, end - begin);
      // "barrier:limit" and MAC addresses: every part canonical, in order.
      std::string canonical;
      std::string::size_type partBegin = 0;
      while (partBegin <= piece.size()) {
        std::string::size_type partEnd = piece.find(':', partBegin);
        if (partEnd == std::string::npos) partEnd = piece.size();
        canonical += (partBegin == 0 ? "" : ":") + canonicalAtom(piece.substr(partBegin, partEnd - partBegin));
        partBegin = partEnd + 1;
      }
      if (!piece.empty()) pieces.push_back(canonical);
      begin = end + 1;
    }
    std::sort(pieces.begin(), pieces.end());
    items.push_back(pieces);
  }
  return items;
}

// Whether `written` says everything `value` says: as many items, each item of `value` with all
// its pieces in an item of its own in `written`, whatever the order. The written form may add
// pieces (a NETIF item's defaults, a disk's empty uuid) but never lose or change one.
bool saysAllOf(const std::string& written, const std::string& value) {
  const auto given = canonicalItems(value);
  auto found = canonicalItems(written);
  if (given.size() != found.size()) return false;
  for (const auto& pieces : given) {
    auto holder = std::find_if(found.begin(), found.end(), [&](const std::vector<std::string>& candidate) {
      return std::includes(candidate.begin(), candidate.end(), pieces.begin(), pieces.end());
    });
    if (holder == found.end()) return false;
    found.erase(holder);
  }
  return true;
}

// The record's part of a read that the parser's getConfig does after the lines.
int finishRead(Parser::ParameterParserPut& put, KTR::KTREnvConfig& config) {
  MBQ::MBQOptionalProperty<std::set<MBQ::MBQQoS>> resources = put.collected();
  resources.specify(true);
  config.setQoSes(resources);
  config.setType(Parser::kTechnologyType);
  return KTR::createFakeVENet0Device(config);
}

std::string upper(const std::string& key) { return MBQ::toUpper(key); }

}  // namespace

int openParser(const Options& options, Session& session) {
  MBQ::MBQVocMapSP vocabulary =
      options.vocabularyPath.empty() ? KTR::defaultVocabulary() : KTR::loadVocabulary(options.vocabularyPath);
  if (!vocabulary) return fail(MBQ::getErrorMessage());
  session.vocabulary = vocabulary;
  session.parser = Parser::getInstance(vocabulary);
  if (!session.parser) return fail(options.vocabularyPath + ": " + MBQ::getErrorMessage());
  return kOk;
}

bool isContainerKey(const Session& session, const std::string& key) {
  KTR::KTREnvConfig empty;
  Parser::ParameterParserGet get(empty, session.parser->getQoSMap());
  std::string value;
  return get.get(key, value) != KTR::kUnknownKey;
}

namespace {

// What the record holds (`written`, as its getter gave it) when that does not say all `value`
// says, else empty.
std::string misreading(const std::string& key, const std::string& written, const std::string& value) {
  // TECHNOLOGIES is read by the agent but never written: there is nothing to compare with.
  if (key == "technologies" || saysAllOf(written, value)) return "";
  return "the agent would read this as \"" + written + "\"";
}

// An integer resource in its declared form is held exactly, so only other values need the
// record's rendering (reading a resource back searches the record's whole list).
bool heldExactly(const Parser::QoSMap& resources, const std::string& key, const std::string& value) {
  auto resource = resources.find(key);
  return resource != resources.end() && resource->second.declaration.complexity == 1 &&
         valueIsValid(resources, key, value);
}

}  // namespace

int checkValue(const Session& session, const std::string& path, const std::string& key, const std::string& value) {
  const std::string what = path + ": " + upper(key) + "=" + value + ": ";
  if (!isContainerKey(session, key)) return fail(path + ": unknown key " + upper(key) + " (raw set sets any key)");
  if (!valueIsValid(session.parser->getQoSMap(), key, value)) {
    if (value.empty()) return fail(what + "a flag or number cannot be cleared");
    return fail(what + "the value does not parse");
  }
  KTR::KTREnvConfig probe;
  Parser::ParameterParserPut put(probe, session.parser->getQoSMap());
  if (put.put(key, value.c_str()) != 0 || finishRead(put, probe) != 0) return fail(what + "the value does not parse");
  Parser::ParameterParserGet get(probe, session.parser->getQoSMap());
  std::string written;
  if (get.get(key, written) != 0) written.clear();
  const std::string misread = misreading(key, written, value);
  return misread.empty() ? kOk : fail(what + misread);
}

std::vector<std::pair<std::string, std::string>> misreadings(const Session& session, const KTR::KTREnvConfig& config,
                                                             const std::string& text) {
  std::vector<std::pair<std::string, std::string>> found;
  KTR::KTRConfigText scan;
  KTR::scanConfigText(text, scan);
  Parser::ParameterParserGet get(config, session.parser->getQoSMap());
  std::set<std::string> seen;
  for (auto line = scan.assignments.rbegin(); line != scan.assignments.rend(); ++line) {
    const std::string key = MBQ::toLower(line->name);
    if (!seen.insert(key).second || heldExactly(session.parser->getQoSMap(), key, line->value)) continue;
    std::string written;
    const int rc = get.get(key, written);
    if (rc == KTR::kUnknownKey) continue;  // no key of the record: the agent skips it
    if (rc != 0) written.clear();
    const std::string misread = misreading(key, written, line->value);
    if (!misread.empty()) found.emplace_back(key, misread);
  }
  return found;
}

int readContainer(Session& session, const std::string& path, const std::string& text,
                  const Assignments& changes, KTR::KTREnvConfig& config) {
  Parser::ParameterParserPut put(config, session.parser->getQoSMap());
  ReportingPut reporting(put, path, session.options.verbose);
  std::istringstream in(text);
  if (KTR::parseBashLikeConfig(reporting, in) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  for (const auto& [key, value] : changes) {
    if (int rc = checkValue(session, path, key, value)) return rc;
    put.put(key, value.c_str());
  }
  if (finishRead(put, config) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  return kOk;
}

int loadContainer(Session& session, const std::string& path, KTR::KTREnvConfig& config) {
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  return readContainer(session, path, text, {}, config);
}

}  // namespace ktrctl
