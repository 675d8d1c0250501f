#include "MBQCore/MBQIPv6.h"

#include <gtest/gtest.h>

#include <string>

namespace MBQ {
namespace {

struct TextCase {
  const char* text;
  const char* ipv6Text;     // toString()
  bool ipv4Compatible;      // IPv6Format::IPv4Compatible::test
  const char* formatted;    // IPv6Format::IPv4Compatible::format
};

const TextCase kTextCases[] = {
    {"fe80::1", "fe80::1", false, "fe80::1"},
    {"FE80:0:0:0:0:0:0:0001", "fe80::1", false, "fe80::1"},
    {" 2001:db8::5\t", "2001:db8::5", false, "2001:db8::5"},
    {"::", "::", false, "::"},
    {"::1", "::1", false, "::1"},
    {"10.0.0.1", "::ffff:10.0.0.1", true, "10.0.0.1"},
    {"0.0.0.0", "::ffff:0.0.0.0", true, "0.0.0.0"},
    {"255.255.255.255", "::ffff:255.255.255.255", true, "255.255.255.255"},
    {"::ffff:192.168.1.2", "::ffff:192.168.1.2", true, "192.168.1.2"},
    {"::ffff:c0a8:102", "::ffff:192.168.1.2", true, "192.168.1.2"},
    // The old ::a.b.c.d form is not taken as IPv4: it would make "::1" ambiguous.
    {"::10.0.0.1", "::10.0.0.1", false, "::10.0.0.1"},
    {"::fffe:10.0.0.1", "::fffe:a00:1", false, "::fffe:a00:1"},
    {"1::ffff:10.0.0.1", "1::ffff:a00:1", false, "1::ffff:a00:1"},
};

TEST(MBQIPv6Test, ParsesAndFormatsIPv6AndIPv4Texts) {
  for (const TextCase& c : kTextCases) {
    MBQIPv6 address;
    ASSERT_EQ(0, address.fromString(c.text)) << c.text;
    EXPECT_EQ(c.ipv6Text, address.toString()) << c.text;
    EXPECT_EQ(c.ipv4Compatible, IPv6Format::IPv4Compatible::test(address)) << c.text;
    EXPECT_EQ(c.formatted, IPv6Format::IPv4Compatible::format(address)) << c.text;
    // Both texts read back to the same address.
    EXPECT_EQ(address, MBQIPv6(address.toString())) << c.text;
    EXPECT_EQ(address, MBQIPv6(IPv6Format::IPv4Compatible::format(address))) << c.text;
  }
}

TEST(MBQIPv6Test, RejectsBadTextAndKeepsTheValue) {
  const std::string texts[] = {
      "", " ", "fe80::1/64", "fe80::1%eth0", "gggg::1", "::1::2", "1:2:3:4:5:6:7:8:9",
      "10.0.0.256", "10.0.0", "10.0.0.1/24", "010.0.0.1x", "dhcp",
      std::string("::1\0garbage", 11), std::string("10.0.0.1\0", 9),
  };
  const MBQIPv6 kept("2001:db8::1");
  for (const std::string& text : texts) {
    MBQIPv6 address = kept;
    EXPECT_NE(0, address.fromString(text)) << text;
    EXPECT_EQ(kept, address) << text;
  }
  EXPECT_TRUE(MBQIPv6("not an address").isAny());
}

TEST(MBQIPv6Test, AnyIsOnlyTheAllZeroAddress) {
  EXPECT_TRUE(MBQIPv6().isAny());
  EXPECT_TRUE(MBQIPv6("::").isAny());
  EXPECT_TRUE(MBQIPv6("0:0:0:0:0:0:0:0").isAny());
  EXPECT_FALSE(MBQIPv6("::1").isAny());
  // IPv4 0.0.0.0 is held mapped, so it is not the IPv6 any address.
  EXPECT_FALSE(MBQIPv6("0.0.0.0").isAny());
  EXPECT_FALSE(IPv6Format::IPv4Compatible::test(MBQIPv6()));
}

TEST(MBQIPv6Test, ResemblesIPv6ExactlyWhenTheTextHasAColon) {
  EXPECT_TRUE(MBQIPv6::isResembling("fe80::1"));
  EXPECT_TRUE(MBQIPv6::isResembling("2001:db8::5/64"));
  EXPECT_TRUE(MBQIPv6::isResembling("::ffff:10.0.0.1"));
  EXPECT_FALSE(MBQIPv6::isResembling("10.0.0.5/24"));
  EXPECT_FALSE(MBQIPv6::isResembling("dhcp"));
  EXPECT_FALSE(MBQIPv6::isResembling(""));
}

TEST(MBQIPv6Test, OrdersByBytes) {
  EXPECT_LT(MBQIPv6("::1"), MBQIPv6("10.0.0.1"));
  EXPECT_LT(MBQIPv6("10.0.0.1"), MBQIPv6("10.0.0.2"));
  EXPECT_EQ(MBQIPv6("10.0.0.1"), MBQIPv6("::ffff:10.0.0.1"));
}

}  // namespace
}  // namespace MBQ
