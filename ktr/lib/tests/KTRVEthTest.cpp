#include "KTRFunctionality/KTRVEth.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KTRFunctionality/KTRConverters.h"
#include "MBQMessage/MBQMessage.h"

namespace KTR {
namespace {

using MBQ::MBQIPAddress;

// What a NETIF text reads as on a fresh record, and the text a record is written as, show in
// ktrctl's read-devices transcript; here: reading over a record that holds values, and odd texts
// whose written form must stay stable.

TEST(KTRVEthTest, FromStringChangesOnlyNamedFieldsAndAppendsAddresses) {
  KTRNetVEth veth;
  veth.setName("eth0");
  veth.addAddress(MBQIPAddress("10.0.0.1"));
  veth.setNetwork("n");
  veth.setGateway("g");
  veth.setGateway6("g6");
  veth.setDhcp(true);
  veth.setDhcp6(true);
  veth.setMac("m");
  veth.setHostRouted(true);
  veth.setWinsServers({"w"});
  veth.setNameservers({"s"});
  KTRNetVEth expected = veth;
  expected.addAddress(MBQIPAddress("10.0.0.2"));
  expected.setGateway("h");
  veth.fromString("ip=10.0.0.2,gw=h");
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
  KTRNetVEth read;
  read.setName("eth0");
  read.setMac("02:00:00:00:00:01");
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
