#include "KTRFunctionality/KTRHQConfigBashParser.h"

#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQMessage/MBQOptionalProperty.h"

namespace KTR {

namespace {

constexpr const char* kTemplateKey = "template";
constexpr const char* kLockDirKey = "lockdir";
constexpr const char* kOfflineServiceKey = "offline_service";

// The keys getNext produces from the parser itself rather than from the settings map. The
// empty key sorts first and is stepped over: it makes getNext produce the first map key
// before "lockdir" and "template", and nothing at all when the map holds no other key. That
// order is deliberate and kept.
const std::set<std::string>& interpretedKeys() {
  static const std::set<std::string> keys = {"", kLockDirKey, kTemplateKey};
  return keys;
}

// Built at load with the parser, like the other tables of the library.
const std::set<std::string>& gLoadedKeys = interpretedKeys();
const KTRHQConfigBashParserSP gLoadedInstance = KTRHQConfigBashParser::getInstance();

// Consecutive spaces give empty names on purpose; no service is expected to have one.
std::set<std::string> splitAtSpaces(const std::string& text) {
  std::set<std::string> names;
  std::string::size_type start = 0;
  for (;;) {
    const std::string::size_type space = text.find(' ', start);
    names.insert(text.substr(start, space == std::string::npos ? std::string::npos : space - start));
    if (space == std::string::npos) return names;
    start = space + 1;
  }
}

}  // namespace

KTRHQConfigBashParserSP KTRHQConfigBashParser::getInstance() {
  static const KTRHQConfigBashParserSP instance(new KTRHQConfigBashParser);
  return instance;
}

int KTRHQConfigBashParser::getConfig(std::istream& in, KTRVtSettings& settings) const {
  ParameterParserPut put(settings);
  return parseBashLikeConfig(put, in);
}

int KTRHQConfigBashParser::putConfig(const KTRVtSettings& settings, std::ostream& out, std::istream* old,
                                     bool merge) const {
  ParameterParserGet get(settings);
  return serializeBashLikeConfig(get, out, old, merge);
}

int KTRHQConfigBashParser::ParameterParserPut::put(const std::string& key, const char* value) {
  if (settings_.getSettingsMap().count(key) == 0) {
    std::map<std::string, std::string> raw = settings_.getSettingsMap();
    raw.emplace(key, value);
    settings_.setSettingsMap(raw);
  }
  if (key == kTemplateKey) {
    settings_.setTemplateDir(MBQ::MBQOptionalProperty<std::string>(value));
  } else if (key == kLockDirKey) {
    settings_.setLockDir(MBQ::MBQOptionalProperty<std::string>(value));
  } else if (key == kOfflineServiceKey) {
    const std::set<std::string> names = splitAtSpaces(value);
    MBQ::MBQOptionalProperty<std::vector<KTRRedirectService>> services = settings_.getOfflineServices();
    for (KTRRedirectService& service : services.get()) service.setFlag(names.count(service.getName()) != 0);
    settings_.setOfflineServices(services);
  }
  return 0;
}

KTRHQConfigBashParser::ParameterParserGet::ParameterParserGet(const KTRVtSettings& settings)
    : settings_(settings),
      nextInterpreted_(interpretedKeys().begin()),
      nextRaw_(settings.getSettingsMap().begin()) {}

int KTRHQConfigBashParser::ParameterParserGet::get(const std::string& key, std::string& value) const {
  if (key == kTemplateKey || key == kLockDirKey) {
    const MBQ::MBQOptionalProperty<std::string>& dir =
        key == kTemplateKey ? settings_.getTemplateDir() : settings_.getLockDir();
    if (!dir.isSpecified()) return kKeyWithoutValue;
    value = dir.get();
    return 0;
  }
  if (key == kOfflineServiceKey) {
    const MBQ::MBQOptionalProperty<std::vector<KTRRedirectService>>& services = settings_.getOfflineServices();
    if (!services.isSpecified()) return kKeyWithoutValue;
    for (const KTRRedirectService& service : services.get()) {
      if (!service.getFlag()) continue;
      if (!value.empty()) value += ' ';
      value += service.getName();
    }
    return 0;
  }
  const std::map<std::string, std::string>& raw = settings_.getSettingsMap();
  const auto found = raw.find(key);
  if (found == raw.end()) return kUnknownKey;
  value = found->second;
  return 0;
}

int KTRHQConfigBashParser::ParameterParserGet::getNext(std::string& key) {
  const std::set<std::string>& interpreted = interpretedKeys();
  if (nextInterpreted_ != interpreted.end()) {
    const std::string& candidate = *nextInterpreted_++;
    if (!candidate.empty()) {
      key = candidate;
      return 0;
    }
  }
  const std::map<std::string, std::string>& raw = settings_.getSettingsMap();
  while (nextRaw_ != raw.end() && interpreted.count(nextRaw_->first) != 0) ++nextRaw_;
  if (nextRaw_ == raw.end()) return -1;
  key = nextRaw_->first;
  ++nextRaw_;
  return 0;
}

}  // namespace KTR
