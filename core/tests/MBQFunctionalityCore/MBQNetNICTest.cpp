#include "MBQFunctionalityCore/MBQNetNIC.h"

#include <gtest/gtest.h>

#include <string>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {
namespace {

MBQNetNIC fullNic() {
  MBQNetNIC nic;
  nic.setName("eth0");
  nic.addAddress(MBQIPAddress("10.0.0.5/24"));
  nic.addAddress(MBQIPAddress("10.0.0.6/255.255.255.0"));
  nic.addAddress(MBQIPAddress("2001:db8::5/64"));
  nic.addAddress(MBQIPAddress("dhcp"));
  nic.setNetwork("Bridged");
  nic.setGateway("10.0.0.1");
  nic.setGateway6("fe80::1");
  nic.setDhcp(false);
  nic.setDhcp6(true);
  nic.setMac("02:00:00:00:00:01");
  return nic;
}

// The round trip is the record catalog's (through the virtual Ethernet device); here the core's
// own schema type, and a network part written as a mask.
TEST(MBQNetNICTest, WritesTheCoreSchemaTypeAndKeepsTheNetworkForm) {
  MBQMessage message;
  ASSERT_EQ(0, message.iterator()->putObject(fullNic(), MBQNetNIC::Writer(), "nic"));
  auto it = test::reparsed(message).iterator();
  ASSERT_EQ(0, it->descend("nic"));
  std::string type;
  ASSERT_EQ(0, it->getSchemaType(type));
  EXPECT_EQ(std::string(kCoreTypesNamespace) + ":net_nicType", type);
  MBQNetNIC read;
  ASSERT_EQ(0, it->getObject(read, MBQNetNIC::Reader()));
  EXPECT_EQ(fullNic(), read);
  EXPECT_EQ("10.0.0.6/255.255.255.0", read.getAddresses()[1].toStringWithNetwork());
}

TEST(MBQNetNICTest, ReaderKeepsFieldsOfMissingElementsButReplacesTheAddressList) {
  auto it = test::parsed("<m><nic><ifname>eth7</ifname><dhcp>true</dhcp></nic></m>").iterator();
  MBQNetNIC read = fullNic();
  ASSERT_EQ(0, it->getObject(read, MBQNetNIC::Reader(), "nic"));
  MBQNetNIC expected = fullNic();
  expected.setName("eth7");
  expected.setDhcp(true);
  expected.setAddresses({});
  EXPECT_EQ(expected, read);
}

TEST(MBQNetNICTest, AddressElementsKeepTextsThatAreNoAddresses) {
  const MBQMessage message =
      test::parsed("<m><nic><address>dhcp</address><address></address><address>10.1.1.1</address></nic></m>");
  MBQNetNIC read;
  ASSERT_EQ(0, message.iterator()->getObject(read, MBQNetNIC::Reader(), "nic"));
  ASSERT_EQ(3u, read.getAddresses().size());
  EXPECT_FALSE(read.getAddresses()[0].isValid());
  EXPECT_EQ("dhcp", read.getAddresses()[0].toString());
  EXPECT_EQ("", read.getAddresses()[1].toString());
  EXPECT_EQ(MBQIPAddress("10.1.1.1"), read.getAddresses()[2]);
}

TEST(MBQNetNICTest, MalformedFlagFailsAndLeavesTheRecord) {
  const char* const documents[] = {
      "<m><nic><ifname>x</ifname><dhcp>yes</dhcp></nic></m>",
      "<m><nic><ifname>x</ifname><dhcp6></dhcp6></nic></m>",
      "<m><nic><ifname>x</ifname><dhcp>2</dhcp></nic></m>",
  };
  for (const char* document : documents) {
    MBQNetNIC read = fullNic();
    EXPECT_EQ(-1, test::parsed(document).iterator()->getObject(read, MBQNetNIC::Reader(), "nic")) << document;
    EXPECT_EQ(fullNic(), read) << document;
  }
}

}  // namespace
}  // namespace MBQ
