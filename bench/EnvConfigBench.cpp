// A full container configuration (every property set, 4 interfaces, 4 disks, 30 resource
// values) written to XML text and read back into a new configuration, against the bare
// libxml2 parse and serialise of the same text; beside them, reading the text alone and
// validating it against the published schemas.
#include <benchmark/benchmark.h>

#include "LibxmlBaseline.h"
#include "SchemaValidation.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRHardDisk.h"
#include "KTRFunctionality/KTRVEth.h"
#include "MBQMessage/MBQMessage.h"

namespace {

using MBQ::MBQOptionalProperty;

KTR::KTREnvConfig makeConfig() {
  KTR::KTREnvConfig config;
  config.setVeid(KTR::CtidWrapper(101));
  config.setName(std::string("web01"));
  config.setHostname(std::string("web01.example.com"));
  config.setDescription(std::string("front-end web server"));
  config.setAddresses(std::vector<MBQ::MBQIPAddress>{MBQ::MBQIPAddress("10.0.0.5/24"), MBQ::MBQIPAddress("fe80::5/64")});
  config.setNameservers(std::vector<MBQ::MBQIPAddress>{MBQ::MBQIPAddress("10.0.0.1"), MBQ::MBQIPAddress("10.0.0.2")});
  config.setSearchDomains(std::set<std::string>{"example.com", "corp.example.com"});
  MBQ::MBQOsDescription os;
  os.platform = std::string("linux");
  os.name = std::string("centos");
  os.version = std::string("7");
  config.setOsDescription(os);
  config.setArchitecture(std::string("x86_64"));
  config.setDisabled(false);
  config.setVERootVar(std::string("/var/lib/quellix/root/$VEID"));
  config.setVEPrivateVar(std::string("/var/lib/quellix/private/$VEID"));
  config.setOnBoot(true);
  config.setTemplates(std::vector<KTR::KTRTemplate>{KTR::KTRTemplate("mysql"), KTR::KTRTemplate("php", "7.4")});
  config.setOfflineManagement(true);
  config.setOsTemplate(KTR::KTRTemplate("debian-12-minimal"));
  config.setDistribution(KTR::KTRDistribution("centos"));
  config.setCapabilities(std::set<KTR::KTREnvCapability>{{"net_admin", true}, {"sys_time", false}});
  config.setIPTables(std::set<std::string>{"iptable_filter", "ipt_REJECT", "ip_conntrack"});
  config.setNetfilterMode(std::string("stateful"));
  config.setVEType(KTR::KTRVPSType(1, KTR::CtidWrapper(101)));
  config.setOfflineServices(std::set<std::string>{"console", "webpanel"});
  config.setWinsServers(std::vector<MBQ::MBQIPAddress>{MBQ::MBQIPAddress("10.0.0.9")});
  std::vector<KTR::KTRNetVEth> veths(4);
  for (int i = 0; i < 4; ++i) veths[i].fromString("ifname=eth" + std::to_string(i) + ",mac=02:00:00:00:00:0" +
                                                    std::to_string(i) + ",nettype=bridged,gw=10.0." + std::to_string(i) +
                                                    ".1,ip=10.0." + std::to_string(i) + ".5/24,dhcp=no,ip6=fe80::" +
                                                    std::to_string(i + 1) + "/64,");
  config.setNetVEths(veths);
  config.setTSLicenseServers(std::set<std::string>{"ts1.example.com"});
  config.setTSMode(2);
  config.setUUID(std::string("6a1f6f0e-8c2b-4d4e-9a43-0e5b2f3c9d11"));
  config.setAllowReboot(true);
  config.setRateBound(false);
  config.setRatesList(std::vector<MBQ::MBQInterfaceRate>{MBQ::MBQInterfaceRate("eth0", 1, 8000)});
  config.setSLMMode(std::string("all"));
  config.setOriginSample(std::string("basic"));
  config.setSample(false);
  config.setServerRoles(std::set<std::string>{"web", "db"});
  config.setFeatures(std::map<std::string, std::string>{{"fuse", "on"}, {"ipv6", "off"}});
  config.setDevNodes(std::map<std::string, std::string>{{"net/tun", "rw"}});
  std::set<MBQ::MBQQoS> qoses;
  for (int i = 0; i < 30; ++i) qoses.insert(MBQ::MBQQoS("resource" + std::to_string(i), 1000LL * i, 2000LL * i));
  config.setQoSes(qoses);
  KTR::HardDisk::List::Images<KTR::HardDisk::Dromo> disks;
  for (int i = 0; i < 4; ++i) {
    KTR::HardDisk::Dromo disk(10737418240LL, true);
    disk.setImage("/var/lib/quellix/private/101/disk" + std::to_string(i) + ".img");
    disk.setUuid(MBQ::MBQGUID(0x1234, 0x5678 + i));
    disks.disks().push_back(disk);
  }
  config.setHardDisks(&disks);
  return config;
}

std::string writeConfig(const KTR::KTREnvConfig& config) {
  MBQ::MBQMessage message("config");
  message.iterator()->putObject(config, KTR::KTREnvConfig::Writer());
  return message.toString();
}

// The text parsed and read into a new configuration, whose interfaces are then looked at.
void readBack(benchmark::State& state, const std::string& text) {
  MBQ::MBQMessage parsed;
  if (parsed.parse(text) != 0) state.SkipWithError("parse failed");
  KTR::KTREnvConfig back;
  if (parsed.iterator()->getObject(back, KTR::KTREnvConfig::Reader()) != 0) state.SkipWithError("read failed");
  MBQOptionalProperty<std::vector<KTR::KTRNetVEth>> veths;
  if (back.getNetVEths(veths) != 0 || veths.get().size() != 4) state.SkipWithError("veths lost");
  benchmark::DoNotOptimize(back);
}

void BM_EnvConfigRoundTrip(benchmark::State& state) {
  const KTR::KTREnvConfig config = makeConfig();
  for (auto _ : state) readBack(state, writeConfig(config));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EnvConfigRoundTrip);

void BM_EnvConfigRead(benchmark::State& state) {
  const std::string text = writeConfig(makeConfig());
  for (auto _ : state) readBack(state, text);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EnvConfigRead);

void BM_EnvConfigValidate(benchmark::State& state) {
  validateAs(state, "KTREnvConfig", writeConfig(makeConfig()));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EnvConfigValidate);

void BM_EnvConfigBareLibxml2(benchmark::State& state) {
  const std::string text = writeConfig(makeConfig());
  for (auto _ : state) {
    bareParseAndSerialise(text);
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(BM_EnvConfigBareLibxml2);

}  // namespace
