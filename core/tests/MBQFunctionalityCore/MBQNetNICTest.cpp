#include "MBQFunctionalityCore/MBQNetNIC.h"

#include <gtest/gtest.h>

#include <string>

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

// Writes the record in place under "nic" and reads the whole message back from its text.
MBQMessage writeAndReparse(const MBQNetNIC& nic) {
  MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(0, it->addChildAndDescend("nic"));
  EXPECT_EQ(0, it->putObject(nic, MBQNetNIC::Writer()));
  MBQMessage reread;
  EXPECT_EQ(0, reread.parse(message.toString()));
  return reread;
}

TEST(MBQNetNICTest, RoundTripsThroughMessageTextWithTheCoreSchemaType) {
  const MBQMessage message = writeAndReparse(fullNic());
  auto it = message.iterator();
  ASSERT_EQ(0, it->descend("nic"));
  std::string type;
  ASSERT_EQ(0, it->getSchemaType(type));
  EXPECT_EQ(std::string(kCoreTypesNamespace) + ":net_nicType", type);

  MBQNetNIC read;
  ASSERT_EQ(0, it->getObject(read, MBQNetNIC::Reader()));
  EXPECT_EQ(fullNic(), read);
  // The network part keeps the form it was written in.
  EXPECT_EQ("10.0.0.6/255.255.255.0", read.getAddresses()[1].toStringWithNetwork());
}

TEST(MBQNetNICTest, EmptyRecordRoundTrips) {
  const MBQMessage message = writeAndReparse(MBQNetNIC());
  MBQNetNIC read = fullNic();
  ASSERT_EQ(0, message.iterator()->getObject(read, MBQNetNIC::Reader(), "nic"));
  EXPECT_EQ(MBQNetNIC(), read);
}

TEST(MBQNetNICTest, ReaderKeepsFieldsOfMissingElementsButReplacesTheAddressList) {
  MBQMessage message;
  ASSERT_EQ(0, message.parse("<m><nic><ifname>eth7</ifname><dhcp>true</dhcp></nic></m>"));
  MBQNetNIC read = fullNic();
  ASSERT_EQ(0, message.iterator()->getObject(read, MBQNetNIC::Reader(), "nic"));
  MBQNetNIC expected = fullNic();
  expected.setName("eth7");
  expected.setDhcp(true);
  expected.setAddresses({});
  EXPECT_EQ(expected, read);
}

TEST(MBQNetNICTest, AddressElementsKeepTextsThatAreNoAddresses) {
  MBQMessage message;
  ASSERT_EQ(0, message.parse("<m><nic><address>dhcp</address><address></address>"
                             "<address>10.1.1.1</address></nic></m>"));
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
    MBQMessage message;
    ASSERT_EQ(0, message.parse(document)) << document;
    MBQNetNIC read = fullNic();
    EXPECT_EQ(-1, message.iterator()->getObject(read, MBQNetNIC::Reader(), "nic")) << document;
    EXPECT_EQ(fullNic(), read) << document;
  }
}

}  // namespace
}  // namespace MBQ
