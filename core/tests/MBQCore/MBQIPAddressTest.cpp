#include "MBQCore/MBQIPAddress.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "../MBQTestSupport.h"

namespace MBQ {
namespace {

TEST(MBQIPAddressTest, ParsesAddressesWithAndWithoutNetwork) {
  for (const auto& c : test::caseRows(__FILE__, "good")) {
    const std::string& text = c.at(0);
    const std::string& withNetwork = c.at(3);
    const int prefixLength = std::stoi(c.at(4));
    MBQIPAddress address;
    ASSERT_EQ(0, address.fromString(text)) << text;
    EXPECT_TRUE(address.isValid()) << text;
    EXPECT_EQ(c.at(1) == "v6", address.isV6()) << text;
    EXPECT_EQ(c.at(2), address.toString()) << text;
    EXPECT_EQ(withNetwork, address.toStringWithNetwork()) << text;
    EXPECT_EQ(prefixLength, address.getPrefixLength()) << text;
    EXPECT_EQ(prefixLength >= 0, address.hasNetwork()) << text;
    // The constructor takes the same texts, and the written text reads back the same.
    EXPECT_EQ(address, MBQIPAddress(text)) << text;
    MBQIPAddress reread;
    EXPECT_EQ(0, reread.fromString(withNetwork)) << text;
    EXPECT_EQ(address, reread) << text;
    EXPECT_EQ(withNetwork, reread.toStringWithNetwork()) << text;
  }
}

// fromString refuses such a text; the constructor keeps it verbatim as a non-address word.
TEST(MBQIPAddressTest, BadTextIsRefusedOrKeptVerbatim) {
  const MBQIPAddress kept("192.168.0.1/16");
  for (const auto& row : test::caseRows(__FILE__, "bad")) {
    for (const std::string& text : row) {
      MBQIPAddress address = kept;
      EXPECT_EQ(-1, address.fromString(text)) << text;
      EXPECT_EQ("192.168.0.1/16", address.toStringWithNetwork()) << text;
      const MBQIPAddress word(text);
      EXPECT_FALSE(word.isValid() || word.isV6() || word.hasNetwork()) << text;
      EXPECT_EQ(text, word.toString()) << text;
      EXPECT_EQ(text, word.toStringWithNetwork()) << text;
    }
  }
  EXPECT_EQ(MBQIPAddress("dhcp"), MBQIPAddress(std::string("dhcp")));
  EXPECT_NE(MBQIPAddress("dhcp"), MBQIPAddress("DHCP"));
  EXPECT_EQ(MBQIPAddress(), MBQIPAddress(""));
  // A valid text replaces the kept word.
  MBQIPAddress address("dhcp");
  ASSERT_EQ(0, address.fromString("10.0.0.1"));
  EXPECT_EQ("10.0.0.1", address.toStringWithNetwork());
}

TEST(MBQIPAddressTest, ComparesTheNetworkButNotTheFormItWasWrittenIn) {
  EXPECT_EQ(MBQIPAddress("10.0.0.5/24"), MBQIPAddress("10.0.0.5/255.255.255.0"));
  EXPECT_NE(MBQIPAddress("10.0.0.5"), MBQIPAddress("10.0.0.5/32"));
  EXPECT_NE(MBQIPAddress("10.0.0.5/24"), MBQIPAddress("10.0.0.5/25"));
  EXPECT_NE(MBQIPAddress("10.0.0.5/24"), MBQIPAddress("10.0.0.6/24"));
  // Same (all-zero) bytes: only the family tells them apart.
  EXPECT_NE(MBQIPAddress("0.0.0.0"), MBQIPAddress("::"));
}

TEST(MBQIPAddressTest, OrdersInvalidThenIPv4ThenIPv6) {
  const std::vector<MBQIPAddress> ordered = {
      MBQIPAddress(), MBQIPAddress("dhcp"), MBQIPAddress("10.0.0.5"), MBQIPAddress("10.0.0.5/8"),
      MBQIPAddress("10.0.0.5/24"), MBQIPAddress("10.0.0.6"), MBQIPAddress("::1"), MBQIPAddress("fe80::1/64")};
  for (std::size_t i = 1; i < ordered.size(); ++i) {
    EXPECT_LT(ordered[i - 1], ordered[i]) << i;
    EXPECT_FALSE(ordered[i] < ordered[i - 1]) << i;
  }
  std::set<MBQIPAddress> addresses(ordered.begin(), ordered.end());
  addresses.insert(MBQIPAddress("10.0.0.5/255.255.255.0"));
  EXPECT_EQ(ordered.size(), addresses.size());
}

}  // namespace
}  // namespace MBQ
