#include "MBQCore/MBQGUID.h"

#include <gtest/gtest.h>

#include <string>

#include "../MBQTestSupport.h"

namespace MBQ {
namespace {

const MBQGUID kGuid(0x0011223344556677ULL, 0x8899aabbccddeeffULL);

TEST(MBQGUIDTest, HalvesAreBigEndianHighFirstAndOnlyZeroIsInvalid) {
  EXPECT_FALSE(MBQGUID().isValid());
  EXPECT_EQ("00000000-0000-0000-0000-000000000000", MBQGUID().toString());
  EXPECT_EQ(MBQGUID(0, 0), MBQGUID());
  EXPECT_EQ("00112233-4455-6677-8899-aabbccddeeff", kGuid.toString());
  EXPECT_EQ(0x00, kGuid.bytes()[0]);
  EXPECT_EQ(0xff, kGuid.bytes()[15]);
  EXPECT_EQ(0x0011223344556677ULL, kGuid.high());
  EXPECT_EQ(0x8899aabbccddeeffULL, kGuid.low());
  EXPECT_TRUE(MBQGUID(0, 1).isValid());
  EXPECT_EQ("00000000-0000-0000-0000-000000000001", MBQGUID(0, 1).toString());
}

TEST(MBQGUIDTest, GeneratedGuidsAreValidDistinctAndReadBack) {
  const MBQGUID first = MBQGUID::generate();
  const MBQGUID second = MBQGUID::generate();
  EXPECT_TRUE(first.isValid());
  EXPECT_NE(first, second);
  MBQGUID read;
  ASSERT_EQ(0, read.fromString(first.toString()));
  EXPECT_EQ(first, read);
  ASSERT_EQ(0, read.fromString("{" + second.toString() + "}"));
  EXPECT_EQ(second, read);
}

TEST(MBQGUIDTest, ReadsItsTextFormsAndKeepsTheValueOnRefusal) {
  for (const auto& c : test::caseRows(__FILE__, "read")) {
    const std::string& text = c.at(1);
    MBQGUID guid = c[0] == "guid" ? MBQGUID() : kGuid;
    EXPECT_EQ(c[0] != "refused", guid.fromString(text) == 0) << '"' << text << '"';
    EXPECT_EQ(c[0] == "absent" ? MBQGUID() : kGuid, guid) << '"' << text << '"';
  }
}

TEST(MBQGUIDTest, OrdersByBytesLikeTheText) {
  const MBQGUID low(0, 0xffffffffffffffffULL);
  const MBQGUID high(1, 0);
  EXPECT_LT(MBQGUID(), low);
  EXPECT_LT(low, high);
  EXPECT_FALSE(high < low);
  EXPECT_LT(low.toString(), high.toString());
}

}  // namespace
}  // namespace MBQ
