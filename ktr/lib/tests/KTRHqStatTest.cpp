#include "KTRFunctionality/KTRHqStat.h"

#include <gtest/gtest.h>

#include <string>

#include "KTRRecordTesting.h"

namespace KTR {
namespace {

class KTRHqStatTest : public testing::RecordTest {};

KTRQuotaInfo quota(long long base) {
  KTRQuotaInfo q;
  q.setUsage(base);
  q.setSoftLimit(base + 1);
  q.setHardLimit(base + 2);
  q.setExtra(3);
  q.setExpire(4);
  return q;
}

TEST_F(KTRHqStatTest, QuotaStatsRoundTripUnderTheirOwnSpelling) {
  KTRQuotaStats stats;
  stats.setSpaceQuota(quota(10000000000LL));
  stats.setInodes(quota(200));
  stats.setQuota3(quota(300));
  const std::string text = write(stats);
  EXPECT_EQ((Texts{"disk_space", "diks_inodes", "quota"}), childNames(at(text)));
  KTRQuotaStats back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(10000000000LL, back.getSpaceQuota().getUsage());
  EXPECT_EQ(202, back.getInodes().getHardLimit());
  EXPECT_EQ(4, back.getQuota3().getExpire());
  EXPECT_EQ(text, write(back));

  KTRQuotaStats fixed;
  EXPECT_EQ(-1, read(replaced(replaced(text, "diks_inodes", "disk_inodes"), "diks_inodes", "disk_inodes"), fixed))
      << "the correctly spelled name is not the inode quota";
}

TEST_F(KTRHqStatTest, QuotaInfoStopsAtTheFirstMissingField) {
  const char* const order[] = {"usage", "soft_limit", "hard_limit", "quota_extra", "expire"};
  for (const char* missing : order) {
    std::string body;
    for (const char* name : order)
      if (std::string(name) != missing) body += std::string("<") + name + ">1</" + name + ">";
    KTRQuotaInfo q;
    EXPECT_EQ(-1, read(doc(body), q)) << missing;
  }
  KTRQuotaInfo q;
  EXPECT_EQ(-1, read(doc("<usage>1</usage><soft_limit>2</soft_limit><hard_limit>3</hard_limit>"
                         "<quota_extra>99999999999</quota_extra><expire>1</expire>"),
                     q))
      << "the fourth field is 32-bit";
}

TEST_F(KTRHqStatTest, UbcAndCpuLoadRoundTrip) {
  KTRUbc ubc;
  ubc.setName("kernelmem");
  ubc.setValue(-1);
  KTRUbc ubcBack;
  ASSERT_EQ(0, read(write(ubc), ubcBack));
  EXPECT_EQ("kernelmem", ubcBack.getName());
  EXPECT_EQ(-1, ubcBack.getValue());
  EXPECT_EQ(-1, read(doc("<name>x</name>"), ubcBack));

  KTRVeCPULoad load;
  load.setUser(1);
  load.setSystem(2);
  load.setIdle(3);
  load.setValue(4);
  const std::string text = write(load);
  EXPECT_EQ((Texts{"cpu_user", "cpu_system", "cpu_idle", "load_value"}), childNames(at(text)));
  KTRVeCPULoad back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(3, back.getIdle());
  EXPECT_EQ(4, back.getValue());
  EXPECT_EQ(-1, read(doc("<load_value>4</load_value>"), back)) << "the core part is required";
}

}  // namespace
}  // namespace KTR
