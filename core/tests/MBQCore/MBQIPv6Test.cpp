#include "MBQCore/MBQIPv6.h"

#include <gtest/gtest.h>

#include <string>

#include "../MBQTestSupport.h"

namespace MBQ {
namespace {

TEST(MBQIPv6Test, ParsesAndFormatsIPv6AndIPv4Texts) {
  for (const auto& c : test::caseRows(__FILE__, "texts")) {
    MBQIPv6 address;
    ASSERT_EQ(0, address.fromString(c.at(0))) << c[0];
    EXPECT_EQ(c.at(1), address.toString()) << c[0];
    EXPECT_EQ(c.at(2) == "v4", IPv6Format::IPv4Compatible::test(address)) << c[0];
    EXPECT_EQ(c.at(3), IPv6Format::IPv4Compatible::format(address)) << c[0];
    // Both texts read back to the same address.
    EXPECT_EQ(address, MBQIPv6(address.toString())) << c[0];
    EXPECT_EQ(address, MBQIPv6(IPv6Format::IPv4Compatible::format(address))) << c[0];
  }
}

TEST(MBQIPv6Test, RejectsBadTextAndKeepsTheValue) {
  const MBQIPv6 kept("2001:db8::1");
  for (const auto& row : test::caseRows(__FILE__, "bad")) test::expectRefusedAndKept(kept, row);
  EXPECT_TRUE(MBQIPv6("not an address").isAny());
}

TEST(MBQIPv6Test, AnyIsOnlyTheAllZeroAddress) {
  EXPECT_TRUE(MBQIPv6().isAny());
  EXPECT_FALSE(IPv6Format::IPv4Compatible::test(MBQIPv6()));
  for (const char* text : {"::", "0:0:0:0:0:0:0:0"}) EXPECT_TRUE(MBQIPv6(text).isAny()) << text;
  // IPv4 0.0.0.0 is held mapped, so it is not the IPv6 any address.
  for (const char* text : {"::1", "0.0.0.0"}) EXPECT_FALSE(MBQIPv6(text).isAny()) << text;
}

TEST(MBQIPv6Test, ResemblesIPv6ExactlyWhenTheTextHasAColon) {
  for (const std::string text : {"fe80::1", "2001:db8::5/64", "::ffff:10.0.0.1", "10.0.0.5/24", "dhcp", ""})
    EXPECT_EQ(text.find(':') != std::string::npos, MBQIPv6::isResembling(text)) << text;
}

TEST(MBQIPv6Test, OrdersByBytes) {
  EXPECT_LT(MBQIPv6("::1"), MBQIPv6("10.0.0.1"));
  EXPECT_LT(MBQIPv6("10.0.0.1"), MBQIPv6("10.0.0.2"));
  EXPECT_EQ(MBQIPv6("10.0.0.1"), MBQIPv6("::ffff:10.0.0.1"));
}

}  // namespace
}  // namespace MBQ
