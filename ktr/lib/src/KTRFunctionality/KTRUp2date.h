#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <boost/variant.hpp>

#include "KTRFunctionality/KTRExport.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQLayout.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQOptionalProperty.h"

// The update service's records: how the node reaches the update source and which products it
// updates (KTRUpdateConfig and its parts), the updates it reports (KTRUpdate and its kinds,
// read as their own class through the derived-parser registry of KTRUpdate) and the yum
// repositories a configuration may carry.
//
// Element layouts are listed with each record, in reading order; writers emit the same
// elements in the same order and skip unspecified optional fields. Numbers are ids of the tag
// table, quoted names element names. "opt": an optional property, specified exactly when its
// element was read; "req": a missing or malformed element makes the reader return -1 at once.
// A "marker" flag is true exactly when its element exists and is written as an empty element
// only when true. Readers and writers return 0 or -1 and leave no error message.

namespace KTR {

using KTROptionalText = MBQ::MBQOptionalProperty<std::string>;

// An enumeration stored as the name of an empty child element: value -> spelling.
template <class E>
using KTROptionTable = std::map<E, std::string>;

// The cursor stands on the element holding the option. Its first child's name is compared
// with the spellings in ascending order of value; the first equal one gives the value. 0 when
// one matched; -1 when there is no child or no spelling matched, `value` then untouched. The
// cursor ends where it started.
template <class E>
int readOptions(E& value, const MBQ::MBQMessageIterator& it, const KTROptionTable<E>& table);
// Adds an empty child named by the value's spelling. -1, writing nothing, when the value is not
// in the table; otherwise the cursor's result.
template <class E>
int writeOptions(const E& value, MBQ::MBQMessageIterator& it, const KTROptionTable<E>& table);

// Layout: conn_param1, conn_param2, conn_param3, all opt text.
class KTR_EXPORT KTRUpdateConnectionSettings {
 public:
  virtual ~KTRUpdateConnectionSettings();

  const KTROptionalText& getParam1() const { return param1_; }
  void setParam1(const KTROptionalText& v) { param1_ = v; }
  const KTROptionalText& getParam2() const { return param2_; }
  void setParam2(const KTROptionalText& v) { param2_ = v; }
  const KTROptionalText& getParam3() const { return param3_; }
  void setParam3(const KTROptionalText& v) { param3_ = v; }

  static const MBQ::MBQLayout<KTRUpdateConnectionSettings>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUpdateConnectionSettings>;
  using Writer = MBQ::MBQLayoutWriter<KTRUpdateConnectionSettings>;

 private:
  KTROptionalText param1_;
  KTROptionalText param2_;
  KTROptionalText param3_;
};

// A direct connection to the update source. Layout: the KTRUpdateConnectionSettings elements
// (req), then conn_param4 and conn_param5 (opt text).
class KTR_EXPORT KTRUpdateConnection : public KTRUpdateConnectionSettings {
 public:
  const KTROptionalText& getParam4() const { return param4_; }
  void setParam4(const KTROptionalText& v) { param4_ = v; }
  const KTROptionalText& getParam5() const { return param5_; }
  void setParam5(const KTROptionalText& v) { param5_ = v; }

  static const MBQ::MBQLayout<KTRUpdateConnection>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUpdateConnection>;
  using Writer = MBQ::MBQLayoutWriter<KTRUpdateConnection>;

 private:
  KTROptionalText param4_;
  KTROptionalText param5_;
};

// The proxy to reach the update source through. Layout: type holding a proxy-type option (a
// missing element keeps the type; an element without a known option fails the read; always
// written, so a type outside the table fails the writer), then the KTRUpdateConnectionSettings
// elements (req).
class KTR_EXPORT KTRUpdateProxySettings : public KTRUpdateConnectionSettings {
 public:
  // The option enumerations have a fixed underlying type: a value outside the table can come
  // from a peer, and only then is every int a valid value of the type.
  enum ProxyType : int { Explorer = 1, Custom = 2, NoProxy = 3 };

  ProxyType getProxyType() const { return proxyType_; }
  void setProxyType(ProxyType type) { proxyType_ = type; }

  static const MBQ::MBQLayout<KTRUpdateProxySettings>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUpdateProxySettings>;
  using Writer = MBQ::MBQLayoutWriter<KTRUpdateProxySettings>;

 private:
  ProxyType proxyType_ = NoProxy;
};

// Where a product is installed from. Layout: value as the source (req text), "standard" (opt text).
class KTR_EXPORT KTRUpdateInstallSource {
 public:
  const std::string& getSource() const { return source_; }
  void setSource(const std::string& source) { source_ = source; }
  const KTROptionalText& getStandard() const { return standard_; }
  void setStandard(const KTROptionalText& v) { standard_ = v; }

  static const MBQ::MBQLayout<KTRUpdateInstallSource>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUpdateInstallSource>;
  using Writer = MBQ::MBQLayoutWriter<KTRUpdateInstallSource>;

 private:
  std::string source_;
  KTROptionalText standard_;
};

// One updated product. Layout: name (req), key as the second text (req), install_type holding an
// install-type option (req), install_source (opt), product_param as the last value (opt text). The
// writer always writes install_type; a type outside the table leaves it empty and does not fail.
class KTR_EXPORT KTRUpdateProduct {
 public:
  enum InstallType : int { Disabled = 0, Automatic = 1, AutoDownload = 2, Manual = 3 };

  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  const std::string& getKey() const { return key_; }
  void setKey(const std::string& key) { key_ = key; }
  InstallType getInstallType() const { return installType_; }
  void setInstallType(InstallType type) { installType_ = type; }
  const MBQ::MBQOptionalProperty<KTRUpdateInstallSource>& getInstallSource() const { return installSource_; }
  void setInstallSource(const MBQ::MBQOptionalProperty<KTRUpdateInstallSource>& v) { installSource_ = v; }
  const KTROptionalText& getParam() const { return param_; }
  void setParam(const KTROptionalText& v) { param_ = v; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRUpdateProduct& record) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRUpdateProduct& record) const;
  };

 private:
  std::string name_;
  std::string key_;
  InstallType installType_ = Disabled;
  MBQ::MBQOptionalProperty<KTRUpdateInstallSource> installSource_;
  KTROptionalText param_;
};

// The update service's own schedule. Layout: "autoreboot" (marker), "check_period" holding a
// check-day option (absent: 0; present without a known day: the read fails; written only when
// not 0), period (req, 32-bit), service_flag (marker).
class KTR_EXPORT KTRUpdateServiceSettings {
 public:
  // The week starts on Sunday; 0 is "no day" and is spelled "".
  enum CheckDays : int { NoDay = 0, Sunday = 1, Monday, Tuesday, Wednesday, Thursday, Friday, Saturday };

  bool getAutoreboot() const { return autoreboot_; }
  void setAutoreboot(bool on) { autoreboot_ = on; }
  CheckDays getCheckDays() const { return checkDays_; }
  void setCheckDays(CheckDays days) { checkDays_ = days; }
  int getPeriod() const { return period_; }
  void setPeriod(int period) { period_ = period; }
  bool getFlag() const { return flag_; }
  void setFlag(bool on) { flag_ = on; }

  static const MBQ::MBQLayout<KTRUpdateServiceSettings>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUpdateServiceSettings>;
  using Writer = MBQ::MBQLayoutWriter<KTRUpdateServiceSettings>;

 private:
  bool autoreboot_ = false;
  CheckDays checkDays_ = NoDay;
  int period_ = 0;
  bool flag_ = false;
};

namespace Update {
namespace Yum {

// Layout: key as the second text (lenient), "base_url" (lenient), repo_flag
// (marker), name (req; its result is the reader's).
class KTR_EXPORT Repository {
 public:
  const std::string& getKey() const { return key_; }
  void setKey(const std::string& key) { key_ = key; }
  const std::string& getBaseUrl() const { return baseUrl_; }
  void setBaseUrl(const std::string& url) { baseUrl_ = url; }
  bool getFlag() const { return flag_; }
  void setFlag(bool on) { flag_ = on; }
  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }

  static const MBQ::MBQLayout<Repository>& layout();
  using Reader = MBQ::MBQLayoutReader<Repository>;
  using Writer = MBQ::MBQLayoutWriter<Repository>;

 private:
  std::string key_;
  std::string baseUrl_;
  bool flag_ = false;
  std::string name_;
};

// Layout: one "repository" element per repository, as found; a repository that fails to read
// fails the configuration.
class KTR_EXPORT Config {
 public:
  const std::vector<Repository>& getRepositories() const { return repositories_; }
  void setRepositories(const std::vector<Repository>& repositories) { repositories_ = repositories; }

  static const MBQ::MBQLayout<Config>& layout();
  using Reader = MBQ::MBQLayoutReader<Config>;
  using Writer = MBQ::MBQLayoutWriter<Config>;

 private:
  std::vector<Repository> repositories_;
};

}  // namespace Yum
}  // namespace Update

// The whole update configuration.
//
// Reading: every "product" element into the products (up to the first that fails); the first
// product named "srn" is moved out of the list into the management product. Access: an element
// service_settings gives the service settings, else an element "yum" the yum configuration; with neither, a
// "connection" element gives the connection. A part that fails to read leaves the access as it
// was. Inside "connection": conn_option (opt). The reader always returns 0.
//
// Writing: the access ("connection", service_settings or "yum"), the products, the management product
// named "srn" (always, and always last), then conn_option inside "connection" (the element is added,
// empty, when the access is not a connection). -1 when the access record fails to write or
// "connection" cannot be added.
class KTR_EXPORT KTRUpdateConfig {
 public:
  using Access = boost::variant<KTRUpdateConnection, KTRUpdateServiceSettings, Update::Yum::Config>;

  const std::vector<KTRUpdateProduct>& getProducts() const { return products_; }
  void setProducts(const std::vector<KTRUpdateProduct>& products) { products_ = products; }
  const KTRUpdateProduct& getManagementProduct() const { return managementProduct_; }
  void setManagementProduct(const KTRUpdateProduct& product) { managementProduct_ = product; }
  const Access& getAccess() const { return access_; }
  void setAccess(const Access& access) { access_ = access; }
  const KTROptionalText& getOption() const { return option_; }
  void setOption(const KTROptionalText& v) { option_ = v; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRUpdateConfig& record) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRUpdateConfig& record) const;
  };

 private:
  std::vector<KTRUpdateProduct> products_;
  KTRUpdateProduct managementProduct_;
  Access access_;
  KTROptionalText option_;
};

// The four option tables, built once when the library loads.
KTR_EXPORT const KTROptionTable<KTRUpdateProduct::InstallType>& installTypeOptions();
KTR_EXPORT const KTROptionTable<KTRUpdateProxySettings::ProxyType>& proxyTypeOptions();
KTR_EXPORT const KTROptionTable<KTRUpdateServiceSettings::CheckDays>& checkDayOptions();

// ---------------------------------------------------------------- update kinds

class KTRUpdate;

// Updates of any kind. Each entry is read as the class its element declares (an unknown type
// as a plain KTRUpdate) and written with its own type.
//
// Layout: one element per entry, named by the reader's / writer's item name ("update" unless
// said). Reading is as found: entries up to the first that fails; it never fails.
class KTR_EXPORT KTRUpdateList : public std::vector<std::shared_ptr<KTRUpdate>> {
 public:
  using std::vector<std::shared_ptr<KTRUpdate>>::vector;

  struct KTR_EXPORT Reader {
    std::string itemName = "update";
    int operator()(const MBQ::MBQMessageIterator& it, KTRUpdateList& list) const;
  };
  // Fails (-1) on a null entry or an entry whose class has no factory.
  struct KTR_EXPORT Writer {
    std::string itemName = "update";
    int operator()(MBQ::MBQMessageIterator& it, const KTRUpdateList& list) const;
  };
};

// An available or installed update. Schema type "updateType" (update namespace); the default
// of the KTRUpdate registry.
//
// Layout: name, key, detail, size (64-bit), update_flag (marker), release,
// "installed_version", update_param; all opt text unless said.
class KTR_EXPORT KTRUpdate {
 public:
  virtual ~KTRUpdate();

  const KTROptionalText& getName() const { return name_; }
  void setName(const KTROptionalText& v) { name_ = v; }
  const KTROptionalText& getKey() const { return key_; }
  void setKey(const KTROptionalText& v) { key_ = v; }
  const KTROptionalText& getDetail() const { return detail_; }
  void setDetail(const KTROptionalText& v) { detail_ = v; }
  const MBQ::MBQOptionalProperty<long long>& getSize() const { return size_; }
  void setSize(const MBQ::MBQOptionalProperty<long long>& v) { size_ = v; }
  bool getFlag() const { return flag_; }
  void setFlag(bool on) { flag_ = on; }
  const KTROptionalText& getRelease() const { return release_; }
  void setRelease(const KTROptionalText& v) { release_ = v; }
  const KTROptionalText& getInstalledVersion() const { return installedVersion_; }
  void setInstalledVersion(const KTROptionalText& v) { installedVersion_ = v; }
  const KTROptionalText& getParam() const { return param_; }
  void setParam(const KTROptionalText& v) { param_ = v; }

  static const MBQ::MBQLayout<KTRUpdate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUpdate>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRUpdate> {
    static const char* getStrTypeID() { return "updateType"; }
    const char* getStrNSID() const { return MBQ::kUpdateNamespace; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  KTROptionalText name_;
  KTROptionalText key_;
  KTROptionalText detail_;
  MBQ::MBQOptionalProperty<long long> size_;
  bool flag_ = false;
  KTROptionalText release_;
  KTROptionalText installedVersion_;
  KTROptionalText param_;
};

// A system update. Layout: the KTRUpdate elements (req), type holding an update-type option
// (absent: 0; present without a known option: the read fails; written only when not 0), update_text1
// and update_text2 (opt text). Schema type "system_updateType".
class KTR_EXPORT KTRSystemUpdate : public KTRUpdate {
 public:
  enum UpdateType : int { NoType = 0, Hotfix = 1, ServicePack = 2, Version = 3 };

  UpdateType getUpdateType() const { return updateType_; }
  void setUpdateType(UpdateType type) { updateType_ = type; }
  const KTROptionalText& getText1() const { return text1_; }
  void setText1(const KTROptionalText& v) { text1_ = v; }
  const KTROptionalText& getText2() const { return text2_; }
  void setText2(const KTROptionalText& v) { text2_ = v; }

  static const MBQ::MBQLayout<KTRSystemUpdate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRSystemUpdate>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRSystemUpdate> {
    static const char* getStrTypeID() { return "system_updateType"; }
    const char* getStrNSID() const { return MBQ::kUpdateNamespace; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  UpdateType updateType_ = NoType;
  KTROptionalText text1_;
  KTROptionalText text2_;
};

KTR_EXPORT const KTROptionTable<KTRSystemUpdate::UpdateType>& systemUpdateTypeOptions();

// Layout: the KTRSystemUpdate elements (req), "product" (opt text). Schema type
// "windows_system_updateType".
class KTR_EXPORT KTRWindowsSystemUpdate : public KTRSystemUpdate {
 public:
  const KTROptionalText& getProduct() const { return product_; }
  void setProduct(const KTROptionalText& v) { product_ = v; }

  static const MBQ::MBQLayout<KTRWindowsSystemUpdate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRWindowsSystemUpdate>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRWindowsSystemUpdate> {
    static const char* getStrTypeID() { return "windows_system_updateType"; }
    const char* getStrNSID() const { return MBQ::kUpdateNamespace; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  KTROptionalText product_;
};

// An update of the management product. Layout: the KTRUpdate elements (req), update_text1 (opt text).
// Schema type "srn_updateType".
class KTR_EXPORT KTRSRNUpdate : public KTRUpdate {
 public:
  const KTROptionalText& getText1() const { return text1_; }
  void setText1(const KTROptionalText& v) { text1_ = v; }

  static const MBQ::MBQLayout<KTRSRNUpdate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRSRNUpdate>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRSRNUpdate> {
    static const char* getStrTypeID() { return "srn_updateType"; }
    const char* getStrNSID() const { return MBQ::kUpdateNamespace; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  KTROptionalText text1_;
};

// An application template update: the KTRUpdate elements only. Schema type
// "app_template_updateType".
class KTR_EXPORT KTRAppTemplateUpdate : public KTRUpdate {
 public:
  static const MBQ::MBQLayout<KTRAppTemplateUpdate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRAppTemplateUpdate>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRAppTemplateUpdate> {
    static const char* getStrTypeID() { return "app_template_updateType"; }
    const char* getStrNSID() const { return MBQ::kUpdateNamespace; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };
};

// A template update with the application template updates that come with it. Layout: the
// KTRUpdate elements (req), then one "app_template" element per application update (a
// KTRUpdateList, each entry read as the class it declares). Schema type "template_updateType".
class KTR_EXPORT KTRTemplateUpdate : public KTRUpdate {
 public:
  const KTRUpdateList& getAppTemplates() const { return appTemplates_; }
  void setAppTemplates(const KTRUpdateList& list) { appTemplates_ = list; }

  static const MBQ::MBQLayout<KTRTemplateUpdate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRTemplateUpdate>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRTemplateUpdate> {
    static const char* getStrTypeID() { return "template_updateType"; }
    const char* getStrNSID() const { return MBQ::kUpdateNamespace; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  KTRUpdateList appTemplates_;
};

// The KTRTemplateUpdate elements; schema type "os_template_updateType".
class KTR_EXPORT KTROsTemplateUpdate : public KTRTemplateUpdate {
 public:
  static const MBQ::MBQLayout<KTROsTemplateUpdate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTROsTemplateUpdate>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTROsTemplateUpdate> {
    static const char* getStrTypeID() { return "os_template_updateType"; }
    const char* getStrNSID() const { return MBQ::kUpdateNamespace; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };
};

// The KTRTemplateUpdate elements; schema type "ez_template_updateType".
class KTR_EXPORT KTREzTemplateUpdate : public KTRTemplateUpdate {
 public:
  static const MBQ::MBQLayout<KTREzTemplateUpdate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTREzTemplateUpdate>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTREzTemplateUpdate> {
    static const char* getStrTypeID() { return "ez_template_updateType"; }
    const char* getStrNSID() const { return MBQ::kUpdateNamespace; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };
};

// ---------------------------------------------------------------- option codecs

template <class E>
int readOptions(E& value, const MBQ::MBQMessageIterator& it, const KTROptionTable<E>& table) {
  if (it.descendFirst() != 0) {
    MBQ::setErrorMessage("no option given");
    return -1;
  }
  const std::string name = it.getName();
  it.up();
  for (const auto& entry : table) {
    if (entry.second == name) {
      value = entry.first;
      return 0;
    }
  }
  MBQ::setErrorMessage("unknown option %s", name.c_str());
  return -1;
}

template <class E>
int writeOptions(const E& value, MBQ::MBQMessageIterator& it, const KTROptionTable<E>& table) {
  const auto found = table.find(value);
  if (found == table.end()) return -1;
  return it.addChild(found->second);
}

}  // namespace KTR
