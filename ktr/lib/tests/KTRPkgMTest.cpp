#include "KTRFunctionality/KTRPkgM.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest).

namespace KTR {
namespace {

class KTRPkgMTest : public testing::RecordTest {
 protected:
  KTRPkgMTest() {
    version_.setVersionText("4.2");
    version_.setPrimaryFlag(true);
    version_.setSecondaryFlag(true);
    version_.setTemplates({KTRTemplate("centos-7-x86_64", "20240101"), KTRTemplate("centos-7-minimal")});
    text_ = write(version_);
  }
  KTRPackageVersion version_;
  std::string text_;
};

TEST_F(KTRPkgMTest, LenientVersionReaderToleratesWhatTheStrictOneRequires) {
  struct Case {
    std::string changed;
    int strict;
    bool versionKept, primary, secondary, templates;
  };
  const Case cases[] = {
      {replaced(text_, "<version_text>4.2</version_text>", ""), -1, true, true, true, true},
      // A flag that fails to read keeps its value.
      {replaced(text_, "<primary_flag>1</primary_flag>", ""), -1, false, false, true, true},
      {replaced(text_, "<primary_flag>1", "<primary_flag>perhaps"), -1, false, false, true, true},
      {replaced(text_, "<secondary_flag>1</secondary_flag>", ""), 0, false, true, false, true},
      {replaced(text_, "<secondary_flag>1", "<secondary_flag>perhaps"), 0, false, true, false, true},
      {replaced(replaced(text_, "<template_list>", "<other>"), "</template_list>", "</other>"), 0, false, true, true,
       false},
  };
  for (const Case& c : cases) {
    const std::string& changed = c.changed;
    KTRPackageVersion strict;
    EXPECT_EQ(c.strict, read(changed, strict, KTRPackageVersion::Reader(false))) << changed;
    EXPECT_EQ(c.strict, read(changed, strict)) << changed << ": strict by default";

    KTRPackageVersion lenient;
    lenient.setVersionText("old");
    EXPECT_EQ(0, read(changed, lenient, KTRPackageVersion::Reader(true))) << changed;
    EXPECT_EQ(c.versionKept ? "old" : "4.2", lenient.getVersionText()) << changed;
    EXPECT_EQ(c.primary, lenient.getPrimaryFlag()) << changed;
    EXPECT_EQ(c.secondary, lenient.getSecondaryFlag()) << changed;
    EXPECT_EQ(c.templates ? version_.getTemplates() : std::vector<KTRTemplate>(), lenient.getTemplates()) << changed;
  }
}

TEST_F(KTRPkgMTest, BrokenTemplateEndsTheTemplateListOnly) {
  KTRPackageVersion back;
  ASSERT_EQ(0, read(replaced(text_, "<key>centos-7-minimal</key>", ""), back));
  EXPECT_EQ(std::vector<KTRTemplate>{KTRTemplate("centos-7-x86_64", "20240101")}, back.getTemplates());
}

}  // namespace
}  // namespace KTR
