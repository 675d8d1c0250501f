#include "MBQFunctionalityCore/MBQPackage.h"

#include <gtest/gtest.h>

#include <string>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQMessage.h"

// The record's children and its round trip are the record catalog's (through the package
// templates that extend it); here what the base record alone does.

namespace MBQ {
namespace {

TEST(MBQPackageTest, BaseRecordIsUntypedAndAbsentOsPropertiesBecomeUnspecified) {
  MBQMessage message;
  ASSERT_EQ(0, message.iterator()->putObject(MBQPackage("mysql", "5.7"), MBQPackage::Writer(), "p"));

  auto in = test::reparsed(message).iterator();
  ASSERT_EQ(0, in->descend("p"));
  std::string type;
  EXPECT_NE(0, in->getSchemaType(type)) << "the base record is never typed: " << type;
  MBQPackage back("old", "0");
  back.setOsName(std::string("centos"));
  back.setOsVersion(std::string("7"));
  ASSERT_EQ(0, in->getObject(back, MBQPackage::Reader()));
  EXPECT_EQ(MBQPackage("mysql", "5.7"), back);
  EXPECT_FALSE(back.getOsName().isSpecified());
  EXPECT_FALSE(back.getOsVersion().isSpecified());
}

// The key is read before the release: a record without release must not keep half of it.
TEST(MBQPackageTest, FailedReadLeavesTheRecord) {
  auto it = test::parsed("<m><p><key>mysql</key><os_name>centos</os_name></p></m>").iterator();
  MBQPackage back("old", "0");
  EXPECT_EQ(-1, it->getObject(back, MBQPackage::Reader(), "p"));
  EXPECT_EQ(MBQPackage("old", "0"), back);
}

}  // namespace
}  // namespace MBQ
