#include "KTRFunctionality/KTRRecordCatalog.h"

#include <memory>

#include "KTRFunctionality/KTREnv.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvMRecords.h"
#include "KTRFunctionality/KTRHardDisk.h"
#include "KTRFunctionality/KTRHqStat.h"
#include "KTRFunctionality/KTRMigrator.h"
#include "KTRFunctionality/KTRNetworkM.h"
#include "KTRFunctionality/KTRPkgM.h"
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
template <class T, class Reader = typename T::Reader, class Writer = typename T::Writer>
KTRRecordType record(const char* name, const char* familyNamespace) {
  KTRRecordType type;
  type.name = name;
  type.ns = familyNamespace;
  if constexpr (MBQ::codec_detail::HasSchema<Writer>::value) {
    const Writer writer;
    type.schema = writer.getStrTypeID();
    const char* ns = writer.getStrNSID();
    if (*ns == '\0' && writer.getNSID() != 0) ns = MBQ::MBQDefaultMap::findNSID(writer.getNSID());
    if (ns != nullptr) type.ns = ns;
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
      record<KTRConnectionLinkInfo>("KTRConnectionLinkInfo", types),
      record<KTRVPSType>("KTRVPSType", types),
      record<KTREnvCapability>("KTREnvCapability", types),
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
      record<KTRTemplate>("KTRTemplate", types),
      record<KTRPackage>("KTRPackage", types),
      record<KTRPackageVersion>("KTRPackageVersion", types),
      record<KTRPackageInfo>("KTRPackageInfo", types),
      record<KTRDistribution>("KTRDistribution", types),
      record<KTRTemplateConfigInfo>("KTRTemplateConfigInfo", types),
      derived<KTRPackageHQTemplate, MBQ::MBQPackage>("KTRPackageHQTemplate", types),
      derived<KTRPackageHQTemplateStd, MBQ::MBQPackage>("KTRPackageHQTemplateStd", types),
      // Update service.
      record<KTRUpdateConfig>("KTRUpdateConfig", update),
      record<KTRUpdateConnectionSettings>("KTRUpdateConnectionSettings", update),
      record<KTRUpdateConnection>("KTRUpdateConnection", update),
      record<KTRUpdateProxySettings>("KTRUpdateProxySettings", update),
      record<KTRUpdateInstallSource>("KTRUpdateInstallSource", update),
      record<KTRUpdateProduct>("KTRUpdateProduct", update),
      record<KTRUpdateServiceSettings>("KTRUpdateServiceSettings", update),
      record<Update::Yum::Repository>("Update::Yum::Repository", update),
      record<Update::Yum::Config>("Update::Yum::Config", update),
      record<KTRUpdateList>("KTRUpdateList", update),
      derived<KTRUpdate, KTRUpdate>("KTRUpdate", update),
      derived<KTRSystemUpdate, KTRUpdate>("KTRSystemUpdate", update),
      derived<KTRWindowsSystemUpdate, KTRUpdate>("KTRWindowsSystemUpdate", update),
      derived<KTRSRNUpdate, KTRUpdate>("KTRSRNUpdate", update),
      derived<KTRAppTemplateUpdate, KTRUpdate>("KTRAppTemplateUpdate", update),
      derived<KTRTemplateUpdate, KTRUpdate>("KTRTemplateUpdate", update),
      derived<KTROsTemplateUpdate, KTRUpdate>("KTROsTemplateUpdate", update),
      derived<KTREzTemplateUpdate, KTRUpdate>("KTREzTemplateUpdate", update),
      // Network shaping.
      record<KTRNetConfiguration>("KTRNetConfiguration", types),
      record<KTRNetworkShapingIPRange>("KTRNetworkShapingIPRange", types),
      record<KTRNetworkShapingClass>("KTRNetworkShapingClass", types),
      record<KTRNetworkInterfaceShaping>("KTRNetworkInterfaceShaping", types),
      // Migration.
      derived<KTRMigratorCloneOptions, MBQ::MBQMigratorCloneOptions>("KTRMigratorCloneOptions", relocator),
      derived<KTRCalculateHWNodeNotes, MBQ::MBQCalculateHWNodeNotes>("KTRCalculateHWNodeNotes", relocator),
      record<KTRExcludePath>("KTRExcludePath", relocator),
      record<KTRCalculateHWNodeWarning>("KTRCalculateHWNodeWarning", relocator),
      // Container manager.
      record<KTRUpgradeOptions>("KTRUpgradeOptions", types),
      derived<KTRLogOptions, MBQ::MBQLogOptions>("KTRLogOptions", types),
      derived<KTRNativeConfig, MBQ::MBQNativeConfig>("KTRNativeConfig", types),
      record<KTRUGIDQuotaLimit::QuotaLimit>("KTRUGIDQuotaLimit::QuotaLimit", types),
      record<KTRUGIDQuotaLimit>("KTRUGIDQuotaLimit", types),
      record<KTRUGIDQuotaGracePeriod>("KTRUGIDQuotaGracePeriod", types),
      record<KTRUGIDQuotaInfo>("KTRUGIDQuotaInfo", types),
      record<KTRScript>("KTRScript", types),
      // Statistics and support.
      record<KTRQuotaInfo>("KTRQuotaInfo", types),
      record<KTRQuotaStats>("KTRQuotaStats", types),
      record<KTRUbc>("KTRUbc", types),
      record<KTRVeCPULoad>("KTRVeCPULoad", types),
      record<KTRProblemReportData>("KTRProblemReportData", types),
  };
}

}  // namespace

std::string KTRRecordType::schemaName() const {
  if (schema.empty()) return std::string();
  return ns.empty() ? schema : ns + ":" + schema;
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
