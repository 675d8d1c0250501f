#include "KTRFunctionality/KTRUp2date.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;
using MBQ::lenient;
using MBQ::optional;
using MBQ::required;

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

// An option held under its own element. With a `none` value, a missing holder reads as `none`
// and `none` is not written; without one, a missing holder keeps the value and the holder is
// always written (so a value outside the table fails the write).
template <class R, class E, class K>
class OptionAt final : public MBQ::MBQLayoutElement<R> {
 public:
  OptionAt(K key, E R::*member, const KTROptionTable<E>& table, std::optional<E> none)
      : key_(std::move(key)), member_(member), table_(&table), none_(none) {}
  int read(const MBQMessageIterator& it, R& record) const override {
    if (!it.hasChild(key_)) {
      if (none_) record.*member_ = *none_;
      return 0;
    }
    if (none_) record.*member_ = *none_;
    return readOptionAt(it, key_, record.*member_, *table_);
  }
  int write(MBQMessageIterator& it, const R& record) const override {
    return none_ && record.*member_ == *none_ ? 0 : writeOptionAt(it, key_, record.*member_, *table_);
  }
  MBQ::MBQLayoutEntry entry() const override { return {MBQ::layout_detail::elementName(key_), false, false}; }

 private:
  K key_;
  E R::*member_;
  const KTROptionTable<E>* table_;
  std::optional<E> none_;
};

template <class R, class E, class K>
MBQ::MBQLayoutPart<R> optionAt(const K& key, E R::*member, const KTROptionTable<E>& table, std::optional<E> none) {
  return std::make_shared<OptionAt<R, E, MBQ::layout_detail::KeyOf<K>>>(MBQ::layout_detail::KeyOf<K>(key), member, table, none);
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

const MBQ::MBQLayout<KTRUpdateConnectionSettings>& KTRUpdateConnectionSettings::layout() {
  using R = KTRUpdateConnectionSettings;
  static const MBQ::MBQLayout<R> layout{optional(Tag::kConnParam1, &R::param1_), optional(Tag::kConnParam2, &R::param2_),
                                        optional(Tag::kConnParam3, &R::param3_)};
  return layout;
}

const MBQ::MBQLayout<KTRUpdateConnection>& KTRUpdateConnection::layout() {
  using R = KTRUpdateConnection;
  static const MBQ::MBQLayout<R> layout{MBQ::base<R, KTRUpdateConnectionSettings>(), optional(Tag::kConnParam4, &R::param4_),
                                        optional(Tag::kConnParam5, &R::param5_)};
  return layout;
}

const MBQ::MBQLayout<KTRUpdateProxySettings>& KTRUpdateProxySettings::layout() {
  using R = KTRUpdateProxySettings;
  static const MBQ::MBQLayout<R> layout{optionAt(Tag::kType, &R::proxyType_, proxyTypes, std::optional<ProxyType>()),
                                        MBQ::base<R, KTRUpdateConnectionSettings>()};
  return layout;
}

// ---------------------------------------------------------------- products

const MBQ::MBQLayout<KTRUpdateInstallSource>& KTRUpdateInstallSource::layout() {
  using R = KTRUpdateInstallSource;
  static const MBQ::MBQLayout<R> layout{required(Tag::kValue, &R::source_), optional(kStandard, &R::standard_)};
  return layout;
}

int KTRUpdateProduct::Reader::operator()(const MBQMessageIterator& it, KTRUpdateProduct& r) const {
  if (it.getValue(Tag::kName, r.name_) != 0) return -1;
  if (it.getValue(Tag::kKey, r.key_) != 0) return -1;
  if (readOptionAt(it, Tag::kInstallType, r.installType_, installTypes) != 0) return -1;
  it.getObj(r.installSource_, Tag::kInstallSource);
  it.getObj(r.param_, Tag::kProductParam);
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
  if (MBQ::MBQWriterID(MBQ::MBQDefaultWriter<decltype(r.installSource_)>(), Tag::kInstallSource)(it, r.installSource_) != 0)
    return -1;
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<KTROptionalText>(), Tag::kProductParam)(it, r.param_);
}

// ---------------------------------------------------------------- service settings

const MBQ::MBQLayout<KTRUpdateServiceSettings>& KTRUpdateServiceSettings::layout() {
  using R = KTRUpdateServiceSettings;
  static const MBQ::MBQLayout<R> layout{MBQ::marker(kAutoreboot, &R::autoreboot_),
                                        optionAt(kCheckPeriod, &R::checkDays_, checkDays, std::optional<CheckDays>(NoDay)),
                                        required(Tag::kPeriod, &R::period_), MBQ::marker(Tag::kServiceFlag, &R::flag_)};
  return layout;
}

// ---------------------------------------------------------------- yum

namespace Update {
namespace Yum {

const MBQ::MBQLayout<Repository>& Repository::layout() {
  // Older services send bare repositories: only the name identifies one.
  static const MBQ::MBQLayout<Repository> layout{
      lenient(optional(Tag::kKey, &Repository::key_)), lenient(optional(kBaseUrl, &Repository::baseUrl_)),
      MBQ::marker(Tag::kRepoFlag, &Repository::flag_), required(Tag::kName, &Repository::name_)};
  return layout;
}

const MBQ::MBQLayout<Config>& Config::layout() {
  static const MBQ::MBQLayout<Config> layout{MBQ::list(kRepository, &Config::repositories_)};
  return layout;
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
  it.getObj(r.option_, Tag::kConnOption);
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
  const int rc = MBQ::MBQWriterID(MBQ::MBQDefaultWriter<decltype(r.option_)>(), Tag::kConnOption)(it, r.option_);
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

const MBQ::MBQLayout<KTRUpdate>& KTRUpdate::layout() {
  using R = KTRUpdate;
  static const MBQ::MBQLayout<R> layout{
      optional(Tag::kName, &R::name_),       optional(Tag::kKey, &R::key_),
      optional(Tag::kDetail, &R::detail_),   optional(Tag::kSize, &R::size_),
      MBQ::marker(Tag::kUpdateFlag, &R::flag_), optional(Tag::kRelease, &R::release_),
      optional(kInstalledVersion, &R::installedVersion_), optional(Tag::kUpdateParam, &R::param_)};
  return layout;
}

// Derived records write their base part into the same element without a typed write, so the
// element keeps the derived type and a reader can choose the class again.
const MBQ::MBQLayout<KTRSystemUpdate>& KTRSystemUpdate::layout() {
  using R = KTRSystemUpdate;
  static const MBQ::MBQLayout<R> layout{
      MBQ::base<R, KTRUpdate>(), optionAt(Tag::kType, &R::updateType_, systemUpdateTypes, std::optional<UpdateType>(NoType)),
      optional(Tag::kUpdateText1, &R::text1_), optional(Tag::kUpdateText2, &R::text2_)};
  return layout;
}

const MBQ::MBQLayout<KTRWindowsSystemUpdate>& KTRWindowsSystemUpdate::layout() {
  using R = KTRWindowsSystemUpdate;
  static const MBQ::MBQLayout<R> layout{MBQ::base<R, KTRSystemUpdate>(), optional(kProduct, &R::product_)};
  return layout;
}

const MBQ::MBQLayout<KTRSRNUpdate>& KTRSRNUpdate::layout() {
  static const MBQ::MBQLayout<KTRSRNUpdate> layout{MBQ::base<KTRSRNUpdate, KTRUpdate>(),
                                                   optional(Tag::kUpdateText1, &KTRSRNUpdate::text1_)};
  return layout;
}

const MBQ::MBQLayout<KTRAppTemplateUpdate>& KTRAppTemplateUpdate::layout() {
  static const MBQ::MBQLayout<KTRAppTemplateUpdate> layout{MBQ::base<KTRAppTemplateUpdate, KTRUpdate>()};
  return layout;
}

const MBQ::MBQLayout<KTRTemplateUpdate>& KTRTemplateUpdate::layout() {
  using R = KTRTemplateUpdate;
  static const MBQ::MBQLayout<R> layout{
      MBQ::base<R, KTRUpdate>(),
      MBQ::inPlace(&R::appTemplates_, KTRUpdateList::Reader{kAppTemplate}, KTRUpdateList::Writer{kAppTemplate},
                   MBQ::MBQLayoutEntry{kAppTemplate, false, true})};
  return layout;
}

const MBQ::MBQLayout<KTROsTemplateUpdate>& KTROsTemplateUpdate::layout() {
  static const MBQ::MBQLayout<KTROsTemplateUpdate> layout{MBQ::base<KTROsTemplateUpdate, KTRTemplateUpdate>()};
  return layout;
}

const MBQ::MBQLayout<KTREzTemplateUpdate>& KTREzTemplateUpdate::layout() {
  static const MBQ::MBQLayout<KTREzTemplateUpdate> layout{MBQ::base<KTREzTemplateUpdate, KTRTemplateUpdate>()};
  return layout;
}

}  // namespace KTR
