#include "MBQFunctionalityCore/MBQEnvConfig.h"

#include <utility>

#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQTags.h"

namespace MBQ {

namespace {

// Element names of the generic properties. Addresses use the core's IP address tag.
const char* const kName = "name";
const char* const kHostname = "hostname";
const char* const kDescription = "description";
const char* const kNameserver = "nameserver";
const char* const kSearchDomain = "search_domain";
const char* const kOs = "os";
const char* const kArchitecture = "architecture";
const char* const kEnvType = "env_type";
const char* const kDisabled = "disabled";

}  // namespace

int MBQOsDescription::Reader::operator()(const MBQMessageIterator& it, MBQOsDescription& os) const {
  auto optional = [](const char* name) {
    return MBQReaderID(MBQDefaultReader<MBQOptionalProperty<std::string>>(), name, MBQReaderOptional);
  };
  optional("platform")(it, os.platform);
  optional("name")(it, os.name);
  optional("version")(it, os.version);
  return 0;
}

int MBQOsDescription::Writer::operator()(MBQMessageIterator& it, const MBQOsDescription& os) const {
  auto write = [&it](const char* name, const MBQOptionalProperty<std::string>& value) {
    return MBQWriterID(MBQDefaultWriter<MBQOptionalProperty<std::string>>(), name)(it, value);
  };
  return write("platform", os.platform) || write("name", os.name) || write("version", os.version) ? -1 : 0;
}

MBQEnvConfig::MBQEnvConfig() = default;

MBQEnvConfig::MBQEnvConfig(const MBQMessageIterator* it) {
  if (it == nullptr) return;
  it_ = it->clone();
  it_->setChildOrder(this);
}

MBQEnvConfig::MBQEnvConfig(const MBQEnvConfig& other) : MBQChildOrder() {
  if (other.it_) {
    initMsg();
    it_->importChildren(*other.it_);
  }
}

MBQEnvConfig& MBQEnvConfig::operator=(const MBQEnvConfig& other) {
  if (this == &other) return *this;
  own_.reset();
  it_.reset();
  if (other.it_) {
    initMsg();
    it_->importChildren(*other.it_);
  }
  return *this;
}

MBQEnvConfig::~MBQEnvConfig() = default;

int MBQEnvConfig::initMsg() {
  if (it_) return 0;
  own_ = std::make_shared<MBQMessage>("config");
  it_ = own_->iterator();
  it_->setChildOrder(this);
  return 0;
}

int MBQEnvConfig::getPositionOfTheTag(const std::string&) const { return -1; }

int MBQEnvConfig::getName(MBQOptionalProperty<std::string>& name) const { return getValueAttr(name, kName); }
int MBQEnvConfig::setName(const MBQOptionalProperty<std::string>& name) { return setValueAttr(name, kName); }
int MBQEnvConfig::getHostname(MBQOptionalProperty<std::string>& hostname) const { return getValueAttr(hostname, kHostname); }
int MBQEnvConfig::setHostname(const MBQOptionalProperty<std::string>& hostname) { return setValueAttr(hostname, kHostname); }
int MBQEnvConfig::getDescription(MBQOptionalProperty<std::string>& description) const {
  return getValueAttr(description, kDescription);
}
int MBQEnvConfig::setDescription(const MBQOptionalProperty<std::string>& description) {
  return setValueAttr(description, kDescription);
}

int MBQEnvConfig::getAddresses(MBQOptionalProperty<std::vector<MBQIPAddress>>& addresses) const {
  return getQoSLikeListExT(addresses, Tag::kAddress);
}
int MBQEnvConfig::setAddresses(const MBQOptionalProperty<std::vector<MBQIPAddress>>& addresses) {
  return setQoSLikeListExT(addresses, Tag::kAddress, std::string());
}
int MBQEnvConfig::getNameservers(MBQOptionalProperty<std::vector<MBQIPAddress>>& nameservers) const {
  return getQoSLikeListExT(nameservers, kNameserver);
}
int MBQEnvConfig::setNameservers(const MBQOptionalProperty<std::vector<MBQIPAddress>>& nameservers) {
  return setQoSLikeListExT(nameservers, kNameserver, std::string());
}
int MBQEnvConfig::getSearchDomains(MBQOptionalProperty<std::set<std::string>>& domains) const {
  return getStringListAttr(domains, kSearchDomain);
}
int MBQEnvConfig::setSearchDomains(const MBQOptionalProperty<std::set<std::string>>& domains) {
  return setStringListAttr(domains, kSearchDomain);
}
int MBQEnvConfig::getOsDescription(MBQOptionalProperty<MBQOsDescription>& os) const { return getValueAttr(os, kOs); }
int MBQEnvConfig::setOsDescription(const MBQOptionalProperty<MBQOsDescription>& os) { return setValueAttr(os, kOs); }
int MBQEnvConfig::getArchitecture(MBQOptionalProperty<std::string>& architecture) const {
  return getValueAttr(architecture, kArchitecture);
}
int MBQEnvConfig::setArchitecture(const MBQOptionalProperty<std::string>& architecture) {
  return setValueAttr(architecture, kArchitecture);
}
int MBQEnvConfig::getType(MBQOptionalProperty<int>& type) const { return getValueAttr(type, kEnvType); }
int MBQEnvConfig::setType(const MBQOptionalProperty<int>& type) { return setValueAttr(type, kEnvType); }
int MBQEnvConfig::getDisabled(MBQOptionalProperty<bool>& disabled) const { return getValueAttr(disabled, kDisabled); }
int MBQEnvConfig::setDisabled(const MBQOptionalProperty<bool>& disabled) { return setValueAttr(disabled, kDisabled); }

int MBQEnvConfig::getQoSes(MBQOptionalProperty<std::set<MBQQoS>>& qoses) const {
  if (!it_) return -1;
  qoses.get().clear();
  return getQoSLikeListExT(qoses, Tag::kQosValue);
}

int MBQEnvConfig::setQoSes(const MBQOptionalProperty<std::set<MBQQoS>>& qoses) {
  return setQoSLikeListExT(qoses, Tag::kQosValue, std::string());
}

int MBQEnvConfig::getQoS(const std::string& id, MBQOptionalProperty<MBQQoS>& qos) const {
  MBQOptionalProperty<std::set<MBQQoS>> all;
  if (getQoSes(all) != 0) return -1;
  qos.specify(false);
  for (const auto& value : all.get()) {
    if (value.getId() == id) {
      qos = value;
      break;
    }
  }
  return 0;
}

int MBQEnvConfig::getFeatureList(MBQOptionalProperty<std::map<std::string, std::string>>& property,
                                 const std::string& name) const {
  if (!it_) return -1;
  property.get().clear();
  property.specify(it_->hasChild(name));
  if (!property.isSpecified()) return 0;
  auto reader = MBQReaderMap(name, MBQReaderRequired, MBQReaderID(MBQReaderValue<std::string>(), Tag::kKey, MBQReaderOptional),
                             MBQReaderID(MBQReaderValue<std::string>(), Tag::kValue, MBQReaderRequired));
  return reader(*it_, property.get());
}

int MBQEnvConfig::setFeatureList(const MBQOptionalProperty<std::map<std::string, std::string>>& property,
                                 const std::string& name) {
  initMsg();
  removeAll(name);
  if (!property.isSpecified()) return 0;
  auto writer = MBQWriterMap(name, MBQWriterID(MBQWriterValue<std::string>(), Tag::kKey),
                             MBQWriterID(MBQWriterValue<std::string>(), Tag::kValue));
  return writer(*it_, property.get());
}

MBQEnvConfig::NamespaceSetterGuard::NamespaceSetterGuard(MBQMessageIterator& it, const char* uri) : it_(it) {
  if (uri != nullptr && *uri != '\0') set_ = it_.setNamespace(std::string(uri)) == 0;
}
MBQEnvConfig::NamespaceSetterGuard::NamespaceSetterGuard(MBQMessageIterator& it, const std::string& uri) : it_(it) {
  if (!uri.empty()) set_ = it_.setNamespace(uri) == 0;
}
MBQEnvConfig::NamespaceSetterGuard::NamespaceSetterGuard(MBQMessageIterator& it, int namespaceId) : it_(it) {
  if (namespaceId != 0) set_ = it_.setNamespace(namespaceId) == 0;
}
MBQEnvConfig::NamespaceSetterGuard::~NamespaceSetterGuard() {
  if (set_) it_.setNamespace(0);
}

int MBQEnvConfig::Reader::operator()(const MBQMessageIterator& it, MBQEnvConfig& config) const {
  config.initMsg();
  config.it_->clearChildren();
  return config.it_->importChildren(it);
}

int MBQEnvConfig::Writer::operator()(MBQMessageIterator& it, const MBQEnvConfig& config) const {
  if (!config.it_) return 0;
  return it.importChildren(*config.it_);
}

}  // namespace MBQ
