#include "KTRFunctionality/KTRLibFunctionality.h"

namespace KTR {

const char* const kModuleName = "KTRFunctionality";

const char* ktrLibraryVersion() { return "7.0"; }

const MBQ::MBQGUID ktrVERealmID(0, 1);

KTRLibFunctionality& KTRLibFunctionality::getInstance() {
  // Leaked on purpose: a manager library may unregister its factories from a static
  // destructor that runs after this library's static objects are gone.
  static auto* instance = new KTRLibFunctionality();
  return *instance;
}

KTRTEMSP KTRLibFunctionality::getTEMLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return temMultiplexer_.getLocal(provider, name);
}
KTRTEMSP KTRLibFunctionality::getTEMAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return temMultiplexer_.getAgent(eid, provider, name);
}
KTRTEMSP KTRLibFunctionality::getTEM(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return temMultiplexer_.get(eid, provider, name);
}

KTREnvMSP KTRLibFunctionality::getKTREnvMLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return envMMultiplexer_.getLocal(provider, name);
}
KTREnvMSP KTRLibFunctionality::getKTREnvMAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return envMMultiplexer_.getAgent(eid, provider, name);
}
KTREnvMSP KTRLibFunctionality::getKTREnvM(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return envMMultiplexer_.get(eid, provider, name);
}

KTRPkgMSP KTRLibFunctionality::getKTRPkgMLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return pkgMMultiplexer_.getLocal(provider, name);
}
KTRPkgMSP KTRLibFunctionality::getKTRPkgMAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return pkgMMultiplexer_.getAgent(eid, provider, name);
}
KTRPkgMSP KTRLibFunctionality::getKTRPkgM(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return pkgMMultiplexer_.get(eid, provider, name);
}

KTRNetworkMSP KTRLibFunctionality::getKTRNetworkMLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return networkMMultiplexer_.getLocal(provider, name);
}
KTRNetworkMSP KTRLibFunctionality::getKTRNetworkMAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return networkMMultiplexer_.getAgent(eid, provider, name);
}
KTRNetworkMSP KTRLibFunctionality::getKTRNetworkM(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return networkMMultiplexer_.get(eid, provider, name);
}

KTRProcessMonitorSP KTRLibFunctionality::getKTRProcessMonitorLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return processMonitorMultiplexer_.getLocal(provider, name);
}
KTRProcessMonitorSP KTRLibFunctionality::getKTRProcessMonitorAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return processMonitorMultiplexer_.getAgent(eid, provider, name);
}
KTRProcessMonitorSP KTRLibFunctionality::getKTRProcessMonitor(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return processMonitorMultiplexer_.get(eid, provider, name);
}

KTRProcessMSP KTRLibFunctionality::getKTRProcessMLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return processMMultiplexer_.getLocal(provider, name);
}
KTRProcessMSP KTRLibFunctionality::getKTRProcessMAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return processMMultiplexer_.getAgent(eid, provider, name);
}
KTRProcessMSP KTRLibFunctionality::getKTRProcessM(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return processMMultiplexer_.get(eid, provider, name);
}

KTRUp2dateSP KTRLibFunctionality::getKTRUp2dateLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return up2dateMultiplexer_.getLocal(provider, name);
}
KTRUp2dateSP KTRLibFunctionality::getKTRUp2dateAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return up2dateMultiplexer_.getAgent(eid, provider, name);
}
KTRUp2dateSP KTRLibFunctionality::getKTRUp2date(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return up2dateMultiplexer_.get(eid, provider, name);
}

KTRSupportSP KTRLibFunctionality::getKTRSupportLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return supportMultiplexer_.getLocal(provider, name);
}
KTRSupportSP KTRLibFunctionality::getKTRSupportAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return supportMultiplexer_.getAgent(eid, provider, name);
}
KTRSupportSP KTRLibFunctionality::getKTRSupport(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return supportMultiplexer_.get(eid, provider, name);
}

KTRSampleMSP KTRLibFunctionality::getKTRSampleMLocal(
    const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return sampleMMultiplexer_.getLocal(provider, name);
}
KTRSampleMSP KTRLibFunctionality::getKTRSampleMAgent(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return sampleMMultiplexer_.getAgent(eid, provider, name);
}
KTRSampleMSP KTRLibFunctionality::getKTRSampleM(
    const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider, const std::string& name) const {
  return sampleMMultiplexer_.get(eid, provider, name);
}

}  // namespace KTR
