#include "KTRFunctionality/KTRRecordCatalog.h"

#include <memory>

#include "KTRFunctionality/KTREnv.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvMRecords.h"
#include "KTRFunctionality/KTREnvSampleM.h"
#include "KTRFunctionality/KTRHardDisk.h"
#include "KTRFunctionality/KTRHqStat.h"
#include "KTRFunctionality/KTRMigrator.h"
#include "KTRFunctionality/KTRNetworkM.h"
#include "KTRFunctionality/KTRPkgM.h"
#include "KTRFunctionality/KTRSchemaIndexInternal.h"
#include "KTRFunctionality/KTRSupport.h"
#include "KTRFunctionality/KTRTEM.h"
#include "KTRFunctionality/KTRUp2date.h"
#include "KTRFunctionality/KTRVEth.h"
#include "KTRFunctionality/KTRVPSType.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQCore/MBQError.h"
#include "MBQFunctionalityCore/MBQPackage.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQLayout.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQTagTable.h"

namespace KTR {

namespace {

using MBQ::MBQMessage;
using MBQ::MBQMessageIterator;

template <class T, class Reader, class Writer>
int roundTripAs(const MBQMessageIterator& element, MBQMessage& out, int& readStatus) {
  T record;
  MBQ::clearErrorMessage();
  readStatus = Reader()(element, record);
  if (readStatus != 0) return -1;
  out = MBQMessage(element.getName());
  return out.iterator()->putObject(record, Writer()) == 0 ? 0 : -1;
}

template <class Base>
int roundTripDerived(const MBQMessageIterator& element, MBQMessage& out, int& readStatus) {
  std::shared_ptr<Base> record;
  MBQ::clearErrorMessage();
  readStatus = MBQ::MBQReaderDerivedValid<Base>(false)(element, record);
  if (readStatus != 0) return -1;
  out = MBQMessage(element.getName());
  return out.iterator()->putObject(*record, MBQ::MBQWriterDerived<Base>()) == 0 ? 0 : -1;
}

// An entry for T with its own reader and writer; the schema and namespace come from the
// writer when it declares them.
// `published` names the record's type in the published schemas when its writer declares none.
template <class T, class Reader = typename T::Reader, class Writer = typename T::Writer>
KTRRecordType record(const char* name, const char* familyNamespace, const char* published = "") {
  KTRRecordType type;
  type.name = name;
  type.ns = familyNamespace;
  type.publishedType = published;
  if constexpr (MBQ::codec_detail::HasSchema<Writer>::value) {
    const Writer writer;
    type.schema = writer.getStrTypeID();
    const char* ns = writer.getStrNSID();
    if (*ns == '\0' && writer.getNSID() != 0) ns = MBQ::MBQDefaultMap::findNSID(writer.getNSID());
    if (ns != nullptr) type.ns = ns;
    type.publishedType = type.schema;
  }
  type.roundTrip = &roundTripAs<T, Reader, Writer>;
  if constexpr (MBQ::layout_detail::HasLayout<T>::value)
    for (const MBQ::MBQLayoutEntry& entry : T::layout().entries())
      type.elements.push_back({entry.name, entry.required, entry.repeated});
  return type;
}

// An entry for a record registered with the derived-parser registry of Base.
template <class T, class Base, class Reader = typename T::Reader, class Writer = typename T::Writer>
KTRRecordType derived(const char* name, const char* familyNamespace) {
  KTRRecordType type = record<T, Reader, Writer>(name, familyNamespace);
  type.roundTripDerived = &roundTripDerived<Base>;
  return type;
}

std::vector<KTRRecordType> buildCatalog() {
  const char* const types = MBQ::kTypesNamespace;
  const char* const update = MBQ::kUpdateNamespace;
  const char* const relocator = MBQ::kRelocatorNamespace;
  namespace Disk = HardDisk;
  return {
      // The container model.
      derived<KTREnvConfig, MBQ::MBQEnvConfig>("KTREnvConfig", types),
      derived<KTREnv, MBQ::MBQEnv>("KTREnv", types),
      derived<KTRVtInfo, MBQ::MBQVtInfo>("KTRVtInfo", types),
      derived<KTRVtSettings, MBQ::MBQVtSettings>("KTRVtSettings", types),
      record<KTRRedirectService>("KTRRedirectService", types),
      record<KTRConnectionLinkInfo>("KTRConnectionLinkInfo", types, "connection_link_infoType"),
      record<KTRVPSType>("KTRVPSType", types, "vps_typeType"),
      record<KTREnvCapability>("KTREnvCapability", types, "capabilityType"),
      // Disks and virtual Ethernet.
      derived<Disk::List::HqFS, Disk::List::Base>("HardDisk::List::HqFS", types),
      derived<Disk::List::Images<Disk::Dromo>, Disk::List::Base>("HardDisk::List::Images<HardDisk::Dromo>", types),
      derived<Disk::List::Images<Disk::Loopback>, Disk::List::Base>("HardDisk::List::Images<HardDisk::Loopback>",
                                                                     types),
      record<Disk::HqFS>("HardDisk::HqFS", types),
      record<Disk::Dromo>("HardDisk::Dromo", types),
      record<Disk::Loopback>("HardDisk::Loopback", types),
      derived<KTRNetVEth, MBQ::MBQNetDevice>("KTRNetVEth", types),
      // Packages and templates.
      record<KTRTemplate>("KTRTemplate", types, "templateType"),
      record<KTRPackage>("KTRPackage", types, "packageType"),
      record<KTRPackageVersion>("KTRPackageVersion", types, "package_versionType"),
      record<KTRPackageInfo>("KTRPackageInfo", types, "package_infoType"),
      record<KTRDistribution>("KTRDistribution", types, "distributionType"),
      record<KTRTemplateConfigInfo>("KTRTemplateConfigInfo", types, "template_config_infoType"),
      derived<KTRPackageHQTemplate, MBQ::MBQPackage>("KTRPackageHQTemplate", types),
      derived<KTRPackageHQTemplateStd, MBQ::MBQPackage>("KTRPackageHQTemplateStd", types),
      // Update service.
      record<KTRUpdateConfig>("KTRUpdateConfig", update, "update_configType"),
      record<KTRUpdateConnectionSettings>("KTRUpdateConnectionSettings", update, "connection_settingsType"),
      record<KTRUpdateConnection>("KTRUpdateConnection", update, "connectionType"),
      record<KTRUpdateProxySettings>("KTRUpdateProxySettings", update, "proxy_settingsType"),
      record<KTRUpdateInstallSource>("KTRUpdateInstallSource", update, "install_sourceType"),
      record<KTRUpdateProduct>("KTRUpdateProduct", update, "productType"),
      record<KTRUpdateServiceSettings>("KTRUpdateServiceSettings", update, "service_settingsType"),
      record<Update::Yum::Repository>("Update::Yum::Repository", update, "yum_repositoryType"),
      record<Update::Yum::Config>("Update::Yum::Config", update, "yum_configType"),
      record<KTRUpdateList>("KTRUpdateList", update, "update_listType"),
      derived<KTRUpdate, KTRUpdate>("KTRUpdate", update),
      derived<KTRSystemUpdate, KTRUpdate>("KTRSystemUpdate", update),
      derived<KTRWindowsSystemUpdate, KTRUpdate>("KTRWindowsSystemUpdate", update),
      derived<KTRSRNUpdate, KTRUpdate>("KTRSRNUpdate", update),
      derived<KTRAppTemplateUpdate, KTRUpdate>("KTRAppTemplateUpdate", update),
      derived<KTRTemplateUpdate, KTRUpdate>("KTRTemplateUpdate", update),
      derived<KTROsTemplateUpdate, KTRUpdate>("KTROsTemplateUpdate", update),
      derived<KTREzTemplateUpdate, KTRUpdate>("KTREzTemplateUpdate", update),
      // Network shaping.
      record<KTRNetConfiguration>("KTRNetConfiguration", types, "net_configurationType"),
      record<KTRNetworkShapingIPRange>("KTRNetworkShapingIPRange", types, "shaping_ip_rangeType"),
      record<KTRNetworkShapingClass>("KTRNetworkShapingClass", types, "shaping_classType"),
      record<KTRNetworkInterfaceShaping>("KTRNetworkInterfaceShaping", types, "interface_shapingType"),
      // Migration.
      derived<KTRMigratorCloneOptions, MBQ::MBQMigratorCloneOptions>("KTRMigratorCloneOptions", relocator),
      derived<KTRCalculateHWNodeNotes, MBQ::MBQCalculateHWNodeNotes>("KTRCalculateHWNodeNotes", relocator),
      record<KTRExcludePath>("KTRExcludePath", relocator, "exclude_pathType"),
      record<KTRCalculateHWNodeWarning>("KTRCalculateHWNodeWarning", relocator, "hw_node_warningType"),
      // Container manager.
      record<KTRUpgradeOptions>("KTRUpgradeOptions", types, "upgrade_optionsType"),
      derived<KTRLogOptions, MBQ::MBQLogOptions>("KTRLogOptions", types),
      derived<KTRNativeConfig, MBQ::MBQNativeConfig>("KTRNativeConfig", types),
      record<KTRUGIDQuotaLimit::QuotaLimit>("KTRUGIDQuotaLimit::QuotaLimit", types, "quota_limitType"),
      record<KTRUGIDQuotaLimit>("KTRUGIDQuotaLimit", types, "ugid_quota_limitType"),
      record<KTRUGIDQuotaGracePeriod>("KTRUGIDQuotaGracePeriod", types, "ugid_quota_grace_periodType"),
      record<KTRUGIDQuotaInfo>("KTRUGIDQuotaInfo", types, "ugid_quota_infoType"),
      record<KTRScript>("KTRScript", types, "scriptType"),
      record<KTRQoSValidation>("KTRQoSValidation", types, "qos_validationType"),
      // Statistics and support.
      record<KTRQuotaInfo>("KTRQuotaInfo", types, "quota_infoType"),
      record<KTRQuotaStats>("KTRQuotaStats", types, "quota_statsType"),
      record<KTRUbc>("KTRUbc", types, "ubcType"),
      record<KTRVeCPULoad>("KTRVeCPULoad", types, "ve_cpu_loadType"),
      record<KTRProblemReportData>("KTRProblemReportData", types, "problem_report_dataType"),
  };
}

}  // namespace

std::string KTRRecordType::schemaName() const {
  if (schema.empty()) return std::string();
  return ns.empty() ? schema : ns + ":" + schema;
}

std::vector<MBQ::MBQSchemaFile> recordSchemaFiles() {
  std::vector<MBQ::MBQSchemaFile> files;
  for (std::size_t i = 0; i < kBuiltInSchemaCount; ++i)
    files.push_back({kBuiltInSchemas[i].name,
                     std::string(reinterpret_cast<const char*>(kBuiltInSchemas[i].bytes), kBuiltInSchemas[i].size)});
  return files;
}

const MBQ::MBQSchemaSet* recordSchemas(std::string* error) {
  struct Compiled {
    std::unique_ptr<MBQ::MBQSchemaSet> set;
    std::string error;
  };
  static const Compiled compiled = [] {
    Compiled out;
    out.set = MBQ::MBQSchemaSet::load(recordSchemaFiles(), out.error);
    return out;
  }();
  if (compiled.set == nullptr && error != nullptr) *error = compiled.error;
  return compiled.set.get();
}

const std::vector<KTRRecordType>& recordTypes() {
  static const std::vector<KTRRecordType> catalog = buildCatalog();
  return catalog;
}

const KTRRecordType* findRecordType(const std::string& name) {
  for (const auto& type : recordTypes())
    if (type.name == name) return &type;
  return nullptr;
}

const KTRRecordType* findRecordTypeBySchema(const std::string& schemaName) {
  const KTRRecordType* plain = nullptr;
  for (const auto& type : recordTypes()) {
    if (type.schema.empty() || type.schemaName() != schemaName) continue;
    if (type.roundTripDerived != nullptr) return &type;
    if (plain == nullptr) plain = &type;
  }
  return plain;
}

}  // namespace KTR
