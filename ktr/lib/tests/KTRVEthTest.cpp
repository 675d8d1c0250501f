#include "KTRFunctionality/KTRVEth.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRConverters.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQTestSupport.h"

namespace KTR {
namespace {

using MBQ::MBQIPAddress;

struct VethFields {
  const char* name;
  std::vector<const char*> addresses;
  const char* network;
  const char* gateway;
  const char* gateway6;
  bool dhcp;
  bool dhcp6;
  const char* mac;
  bool hostRouted;
};

KTRNetVEth makeVeth(const VethFields& f) {
  KTRNetVEth veth;
  veth.setName(f.name);
  for (const char* address : f.addresses) veth.addAddress(MBQIPAddress(address));
  veth.setNetwork(f.network);
  veth.setGateway(f.gateway);
  veth.setGateway6(f.gateway6);
  veth.setDhcp(f.dhcp);
  veth.setDhcp6(f.dhcp6);
  veth.setMac(f.mac);
  veth.setHostRouted(f.hostRouted);
  return veth;
}

std::vector<std::string> addressTexts(const KTRNetVEth& veth) {
  std::vector<std::string> texts;
  for (const MBQIPAddress& address : veth.getAddresses()) texts.push_back(address.toStringWithNetwork());
  return texts;
}

// Records whose text form carries every field, so that reading the text on a fresh record
// gives the record back.
const VethFields kRoundTrips[] = {
    {"eth0", {"10.0.0.5/24", "10.0.0.6/24", "2001:db8::5/64"}, "", "10.0.0.1", "", false, false,
     "02:00:00:00:00:01", false},
    {"eth1", {"2001:db8::5/64", "fe80::1"}, "net1", "", "fe80::ffff", false, true, "", false},
    {"eth2", {"10.0.0.5/255.255.255.0", "192.168.1.1"}, "Bridged", "10.0.0.1", "2001:db8::1", false, false, "m", false},
    {"eth3", {}, "", "", "", true, true, "", true},
    {"venet0", {"10.0.0.7"}, "", "", "", false, false, "", false},  // a bridged venet0 is written
    {" eth4 ", {}, "n ", "", "", false, false, "aa:bb ", false},     // blanks inside values stay
};

TEST(KTRVEthTest, WritesTheNetifText) {
  struct Case {
    VethFields fields;
    const char* text;
  };
  const Case cases[] = {
      {kRoundTrips[0],
       "ifname=eth0,network=,mac=02:00:00:00:00:01,nettype=bridged,gw=10.0.0.1,ip=10.0.0.5/24:10.0.0.6/24,"
       "dhcp=no,ip6=2001:db8::5/64,"},
      {kRoundTrips[1],
       "ifname=eth1,network=net1,mac=,nettype=bridged,gw6=fe80::ffff,dhcp=no,dhcp6=yes,ip6=2001:db8::5/64,fe80::1,"},
      {kRoundTrips[4], "ifname=venet0,network=,mac=,nettype=bridged,ip=10.0.0.7,dhcp=no"},
      // DHCP on: no address at all, whatever the list holds.
      {{"eth0", {"10.0.0.5", "fe80::1"}, "", "", "", true, false, "", false},
       "ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes"},
      {{"venet0", {"10.0.0.7"}, "", "", "", false, false, "", true}, ""},
      {{"venet1", {}, "", "", "", false, false, "", true}, "ifname=venet1,network=,mac=,nettype=host-routed,dhcp=no"},
      // An address that is only a word is written as it is, among the IPv4 ones.
      {{"eth0", {"dhcp", "10.0.0.1"}, "", "", "", false, false, "", false},
       "ifname=eth0,network=,mac=,nettype=bridged,ip=dhcp:10.0.0.1,dhcp=no"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.text, makeVeth(c.fields).toString());
}

TEST(KTRVEthTest, TextRoundTripsOnAFreshRecord) {
  for (const VethFields& fields : kRoundTrips) {
    const KTRNetVEth written = makeVeth(fields);
    KTRNetVEth read;
    read.fromString(written.toString());
    EXPECT_EQ(written, read) << written.toString();
  }
}

TEST(KTRVEthTest, ReadsTheNetifText) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "read")) {
    ASSERT_EQ(10u, c.size()) << c.at(0);
    KTRNetVEth expected;
    expected.setName(c[1]);
    for (std::size_t begin = 0, end; begin < c[2].size(); begin = end + 1) {
      end = std::min(c[2].find(';', begin), c[2].size());
      expected.addAddress(MBQIPAddress(c[2].substr(begin, end - begin)));
    }
    expected.setNetwork(c[3]);
    expected.setGateway(c[4]);
    expected.setGateway6(c[5]);
    expected.setDhcp(c[6] == "yes");
    expected.setDhcp6(c[7] == "yes");
    expected.setMac(c[8]);
    expected.setHostRouted(c[9] == "yes");
    KTRNetVEth read;
    read.fromString(c[0]);
    EXPECT_EQ(expected, read) << c[0];
    EXPECT_EQ(addressTexts(expected), addressTexts(read)) << c[0];
  }
}

TEST(KTRVEthTest, FromStringChangesOnlyNamedFieldsAndAppendsAddresses) {
  KTRNetVEth veth = makeVeth({"eth0", {"10.0.0.1"}, "n", "g", "g6", true, true, "m", true});
  veth.setWinsServers({"w"});
  veth.setNameservers({"s"});
  veth.fromString("ip=10.0.0.2,gw=h");
  KTRNetVEth expected = makeVeth({"eth0", {"10.0.0.1", "10.0.0.2"}, "n", "h", "g6", true, true, "m", true});
  expected.setWinsServers({"w"});
  expected.setNameservers({"s"});
  EXPECT_EQ(expected, veth);
}

// Text parsing never fails; whatever it made of a text must survive being written and read
// again unchanged.
TEST(KTRVEthTest, AnyTextReadsAndItsWrittenFormIsStable) {
  const std::string bad[] = {
      "", ",", ",,,,", "=", "ip=", "ip=:::", "ip6=", "ip6=,", "dhcp", "ifname=", "gw6==", "nettype==",
      std::string("ifname=a\0b,dhcp=yes\0x", 21), "ip6=10.0.0.1,x", "ip=,ip6=ifname=z", "ip= ,mac=\xff\xfe",
      "ifname=venet0,nettype=host-routed", "ip=300.1.1.1/99:1.2.3.4/0.255.0.0", std::string(5000, ','),
      "ip=" + std::string(3000, ':') + "1", "ifname=" + std::string(3000, 'x'),
  };
  for (const std::string& text : bad) {
    KTRNetVEth first;
    first.fromString(text);
    const std::string written = first.toString();
    if (written.empty()) continue;  // only the implicit venet0 has no text
    KTRNetVEth second;
    second.fromString(written);
    EXPECT_EQ(written, second.toString()) << text;
  }
}

// The record's own converters show in the NETIF lists of KTRBashParseTest.
TEST(KTRVEthTest, FromStringConverterPassesAFailureOn) {
  MBQIPAddress address;
  EXPECT_EQ(-1, FromStringConverter<MBQIPAddress>()("dhcp", address));
  EXPECT_EQ(0, FromStringConverter<MBQIPAddress>()("10.0.0.1/24", address));
}

TEST(KTRVEthMessageTest, ReadingReplacesListsAndSetsTheFlagByPresence) {
  KTRNetVEth read = makeVeth(kRoundTrips[0]);
  read.setHostRouted(true);
  read.setWinsServers({"10.0.0.100", "10.0.0.101"});
  read.setNameservers({"10.0.0.53"});
  MBQ::MBQMessage message;
  ASSERT_EQ(0, message.parse("<m><dev><ifname>eth9</ifname><server_address>s1</server_address>"
                             "<server_address>s2</server_address></dev></m>"));
  ASSERT_EQ(0, message.iterator()->getObject(read, KTRNetVEth::Reader(), "dev"));
  EXPECT_EQ("eth9", read.getName());
  EXPECT_TRUE(read.getWinsServers().empty());
  EXPECT_EQ((std::vector<std::string>{"s1", "s2"}), read.getNameservers());
  EXPECT_FALSE(read.isHostRouted());
  EXPECT_EQ("02:00:00:00:00:01", read.getMac()) << "missing elements keep the field";
}

}  // namespace
}  // namespace KTR
