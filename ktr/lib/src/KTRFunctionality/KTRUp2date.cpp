#include "KTRFunctionality/KTRUp2date.h"

#include <algorithm>
#include <utility>

#include "MBQMessage/MBQDerivedParsers.h"

namespace KTR {

namespace {

using MBQ::MBQMessageIterator;

constexpr int kParam1Tag = 1012;
constexpr int kParam2Tag = 1025;
constexpr int kParam3Tag = 1032;
constexpr int kParam4Tag = 1795;
constexpr int kParam5Tag = 1101;
constexpr int kOptionTag = 1007;
constexpr int kSourceTag = 1018;
constexpr int kNameTag = 1010;
constexpr int kKeyTag = 1026;
constexpr int kInstallTypeTag = 1839;
constexpr int kInstallSourceTag = 1803;
constexpr int kProductParamTag = 1338;
constexpr int kPeriodTag = 1992;
constexpr int kServiceFlagTag = 1705;
constexpr int kServiceSettingsTag = 1100;
constexpr int kConnOptionTag = 1843;
constexpr int kDetailTag = 1496;
constexpr int kSizeTag = 1024;
constexpr int kUpdateFlagTag = 1274;
constexpr int kReleaseTag = 1223;
constexpr int kUpdateParamTag = 1023;
constexpr int kUpdateText1Tag = 1264;
constexpr int kUpdateText2Tag = 1276;
constexpr int kRepoFlagTag = 1189;

constexpr const char* kStandard = "standard";
constexpr const char* kAutoreboot = "autoreboot";
constexpr const char* kCheckPeriod = "check_period";
constexpr const char* kProduct = "product";
constexpr const char* kConnection = "connection";
constexpr const char* kYum = "yum";
constexpr const char* kInstalledVersion = "installed_version";
constexpr const char* kAppTemplate = "app_template";
constexpr const char* kBaseUrl = "base_url";
constexpr const char* kRepository = "repository";
constexpr const char* kManagementProductName = "srn";

// Optional properties: absent or malformed leaves them unspecified; unspecified writes nothing.
template <class T, class Key>
void readOptional(const MBQMessageIterator& it, const Key& key, MBQ::MBQOptionalProperty<T>& property) {
  MBQ::MBQReaderID(MBQ::MBQDefaultReader<MBQ::MBQOptionalProperty<T>>(), key, MBQ::MBQReaderOptional)(it, property);
}
template <class T, class Key>
int writeOptional(MBQMessageIterator& it, const Key& key, const MBQ::MBQOptionalProperty<T>& property) {
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<MBQ::MBQOptionalProperty<T>>(), key)(it, property);
}

template <class Key>
int writeMarker(MBQMessageIterator& it, const Key& key, bool on) {
  return on ? it.addChild(key) : 0;
}

// An option stored under a holding element; the holder is descended into and left again.
template <class E, class Key>
int readOptionAt(const MBQMessageIterator& it, const Key& key, E& value, const KTROptionTable<E>& table) {
  if (it.descend(key) != 0) return -1;
  const int rc = readOptions(value, it, table);
  it.up();
  return rc;
}
template <class E, class Key>
int writeOptionAt(MBQMessageIterator& it, const Key& key, const E& value, const KTROptionTable<E>& table) {
  if (it.addChildAndDescend(key) != 0) return -1;
  const int rc = writeOptions(value, it, table);
  it.up();
  return rc;
}

KTROptionTable<KTRUpdateProduct::InstallType> buildInstallTypes() {
  KTROptionTable<KTRUpdateProduct::InstallType> table;
  // insert() keeps the first spelling of a value, so the trailing "no type" pair leaves 0 as
  // "disabled": a product that is switched off must still write a readable option.
  const std::pair<KTRUpdateProduct::InstallType, const char*> pairs[] = {
      {KTRUpdateProduct::Disabled, "disabled"}, {KTRUpdateProduct::Automatic, "automatic"},
      {KTRUpdateProduct::AutoDownload, "auto_download"}, {KTRUpdateProduct::Manual, "manual"},
      {KTRUpdateProduct::Disabled, ""}};
  for (const auto& pair : pairs) table.insert(std::make_pair(pair.first, std::string(pair.second)));
  return table;
}

const KTROptionTable<KTRUpdateProduct::InstallType> installTypes = buildInstallTypes();
const KTROptionTable<KTRUpdateProxySettings::ProxyType> proxyTypes = {
    {KTRUpdateProxySettings::Explorer, "explorer"},
    {KTRUpdateProxySettings::Custom, "custom"},
    {KTRUpdateProxySettings::NoProxy, "no_proxy"}};
const KTROptionTable<KTRUpdateServiceSettings::CheckDays> checkDays = {
    {KTRUpdateServiceSettings::NoDay, ""},         {KTRUpdateServiceSettings::Sunday, "sunday"},
    {KTRUpdateServiceSettings::Monday, "monday"},  {KTRUpdateServiceSettings::Tuesday, "tuesday"},
    {KTRUpdateServiceSettings::Wednesday, "wednesday"}, {KTRUpdateServiceSettings::Thursday, "thursday"},
    {KTRUpdateServiceSettings::Friday, "friday"},  {KTRUpdateServiceSettings::Saturday, "saturday"}};
const KTROptionTable<KTRSystemUpdate::UpdateType> systemUpdateTypes = {
    {KTRSystemUpdate::NoType, ""},
    {KTRSystemUpdate::Hotfix, "hotfix"},
    {KTRSystemUpdate::ServicePack, "servicepack"},
    {KTRSystemUpdate::Version, "version"}};

// The update registry. Only the base is the default, so an update of a kind this library does
// not know still arrives as a plain update instead of failing the whole list.
MBQ::MBQDerivedParserFactoryT<KTRUpdate, KTRUpdate> factoryKTRUpdate(true);
MBQ::MBQDerivedParserFactoryT<KTRSystemUpdate, KTRUpdate> factoryKTRSystemUpdate(false);
MBQ::MBQDerivedParserFactoryT<KTRSRNUpdate, KTRUpdate> factoryKTRSRNUpdate(false);
MBQ::MBQDerivedParserFactoryT<KTRWindowsSystemUpdate, KTRUpdate> factoryKTRWindowsSystemUpdate(false);
MBQ::MBQDerivedParserFactoryT<KTRAppTemplateUpdate, KTRUpdate> factoryKTRAppTemplateUpdate(false);
MBQ::MBQDerivedParserFactoryT<KTRTemplateUpdate, KTRUpdate> factoryKTRTemplateUpdate(false);
MBQ::MBQDerivedParserFactoryT<KTROsTemplateUpdate, KTRUpdate> factoryKTROsTemplateUpdate(false);
MBQ::MBQDerivedParserFactoryT<KTREzTemplateUpdate, KTRUpdate> factoryKTREzTemplateUpdate(false);

}  // namespace

const KTROptionTable<KTRUpdateProduct::InstallType>& installTypeOptions() { return installTypes; }
const KTROptionTable<KTRUpdateProxySettings::ProxyType>& proxyTypeOptions() { return proxyTypes; }
const KTROptionTable<KTRUpdateServiceSettings::CheckDays>& checkDayOptions() { return checkDays; }
const KTROptionTable<KTRSystemUpdate::UpdateType>& systemUpdateTypeOptions() { return systemUpdateTypes; }

// ---------------------------------------------------------------- connection

KTRUpdateConnectionSettings::~KTRUpdateConnectionSettings() = default;

int KTRUpdateConnectionSettings::Reader::operator()(const MBQMessageIterator& it, KTRUpdateConnectionSettings& r) const {
  readOptional(it, kParam1Tag, r.param1_);
  readOptional(it, kParam2Tag, r.param2_);
  readOptional(it, kParam3Tag, r.param3_);
  return 0;
}

int KTRUpdateConnectionSettings::Writer::operator()(MBQMessageIterator& it, const KTRUpdateConnectionSettings& r) const {
  if (writeOptional(it, kParam1Tag, r.param1_) != 0) return -1;
  if (writeOptional(it, kParam2Tag, r.param2_) != 0) return -1;
  return writeOptional(it, kParam3Tag, r.param3_);
}

int KTRUpdateConnection::Reader::operator()(const MBQMessageIterator& it, KTRUpdateConnection& r) const {
  if (KTRUpdateConnectionSettings::Reader()(it, r) != 0) return -1;
  readOptional(it, kParam4Tag, r.param4_);
  readOptional(it, kParam5Tag, r.param5_);
  return 0;
}

int KTRUpdateConnection::Writer::operator()(MBQMessageIterator& it, const KTRUpdateConnection& r) const {
  if (KTRUpdateConnectionSettings::Writer()(it, r) != 0) return -1;
  if (writeOptional(it, kParam4Tag, r.param4_) != 0) return -1;
  return writeOptional(it, kParam5Tag, r.param5_);
}

int KTRUpdateProxySettings::Reader::operator()(const MBQMessageIterator& it, KTRUpdateProxySettings& r) const {
  if (it.hasChild(kOptionTag) && readOptionAt(it, kOptionTag, r.proxyType_, proxyTypes) != 0) return -1;
  return KTRUpdateConnectionSettings::Reader()(it, r);
}

int KTRUpdateProxySettings::Writer::operator()(MBQMessageIterator& it, const KTRUpdateProxySettings& r) const {
  if (writeOptionAt(it, kOptionTag, r.proxyType_, proxyTypes) != 0) return -1;
  return KTRUpdateConnectionSettings::Writer()(it, r);
}

// ---------------------------------------------------------------- products

int KTRUpdateInstallSource::Reader::operator()(const MBQMessageIterator& it, KTRUpdateInstallSource& r) const {
  if (it.getValue(kSourceTag, r.source_) != 0) return -1;
  readOptional(it, kStandard, r.standard_);
  return 0;
}

int KTRUpdateInstallSource::Writer::operator()(MBQMessageIterator& it, const KTRUpdateInstallSource& r) const {
  if (it.setValue(kSourceTag, r.source_) != 0) return -1;
  return writeOptional(it, kStandard, r.standard_);
}

int KTRUpdateProduct::Reader::operator()(const MBQMessageIterator& it, KTRUpdateProduct& r) const {
  if (it.getValue(kNameTag, r.name_) != 0) return -1;
  if (it.getValue(kKeyTag, r.key_) != 0) return -1;
  if (readOptionAt(it, kInstallTypeTag, r.installType_, installTypes) != 0) return -1;
  readOptional(it, kInstallSourceTag, r.installSource_);
  readOptional(it, kProductParamTag, r.param_);
  return 0;
}

int KTRUpdateProduct::Writer::operator()(MBQMessageIterator& it, const KTRUpdateProduct& r) const {
  if (it.setValue(kNameTag, r.name_) != 0) return -1;
  if (it.setValue(kKeyTag, r.key_) != 0) return -1;
  if (it.addChildAndDescend(kInstallTypeTag) != 0) return -1;
  // A type outside the table leaves the holder empty: the rest of the product still matters
  // more to the service than a type it could not read anyway.
  writeOptions(r.installType_, it, installTypes);
  it.up();
  if (writeOptional(it, kInstallSourceTag, r.installSource_) != 0) return -1;
  return writeOptional(it, kProductParamTag, r.param_);
}

// ---------------------------------------------------------------- service settings

int KTRUpdateServiceSettings::Reader::operator()(const MBQMessageIterator& it, KTRUpdateServiceSettings& r) const {
  r.autoreboot_ = it.hasChild(kAutoreboot);
  CheckDays days = NoDay;
  if (it.hasChild(kCheckPeriod) && readOptionAt(it, kCheckPeriod, days, checkDays) != 0) return -1;
  r.checkDays_ = days;
  if (it.getValue(kPeriodTag, r.period_) != 0) return -1;
  r.flag_ = it.hasChild(kServiceFlagTag);
  return 0;
}

int KTRUpdateServiceSettings::Writer::operator()(MBQMessageIterator& it, const KTRUpdateServiceSettings& r) const {
  if (writeMarker(it, kAutoreboot, r.autoreboot_) != 0) return -1;
  if (r.checkDays_ != NoDay && writeOptionAt(it, kCheckPeriod, r.checkDays_, checkDays) != 0) return -1;
  if (it.setValue(kPeriodTag, r.period_) != 0) return -1;
  return writeMarker(it, kServiceFlagTag, r.flag_);
}

// ---------------------------------------------------------------- yum

namespace Update {
namespace Yum {

int Repository::Reader::operator()(const MBQMessageIterator& it, Repository& r) const {
  // Older services send bare repositories: only the name identifies one.
  it.getValue(kKeyTag, r.key_);
  it.getValue(kBaseUrl, r.baseUrl_);
  r.flag_ = it.hasChild(kRepoFlagTag);
  return it.getValue(kNameTag, r.name_);
}

int Repository::Writer::operator()(MBQMessageIterator& it, const Repository& r) const {
  if (it.setValue(kKeyTag, r.key_) != 0) return -1;
  if (it.setValue(kBaseUrl, r.baseUrl_) != 0) return -1;
  if (writeMarker(it, kRepoFlagTag, r.flag_) != 0) return -1;
  return it.setValue(kNameTag, r.name_);
}

int Config::Reader::operator()(const MBQMessageIterator& it, Config& r) const {
  std::vector<Repository> repositories;
  if (MBQ::MBQReaderList(Repository::Reader(), kRepository, MBQ::MBQReaderOptional)(it, repositories) != 0) return -1;
  r.repositories_ = std::move(repositories);
  return 0;
}

int Config::Writer::operator()(MBQMessageIterator& it, const Config& r) const {
  return MBQ::MBQWriterList(Repository::Writer(), kRepository)(it, r.repositories_);
}

}  // namespace Yum
}  // namespace Update

// ---------------------------------------------------------------- the configuration

namespace {

struct AccessWriter : boost::static_visitor<int> {
  MBQMessageIterator* it;
  int operator()(const KTRUpdateConnection& c) const {
    return MBQ::MBQWriterID(KTRUpdateConnection::Writer(), kConnection)(*it, c);
  }
  int operator()(const KTRUpdateServiceSettings& s) const {
    return MBQ::MBQWriterID(KTRUpdateServiceSettings::Writer(), kServiceSettingsTag)(*it, s);
  }
  int operator()(const Update::Yum::Config& y) const {
    return MBQ::MBQWriterID(Update::Yum::Config::Writer(), kYum)(*it, y);
  }
};

}  // namespace

int KTRUpdateConfig::Reader::operator()(const MBQMessageIterator& it, KTRUpdateConfig& r) const {
  r.products_.clear();
  MBQ::MBQReaderList(KTRUpdateProduct::Reader(), kProduct, MBQ::MBQReaderOptional)(it, r.products_);
  const auto srn = std::find_if(r.products_.begin(), r.products_.end(),
                                [](const KTRUpdateProduct& p) { return p.getName() == kManagementProductName; });
  if (srn != r.products_.end()) {
    r.managementProduct_ = *srn;
    r.products_.erase(srn);
  }

  // The schedule and yum name the access outright; a connection element alone is only a
  // candidate, because it also carries the option below whatever the access is.
  const bool hasSettings = it.hasChild(kServiceSettingsTag);
  const bool hasYum = !hasSettings && it.hasChild(kYum);
  if (hasSettings) {
    KTRUpdateServiceSettings settings;
    if (MBQ::MBQReaderID(KTRUpdateServiceSettings::Reader(), kServiceSettingsTag)(it, settings) == 0)
      r.access_ = settings;
  } else if (hasYum) {
    Update::Yum::Config yum;
    if (MBQ::MBQReaderID(Update::Yum::Config::Reader(), kYum)(it, yum) == 0) r.access_ = yum;
  }

  if (it.descend(kConnection) != 0) return 0;
  if (!hasSettings && !hasYum) {
    KTRUpdateConnection connection;
    if (KTRUpdateConnection::Reader()(it, connection) == 0) r.access_ = connection;
  }
  readOptional(it, kConnOptionTag, r.option_);
  it.up();
  return 0;
}

int KTRUpdateConfig::Writer::operator()(MBQMessageIterator& it, const KTRUpdateConfig& r) const {
  AccessWriter accessWriter;
  accessWriter.it = &it;
  if (boost::apply_visitor(accessWriter, r.access_) != 0) return -1;

  for (const auto& product : r.products_)
    if (MBQ::MBQWriterID(KTRUpdateProduct::Writer(), kProduct)(it, product) != 0) return -1;
  KTRUpdateProduct management = r.managementProduct_;
  management.setName(kManagementProductName);
  if (MBQ::MBQWriterID(KTRUpdateProduct::Writer(), kProduct)(it, management) != 0) return -1;

  if (it.descend(kConnection) != 0) {
    if (it.addChildAndDescend(kConnection) != 0) return -1;
    if (KTRUpdateConnectionSettings::Writer()(it, KTRUpdateConnectionSettings()) != 0) {
      it.up();
      return -1;
    }
  }
  const int rc = writeOptional(it, kConnOptionTag, r.option_);
  it.up();
  return rc;
}

// ---------------------------------------------------------------- update list

int KTRUpdateList::Reader::operator()(const MBQMessageIterator& it, KTRUpdateList& list) const {
  KTRUpdateList entries;
  MBQ::MBQReaderList(MBQ::MBQReaderDerivedValid<KTRUpdate>(true), itemName.c_str(), MBQ::MBQReaderOptional)(it, entries);
  list = std::move(entries);
  return 0;
}

int KTRUpdateList::Writer::operator()(MBQMessageIterator& it, const KTRUpdateList& list) const {
  return MBQ::MBQWriterList(MBQ::MBQWriterDerived<KTRUpdate>(), itemName.c_str())(it, list);
}

// ---------------------------------------------------------------- update kinds

KTRUpdate::~KTRUpdate() = default;

int KTRUpdate::Reader::operator()(const MBQMessageIterator& it, KTRUpdate& r) const {
  readOptional(it, kNameTag, r.name_);
  readOptional(it, kKeyTag, r.key_);
  readOptional(it, kDetailTag, r.detail_);
  readOptional(it, kSizeTag, r.size_);
  r.flag_ = it.hasChild(kUpdateFlagTag);
  readOptional(it, kReleaseTag, r.release_);
  readOptional(it, kInstalledVersion, r.installedVersion_);
  readOptional(it, kUpdateParamTag, r.param_);
  return 0;
}

int KTRUpdate::Writer::operator()(MBQMessageIterator& it, const KTRUpdate& r) const {
  if (writeOptional(it, kNameTag, r.name_) != 0) return -1;
  if (writeOptional(it, kKeyTag, r.key_) != 0) return -1;
  if (writeOptional(it, kDetailTag, r.detail_) != 0) return -1;
  if (writeOptional(it, kSizeTag, r.size_) != 0) return -1;
  if (writeMarker(it, kUpdateFlagTag, r.flag_) != 0) return -1;
  if (writeOptional(it, kReleaseTag, r.release_) != 0) return -1;
  if (writeOptional(it, kInstalledVersion, r.installedVersion_) != 0) return -1;
  return writeOptional(it, kUpdateParamTag, r.param_);
}

// Derived writers write their base part into the same element without a typed write, so the
// element keeps the derived type and a reader can choose the class again.

int KTRSystemUpdate::Reader::operator()(const MBQMessageIterator& it, KTRSystemUpdate& r) const {
  if (KTRUpdate::Reader()(it, r) != 0) return -1;
  r.updateType_ = NoType;
  if (it.hasChild(kOptionTag) && readOptionAt(it, kOptionTag, r.updateType_, systemUpdateTypes) != 0) return -1;
  readOptional(it, kUpdateText1Tag, r.text1_);
  readOptional(it, kUpdateText2Tag, r.text2_);
  return 0;
}

int KTRSystemUpdate::Writer::operator()(MBQMessageIterator& it, const KTRSystemUpdate& r) const {
  if (KTRUpdate::Writer()(it, r) != 0) return -1;
  if (r.updateType_ != NoType && writeOptionAt(it, kOptionTag, r.updateType_, systemUpdateTypes) != 0) return -1;
  if (writeOptional(it, kUpdateText1Tag, r.text1_) != 0) return -1;
  return writeOptional(it, kUpdateText2Tag, r.text2_);
}

int KTRWindowsSystemUpdate::Reader::operator()(const MBQMessageIterator& it, KTRWindowsSystemUpdate& r) const {
  if (KTRSystemUpdate::Reader()(it, r) != 0) return -1;
  readOptional(it, kProduct, r.product_);
  return 0;
}

int KTRWindowsSystemUpdate::Writer::operator()(MBQMessageIterator& it, const KTRWindowsSystemUpdate& r) const {
  if (KTRSystemUpdate::Writer()(it, r) != 0) return -1;
  return writeOptional(it, kProduct, r.product_);
}

int KTRSRNUpdate::Reader::operator()(const MBQMessageIterator& it, KTRSRNUpdate& r) const {
  if (KTRUpdate::Reader()(it, r) != 0) return -1;
  readOptional(it, kUpdateText1Tag, r.text1_);
  return 0;
}

int KTRSRNUpdate::Writer::operator()(MBQMessageIterator& it, const KTRSRNUpdate& r) const {
  if (KTRUpdate::Writer()(it, r) != 0) return -1;
  return writeOptional(it, kUpdateText1Tag, r.text1_);
}

int KTRAppTemplateUpdate::Reader::operator()(const MBQMessageIterator& it, KTRAppTemplateUpdate& r) const {
  return KTRUpdate::Reader()(it, r);
}

int KTRAppTemplateUpdate::Writer::operator()(MBQMessageIterator& it, const KTRAppTemplateUpdate& r) const {
  return KTRUpdate::Writer()(it, r);
}

int KTRTemplateUpdate::Reader::operator()(const MBQMessageIterator& it, KTRTemplateUpdate& r) const {
  if (KTRUpdate::Reader()(it, r) != 0) return -1;
  return KTRUpdateList::Reader{kAppTemplate}(it, r.appTemplates_);
}

int KTRTemplateUpdate::Writer::operator()(MBQMessageIterator& it, const KTRTemplateUpdate& r) const {
  if (KTRUpdate::Writer()(it, r) != 0) return -1;
  return KTRUpdateList::Writer{kAppTemplate}(it, r.appTemplates_);
}

int KTROsTemplateUpdate::Reader::operator()(const MBQMessageIterator& it, KTROsTemplateUpdate& r) const {
  return KTRTemplateUpdate::Reader()(it, r);
}

int KTROsTemplateUpdate::Writer::operator()(MBQMessageIterator& it, const KTROsTemplateUpdate& r) const {
  return KTRTemplateUpdate::Writer()(it, r);
}

int KTREzTemplateUpdate::Reader::operator()(const MBQMessageIterator& it, KTREzTemplateUpdate& r) const {
  return KTRTemplateUpdate::Reader()(it, r);
}

int KTREzTemplateUpdate::Writer::operator()(MBQMessageIterator& it, const KTREzTemplateUpdate& r) const {
  return KTRTemplateUpdate::Writer()(it, r);
}

}  // namespace KTR
