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

TEST_F(KTREnvMRecordsTest, RequiredAndIgnoredFieldsPerRecord) {
  struct Case {
    const char* record;
    const char* body;
    int rc;
  };
  const Case cases[] = {
      {"log", "<log_level>1</log_level>", 0},
      {"log", "<type>x</type><log_level>1</log_level>", 0},
      {"log", "<type>1</type>", -1},
      {"native", "<content/>", 0},
      {"native", "", -1},
      {"limit", "<soft_limit>1</soft_limit><hard_limit>2</hard_limit>", 0},
      {"limit", "<usage>1</usage><hard_limit>2</hard_limit>", -1},
      {"limit", "<usage>1</usage><soft_limit>2</soft_limit>", -1},
      {"grace", "<quota_setting>1</quota_setting><grace_period>2</grace_period>", 0},
      {"grace", "<quota_setting>1</quota_setting>", -1},
      {"script", "<key>s</key><type>t</type>", 0},
      {"script", "<key>s</key>", -1},
      {"script", "<type>t</type><detail>d</detail><content>c</content>", -1},
      {"ugid", "<name>1</name><quota_limit2><soft_limit>1</soft_limit><hard_limit>2</hard_limit></quota_limit2>", -1},
      {"ugid", "<name>x</name>", -1},
      {"info", "<type>1</type>", 0},
      {"info", "<ugid_limits/>", -1},
  };
  for (const auto& c : cases) {
    const std::string record = c.record;
    const std::string text = doc(c.body);
    int rc = 99;
    if (record == "log") {
      KTRLogOptions r;
      rc = read(text, r);
    } else if (record == "native") {
      KTRNativeConfig r;
      rc = read(text, r);
    } else if (record == "limit") {
      KTRUGIDQuotaLimit::QuotaLimit r;
      rc = read(text, r);
    } else if (record == "grace") {
      KTRUGIDQuotaGracePeriod r;
      rc = read(text, r);
    } else if (record == "script") {
      KTRScript r;
      rc = read(text, r);
    } else if (record == "ugid") {
      KTRUGIDQuotaLimit r;
      rc = read(text, r);
    } else if (record == "info") {
      KTRUGIDQuotaInfo r;
      rc = read(text, r);
    }
    EXPECT_EQ(c.rc, rc) << c.record << ": " << c.body;
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

KTRUGIDQuotaLimit::QuotaLimit quotaLimit(long long base) {
  KTRUGIDQuotaLimit::QuotaLimit limit;
  limit.setUsage(base);
  limit.setSoftLimit(base + 1);
  limit.setHardLimit(base + 2);
  return limit;
}

TEST_F(KTREnvMRecordsTest, QuotaInfoRoundTripsWithTheSecondLimitReadFirst) {
  KTRUGIDQuotaLimit limit;
  limit.setId(500);
  limit.setLimit1(quotaLimit(10));
  limit.setLimit2(quotaLimit(20));
  KTRUGIDQuotaGracePeriod grace;
  grace.setPeriod1(3600);
  grace.setPeriod2(7200);
  KTRUGIDQuotaInfo info;
  info.setValue(1);
  info.setLimits(std::vector<KTRUGIDQuotaLimit>{limit});
  info.setGracePeriod(grace);
  const std::string text = write(info);
  auto& it = at(text);
  ASSERT_EQ(0, it.descend("ugid_limits"));
  ASSERT_EQ(0, it.descend("ugid_limit"));
  EXPECT_EQ((Texts{"name", "quota_limit2", "quota_limit1"}), childNames(it));

  KTRUGIDQuotaInfo back;
  ASSERT_EQ(0, read(text, back));
  ASSERT_TRUE(back.getLimits().isSpecified());
  ASSERT_EQ(1u, back.getLimits().get().size());
  EXPECT_EQ(500, back.getLimits().get()[0].getId());
  EXPECT_EQ(10, back.getLimits().get()[0].getLimit1().getUsage());
  EXPECT_EQ(22, back.getLimits().get()[0].getLimit2().getHardLimit());
  ASSERT_TRUE(back.getGracePeriod().isSpecified());
  EXPECT_EQ(7200, back.getGracePeriod().get().getPeriod2());
  EXPECT_EQ(text, write(back));
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

TEST_F(KTREnvMRecordsTest, ScriptRoundTrips) {
  KTRScript script;
  script.setName("start");
  script.setType("bash");
  script.setDetail("runs at start");
  script.setContent("#!/bin/sh\necho <&>\n");
  const std::string text = write(script);
  KTRScript back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(script.getContent(), back.getContent());
  EXPECT_EQ(text, write(back));
}

}  // namespace
}  // namespace KTR
