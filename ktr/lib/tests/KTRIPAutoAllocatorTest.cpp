#include "KTRFunctionality/KTRIPAutoAllocator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace KTR {
namespace {

using MBQ::MBQIPPoolAllocation;
using MBQ::MBQIPv6;

MBQIPPoolAllocation makeAllocation(const char* gateway, const std::vector<const char*>* servers) {
  MBQIPPoolAllocation allocation;
  allocation.setGateway(MBQIPv6(std::string(gateway)));
  if (servers != nullptr) allocation.setAddresses(std::vector<MBQIPv6>(servers->begin(), servers->end()));
  return allocation;
}

KTRNetVEth makeVeth(const char* gateway, const char* gateway6, bool hostRouted, std::vector<std::string> servers) {
  KTRNetVEth veth;
  veth.setName("eth0");
  veth.setGateway(gateway);
  veth.setGateway6(gateway6);
  veth.setHostRouted(hostRouted);
  veth.setNameservers(servers);
  return veth;
}

TEST(KTRIPAutoAllocatorTest, FillsWhatTheInterfaceLacks) {
  const std::vector<const char*> servers = {"10.0.0.53", "2001:db8::53", "::ffff:10.0.0.54"};
  const std::vector<const char*> none;
  struct Case {
    const char* name;
    MBQIPPoolAllocation allocation;
    KTRNetVEth before;
    KTRNetVEth after;
  };
  const Case cases[] = {
      {"IPv4 gateway into an empty one", makeAllocation("10.0.0.1", &servers), makeVeth("", "", false, {"s"}),
       makeVeth("10.0.0.1", "", false, {"s", "10.0.0.53", "2001:db8::53", "10.0.0.54"})},
      {"IPv6 gateway into an empty one", makeAllocation("2001:db8::1", nullptr), makeVeth("g4", "", false, {}),
       makeVeth("g4", "2001:db8::1", false, {})},
      {"set gateways are kept", makeAllocation("10.0.0.1", &none), makeVeth("g4", "g6", false, {}),
       makeVeth("g4", "g6", false, {})},
      {"an IPv6 gateway leaves the IPv4 one empty", makeAllocation("fe80::1", nullptr), makeVeth("", "g6", false, {}),
       makeVeth("", "g6", false, {})},
      {"the any gateway sets nothing, the list still goes in", makeAllocation("::", &servers),
       makeVeth("", "", false, {}), makeVeth("", "", false, {"10.0.0.53", "2001:db8::53", "10.0.0.54"})},
      {"host-routed is left alone", makeAllocation("10.0.0.1", &servers), makeVeth("", "", true, {}),
       makeVeth("", "", true, {})},
  };
  for (const Case& c : cases) {
    std::vector<KTRNetVEth> veths = {c.before};
    IPAutoAllocation::Builder::set(c.allocation, veths.begin());
    EXPECT_EQ(c.after, veths[0]) << c.name;
  }
}

TEST(KTRIPAutoAllocatorTest, ChangesOnlyTheGivenInterfaceAndAppendsOnEveryCall) {
  const std::vector<const char*> servers = {"10.0.0.53"};
  const MBQIPPoolAllocation allocation = makeAllocation("10.0.0.1", &servers);
  std::vector<KTRNetVEth> veths(3, makeVeth("", "", false, {}));
  IPAutoAllocation::Builder::set(allocation, veths.begin() + 1);
  IPAutoAllocation::Builder::set(allocation, veths.begin() + 1);
  EXPECT_EQ(makeVeth("", "", false, {}), veths[0]);
  EXPECT_EQ(makeVeth("10.0.0.1", "", false, {"10.0.0.53", "10.0.0.53"}), veths[1]);
  EXPECT_EQ(makeVeth("", "", false, {}), veths[2]);
}

}  // namespace
}  // namespace KTR
