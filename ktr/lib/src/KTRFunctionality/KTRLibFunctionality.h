#pragma once

#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "KTRFunctionality/KTRManagers.h"
#include "MBQCore/MBQEID.h"
#include "MBQCore/MBQGUID.h"
#include "MBQFunctionalityCore/MBQAccessProvider.h"
#include "MBQFunctionalityCore/MBQFunctionalFactory.h"

namespace KTR {

// The module name under which the library logs.
extern KTR_EXPORT const char* const kModuleName;

// The library's version, "7.0"; its soname carries the major number.
extern "C" KTR_EXPORT const char* ktrLibraryVersion();

// The realm of this technology's containers: the GUID 00000000-0000-0000-0000-000000000001.
// Built when the library loads; static initialisers of other libraries must not read it.
extern KTR_EXPORT const MBQ::MBQGUID ktrVERealmID;

// The service registry: hands out the manager objects of this technology by interface and
// name, either a local implementation working on this host or an agent implementation
// forwarding to the node that serves the EID concerned. Managers register their factories
// under a name through the multiplexer accessors; callers use the three getters per interface:
//  - get<Interface>Local(provider, name): the local object, or null;
//  - get<Interface>Agent(eid, provider, name): the agent object for `eid`, or null;
//  - get<Interface>(eid, provider, name): the local object when the provider's locality
//    checker (if any) does not rule `eid` out and a local one can be made, else the agent
//    object, else null.
// (The interface stem is "TEM" for KTRTEM and the full interface name for the others.)
// Every getter passes its arguments unchanged to MBQFunctionalMultiplexer's getLocal,
// getAgent or get, whose comments give the exact rules. Nothing throws and nothing is
// logged: an unknown name yields null, and callers must test the result.
//
// All operations may be called from any thread.
class KTR_EXPORT KTRLibFunctionality {
 public:
  // The process-wide registry, created on first use and never destroyed, so that managers may
  // unregister from their own static destructors in any order.
  static KTRLibFunctionality& getInstance();

  // A separate, empty registry. Callers normally share getInstance().
  KTRLibFunctionality() = default;
  KTRLibFunctionality(const KTRLibFunctionality&) = delete;
  KTRLibFunctionality& operator=(const KTRLibFunctionality&) = delete;

  KTRTEMSP getTEMLocal(const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRTEMSP getTEMAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRTEMSP getTEM(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTRTEM>& getTEMMultiplexer() { return temMultiplexer_; }

  KTREnvMSP getKTREnvMLocal(const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTREnvMSP getKTREnvMAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTREnvMSP getKTREnvM(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTREnvM>& getKTREnvMMultiplexer() { return envMMultiplexer_; }

  KTRPkgMSP getKTRPkgMLocal(const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRPkgMSP getKTRPkgMAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRPkgMSP getKTRPkgM(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTRPkgM>& getKTRPkgMMultiplexer() { return pkgMMultiplexer_; }

  KTRNetworkMSP getKTRNetworkMLocal(const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRNetworkMSP getKTRNetworkMAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRNetworkMSP getKTRNetworkM(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTRNetworkM>& getKTRNetworkMMultiplexer() { return networkMMultiplexer_; }

  KTRProcessMonitorSP getKTRProcessMonitorLocal(
      const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRProcessMonitorSP getKTRProcessMonitorAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRProcessMonitorSP getKTRProcessMonitor(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTRProcessMonitor>& getKTRProcessMonitorMultiplexer() {
    return processMonitorMultiplexer_;
  }

  KTRProcessMSP getKTRProcessMLocal(const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRProcessMSP getKTRProcessMAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRProcessMSP getKTRProcessM(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTRProcessM>& getKTRProcessMMultiplexer() { return processMMultiplexer_; }

  KTRUp2dateSP getKTRUp2dateLocal(const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRUp2dateSP getKTRUp2dateAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRUp2dateSP getKTRUp2date(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTRUp2date>& getKTRUp2dateMultiplexer() { return up2dateMultiplexer_; }

  KTRSupportSP getKTRSupportLocal(const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRSupportSP getKTRSupportAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRSupportSP getKTRSupport(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTRSupport>& getKTRSupportMultiplexer() { return supportMultiplexer_; }

  KTRSampleMSP getKTRSampleMLocal(const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRSampleMSP getKTRSampleMAgent(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  KTRSampleMSP getKTRSampleM(
      const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const;
  MBQ::MBQFunctionalMultiplexer<KTRSampleM>& getKTRSampleMMultiplexer() { return sampleMMultiplexer_; }

 private:
  MBQ::MBQFunctionalMultiplexer<KTRTEM> temMultiplexer_;
  MBQ::MBQFunctionalMultiplexer<KTREnvM> envMMultiplexer_;
  MBQ::MBQFunctionalMultiplexer<KTRPkgM> pkgMMultiplexer_;
  MBQ::MBQFunctionalMultiplexer<KTRNetworkM> networkMMultiplexer_;
  MBQ::MBQFunctionalMultiplexer<KTRProcessMonitor> processMonitorMultiplexer_;
  MBQ::MBQFunctionalMultiplexer<KTRProcessM> processMMultiplexer_;
  MBQ::MBQFunctionalMultiplexer<KTRUp2date> up2dateMultiplexer_;
  MBQ::MBQFunctionalMultiplexer<KTRSupport> supportMultiplexer_;
  MBQ::MBQFunctionalMultiplexer<KTRSampleM> sampleMMultiplexer_;
};

}  // namespace KTR
