#include "KTRFunctionality/KTREnvMRecords.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest).

namespace KTR {
namespace {

class KTREnvMRecordsTest : public testing::RecordTest {};

// Flags other than 0 and 1 never come from a message; the writer keeps only bit zero of them.
TEST_F(KTREnvMRecordsTest, UpgradeOptionsCarryOnlyBitZero) {
  const std::pair<unsigned, unsigned> cases[] = {{2, 0}, {3, 1}, {0xffffffffu, 1}};
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
}

TEST_F(KTREnvMRecordsTest, QuotaInfoOptionalPartsBecomeUnspecifiedOnFailure) {
  for (const char* parts : {"", "<ugid_limits><ugid_limit><name>x</name></ugid_limit></ugid_limits>",
                            "<grace_periods><quota_setting>1</quota_setting></grace_periods>"}) {
    KTRUGIDQuotaInfo info;
    info.setGracePeriod(KTRUGIDQuotaGracePeriod());
    info.setLimits(std::vector<KTRUGIDQuotaLimit>());
    ASSERT_EQ(0, read(doc(std::string("<type>1</type>") + parts), info)) << parts;
    EXPECT_FALSE(info.getLimits().isSpecified()) << parts;
    EXPECT_FALSE(info.getGracePeriod().isSpecified()) << parts;
  }
}

}  // namespace
}  // namespace KTR
