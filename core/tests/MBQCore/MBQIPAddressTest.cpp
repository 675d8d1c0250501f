#include "MBQCore/MBQIPAddress.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace MBQ {
namespace {

struct GoodCase {
  const char* text;
  bool v6;
  const char* address;      // toString()
  const char* withNetwork;  // toStringWithNetwork()
  int prefixLength;
};

const GoodCase kGoodCases[] = {
    {"10.0.0.5", false, "10.0.0.5", "10.0.0.5", -1},
    {"10.0.0.5/24", false, "10.0.0.5", "10.0.0.5/24", 24},
    {"10.0.0.5/255.255.255.0", false, "10.0.0.5", "10.0.0.5/255.255.255.0", 24},
    {"10.0.0.5/255.255.128.0", false, "10.0.0.5", "10.0.0.5/255.255.128.0", 17},
    {"10.0.0.5/0", false, "10.0.0.5", "10.0.0.5/0", 0},
    {"10.0.0.5/32", false, "10.0.0.5", "10.0.0.5/32", 32},
    {"10.0.0.5/0.0.0.0", false, "10.0.0.5", "10.0.0.5/0.0.0.0", 0},
    {"10.0.0.5/255.255.255.255", false, "10.0.0.5", "10.0.0.5/255.255.255.255", 32},
    {"10.0.0.5/024", false, "10.0.0.5", "10.0.0.5/24", 24},
    {" 10.0.0.5/24\t", false, "10.0.0.5", "10.0.0.5/24", 24},
    {"fe80::1", true, "fe80::1", "fe80::1", -1},
    {"fe80::1/64", true, "fe80::1", "fe80::1/64", 64},
    {"FE80:0::0001/128", true, "fe80::1", "fe80::1/128", 128},
    {"2001:db8::5/0", true, "2001:db8::5", "2001:db8::5/0", 0},
    {"::/0", true, "::", "::/0", 0},
    {"::ffff:10.0.0.1/96", true, "::ffff:10.0.0.1", "::ffff:10.0.0.1/96", 96},
};

TEST(MBQIPAddressTest, ParsesAddressesWithAndWithoutNetwork) {
  for (const GoodCase& c : kGoodCases) {
    MBQIPAddress address;
    ASSERT_EQ(0, address.fromString(c.text)) << c.text;
    EXPECT_TRUE(address.isValid()) << c.text;
    EXPECT_EQ(c.v6, address.isV6()) << c.text;
    EXPECT_EQ(c.address, address.toString()) << c.text;
    EXPECT_EQ(c.withNetwork, address.toStringWithNetwork()) << c.text;
    EXPECT_EQ(c.prefixLength, address.getPrefixLength()) << c.text;
    EXPECT_EQ(c.prefixLength >= 0, address.hasNetwork()) << c.text;
    // The constructor takes the same texts, and the written text reads back the same.
    EXPECT_EQ(address, MBQIPAddress(c.text)) << c.text;
    MBQIPAddress reread;
    EXPECT_EQ(0, reread.fromString(c.withNetwork)) << c.text;
    EXPECT_EQ(address, reread) << c.text;
    EXPECT_EQ(c.withNetwork, reread.toStringWithNetwork()) << c.text;
  }
}

const std::string kBadTexts[] = {
    "", "   ", "dhcp", "10.0.0.256", "10.0.0", "10.0.0.5.6", "10.0.0.5/", "10.0.0.5/33",
    "10.0.0.5/-1", "10.0.0.5/+24", "10.0.0.5/2a", "10.0.0.5/1000", "10.0.0.5/24/8",
    "10.0.0.5 /24", "10.0.0.5/ 24", "/24",
    // Non-contiguous masks name no network.
    "10.0.0.5/255.0.255.0", "10.0.0.5/255.255.255.1", "10.0.0.5/0.255.255.255",
    "10.0.0.5/255.255.255", "10.0.0.5/256.0.0.0",
    "fe80::1/129", "fe80::1/255.255.0.0", "fe80::1/ffff::", "fe80::1%eth0", "fe80::g",
    std::string("10.0.0.5\0", 9), std::string("10.0.0.5/24\0", 12),
};

// fromString refuses such a text; the constructor keeps it verbatim as a non-address word.
TEST(MBQIPAddressTest, BadTextIsRefusedOrKeptVerbatim) {
  const MBQIPAddress kept("192.168.0.1/16");
  for (const std::string& text : kBadTexts) {
    MBQIPAddress address = kept;
    EXPECT_EQ(-1, address.fromString(text)) << text;
    EXPECT_EQ("192.168.0.1/16", address.toStringWithNetwork()) << text;
    const MBQIPAddress word(text);
    EXPECT_FALSE(word.isValid() || word.isV6() || word.hasNetwork()) << text;
    EXPECT_EQ(text, word.toString()) << text;
    EXPECT_EQ(text, word.toStringWithNetwork()) << text;
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
  const MBQIPAddress ordered[] = {
      MBQIPAddress(),          MBQIPAddress("dhcp"),      MBQIPAddress("10.0.0.5"),
      MBQIPAddress("10.0.0.5/8"), MBQIPAddress("10.0.0.5/24"), MBQIPAddress("10.0.0.6"),
      MBQIPAddress("::1"),     MBQIPAddress("fe80::1/64"),
  };
  const std::size_t count = sizeof ordered / sizeof ordered[0];
  for (std::size_t i = 0; i + 1 < count; ++i) {
    EXPECT_LT(ordered[i], ordered[i + 1]) << i;
    EXPECT_FALSE(ordered[i + 1] < ordered[i]) << i;
  }
  std::set<MBQIPAddress> addresses(ordered, ordered + count);
  addresses.insert(MBQIPAddress("10.0.0.5/255.255.255.0"));
  EXPECT_EQ(count, addresses.size());
}

}  // namespace
}  // namespace MBQ
