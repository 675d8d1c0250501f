#include "KTRFunctionality/KTRRawConfigBashParser.h"

#include "KTRFunctionality/KTRBashParser.h"

namespace KTR {

namespace {

// Made at load, like the other tables of the library, and only read afterwards.
const KTRRawConfigBashParserSP gLoadedInstance = KTRRawConfigBashParser::getInstance();

}  // namespace

KTRRawConfigBashParserSP KTRRawConfigBashParser::getInstance() {
  static const KTRRawConfigBashParserSP instance = KTRRawConfigBashParserSP(new KTRRawConfigBashParser);
  return instance;
}

int KTRRawConfigBashParser::getConfig(std::istream& in, std::map<std::string, std::string>& config) const {
  ParameterParserPut put(config);
  return parseBashLikeConfig(put, in);
}

int KTRRawConfigBashParser::putConfig(const std::map<std::string, std::string>& config, std::ostream& out,
                                      std::istream* old, bool merge) const {
  ParameterParserGet get(config);
  return serializeBashLikeConfig(get, out, old, merge);
}

int KTRRawConfigBashParser::ParameterParserPut::put(const std::string& key, const char* value) {
  config_.insert(std::make_pair(key, std::string(value)));
  return 0;
}

int KTRRawConfigBashParser::ParameterParserGet::get(const std::string& key, std::string& value) const {
  const auto found = config_.find(key);
  if (found == config_.end()) return kUnknownKey;
  value = found->second;
  return 0;
}

int KTRRawConfigBashParser::ParameterParserGet::getNext(std::string& key) {
  if (next_ == config_.end()) return -1;
  key = next_->first;
  ++next_;
  return 0;
}

}  // namespace KTR
