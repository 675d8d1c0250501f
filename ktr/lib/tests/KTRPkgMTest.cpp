#include "KTRFunctionality/KTRPkgM.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// what the strict version reader, the default, makes of a message is ktrctl's (msg-update.t).

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

TEST_F(KTRPkgMTest, LenientVersionReaderNeverFailsAndKeepsWhatItCannotRead) {
  const std::vector<KTRTemplate> all = version_.getTemplates(), first = {all.front()}, none;
  struct Case {
    std::string changed;
    bool versionKept, primary, secondary;
    std::vector<KTRTemplate> templates;
  };
  const Case cases[] = {
      {replaced(text_, "<version_text>4.2</version_text>", ""), true, true, true, all},
      // A flag that fails to read keeps its value.
      {replaced(text_, "<primary_flag>1</primary_flag>", ""), false, false, true, all},
      {replaced(text_, "<primary_flag>1", "<primary_flag>perhaps"), false, false, true, all},
      {replaced(text_, "<secondary_flag>1</secondary_flag>", ""), false, true, false, all},
      {replaced(text_, "<secondary_flag>1", "<secondary_flag>perhaps"), false, true, false, all},
      {replaced(replaced(text_, "<template_list>", "<other>"), "</template_list>", "</other>"), false, true, true, none},
      // A broken template ends the list, not the record.
      {replaced(text_, "<key>centos-7-minimal</key>", ""), false, true, true, first},
  };
  for (const Case& c : cases) {
    KTRPackageVersion lenient;
    lenient.setVersionText("old");
    EXPECT_EQ(0, read(c.changed, lenient, KTRPackageVersion::Reader(true))) << c.changed;
    EXPECT_EQ(c.versionKept ? "old" : "4.2", lenient.getVersionText()) << c.changed;
    EXPECT_EQ(c.primary, lenient.getPrimaryFlag()) << c.changed;
    EXPECT_EQ(c.secondary, lenient.getSecondaryFlag()) << c.changed;
    EXPECT_EQ(c.templates, lenient.getTemplates()) << c.changed;
  }
}

}  // namespace
}  // namespace KTR
