#include "MBQFunctionalityCore/MBQPackage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MBQMessage/MBQMessage.h"

namespace MBQ {
namespace {

MBQPackage fullPackage() {
  MBQPackage package("mysql", "5.7");
  package.setOsName(std::string("centos"));
  package.setOsVersion(std::string("7"));
  return package;
}

// Writes the package under "p" and returns the message text.
std::string write(const MBQPackage& package) {
  MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(0, it->addChildAndDescend("p"));
  EXPECT_EQ(0, it->putObject(package, MBQPackage::Writer()));
  return message.toString();
}

// Reads the package under "p" of `text`, after removing the child `missing` if given.
int read(const std::string& text, MBQPackage& package, const char* missing = nullptr) {
  MBQMessage message;
  EXPECT_EQ(0, message.parse(text));
  auto it = message.iterator();
  EXPECT_EQ(0, it->descend("p"));
  if (missing != nullptr) {
    EXPECT_EQ(0, it->lookup(std::string(missing))) << missing;
    EXPECT_EQ(0, it->remove());
  }
  return it->getObject(package, MBQPackage::Reader());
}

std::vector<std::string> childNames(const std::string& text) {
  MBQMessage message;
  EXPECT_EQ(0, message.parse(text));
  auto it = message.iterator();
  EXPECT_EQ(0, it->descend("p"));
  std::vector<std::string> names;
  if (it->descendFirst() == 0) {
    do names.push_back(it->getName());
    while (it->nextSibling() == 0);
  }
  return names;
}

TEST(MBQPackageTest, RoundTripsUntypedWithUnspecifiedPropertiesLeftOut) {
  const MBQPackage full = fullPackage();
  EXPECT_EQ((std::vector<std::string>{"key", "release", "os_name", "os_version"}), childNames(write(full)));
  MBQPackage back;
  ASSERT_EQ(0, read(write(full), back));
  EXPECT_EQ(full, back);

  MBQMessage message;
  ASSERT_EQ(0, message.parse(write(full)));
  auto it = message.iterator();
  ASSERT_EQ(0, it->descend("p"));
  std::string type;
  EXPECT_NE(0, it->getSchemaType(type)) << "the base record is never typed: " << type;

  const MBQPackage bare("mysql", "5.7");
  EXPECT_EQ((std::vector<std::string>{"key", "release"}), childNames(write(bare)));
  back = full;
  ASSERT_EQ(0, read(write(bare), back));
  EXPECT_EQ(bare, back) << "absent OS properties become unspecified";
  EXPECT_FALSE(back.getOsName().isSpecified());
}

TEST(MBQPackageTest, NameAndVersionAreRequired) {
  struct Case {
    const char* missing;
    int rc;
  };
  const Case cases[] = {{"key", -1}, {"release", -1}, {"os_name", 0}, {"os_version", 0}};
  const std::string text = write(fullPackage());
  for (const Case& c : cases) {
    MBQPackage back("old", "0");
    const MBQPackage before = back;
    EXPECT_EQ(c.rc, read(text, back, c.missing)) << c.missing;
    if (c.rc != 0) {
      EXPECT_EQ(before, back) << c.missing << ": a failed read leaves the record";
    } else {
      EXPECT_EQ("mysql", back.getName());
      EXPECT_EQ(std::string(c.missing) != "os_name", back.getOsName().isSpecified()) << c.missing;
      EXPECT_EQ(std::string(c.missing) != "os_version", back.getOsVersion().isSpecified()) << c.missing;
    }
  }
}

}  // namespace
}  // namespace MBQ
