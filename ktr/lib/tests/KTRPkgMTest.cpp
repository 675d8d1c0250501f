#include "KTRFunctionality/KTRPkgM.h"

#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

#include <memory>
#include <string>
#include <vector>

#include "MBQMessage/MBQMessage.h"

namespace KTR {
namespace {

using Texts = std::vector<std::string>;

// Writes records under an element "r" and reads them back from the message's text, so every
// check goes through XML.
class KTRPkgMTest : public testing::RecordTest {
 protected:
  // Edits a copy of the text: `path` leads from "r" to the element to change, whose child
  // `id` is removed (value nullptr) or given the text `value`.
  std::string edited(const std::string& text, const std::vector<std::pair<int, int>>& path, int id,
                     const char* value) {
    MBQ::MBQMessage message;
    EXPECT_EQ(0, message.parse(text));
    auto it = message.iterator();
    EXPECT_EQ(0, it->descend("r"));
    for (const auto& step : path) {  // (id, how many siblings to skip)
      EXPECT_EQ(0, it->descend(step.first));
      for (int i = 0; i < step.second; ++i) EXPECT_EQ(0, it->next(step.first));
    }
    if (value == nullptr) {
      EXPECT_EQ(0, it->lookup(id)) << id;
      EXPECT_EQ(0, it->remove());
    } else {
      EXPECT_EQ(0, it->descend(id)) << id;
      EXPECT_EQ(0, it->setText(value));
    }
    return message.toString();
  }
  std::string without(const std::string& text, int id) { return edited(text, {}, id, nullptr); }
  static Texts childNames(const MBQ::MBQMessageIterator& it) {
    Texts names;
    if (it.descendFirst() == 0) {
      do names.push_back(it.getName());
      while (it.nextSibling() == 0);
      it.up();
    }
    return names;
  }
};

KTRPackage fullPackage() {
  KTRPackage package("bash", "4.2.46");
  package.setTextList({"shell", "", "base"});
  package.setFlag(true);
  return package;
}

KTRPackageVersion fullVersion(const std::string& text = "4.2.46-34") {
  KTRPackageVersion version;
  version.setVersionText(text);
  version.setPrimaryFlag(true);
  version.setSecondaryFlag(true);
  version.setTemplates({KTRTemplate("centos-7-x86_64", "20240101"), KTRTemplate("centos-7-minimal")});
  return version;
}

KTRPackageInfo fullInfo() {
  KTRPackageInfo info;
  info.setName("bash");
  info.setDetail("The GNU Bourne Again shell");
  info.setType("rpm");
  info.setVersions({fullVersion(), fullVersion("4.2.46-35")});
  return info;
}

// ---------------------------------------------------------------- packages

TEST_F(KTRPkgMTest, PackageRoundTripsWithItsTemplatePartLast) {
  const KTRPackage package = fullPackage();
  const std::string text = write(package);
  EXPECT_EQ((Texts{"package_text", "package_text", "package_text", "package_flag", "release", "key"}),
            childNames(at(text)));
  KTRPackage back;
  back.setTextList({"old"});
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(package, back);
}

TEST_F(KTRPkgMTest, PackageNeedsOnlyItsName) {
  struct Case {
    int id;
    int rc;
  };
  const Case cases[] = {{1026, -1}, {1223, 0}, {1118, 0}, {1511, 0}};
  const std::string text = write(fullPackage());
  for (const Case& c : cases) {
    std::string changed = without(text, c.id);
    if (c.id == 1511) changed = without(without(changed, 1511), 1511);  // every text
    KTRPackage back("old", "old-release");
    back.setTextList({"old"});
    back.setFlag(false);
    EXPECT_EQ(c.rc, read(changed, back)) << c.id;
    if (c.rc != 0) continue;
    EXPECT_EQ(c.id == 1511 ? Texts() : fullPackage().getTextList(), back.getTextList()) << c.id;
    EXPECT_EQ(c.id != 1118, back.getFlag()) << c.id << ": a missing flag keeps its value";
    EXPECT_EQ(c.id == 1223 ? "old-release" : "4.2.46", back.getRelease()) << c.id;
  }
}

// ---------------------------------------------------------------- versions

TEST_F(KTRPkgMTest, VersionRoundTripsWithItsTemplatesInAHolder) {
  const KTRPackageVersion version = fullVersion();
  const std::string text = write(version);
  EXPECT_EQ((Texts{"version_text", "primary_flag", "secondary_flag", "template_list"}), childNames(at(text)));
  MBQ::MBQMessageIterator& it = at(text);
  ASSERT_EQ(0, it.descend(1509));
  EXPECT_EQ((Texts{"package", "package"}), childNames(it));

  for (bool lenient : {false, true}) {
    KTRPackageVersion back;
    ASSERT_EQ(0, read(text, back, KTRPackageVersion::Reader(lenient)));
    EXPECT_EQ(version, back);
  }

  KTRPackageVersion noTemplates = version;
  noTemplates.setTemplates({});
  KTRPackageVersion back = version;
  ASSERT_EQ(0, read(write(noTemplates), back));
  EXPECT_EQ(noTemplates, back);
}

TEST_F(KTRPkgMTest, LenientReaderToleratesWhatTheStrictOneRequires) {
  struct Case {
    int id;
    const char* value;  // nullptr: the element is removed
    int strict;
    int lenient;
  };
  const Case cases[] = {
      {1497, nullptr, -1, 0},
      {1498, nullptr, -1, 0},
      {1498, "perhaps", -1, 0},
      {1499, nullptr, 0, 0},
      {1499, "perhaps", 0, 0},
      {1509, nullptr, 0, 0},
  };
  const KTRPackageVersion version = fullVersion();
  const std::string text = write(version);
  for (const Case& c : cases) {
    const std::string changed = edited(text, {}, c.id, c.value);
    KTRPackageVersion strict;
    EXPECT_EQ(c.strict, read(changed, strict, KTRPackageVersion::Reader(false))) << c.id;
    EXPECT_EQ(c.strict, read(changed, strict, KTRPackageVersion::Reader())) << c.id << ": strict by default";

    KTRPackageVersion lenient;
    lenient.setVersionText("old");
    EXPECT_EQ(c.lenient, read(changed, lenient, KTRPackageVersion::Reader(true))) << c.id;
    EXPECT_EQ(c.id == 1497 ? "old" : version.getVersionText(), lenient.getVersionText()) << c.id;
    EXPECT_EQ(c.id != 1498, lenient.getPrimaryFlag()) << c.id << ": a failed flag keeps its value";
    EXPECT_EQ(c.id != 1499, lenient.getSecondaryFlag()) << c.id;
    EXPECT_EQ(c.id == 1509 ? std::vector<KTRTemplate>() : version.getTemplates(), lenient.getTemplates()) << c.id;
  }
}

TEST_F(KTRPkgMTest, StrictVersionStopsAtTheFirstMissingRequiredField) {
  KTRPackageVersion back;
  back.setVersionText("old");
  back.setSecondaryFlag(false);
  ASSERT_EQ(-1, read(without(write(fullVersion()), 1498), back));
  EXPECT_EQ("4.2.46-34", back.getVersionText()) << "what was read before the failure stays";
  EXPECT_FALSE(back.getSecondaryFlag()) << "nothing after the failure is read";
}

TEST_F(KTRPkgMTest, BrokenTemplateEndsTheTemplateListOnly) {
  // The second template loses its name.
  const std::string changed = edited(write(fullVersion()), {{1509, 0}, {1295, 1}}, 1026, nullptr);
  KTRPackageVersion back;
  ASSERT_EQ(0, read(changed, back));
  EXPECT_EQ(std::vector<KTRTemplate>{KTRTemplate("centos-7-x86_64", "20240101")}, back.getTemplates());
}

// ---------------------------------------------------------------- package info

TEST_F(KTRPkgMTest, PackageInfoRoundTrips) {
  const KTRPackageInfo info = fullInfo();
  const std::string text = write(info);
  EXPECT_EQ((Texts{"key", "detail", "type", "release", "release"}), childNames(at(text)));
  KTRPackageInfo back;
  back.setVersions({fullVersion("stale")});
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(info, back);
}

TEST_F(KTRPkgMTest, PackageInfoRequiresEveryFieldAndAVersion) {
  const std::string text = write(fullInfo());
  for (int id : {1026, 1496, 1007}) {
    KTRPackageInfo back;
    EXPECT_EQ(-1, read(without(text, id), back)) << id;
  }
  KTRPackageInfo back;
  EXPECT_EQ(-1, read(without(without(text, 1223), 1223), back)) << "no version at all";

  // The versions are read strictly: a second version without its version text fails the
  // record, keeping the first.
  back = KTRPackageInfo();
  EXPECT_EQ(-1, read(edited(text, {{1223, 1}}, 1497, nullptr), back));
  EXPECT_EQ(std::vector<KTRPackageVersion>{fullVersion()}, back.getVersions());
  // Its second flag is not required.
  EXPECT_EQ(0, read(edited(text, {{1223, 1}}, 1499, nullptr), back));
}

}  // namespace
}  // namespace KTR
