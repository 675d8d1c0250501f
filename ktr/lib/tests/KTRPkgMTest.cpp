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
  const std::vector<KTRTemplate> all = version_.getTemplates(), first = {all.front()}, none;
  struct Case {
    std::string changed;
    int strict;
    bool versionKept, primary, secondary;
    std::vector<KTRTemplate> templates;
  };
  const Case cases[] = {
      {replaced(text_, "<version_text>4.2</version_text>", ""), -1, true, true, true, all},
      // A flag that fails to read keeps its value.
      {replaced(text_, "<primary_flag>1</primary_flag>", ""), -1, false, false, true, all},
      {replaced(text_, "<primary_flag>1", "<primary_flag>perhaps"), -1, false, false, true, all},
      {replaced(text_, "<secondary_flag>1</secondary_flag>", ""), 0, false, true, false, all},
      {replaced(text_, "<secondary_flag>1", "<secondary_flag>perhaps"), 0, false, true, false, all},
      {replaced(replaced(text_, "<template_list>", "<other>"), "</template_list>", "</other>"), 0, false, true, true,
       none},
      // A broken template ends the list, not the record.
      {replaced(text_, "<key>centos-7-minimal</key>", ""), 0, false, true, true, first},
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
    EXPECT_EQ(c.templates, lenient.getTemplates()) << changed;
    if (c.strict == 0) {
      EXPECT_EQ(c.templates, strict.getTemplates()) << changed;
    }
  }
}

}  // namespace
}  // namespace KTR
