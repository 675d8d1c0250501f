#include "KTRFunctionality/KTRUp2date.h"

#include <algorithm>
#include <utility>

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQMessageIterator;

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
template <class E>
struct OptionReader {
  const KTROptionTable<E>* table;
  int operator()(const MBQMessageIterator& it, E& value) const { return readOptions(value, it, *table); }
};
template <class E, class Key>
int readOptionAt(const MBQMessageIterator& it, const Key& key, E& value, const KTROptionTable<E>& table) {
  return MBQ::MBQReaderID(OptionReader<E>{&table}, key)(it, value);
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
  readOptional(it, Tag::kConnParam1, r.param1_);
  readOptional(it, Tag::kConnParam2, r.param2_);
  readOptional(it, Tag::kConnParam3, r.param3_);
  return 0;
}

int KTRUpdateConnectionSettings::Writer::operator()(MBQMessageIterator& it, const KTRUpdateConnectionSettings& r) const {
  if (writeOptional(it, Tag::kConnParam1, r.param1_) != 0) return -1;
  if (writeOptional(it, Tag::kConnParam2, r.param2_) != 0) return -1;
  return writeOptional(it, Tag::kConnParam3, r.param3_);
}

int KTRUpdateConnection::Reader::operator()(const MBQMessageIterator& it, KTRUpdateConnection& r) const {
  if (KTRUpdateConnectionSettings::Reader()(it, r) != 0) return -1;
  readOptional(it, Tag::kConnParam4, r.param4_);
  readOptional(it, Tag::kConnParam5, r.param5_);
  return 0;
}

int KTRUpdateConnection::Writer::operator()(MBQMessageIterator& it, const KTRUpdateConnection& r) const {
  if (KTRUpdateConnectionSettings::Writer()(it, r) != 0) return -1;
  if (writeOptional(it, Tag::kConnParam4, r.param4_) != 0) return -1;
  return writeOptional(it, Tag::kConnParam5, r.param5_);
}

int KTRUpdateProxySettings::Reader::operator()(const MBQMessageIterator& it, KTRUpdateProxySettings& r) const {
  if (it.hasChild(Tag::kType) && readOptionAt(it, Tag::kType, r.proxyType_, proxyTypes) != 0) return -1;
  return KTRUpdateConnectionSettings::Reader()(it, r);
}

int KTRUpdateProxySettings::Writer::operator()(MBQMessageIterator& it, const KTRUpdateProxySettings& r) const {
  if (writeOptionAt(it, Tag::kType, r.proxyType_, proxyTypes) != 0) return -1;
  return KTRUpdateConnectionSettings::Writer()(it, r);
}

// ---------------------------------------------------------------- products

int KTRUpdateInstallSource::Reader::operator()(const MBQMessageIterator& it, KTRUpdateInstallSource& r) const {
  if (it.getValue(Tag::kValue, r.source_) != 0) return -1;
  readOptional(it, kStandard, r.standard_);
  return 0;
}

int KTRUpdateInstallSource::Writer::operator()(MBQMessageIterator& it, const KTRUpdateInstallSource& r) const {
  if (it.setValue(Tag::kValue, r.source_) != 0) return -1;
  return writeOptional(it, kStandard, r.standard_);
}

int KTRUpdateProduct::Reader::operator()(const MBQMessageIterator& it, KTRUpdateProduct& r) const {
  if (it.getValue(Tag::kName, r.name_) != 0) return -1;
  if (it.getValue(Tag::kKey, r.key_) != 0) return -1;
  if (readOptionAt(it, Tag::kInstallType, r.installType_, installTypes) != 0) return -1;
  readOptional(it, Tag::kInstallSource, r.installSource_);
  readOptional(it, Tag::kProductParam, r.param_);
  return 0;
}

int KTRUpdateProduct::Writer::operator()(MBQMessageIterator& it, const KTRUpdateProduct& r) const {
  if (it.setValue(Tag::kName, r.name_) != 0) return -1;
  if (it.setValue(Tag::kKey, r.key_) != 0) return -1;
  if (it.addChildAndDescend(Tag::kInstallType) != 0) return -1;
  // A type outside the table leaves the holder empty: the rest of the product still matters
  // more to the service than a type it could not read anyway.
  writeOptions(r.installType_, it, installTypes);
  it.up();
  if (writeOptional(it, Tag::kInstallSource, r.installSource_) != 0) return -1;
  return writeOptional(it, Tag::kProductParam, r.param_);
}

// ---------------------------------------------------------------- service settings

int KTRUpdateServiceSettings::Reader::operator()(const MBQMessageIterator& it, KTRUpdateServiceSettings& r) const {
  r.autoreboot_ = it.hasChild(kAutoreboot);
  CheckDays days = NoDay;
  if (it.hasChild(kCheckPeriod) && readOptionAt(it, kCheckPeriod, days, checkDays) != 0) return -1;
  r.checkDays_ = days;
  if (it.getValue(Tag::kPeriod, r.period_) != 0) return -1;
  r.flag_ = it.hasChild(Tag::kServiceFlag);
  return 0;
}

int KTRUpdateServiceSettings::Writer::operator()(MBQMessageIterator& it, const KTRUpdateServiceSettings& r) const {
  if (writeMarker(it, kAutoreboot, r.autoreboot_) != 0) return -1;
  if (r.checkDays_ != NoDay && writeOptionAt(it, kCheckPeriod, r.checkDays_, checkDays) != 0) return -1;
  if (it.setValue(Tag::kPeriod, r.period_) != 0) return -1;
  return writeMarker(it, Tag::kServiceFlag, r.flag_);
}

// ---------------------------------------------------------------- yum

namespace Update {
namespace Yum {

int Repository::Reader::operator()(const MBQMessageIterator& it, Repository& r) const {
  // Older services send bare repositories: only the name identifies one.
  it.getValue(Tag::kKey, r.key_);
  it.getValue(kBaseUrl, r.baseUrl_);
  r.flag_ = it.hasChild(Tag::kRepoFlag);
  return it.getValue(Tag::kName, r.name_);
}

int Repository::Writer::operator()(MBQMessageIterator& it, const Repository& r) const {
  if (it.setValue(Tag::kKey, r.key_) != 0) return -1;
  if (it.setValue(kBaseUrl, r.baseUrl_) != 0) return -1;
  if (writeMarker(it, Tag::kRepoFlag, r.flag_) != 0) return -1;
  return it.setValue(Tag::kName, r.name_);
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
    return MBQ::MBQWriterID(KTRUpdateServiceSettings::Writer(), Tag::kServiceSettings)(*it, s);
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
  const bool hasSettings = it.hasChild(Tag::kServiceSettings);
  const bool hasYum = !hasSettings && it.hasChild(kYum);
  if (hasSettings) {
    KTRUpdateServiceSettings settings;
    if (MBQ::MBQReaderID(KTRUpdateServiceSettings::Reader(), Tag::kServiceSettings)(it, settings) == 0)
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
  readOptional(it, Tag::kConnOption, r.option_);
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
  const int rc = writeOptional(it, Tag::kConnOption, r.option_);
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
  readOptional(it, Tag::kName, r.name_);
  readOptional(it, Tag::kKey, r.key_);
  readOptional(it, Tag::kDetail, r.detail_);
  readOptional(it, Tag::kSize, r.size_);
  r.flag_ = it.hasChild(Tag::kUpdateFlag);
  readOptional(it, Tag::kRelease, r.release_);
  readOptional(it, kInstalledVersion, r.installedVersion_);
  readOptional(it, Tag::kUpdateParam, r.param_);
  return 0;
}

int KTRUpdate::Writer::operator()(MBQMessageIterator& it, const KTRUpdate& r) const {
  if (writeOptional(it, Tag::kName, r.name_) != 0) return -1;
  if (writeOptional(it, Tag::kKey, r.key_) != 0) return -1;
  if (writeOptional(it, Tag::kDetail, r.detail_) != 0) return -1;
  if (writeOptional(it, Tag::kSize, r.size_) != 0) return -1;
  if (writeMarker(it, Tag::kUpdateFlag, r.flag_) != 0) return -1;
  if (writeOptional(it, Tag::kRelease, r.release_) != 0) return -1;
  if (writeOptional(it, kInstalledVersion, r.installedVersion_) != 0) return -1;
  return writeOptional(it, Tag::kUpdateParam, r.param_);
}

// Derived writers write their base part into the same element without a typed write, so the
// element keeps the derived type and a reader can choose the class again.

int KTRSystemUpdate::Reader::operator()(const MBQMessageIterator& it, KTRSystemUpdate& r) const {
  if (KTRUpdate::Reader()(it, r) != 0) return -1;
  r.updateType_ = NoType;
  if (it.hasChild(Tag::kType) && readOptionAt(it, Tag::kType, r.updateType_, systemUpdateTypes) != 0) return -1;
  readOptional(it, Tag::kUpdateText1, r.text1_);
  readOptional(it, Tag::kUpdateText2, r.text2_);
  return 0;
}

int KTRSystemUpdate::Writer::operator()(MBQMessageIterator& it, const KTRSystemUpdate& r) const {
  if (KTRUpdate::Writer()(it, r) != 0) return -1;
  if (r.updateType_ != NoType && writeOptionAt(it, Tag::kType, r.updateType_, systemUpdateTypes) != 0) return -1;
  if (writeOptional(it, Tag::kUpdateText1, r.text1_) != 0) return -1;
  return writeOptional(it, Tag::kUpdateText2, r.text2_);
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
  readOptional(it, Tag::kUpdateText1, r.text1_);
  return 0;
}

int KTRSRNUpdate::Writer::operator()(MBQMessageIterator& it, const KTRSRNUpdate& r) const {
  if (KTRUpdate::Writer()(it, r) != 0) return -1;
  return writeOptional(it, Tag::kUpdateText1, r.text1_);
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
