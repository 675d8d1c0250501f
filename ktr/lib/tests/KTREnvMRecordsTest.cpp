#include "KTRFunctionality/KTREnvMRecords.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest).

namespace KTR {
namespace {

class KTREnvMRecordsTest : public testing::RecordTest {};

TEST_F(KTREnvMRecordsTest, UpgradeOptionsCarryOnlyBitZero) {
  const std::pair<unsigned, unsigned> cases[] = {{0, 0}, {1, 1}, {2, 0}, {3, 1}, {0xffffffffu, 1}};
  for (const auto& [flags, readBack] : cases) {
    KTRUpgradeOptions options;
    options.setFlags(flags);
    const std::string text = write(options);
    EXPECT_EQ(readBack == 1, at(text).hasChild("upgrade_flag")) << flags;
    KTRUpgradeOptions back;
    back.setFlags(6);
    ASSERT_EQ(0, read(text, back));
    EXPECT_EQ(readBack, back.getFlags()) << flags;
  }
}

TEST_F(KTREnvMRecordsTest, QuotaLimitWithoutUsageKeepsIt) {
  KTRUGIDQuotaLimit::QuotaLimit limit;
  limit.setUsage(77);
  ASSERT_EQ(0, read(doc("<soft_limit>1</soft_limit><hard_limit>2</hard_limit>"), limit));
  EXPECT_EQ(77, limit.getUsage());
  EXPECT_EQ(1, limit.getSoftLimit());
  EXPECT_EQ(2, limit.getHardLimit());
}

TEST_F(KTREnvMRecordsTest, QuotaInfoOptionalPartsBecomeUnspecifiedOnFailure) {
  struct Case {
    const char* body;
    bool limits;
    bool grace;
  };
  const Case cases[] = {
      {"<type>1</type>", false, false},
      {"<type>1</type><ugid_limits/>", true, false},
      {"<type>1</type><ugid_limits><ugid_limit><name>x</name></ugid_limit></ugid_limits>", false, false},
      {"<type>1</type><grace_periods><quota_setting>1</quota_setting></grace_periods>", false, false},
      {"<type>1</type><grace_periods><quota_setting>1</quota_setting><grace_period>2</grace_period></grace_periods>",
       false, true},
  };
  for (const auto& c : cases) {
    KTRUGIDQuotaInfo info;
    info.setGracePeriod(KTRUGIDQuotaGracePeriod());
    info.setLimits(std::vector<KTRUGIDQuotaLimit>());
    ASSERT_EQ(0, read(doc(c.body), info)) << c.body;
    EXPECT_EQ(c.limits, info.getLimits().isSpecified()) << c.body;
    EXPECT_EQ(c.grace, info.getGracePeriod().isSpecified()) << c.body;
  }
}

}  // namespace
}  // namespace KTR
