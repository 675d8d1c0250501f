#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/CtidWrapper.h"
#include "KTRFunctionality/KTRExport.h"
#include "KTRFunctionality/KTRTEM.h"
#include "KTRFunctionality/KTRVPSType.h"
#include "MBQCore/MBQEID.h"
#include "MBQCore/MBQIPAddress.h"
#include "MBQFunctionalityCore/MBQEnvConfig.h"
#include "MBQFunctionalityCore/MBQInterfaceRate.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {
class MBQEnv;
}  // namespace MBQ

namespace KTR {

class KTRNetVEth;
namespace HardDisk {
namespace List {
class Base;
}  // namespace List
}  // namespace HardDisk

// The container technology's configuration of one container: typed accessors over the
// configuration's message subtree (see MBQ::MBQEnvConfig for the getter and setter rules).
// The technology's elements are written in the types namespace, in the fixed element order of
// getPositionOfTheTag().
//
// Not thread-safe: a configuration (its cursor) is used by one thread at a time.
class KTR_EXPORT KTREnvConfig : public MBQ::MBQVEnvConfig {
 public:
  KTREnvConfig() = default;
  explicit KTREnvConfig(const MBQ::MBQEnvConfig& config);
  // The configuration type is accepted for the framework's factories and not used.
  KTREnvConfig(const MBQ::MBQMessageIterator* it, MBQ::EnvConfigType type);
  ~KTREnvConfig() override;

  // The rank of an element name in the fixed order of the 32 configuration elements, from
  // "veid" (0) to "disk_list" (31); -1 for any other name. The table is built once, on first use.
  int getPositionOfTheTag(const std::string& name) const override;

  int getVeid(int& veid) const;
  int setVeid(const int& veid);
  // "ctid" when present, else the number under "veid".
  int getVeid(CtidWrapper& ctid) const;
  int setVeid(const CtidWrapper& ctid);

  int getVERootVar(MBQ::MBQOptionalProperty<std::string>& value) const;
  int setVERootVar(const MBQ::MBQOptionalProperty<std::string>& value);
  int getVEPrivateVar(MBQ::MBQOptionalProperty<std::string>& value) const;
  int setVEPrivateVar(const MBQ::MBQOptionalProperty<std::string>& value);
  // The root and private paths with the container id substituted for $VEID / ${VEID}; -1
  // (output unchanged) when the variable or the id is missing.
  int getVERoot(std::string& path) const;
  int getVEPrivate(std::string& path) const;
  static void veidSubstitute(const CtidWrapper& ctid, std::string& text);

  int getOnBoot(MBQ::MBQOptionalProperty<bool>& value) const;
  int setOnBoot(const MBQ::MBQOptionalProperty<bool>& value);
  int getTemplates(MBQ::MBQOptionalProperty<std::vector<KTRTemplate>>& value) const;
  int setTemplates(const MBQ::MBQOptionalProperty<std::vector<KTRTemplate>>& value);
  int getOfflineManagement(MBQ::MBQOptionalProperty<bool>& value) const;
  int setOfflineManagement(const MBQ::MBQOptionalProperty<bool>& value);
  int getOsTemplate(MBQ::MBQOptionalProperty<KTRTemplate>& value) const;
  int setOsTemplate(const MBQ::MBQOptionalProperty<KTRTemplate>& value);
  int getDistribution(MBQ::MBQOptionalProperty<KTRDistribution>& value) const;
  int setDistribution(const MBQ::MBQOptionalProperty<KTRDistribution>& value);
  int getCapabilities(MBQ::MBQOptionalProperty<std::set<KTREnvCapability>>& value) const;
  int setCapabilities(const MBQ::MBQOptionalProperty<std::set<KTREnvCapability>>& value);
  // The first capability element alone.
  int getCapability(MBQ::MBQOptionalProperty<KTREnvCapability>& value) const;
  int setCapability(const MBQ::MBQOptionalProperty<KTREnvCapability>& value);
  int getIPTables(MBQ::MBQOptionalProperty<std::set<std::string>>& value) const;
  int setIPTables(const MBQ::MBQOptionalProperty<std::set<std::string>>& value);
  int getNetfilterMode(MBQ::MBQOptionalProperty<std::string>& value) const;
  int setNetfilterMode(const MBQ::MBQOptionalProperty<std::string>& value);
  int getVEType(MBQ::MBQOptionalProperty<KTRVPSType>& value) const;
  int setVEType(const MBQ::MBQOptionalProperty<KTRVPSType>& value);
  int getOfflineServices(MBQ::MBQOptionalProperty<std::set<std::string>>& value) const;
  int setOfflineServices(const MBQ::MBQOptionalProperty<std::set<std::string>>& value);
  int getWinsServers(MBQ::MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>>& value) const;
  int setWinsServers(const MBQ::MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>>& value);
  int getNetVEths(MBQ::MBQOptionalProperty<std::vector<KTRNetVEth>>& value) const;
  int setNetVEths(const MBQ::MBQOptionalProperty<std::vector<KTRNetVEth>>& value);
  int getTSLicenseServers(MBQ::MBQOptionalProperty<std::set<std::string>>& value) const;
  int setTSLicenseServers(const MBQ::MBQOptionalProperty<std::set<std::string>>& value);
  int getTSMode(MBQ::MBQOptionalProperty<int>& value) const;
  int setTSMode(const MBQ::MBQOptionalProperty<int>& value);
  int getUUID(MBQ::MBQOptionalProperty<std::string>& value) const;
  int setUUID(const MBQ::MBQOptionalProperty<std::string>& value);
  int getAllowReboot(MBQ::MBQOptionalProperty<bool>& value) const;
  int setAllowReboot(const MBQ::MBQOptionalProperty<bool>& value);
  int getRateBound(MBQ::MBQOptionalProperty<bool>& value) const;
  int setRateBound(const MBQ::MBQOptionalProperty<bool>& value);
  int getRatesList(MBQ::MBQOptionalProperty<std::vector<MBQ::MBQInterfaceRate>>& value) const;
  int setRatesList(const MBQ::MBQOptionalProperty<std::vector<MBQ::MBQInterfaceRate>>& value);
  int getSLMMode(MBQ::MBQOptionalProperty<std::string>& value) const;
  int setSLMMode(const MBQ::MBQOptionalProperty<std::string>& value);
  int getOriginSample(MBQ::MBQOptionalProperty<std::string>& value) const;
  int setOriginSample(const MBQ::MBQOptionalProperty<std::string>& value);
  int getSample(MBQ::MBQOptionalProperty<bool>& value) const;
  int setSample(const MBQ::MBQOptionalProperty<bool>& value);
  int getServerRoles(MBQ::MBQOptionalProperty<std::set<std::string>>& value) const;
  int setServerRoles(const MBQ::MBQOptionalProperty<std::set<std::string>>& value);
  int getFeatures(MBQ::MBQOptionalProperty<std::map<std::string, std::string>>& value) const;
  int setFeatures(const MBQ::MBQOptionalProperty<std::map<std::string, std::string>>& value);
  int getDevNodes(MBQ::MBQOptionalProperty<std::map<std::string, std::string>>& value) const;
  int setDevNodes(const MBQ::MBQOptionalProperty<std::map<std::string, std::string>>& value);

  // The disk list, whose class is chosen by its schema type. Without a subtree: 0 and the
  // pointer untouched.
  int getHardDisks(std::shared_ptr<HardDisk::List::Base>& disks) const;
  // Replaces the disk list; null removes it. A current list that points at real storage (a
  // file-system disk with a path, loopback images with a valid UUID) is in use: -1 and nothing
  // changes.
  int setHardDisks(const HardDisk::List::Base* disks);

  // The configuration written as its base writer writes it, typed "venv_configType" in the
  // types namespace; read with the base reader.
  struct KTR_EXPORT Writer : MBQ::MBQEnvConfig::Writer {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "venv_configType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };
  using Reader = MBQ::MBQEnvConfig::Reader;
};

// True when the container's virtual configuration has exactly this container id.
struct KTR_EXPORT MatchVeid {
  explicit MatchVeid(const CtidWrapper& ctid) : ctid_(ctid) {}
  bool operator()(const std::shared_ptr<const MBQ::MBQEnv>& env) const;

 private:
  CtidWrapper ctid_;
};

// True when the container has this parent and this container id.
struct KTR_EXPORT MatchVeidParent {
  MatchVeidParent(const MBQ::MBQEID& parent, const CtidWrapper& ctid);
  bool operator()(const std::shared_ptr<const MBQ::MBQEnv>& env) const;

 private:
  MBQ::MBQEID parent_;
  CtidWrapper ctid_;
};

}  // namespace KTR
