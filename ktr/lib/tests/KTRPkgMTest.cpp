#include "KTRFunctionality/KTRPkgM.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// what the strict version reader, the default, makes of a message is ktrctl's (msg-update.t).

namespace KTR {
namespace {

class KTRPkgMTest : public testing::RecordTest {};

TEST_F(KTRPkgMTest, LenientVersionReaderNeverFailsAndKeepsWhatItCannotRead) {
  KTRPackageVersion version;
  version.setVersionText("4.2");
  version.setPrimaryFlag(true);
  version.setSecondaryFlag(true);
  version.setTemplates({KTRTemplate("centos-7-x86_64", "20240101"), KTRTemplate("centos-7-minimal")});
  const std::string text = write(version);
  const std::vector<KTRTemplate> all = version.getTemplates(), first = {all.front()}, none;
  struct Case {
    std::string changed;
    bool versionKept, primary, secondary;
    std::vector<KTRTemplate> templates;
  };
  const Case cases[] = {
      {replaced(text, "<version_text>4.2</version_text>", ""), true, true, true, all},
      // A flag that fails to read keeps its value.
      {replaced(text, "<primary_flag>1</primary_flag>", ""), false, false, true, all},
      {replaced(text, "<primary_flag>1", "<primary_flag>perhaps"), false, false, true, all},
      {replaced(text, "<secondary_flag>1</secondary_flag>", ""), false, true, false, all},
      {replaced(text, "<secondary_flag>1", "<secondary_flag>perhaps"), false, true, false, all},
      {replaced(replaced(text, "<template_list>", "<other>"), "</template_list>", "</other>"), false, true, true, none},
      // A broken template ends the list, not the record.
      {replaced(text, "<key>centos-7-minimal</key>", ""), false, true, true, first},
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
