#include "ktrctlRead.h"

#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>

#include "KTRFunctionality/KTRBashParser.h"
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

}  // namespace ktrctl
