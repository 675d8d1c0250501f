#include "KTRFunctionality/KTREnvConfigBashParser.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <iterator>

#include "KTRFunctionality/KTRBashParse.h"
#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRDiskConverter.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRTEM.h"
#include "KTRFunctionality/KTRVEth.h"
#include "KTRFunctionality/KTRVPSType.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"
#include "MBQCore/MBQString.h"
#include "MBQFunctionalityCore/MBQInterfaceRate.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

KTRBashParse::~KTRBashParse() = default;

namespace {

constexpr const char* kModule = "KTRFunctionality";
constexpr const char* kSourcePath = "ktr/lib/src/KTRFunctionality/KTREnvConfigBashParser";
constexpr const char* kResourceCategory = "qos";
constexpr const char* kValueTypeElement = MBQ::MBQVocMap::kValueTypeElement;
constexpr const char* kFakeDevice = "venet0";
constexpr const char* kDhcpWord = "dhcp";

// ---------------------------------------------------------------- resource value formats
//
// One format per declaration, tried in a chain by equality with the resource's declaration;
// the terminal step has no format. The chain is a type so that adding a format is one line.

// Whole numbers as "%lld" reads them. strtoll has the same syntax (white space, sign, digits,
// stop at the first other character, 0 without digits) and saturates where sscanf's behaviour
// would be undefined.
struct Integer {
  static long long read(const std::string& text) { return std::strtoll(text.c_str(), nullptr, 10); }
  static std::string write(long long value) { return MBQ::longlongToStr(value); }
};

namespace Float {

// Percentages, held in hundredths of a percent. Read in single precision as "%f" reads them
// (strtof has the same syntax and no undefined behaviour on overflow): the rounding of the
// float is part of the value the agent has always stored, so it is kept.
struct Percent {
  static long long read(const std::string& text) {
    const double percent = static_cast<double>(std::strtof(text.c_str(), nullptr)) * 100.0;
    if (std::isnan(percent)) return 0;
    // 2^63 is exact as a double; anything at or beyond it does not fit.
    if (percent >= 9223372036854775808.0) return LLONG_MAX;
    if (percent < -9223372036854775808.0) return LLONG_MIN;
    return static_cast<long long>(percent);
  }
  static std::string write(long long value) { return MBQ::doubleToStr(static_cast<double>(value) / 100.0); }
};

}  // namespace Float

template <class Number>
struct Simple {
  static int read(const std::string& text, MBQ::MBQQoS& qos) {
    qos.setLimit(Number::read(text));
    return 0;
  }
  static int write(const MBQ::MBQQoS& qos, std::string& text) {
    text = Number::write(qos.getLimit());
    return 0;
  }
};

template <class Number>
struct Complex {
  static int read(const std::string& text, MBQ::MBQQoS& qos) {
    const std::string::size_type colon = text.find(':');
    if (colon == std::string::npos) return Simple<Number>::read(text, qos);
    // The number reader stops at the colon.
    qos.setBarrier(Number::read(text));
    qos.setLimit(Number::read(text.substr(colon + 1)));
    return 0;
  }
  static int write(const MBQ::MBQQoS& qos, std::string& text) {
    text = qos.getBarrier().isSpecified() ? Number::write(qos.getBarrier().get()) + ":" + Number::write(qos.getLimit())
                                          : Number::write(qos.getLimit());
    return 0;
  }
};

struct Terminal {
  static int read(const QoS::Declaration&, const std::string&, MBQ::MBQQoS&) { return QoS::kNoValueFormat; }
  static int write(const QoS::Declaration&, const MBQ::MBQQoS&, std::string&) { return QoS::kNoValueFormat; }
};

template <int ValueType, int Complexity, class Format, class Next>
struct Variant {
  static bool matches(const QoS::Declaration& declaration) {
    return declaration == QoS::Declaration{ValueType, Complexity};
  }
  static int read(const QoS::Declaration& declaration, const std::string& text, MBQ::MBQQoS& qos) {
    return matches(declaration) ? Format::read(text, qos) : Next::read(declaration, text, qos);
  }
  static int write(const QoS::Declaration& declaration, const MBQ::MBQQoS& qos, std::string& text) {
    return matches(declaration) ? Format::write(qos, text) : Next::write(declaration, qos, text);
  }
};

using ValueFormats =
    Variant<2, 1, Complex<Integer>, Variant<1, 1, Simple<Integer>, Variant<1, 0, Simple<Float::Percent>, Terminal>>>;

QoS::Declaration readDeclaration(const MBQ::MBQMessageIterator& parameter) {
  QoS::Declaration declaration;
  // A missing or non-numeric element leaves the default.
  parameter.getValue(std::string(kValueTypeElement), declaration.valueType);
  parameter.getValue(Tag::kComplexity, declaration.complexity);
  return declaration;
}

// ---------------------------------------------------------------- the fixed key table

// DISK: the container's image disks (KTRDiskConverter.h). A record without a disk list has
// nothing to write, like any unspecified property: the old DISK line stays and none is
// appended.
class DiskParser : public KTRBashParse {
 public:
  int read(const std::string& key, const std::string& value, KTREnvConfig& config) const override {
    return Disk::readDisks(key, value, config);
  }
  int write(const std::string& key, const KTREnvConfig& config, std::string& value) const override {
    std::shared_ptr<HardDisk::List::Base> disks;
    config.getHardDisks(disks);
    if (!disks) return -1;
    return Disk::writeDisks(key, config, value);
  }
};

using MBQ::MBQEnvConfig;
using MBQ::MBQInterfaceRate;
using MBQ::MBQIPAddress;
using Names = std::set<std::string>;
using NameValues = std::map<std::string, std::string>;
using Pair = std::pair<std::string, std::shared_ptr<KTRBashParse>>;

template <class Parser>
std::shared_ptr<KTRBashParse> make() {
  return std::make_shared<Parser>();
}

template <class Record, class Prop, int (Record::*Setter)(const MBQ::MBQOptionalProperty<Prop>&),
          int (Record::*Getter)(MBQ::MBQOptionalProperty<Prop>&) const>
using TextForm = KTRBashParseString<Record, Prop, Setter, Getter, FromStringConverter<Prop>, ToStringConverter<Prop>>;

template <class Record, class Item, int (Record::*Setter)(const MBQ::MBQOptionalProperty<std::vector<Item>>&),
          int (Record::*Getter)(MBQ::MBQOptionalProperty<std::vector<Item>>&) const, class InConv, class OutConv,
          class Delimiter = spaceDelimiterProvider>
using VectorOf = KTRBashParseGenericList<Record, std::vector<Item>, Setter, Getter,
                                         std::back_insert_iterator<std::vector<Item>>, InConv, OutConv, Delimiter>;

template <int (KTREnvConfig::*Setter)(const MBQ::MBQOptionalProperty<NameValues>&),
          int (KTREnvConfig::*Getter)(MBQ::MBQOptionalProperty<NameValues>&) const>
using NameValueMap =
    KTRBashParseGenericList<KTREnvConfig, NameValues, Setter, Getter, insert_iterator_simple<NameValues>,
                            Format::NameValue<':'>, Format::NameValue<':'>, spaceDelimiterProvider>;

// The key under which a technology list is known, in template descriptions as here.
const std::string kTechnologiesKey = "technologies";

KTREnvConfigBashParser::KeyTable buildKeyTable() {
  // The last pair is the end mark; it goes into the table too, where the empty key sorts
  // first, and the key order of getNext depends on it.
  static const Pair entries[32] = {
      {"ve_root",
       make<KTRBashParseString<KTREnvConfig, std::string, &KTREnvConfig::setVERootVar, &KTREnvConfig::getVERootVar>>()},
      {"ve_private", make<KTRBashParseString<KTREnvConfig, std::string, &KTREnvConfig::setVEPrivateVar,
                                             &KTREnvConfig::getVEPrivateVar>>()},
      {"features", make<NameValueMap<&KTREnvConfig::setFeatures, &KTREnvConfig::getFeatures>>()},
      {"devnodes", make<NameValueMap<&KTREnvConfig::setDevNodes, &KTREnvConfig::getDevNodes>>()},
      {"offline_management", make<KTRBashParseBool<KTREnvConfig, &KTREnvConfig::setOfflineManagement,
                                                   &KTREnvConfig::getOfflineManagement>>()},
      {"onboot", make<KTRBashParseBool<KTREnvConfig, &KTREnvConfig::setOnBoot, &KTREnvConfig::getOnBoot>>()},
      {"disabled", make<KTRBashParseBool<MBQEnvConfig, &MBQEnvConfig::setDisabled, &MBQEnvConfig::getDisabled>>()},
      {"hostname", make<KTRBashParseStringNotEmpty<MBQEnvConfig, std::string, &MBQEnvConfig::setHostname,
                                                   &MBQEnvConfig::getHostname>>()},
      {"ostemplate",
       make<TextForm<KTREnvConfig, KTRTemplate, &KTREnvConfig::setOsTemplate, &KTREnvConfig::getOsTemplate>>()},
      {"distribution",
       make<TextForm<KTREnvConfig, KTRDistribution, &KTREnvConfig::setDistribution, &KTREnvConfig::getDistribution>>()},
      {"nameserver", make<VectorOf<MBQEnvConfig, MBQIPAddress, &MBQEnvConfig::setNameservers,
                                   &MBQEnvConfig::getNameservers, AddressConverter, AddressConverter>>()},
      {"ip_address", make<VectorOf<MBQEnvConfig, MBQIPAddress, &MBQEnvConfig::setAddresses, &MBQEnvConfig::getAddresses,
                                   AddressConverter, AddressConverter>>()},
      {"templates", make<VectorOf<KTREnvConfig, KTRTemplate, &KTREnvConfig::setTemplates, &KTREnvConfig::getTemplates,
                                  FromStringConverter<KTRTemplate>, ToStringConverter<KTRTemplate>>>()},
      {"netif",
       make<VectorOf<KTREnvConfig, KTRNetVEth, &KTREnvConfig::setNetVEths, &KTREnvConfig::getNetVEths,
                     FromStringConverter<KTRNetVEth>, ToStringConverter<KTRNetVEth>, semicolonDelimiterProvider>>()},
      {"offline_service", make<KTRBashParseStringList<KTREnvConfig, &KTREnvConfig::setOfflineServices,
                                                      &KTREnvConfig::getOfflineServices>>()},
      {"roles",
       make<KTRBashParseStringList<KTREnvConfig, &KTREnvConfig::setServerRoles, &KTREnvConfig::getServerRoles>>()},
      {"iptables",
       make<KTRBashParseStringList<KTREnvConfig, &KTREnvConfig::setIPTables, &KTREnvConfig::getIPTables>>()},
      {"netfilter", make<KTRBashParseString<KTREnvConfig, std::string, &KTREnvConfig::setNetfilterMode,
                                            &KTREnvConfig::getNetfilterMode>>()},
      {"name",
       make<KTRBashParseStringNotEmpty<MBQEnvConfig, std::string, &MBQEnvConfig::setName, &MBQEnvConfig::getName>>()},
      {"description", make<KTRBashParseStringNotEmpty<MBQEnvConfig, std::string, &MBQEnvConfig::setDescription,
                                                      &MBQEnvConfig::getDescription>>()},
      {"searchdomain",
       make<KTRBashParseStringList<MBQEnvConfig, &MBQEnvConfig::setSearchDomains, &MBQEnvConfig::getSearchDomains>>()},
      {"rate", make<VectorOf<KTREnvConfig, MBQInterfaceRate, &KTREnvConfig::setRatesList, &KTREnvConfig::getRatesList,
                             FromStringConverter<MBQInterfaceRate>, ToStringConverter<MBQInterfaceRate>>>()},
      {"slmmode",
       make<KTRBashParseString<KTREnvConfig, std::string, &KTREnvConfig::setSLMMode, &KTREnvConfig::getSLMMode>>()},
      {"ve_type", make<TextForm<KTREnvConfig, KTRVPSType, &KTREnvConfig::setVEType, &KTREnvConfig::getVEType>>()},
      {"uuid", make<KTRBashParseString<KTREnvConfig, std::string, &KTREnvConfig::setUUID, &KTREnvConfig::getUUID>>()},
      {"origin_sample", make<KTRBashParseString<KTREnvConfig, std::string, &KTREnvConfig::setOriginSample,
                                                &KTREnvConfig::getOriginSample>>()},
      {"ratebound", make<KTRBashParseBool<KTREnvConfig, &KTREnvConfig::setRateBound, &KTREnvConfig::getRateBound>>()},
      {"arch", make<KTRBashParseString<MBQEnvConfig, std::string, &MBQEnvConfig::setArchitecture,
                                       &MBQEnvConfig::getArchitecture, Arch::FromString, Arch::ToString>>()},
      {kTechnologiesKey, make<Technologies::Parser<MBQEnvConfig, &MBQEnvConfig::setArchitecture>>()},
      {"platform", make<KTRBashParsePlatform>()},
      {"disk", make<DiskParser>()},
      {"", nullptr},
  };
  return KTREnvConfigBashParser::KeyTable(std::begin(entries), std::end(entries));
}

// Built at load, before any thread can use it, and only read afterwards.
const KTREnvConfigBashParser::KeyTable& gLoadedKeyTable = KTREnvConfigBashParser::keyTable();

}  // namespace

// ---------------------------------------------------------------- QoS

namespace QoS {

int readValue(const Declaration& declaration, const std::string& text, MBQ::MBQQoS& qos) {
  return ValueFormats::read(declaration, text, qos);
}

int writeValue(const Declaration& declaration, const MBQ::MBQQoS& qos, std::string& text) {
  return ValueFormats::write(declaration, qos, text);
}

}  // namespace QoS

// ---------------------------------------------------------------- venet0

int createFakeVENet0Device(KTREnvConfig& config) {
  MBQ::MBQOptionalProperty<std::vector<KTRNetVEth>> veths;
  config.getNetVEths(veths);
  if (veths.isSpecified()) {
    for (const KTRNetVEth& veth : veths.get()) {
      if (veth.getName() == kFakeDevice) return 0;
    }
  }

  KTRNetVEth device;
  device.setName(kFakeDevice);
  device.setHostRouted(true);
  device.setDhcp(false);
  device.setDhcp6(false);

  MBQ::MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>> addresses;
  if (config.getAddresses(addresses) != 0) {
    MBQ::setErrorMessage("can't get ip address list:%s", MBQ::getErrorMessage().c_str());
    return -1;
  }
  if (addresses.isSpecified()) device.setAddresses(addresses.get());
  for (const MBQ::MBQIPAddress& address : device.getAddresses()) {
    if (address.toStringWithNetwork() == kDhcpWord) {
      device.setDhcp(true);
      device.setAddresses({});
      break;
    }
  }

  MBQ::MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>> nameservers;
  if (config.getNameservers(nameservers) != 0) {
    MBQ::setErrorMessage("can't get nameserver list:%s", MBQ::getErrorMessage().c_str());
    return -1;
  }
  if (nameservers.isSpecified()) {
    for (const MBQ::MBQIPAddress& nameserver : nameservers.get()) {
      const std::string text = nameserver.toStringWithNetwork();
      if (!text.empty()) device.addNameserver(text);
    }
  }

  veths.specify(true);
  veths.get().push_back(device);
  if (config.setNetVEths(veths) != 0) {
    MBQ::setErrorMessage("can't set VEth list: %s", MBQ::getErrorMessage().c_str());
    return -1;
  }
  return 0;
}

// ---------------------------------------------------------------- KTREnvConfigBashParser

const KTREnvConfigBashParser::KeyTable& KTREnvConfigBashParser::keyTable() {
  static const KeyTable table = buildKeyTable();
  return table;
}

KTREnvConfigBashParserSP KTREnvConfigBashParser::getInstance(const MBQ::MBQVocMapSP& vocabulary) {
  KTREnvConfigBashParserSP parser(new KTREnvConfigBashParser);
  if (parser->initQoSMap(vocabulary) != 0) {
    MBQ::Logger::putAt(MBQ::kError, kModule, kSourcePath, __LINE__, "can't initQoSMap : %s",
                       MBQ::getErrorMessage().c_str());
    return KTREnvConfigBashParserSP();
  }
  return parser;
}

int KTREnvConfigBashParser::initQoSMap(const MBQ::MBQVocMapSP& vocabulary) {
  qosMap_.clear();
  MBQ::MBQVocCategorySP category = vocabulary ? vocabulary->readCategory(std::string(kResourceCategory)) : nullptr;
  if (!category) {
    MBQ::setErrorMessage("can't read %s category from vocabulary", kResourceCategory);
    return -1;
  }
  MBQ::MBQVocIterator parameter = category->iterator();
  if (parameter.first() != 0) {
    MBQ::setErrorMessage("can't read %s category from vocabulary", kResourceCategory);
    return -1;
  }
  do {
    std::string name;
    if (parameter->getValue(Tag::kName, name) != 0) continue;
    QoSDefinition definition;
    definition.id = MBQ::toLower(name);
    definition.key = MBQ::toUpper(name);
    definition.declaration = readDeclaration(*parameter);
    qosMap_.insert(std::make_pair(definition.id, definition));
  } while (parameter.next() == 0);
  return 0;
}

int KTREnvConfigBashParser::getConfig(std::istream& in, KTREnvConfig& config) const {
  ParameterParserPut put(config, qosMap_);
  const int rc = parseBashLikeConfig(put, in);
  if (rc != 0) return rc;
  MBQ::MBQOptionalProperty<std::set<MBQ::MBQQoS>> resources = put.collected();
  resources.specify(true);
  config.setQoSes(resources);
  config.setType(kTechnologyType);
  // The record has a subtree by now (setQoSes made it), so its getters cannot fail and
  // neither can this.
  createFakeVENet0Device(config);
  return 0;
}

int KTREnvConfigBashParser::putConfig(const KTREnvConfig& config, std::ostream& out, std::istream* old,
                                      bool merge) const {
  KTREnvConfig copy(config);
  updateIp(copy);
  ParameterParserGet get(copy, qosMap_);
  return serializeBashLikeConfig(get, out, old, merge);
}

int KTREnvConfigBashParser::diffConfig(const KTREnvConfig& oldConfig, const KTREnvConfig& newConfig,
                                       Changes& changes) const {
  KTREnvConfig oldCopy(oldConfig);
  KTREnvConfig newCopy(newConfig);
  updateIp(oldCopy);
  updateIp(newCopy);
  ParameterParserGet oldValues(oldCopy, qosMap_);
  ParameterParserGet newValues(newCopy, qosMap_);
  changes.reserve(changes.size() + keyTable().size() + qosMap_.size());
  std::string key;
  while (newValues.getNext(key) == 0) {
    std::string newValue;
    if (newValues.get(key, newValue) != 0) continue;
    std::string oldValue;
    if (oldValues.get(key, oldValue) != 0) oldValue.clear();
    if (oldValue != newValue) changes.emplace_back(key, newValue);
  }
  return 0;
}

int KTREnvConfigBashParser::updateIp(KTREnvConfig& config) {
  MBQ::MBQOptionalProperty<std::vector<KTRNetVEth>> veths;
  if (config.getNetVEths(veths) != 0 || !veths.isSpecified()) return 0;
  for (const KTRNetVEth& veth : veths.get()) {
    if (!veth.isHostRouted()) continue;
    config.setAddresses(MBQ::MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>>(veth.getAddresses()));
    return 0;
  }
  return 0;
}

// ---------------------------------------------------------------- put side

KTREnvConfigBashParser::ParameterParserPut::ParameterParserPut(KTREnvConfig& config, const QoSMap& qosMap)
    : config_(config), qosMap_(qosMap) {}

int KTREnvConfigBashParser::ParameterParserPut::put(const std::string& key, const char* value) {
  const KeyTable& table = keyTable();
  const auto fixed = table.find(key);
  if (fixed != table.end() && fixed->second) return fixed->second->read(key, value, config_);

  const auto resource = qosMap_.find(key);
  if (resource == qosMap_.end()) return kUnknownKey;
  MBQ::MBQQoS qos(resource->second.id);
  if (QoS::readValue(resource->second.declaration, value, qos) != 0) return kBadResourceValue;
  // The set orders resources by their values too, so an earlier value of the same resource
  // must go first or both would be kept.
  std::set<MBQ::MBQQoS>& resources = collected_.get();
  for (auto it = resources.begin(); it != resources.end();) {
    it = it->getId() == qos.getId() ? resources.erase(it) : std::next(it);
  }
  resources.insert(qos);
  return 0;
}

// ---------------------------------------------------------------- get side

KTREnvConfigBashParser::ParameterParserGet::ParameterParserGet(const KTREnvConfig& config, const QoSMap& qosMap)
    : config_(config), qosMap_(qosMap), nextFixed_(keyTable().begin()), nextResource_(qosMap.begin()) {}

int KTREnvConfigBashParser::ParameterParserGet::get(const std::string& key, std::string& value) const {
  const KeyTable& table = keyTable();
  const auto fixed = table.find(key);
  if (fixed != table.end() && fixed->second) {
    return fixed->second->write(key, config_, value) == 0 ? 0 : kKeyWithoutValue;
  }

  const auto resource = qosMap_.find(key);
  if (resource == qosMap_.end()) return kUnknownKey;
  MBQ::MBQOptionalProperty<MBQ::MBQQoS> qos;
  if (config_.getQoS(resource->second.id, qos) != 0 || !qos.isSpecified()) return kKeyWithoutValue;
  // A resource without a value format is written as an empty value, deliberately: the key
  // stays in the file rather than vanishing.
  QoS::writeValue(resource->second.declaration, qos.get(), value);
  return 0;
}

int KTREnvConfigBashParser::ParameterParserGet::getNext(std::string& key) {
  // The fixed table starts with the empty end-mark key: the first call steps over it straight
  // to the first resource key, and with no resources at all ends the walk at once, before any
  // fixed key. The order is deliberate and kept.
  const KeyTable& table = keyTable();
  if (nextFixed_ != table.end()) {
    if (!nextFixed_->first.empty()) {
      key = (nextFixed_++)->first;
      return 0;
    }
    ++nextFixed_;
  }
  if (nextResource_ == qosMap_.end()) {
    // Once over, the walk stays over, also when it ended before the fixed keys.
    nextFixed_ = table.end();
    return -1;
  }
  key = (nextResource_++)->first;
  return 0;
}

}  // namespace KTR
