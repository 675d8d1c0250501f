#include "KTRFunctionality/KTREnvMRecords.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>

#include "KTRRecordTesting.h"
#include "MBQMessage/MBQDerivedParsers.h"

namespace KTR {
namespace {

class KTREnvMRecordsTest : public testing::RecordTest {};

TEST_F(KTREnvMRecordsTest, UpgradeOptionsCarryOnlyBitZero) {
  struct Case {
    unsigned flags;
    bool written;
    unsigned readBack;
  };
  const Case cases[] = {{0, false, 0}, {1, true, 1}, {2, false, 0}, {3, true, 1}, {0xffffffffu, true, 1}};
  for (const auto& c : cases) {
    KTRUpgradeOptions options;
    options.setFlags(c.flags);
    const std::string text = write(options);
    EXPECT_EQ(c.written, at(text).hasChild("upgrade_flag")) << c.flags;
    KTRUpgradeOptions back;
    back.setFlags(6);
    ASSERT_EQ(0, read(text, back));
    EXPECT_EQ(c.readBack, back.getFlags()) << c.flags;
  }
}

TEST_F(KTREnvMRecordsTest, LogOptionsAndNativeConfigReadAsTheirClassThroughTheCore) {
  auto log = std::make_shared<KTRLogOptions>();
  log->setValue(4);
  log->setLevel(2);
  const std::shared_ptr<MBQ::MBQLogOptions> logBase = log;
  std::shared_ptr<MBQ::MBQLogOptions> logBack;
  const std::string logText = write(logBase, nullptr, MBQ::MBQWriterDerived<MBQ::MBQLogOptions>());
  ASSERT_EQ(0, MBQ::MBQReaderDerivedValid<MBQ::MBQLogOptions>(false)(at(logText), logBack));
  ASSERT_EQ(typeid(KTRLogOptions), typeid(*logBack));
  EXPECT_EQ(4, static_cast<KTRLogOptions&>(*logBack).getValue());
  EXPECT_EQ(2, logBack->getLevel());

  auto native = std::make_shared<KTRNativeConfig>();
  native->setText("VE_ROOT=\"/var/lib/quellix/root/$VEID\"\n");
  const std::shared_ptr<MBQ::MBQNativeConfig> nativeBase = native;
  std::shared_ptr<MBQ::MBQNativeConfig> nativeBack;
  const std::string nativeText = write(nativeBase, nullptr, MBQ::MBQWriterDerived<MBQ::MBQNativeConfig>());
  EXPECT_NE(std::string::npos, nativeText.find("quellix_configType"));
  ASSERT_EQ(0, MBQ::MBQReaderDerivedValid<MBQ::MBQNativeConfig>(false)(at(nativeText), nativeBack));
  ASSERT_EQ(typeid(KTRNativeConfig), typeid(*nativeBack));
  EXPECT_EQ(native->getText(), static_cast<KTRNativeConfig&>(*nativeBack).getText());
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
