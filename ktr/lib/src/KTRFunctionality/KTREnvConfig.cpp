#include "KTRFunctionality/KTREnvConfig.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>

#include "KTRFunctionality/KTREnvConfigInternal.h"
#include "KTRFunctionality/KTRHardDisk.h"
#include "KTRFunctionality/KTRVEth.h"
#include "MBQFunctionalityCore/MBQEnv.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQOptionalProperty;

const char* const kTypes = MBQ::kTypesNamespace;

// Element ids and names of the configuration's own properties.
const char* const kCtid = "ctid";
const char* const kNetfilter = "netfilter";
const char* const kVEType = "ve_type";
const char* const kWinsServer = "wins_server";
const char* const kTSLicenseServer = "ts_license_server";
const char* const kTSMode = "ts_mode";
const char* const kUUID = "uuid";
const char* const kAllowReboot = "allow_reboot";
const char* const kInterfaceRate = "interface_rate";
const char* const kOriginSample = "origin_sample";
const char* const kFeatures = "features";
const char* const kDevNodes = "devnodes";
const char* const kDiskList = "disk_list";

// The configuration's element order; written documents keep it whatever order the setters
// run in.
const char* const kElementOrder[] = {
    "veid",          "ctid",          "ve_root",           "ve_private",     "on_boot",
    "template",      "disabled",      "offline_management", "os_template",   "distribution",
    "capability",    "iptables",      "netfilter",         "config_customized", "class_id",
    "ve_type",       "offline_service", "wins_server",     "net_device",     "ts_license_server",
    "ts_mode",       "uuid",          "allow_reboot",      "rate_bound",     "interface_rate",
    "slm_mode",      "origin_sample", "is_sample",         "role",           "features",
    "devnodes",      "disk_list",
};
static_assert(sizeof(kElementOrder) / sizeof(kElementOrder[0]) == 32, "32 ranked elements");

using PositionTable = std::map<std::string, int>;
std::atomic<const PositionTable*> positionTable{nullptr};

// Frees the table when the library is unloaded (or the process ends), so that a library loaded
// and unloaded again leaks nothing; a lookup after that rebuilds it.
struct PositionTableOwner {
  ~PositionTableOwner() { delete positionTable.exchange(nullptr); }
} positionTableOwner;

// Built without the lock; only publishing takes it, and a thread that loses the race drops its
// copy.
const PositionTable& positions() {
  if (const PositionTable* table = positionTable.load(std::memory_order_acquire)) return *table;
  auto local = std::make_unique<PositionTable>();
  int index = 0;
  for (const char* name : kElementOrder) local->emplace(name, index++);
  MBQ::MBQGuard guard(ktrPositionTableLock);
  if (positionTable.load(std::memory_order_relaxed) == nullptr)
    positionTable.store(local.release(), std::memory_order_release);
  return *positionTable.load(std::memory_order_acquire);
}

}  // namespace

KTREnvConfig::KTREnvConfig(const MBQ::MBQEnvConfig& config) : MBQ::MBQVEnvConfig(config) {}

KTREnvConfig::KTREnvConfig(const MBQ::MBQMessageIterator* it, MBQ::EnvConfigType) : MBQ::MBQVEnvConfig(it) {}

KTREnvConfig::~KTREnvConfig() = default;

int KTREnvConfig::getPositionOfTheTag(const std::string& name) const {
  const PositionTable& table = positions();
  auto found = table.find(name);
  return found == table.end() ? -1 : found->second;
}

int KTREnvConfig::getVeid(int& veid) const {
  if (!hasMsg()) return -1;
  return msg()->getValue(Tag::kVeid, veid);
}

int KTREnvConfig::setVeid(const int& veid) {
  initMsg();
  MBQ::MBQMessageIterator& it = *msg();
  if (it.lookup(Tag::kVeid) == 0) it.remove();
  NamespaceSetterGuard guard(it, kTypes);
  return it.setValue(Tag::kVeid, veid);
}

int KTREnvConfig::getVeid(CtidWrapper& ctid) const {
  if (!hasMsg()) return -1;
  std::string text;
  if (msg()->getValue(kCtid, text) == 0) {
    ctid = CtidWrapper(text);
    return 0;
  }
  int veid = 0;
  int rc = msg()->getValue(Tag::kVeid, veid);
  if (rc != 0) return rc;
  ctid = CtidWrapper(veid);
  return 0;
}

int KTREnvConfig::setVeid(const CtidWrapper& ctid) {
  initMsg();
  MBQ::MBQMessageIterator& it = *msg();
  if (it.lookup(Tag::kVeid) == 0) it.remove();
  {
    NamespaceSetterGuard guard(it, kTypes);
    it.setValue(Tag::kVeid, static_cast<long long>(ctid.getId()));
  }
  if (it.lookup(kCtid) == 0) it.remove();
  NamespaceSetterGuard guard(it, kTypes);
  return it.setValue(kCtid, std::string(ctid.toString()));
}

int KTREnvConfig::getVERootVar(MBQOptionalProperty<std::string>& value) const { return getValueAttr(value, Tag::kVeRoot); }
int KTREnvConfig::setVERootVar(const MBQOptionalProperty<std::string>& value) { return setValueAttr(value, Tag::kVeRoot, kTypes); }
int KTREnvConfig::getVEPrivateVar(MBQOptionalProperty<std::string>& value) const { return getValueAttr(value, Tag::kVePrivate); }
int KTREnvConfig::setVEPrivateVar(const MBQOptionalProperty<std::string>& value) {
  return setValueAttr(value, Tag::kVePrivate, kTypes);
}

namespace {

int expandedPath(const KTREnvConfig& config, const MBQOptionalProperty<std::string>& variable, int rc,
                 std::string& path) {
  if (rc != 0 || !variable.isSpecified()) return -1;
  CtidWrapper ctid;
  if (config.getVeid(ctid) != 0) return -1;
  std::string text = variable.get();
  KTREnvConfig::veidSubstitute(ctid, text);
  path = text;
  return 0;
}

void replaceAll(std::string& text, const std::string& pattern, const std::string& replacement) {
  // The search resumes after each replacement so that an id containing the pattern cannot
  // make it loop.
  for (std::string::size_type at = text.find(pattern); at != std::string::npos;
       at = text.find(pattern, at + replacement.size())) {
    text.replace(at, pattern.size(), replacement);
  }
}

}  // namespace

int KTREnvConfig::getVERoot(std::string& path) const {
  MBQOptionalProperty<std::string> variable;
  int rc = getVERootVar(variable);
  return expandedPath(*this, variable, rc, path);
}

int KTREnvConfig::getVEPrivate(std::string& path) const {
  MBQOptionalProperty<std::string> variable;
  int rc = getVEPrivateVar(variable);
  return expandedPath(*this, variable, rc, path);
}

void KTREnvConfig::veidSubstitute(const CtidWrapper& ctid, std::string& text) {
  replaceAll(text, "$VEID", ctid.toString());
  replaceAll(text, "${VEID}", ctid.toString());
}

int KTREnvConfig::getOnBoot(MBQOptionalProperty<bool>& value) const { return getValueAttr(value, Tag::kOnBoot); }
int KTREnvConfig::setOnBoot(const MBQOptionalProperty<bool>& value) { return setValueAttr(value, Tag::kOnBoot, kTypes); }

int KTREnvConfig::getTemplates(MBQOptionalProperty<std::vector<KTRTemplate>>& value) const {
  return getQoSLikeListExT(value, Tag::kTemplate);
}
int KTREnvConfig::setTemplates(const MBQOptionalProperty<std::vector<KTRTemplate>>& value) {
  return setQoSLikeListExT(value, Tag::kTemplate, kTypes);
}

int KTREnvConfig::getOfflineManagement(MBQOptionalProperty<bool>& value) const {
  return getValueAttr(value, Tag::kOfflineManagement);
}
int KTREnvConfig::setOfflineManagement(const MBQOptionalProperty<bool>& value) {
  return setValueAttr(value, Tag::kOfflineManagement, kTypes);
}
int KTREnvConfig::getOsTemplate(MBQOptionalProperty<KTRTemplate>& value) const { return getValueAttr(value, Tag::kOsTemplate); }
int KTREnvConfig::setOsTemplate(const MBQOptionalProperty<KTRTemplate>& value) {
  return setValueAttr(value, Tag::kOsTemplate, kTypes);
}
int KTREnvConfig::getDistribution(MBQOptionalProperty<KTRDistribution>& value) const {
  return getValueAttr(value, Tag::kDistribution);
}
int KTREnvConfig::setDistribution(const MBQOptionalProperty<KTRDistribution>& value) {
  return setValueAttr(value, Tag::kDistribution, kTypes);
}

int KTREnvConfig::getCapabilities(MBQOptionalProperty<std::set<KTREnvCapability>>& value) const {
  return getQoSLikeListExT(value, Tag::kCapability);
}
int KTREnvConfig::setCapabilities(const MBQOptionalProperty<std::set<KTREnvCapability>>& value) {
  return setQoSLikeListT(value, Tag::kCapability, kTypes);
}
int KTREnvConfig::getCapability(MBQOptionalProperty<KTREnvCapability>& value) const {
  return getValueAttr(value, Tag::kCapability);
}
int KTREnvConfig::setCapability(const MBQOptionalProperty<KTREnvCapability>& value) {
  return setValueAttr(value, Tag::kCapability, kTypes);
}

int KTREnvConfig::getIPTables(MBQOptionalProperty<std::set<std::string>>& value) const {
  return getStringListAttr(value, Tag::kIptables);
}
int KTREnvConfig::setIPTables(const MBQOptionalProperty<std::set<std::string>>& value) {
  return setStringListAttr(value, Tag::kIptables, kTypes);
}
int KTREnvConfig::getNetfilterMode(MBQOptionalProperty<std::string>& value) const { return getValueAttr(value, kNetfilter); }
int KTREnvConfig::setNetfilterMode(const MBQOptionalProperty<std::string>& value) {
  return setValueAttr(value, kNetfilter, kTypes);
}
int KTREnvConfig::getVEType(MBQOptionalProperty<KTRVPSType>& value) const { return getValueAttr(value, kVEType); }
int KTREnvConfig::setVEType(const MBQOptionalProperty<KTRVPSType>& value) { return setValueAttr(value, kVEType, kTypes); }
int KTREnvConfig::getOfflineServices(MBQOptionalProperty<std::set<std::string>>& value) const {
  return getStringListAttr(value, Tag::kOfflineService);
}
int KTREnvConfig::setOfflineServices(const MBQOptionalProperty<std::set<std::string>>& value) {
  return setStringListAttr(value, Tag::kOfflineService, kTypes);
}
int KTREnvConfig::getWinsServers(MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>>& value) const {
  return getQoSLikeListExT(value, kWinsServer);
}
int KTREnvConfig::setWinsServers(const MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>>& value) {
  return setQoSLikeListExT(value, kWinsServer, kTypes);
}
int KTREnvConfig::getNetVEths(MBQOptionalProperty<std::vector<KTRNetVEth>>& value) const {
  return getQoSLikeListExT(value, Tag::kNetDevice);
}
int KTREnvConfig::setNetVEths(const MBQOptionalProperty<std::vector<KTRNetVEth>>& value) {
  return setQoSLikeListExT(value, Tag::kNetDevice, kTypes);
}
int KTREnvConfig::getTSLicenseServers(MBQOptionalProperty<std::set<std::string>>& value) const {
  return getStringListAttr(value, kTSLicenseServer);
}
int KTREnvConfig::setTSLicenseServers(const MBQOptionalProperty<std::set<std::string>>& value) {
  return setStringListAttr(value, kTSLicenseServer, kTypes);
}
int KTREnvConfig::getTSMode(MBQOptionalProperty<int>& value) const { return getValueAttr(value, kTSMode); }
int KTREnvConfig::setTSMode(const MBQOptionalProperty<int>& value) { return setValueAttr(value, kTSMode, kTypes); }
int KTREnvConfig::getUUID(MBQOptionalProperty<std::string>& value) const { return getValueAttr(value, kUUID); }
int KTREnvConfig::setUUID(const MBQOptionalProperty<std::string>& value) { return setValueAttr(value, kUUID, kTypes); }
int KTREnvConfig::getAllowReboot(MBQOptionalProperty<bool>& value) const { return getValueAttr(value, kAllowReboot); }
int KTREnvConfig::setAllowReboot(const MBQOptionalProperty<bool>& value) {
  return setValueAttr(value, kAllowReboot, kTypes);
}
int KTREnvConfig::getRateBound(MBQOptionalProperty<bool>& value) const { return getValueAttr(value, Tag::kRateBound); }
int KTREnvConfig::setRateBound(const MBQOptionalProperty<bool>& value) { return setValueAttr(value, Tag::kRateBound, kTypes); }
int KTREnvConfig::getRatesList(MBQOptionalProperty<std::vector<MBQ::MBQInterfaceRate>>& value) const {
  return getQoSLikeListExT(value, kInterfaceRate);
}
int KTREnvConfig::setRatesList(const MBQOptionalProperty<std::vector<MBQ::MBQInterfaceRate>>& value) {
  return setQoSLikeListExT(value, kInterfaceRate, kTypes);
}
int KTREnvConfig::getSLMMode(MBQOptionalProperty<std::string>& value) const { return getValueAttr(value, Tag::kSlmMode); }
int KTREnvConfig::setSLMMode(const MBQOptionalProperty<std::string>& value) { return setValueAttr(value, Tag::kSlmMode, kTypes); }
int KTREnvConfig::getOriginSample(MBQOptionalProperty<std::string>& value) const {
  return getValueAttr(value, kOriginSample);
}
int KTREnvConfig::setOriginSample(const MBQOptionalProperty<std::string>& value) {
  return setValueAttr(value, kOriginSample, kTypes);
}
int KTREnvConfig::getSample(MBQOptionalProperty<bool>& value) const { return getValueAttr(value, Tag::kIsSample); }
int KTREnvConfig::setSample(const MBQOptionalProperty<bool>& value) { return setValueAttr(value, Tag::kIsSample, kTypes); }
int KTREnvConfig::getServerRoles(MBQOptionalProperty<std::set<std::string>>& value) const {
  return getStringListAttr(value, Tag::kRole);
}
int KTREnvConfig::setServerRoles(const MBQOptionalProperty<std::set<std::string>>& value) {
  return setStringListAttr(value, Tag::kRole, kTypes);
}
int KTREnvConfig::getFeatures(MBQOptionalProperty<std::map<std::string, std::string>>& value) const {
  return getFeatureList(value, kFeatures);
}
int KTREnvConfig::setFeatures(const MBQOptionalProperty<std::map<std::string, std::string>>& value) {
  return setFeatureList(value, kFeatures);
}
int KTREnvConfig::getDevNodes(MBQOptionalProperty<std::map<std::string, std::string>>& value) const {
  return getFeatureList(value, kDevNodes);
}
int KTREnvConfig::setDevNodes(const MBQOptionalProperty<std::map<std::string, std::string>>& value) {
  return setFeatureList(value, kDevNodes);
}

int KTREnvConfig::getHardDisks(std::shared_ptr<HardDisk::List::Base>& disks) const {
  if (!hasMsg()) return 0;
  return msg()->getObject(disks, MBQ::MBQReaderDerivedValid<HardDisk::List::Base>(false), std::string(kDiskList));
}

int KTREnvConfig::setHardDisks(const HardDisk::List::Base* disks) {
  std::shared_ptr<HardDisk::List::Base> current;
  getHardDisks(current);
  initMsg();
  if (current) {
    if (HardDisk::validateReplacement(*current) != 0) return -1;
    removeAll(kDiskList);
  }
  if (disks == nullptr) return 0;
  int rc = msg()->putObject(*disks, MBQ::MBQWriterDerived<HardDisk::List::Base>(), std::string(kDiskList));
  // A list without a message form (an empty one) must not leave a half-written element that
  // every later read would trip over.
  if (rc != 0) removeAll(kDiskList);
  return rc;
}

}  // namespace KTR
