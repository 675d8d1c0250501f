#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <boost/date_time/posix_time/posix_time.hpp>

#include "KTRFunctionality/KTREnv.h"
#include "MBQFunctionalityCore/MBQEnvFactory.h"

namespace KTR {
namespace {

namespace pt = boost::posix_time;

constexpr const char* kUuid = "00112233-4455-6677-8899-aabbccddeeff";

// The UUID's first eight bytes as one host-order number, written out by hand.
std::uint64_t uuidKey() {
  std::uint64_t key = 0;
  std::memcpy(&key, "\x00\x11\x22\x33\x44\x55\x66\x77", sizeof key);
  return key;
}

std::shared_ptr<KTREnvConfig> configWithCtid(const char* ctid) {
  auto config = std::make_shared<KTREnvConfig>();
  config->setVeid(CtidWrapper(std::string(ctid)));
  return config;
}

using testing::LogCapture;

TEST(KTREnvTest, TitleTakesTheFirstRuleThatGivesAValue) {
  // "-": not given; addresses apart by blanks.
  const auto fill = [](MBQ::MBQEnvConfig& config, const std::string& name, const std::string& hostname,
                       const std::string& addresses) {
    config.initMsg();
    if (name != "-") config.setName(name);
    if (hostname != "-") config.setHostname(hostname);
    std::istringstream words(addresses);
    if (addresses != "-")
      config.setAddresses(std::vector<MBQ::MBQIPAddress>(std::istream_iterator<std::string>(words), {}));
  };
  for (const auto& c : MBQ::test::caseRows(__FILE__, "title")) {
    auto virtualConfig = std::make_shared<KTREnvConfig>();
    auto plainConfig = std::make_shared<MBQ::MBQEnvConfig>();
    fill(*virtualConfig, c.at(1), c.at(2), c.at(3));
    fill(*plainConfig, c.at(4), c.at(5), c.at(6));
    if (c.at(7).rfind("number:", 0) == 0) {
      virtualConfig->setVeid(std::stoi(c[7].substr(7)));
    } else if (c[7] != "-") {
      virtualConfig->setVeid(CtidWrapper(c[7]));
    }
    KTREnv env(MBQ::MBQEID("eid-1"), virtualConfig);
    env.setConfig(plainConfig);
    EXPECT_EQ(c.at(8), env.getTitle()) << c[0];
  }
  // Without a virtual configuration: the plain configuration's hostname, else the eid.
  KTREnv alone(MBQ::MBQEID("eid-1"), nullptr);
  EXPECT_EQ("eid-1", alone.getTitle()) << "no configuration at all";
  auto plain = std::make_shared<MBQ::MBQEnvConfig>();
  fill(*plain, "-", "phost", "-");
  alone.setConfig(plain);
  EXPECT_EQ("phost", alone.getTitle()) << "no virtual configuration";
}

TEST(KTREnvTest, SortKeyIsTheContainerIdsKeyAndWithoutIdLogsAndSortsAsZero) {
  for (const auto& [ctid, key] : {std::pair<const char*, std::uint64_t>{"101", 101}, {kUuid, uuidKey()}}) {
    LogCapture log;
    EXPECT_EQ(key, KTREnv(MBQ::MBQEID("e"), configWithCtid(ctid)).getSortKey()) << ctid;
    EXPECT_EQ("", log.text()) << ctid;
  }
  auto empty = std::make_shared<KTREnvConfig>();
  empty->initMsg();
  for (const auto& config : {std::shared_ptr<KTREnvConfig>(), std::make_shared<KTREnvConfig>(), empty}) {
    LogCapture log;
    EXPECT_EQ(0u, KTREnv(MBQ::MBQEID("e"), config).getSortKey());
    const std::string text = log.text();
    EXPECT_NE(std::string::npos, text.find("ERROR KTRFunctionality: [getSortKey] Failed to get veid\n")) << text;
  }
}

TEST(KTREnvTest, CtidWrapperKeepsTextAndNumber) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "ctid")) {
    const CtidWrapper ctid(c.at(0));
    EXPECT_EQ(c.at(1), ctid.toString()) << c[0];
    EXPECT_EQ(std::stoul(c.at(2)), ctid.getId()) << c[0];
    EXPECT_EQ(c.at(3) == "numeric", ctid.hasNumericId()) << c[0];
    EXPECT_EQ(c.at(4) == "uuid" ? uuidKey() : std::stoull(c[4]), ctid.getSortKey()) << c[0];
  }
  EXPECT_STREQ("0", CtidWrapper(0u).toString());
  EXPECT_TRUE(CtidWrapper(0u).hasNumericId());
  EXPECT_EQ(0u, CtidWrapper(0u).getSortKey());
}

class KTRPathModTimeTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(std::ofstream(file_)); }
  void setMTime(time_t seconds, long micros) {
    struct timeval times[2] = {{seconds, micros}, {seconds, micros}};
    ASSERT_EQ(0, ::utimes(file_.c_str(), times));
  }

  testing::TempDir dir_;
  const std::string file_ = dir_.file("ve.conf");
  const std::string missing_ = dir_.file("none");
};

TEST_F(KTRPathModTimeTest, AFileIsModifiedOnceForEachChangeAMissingOneAlways) {
  KTRPathModTime watch;
  EXPECT_TRUE(watch.isModified(missing_.c_str()));
  EXPECT_TRUE(watch.isModified(missing_.c_str()));
  EXPECT_TRUE(watch.getModTime().is_not_a_date_time());

  setMTime(1000000000, 123456);
  EXPECT_TRUE(watch.isModified(file_.c_str()));
  EXPECT_EQ(pt::from_time_t(1000000000) + pt::microseconds(123456), watch.getModTime());
  EXPECT_FALSE(watch.isModified(file_.c_str()));

  setMTime(1000000000, 123457);
  EXPECT_TRUE(watch.isModified(file_.c_str())) << "a microsecond is a change";
  EXPECT_FALSE(watch.isModified(file_.c_str()));

  setMTime(1000000000, 0);
  EXPECT_TRUE(watch.isModified(file_.c_str()));
  EXPECT_EQ(pt::from_time_t(1000000000), watch.getModTime()) << "only the current second is moved back";
  EXPECT_FALSE(watch.isModified(file_.c_str()));

  EXPECT_TRUE(watch.isModified(missing_.c_str()));
  EXPECT_EQ(pt::from_time_t(1000000000), watch.getModTime()) << "a failed stat keeps the remembered time";
}

TEST_F(KTRPathModTimeTest, WholeSecondOfNowIsRememberedOneSecondEarly) {
  // The check and the clock must agree on the second; retry if the second turns in between.
  for (int attempt = 0; attempt < 5; ++attempt) {
    KTRPathModTime watch;
    const time_t now = std::time(nullptr);
    setMTime(now, 0);
    EXPECT_TRUE(watch.isModified(file_.c_str()));
    if (std::time(nullptr) != now) continue;
    EXPECT_EQ(pt::from_time_t(now) - pt::seconds(1), watch.getModTime());
    EXPECT_TRUE(watch.isModified(file_.c_str())) << "a change later in this second must still show";
    return;
  }
  GTEST_SKIP() << "the clock kept turning over between the write and the check";
}

TEST_F(KTRPathModTimeTest, ModifyTouchesExistingFilesOnly) {
  setMTime(1000000000, 0);
  KTRPathModTime watch;
  ASSERT_TRUE(watch.isModified(file_.c_str()));
  ASSERT_FALSE(watch.isModified(file_.c_str()));

  const time_t before = std::time(nullptr);
  ASSERT_EQ(0, KTRPathModTime::modify(file_.c_str()));
  struct stat info;
  ASSERT_EQ(0, ::stat(file_.c_str(), &info));
  EXPECT_GE(info.st_mtime, before);
  EXPECT_GE(info.st_atime, before);
  EXPECT_TRUE(watch.isModified(file_.c_str()));

  EXPECT_EQ(-1, KTRPathModTime::modify(missing_.c_str()));
  EXPECT_NE(0, ::access(missing_.c_str(), F_OK)) << "modify must not create the file";
  EXPECT_EQ(-1, KTRPathModTime::modify(dir_.path().c_str())) << "a directory cannot be opened for writing";
}

TEST(KTREnvTest, ViewOfAnotherRecordSharesItsConfigurations) {
  MBQ::MBQEnv source(MBQ::MBQEID("src"), configWithCtid("101"));
  auto plain = std::make_shared<MBQ::MBQEnvConfig>();
  source.setConfig(plain);
  source.setParentEID(MBQ::MBQEID("node"));
  source.setStatus(MBQ::MBQEnvStatus(3, 42));
  for (int reason = 0; reason < MBQ::MBQEnv::kAlertReasons; ++reason) source.setAlertType(reason, 10 + reason);
  const long virtualOwners = source.getVirtualConfig().use_count();

  {
    const KTREnv view(source);
    EXPECT_EQ(source.getEID(), view.getEID());
    EXPECT_EQ(source.getParentEID(), view.getParentEID());
    EXPECT_EQ(source.getStatus(), view.getStatus());
    for (int reason = 0; reason < MBQ::MBQEnv::kAlertReasons; ++reason)
      EXPECT_EQ(10 + reason, view.getAlertType(reason)) << reason;
    EXPECT_EQ(source.getVirtualConfig().get(), view.getVirtualConfig().get());
    EXPECT_EQ(plain.get(), view.getConfig().get());
    EXPECT_EQ(virtualOwners, source.getVirtualConfig().use_count()) << "the view must not own the source's records";
    EXPECT_EQ("#101", view.getTitle());

    plain->setName(std::string("renamed"));
    EXPECT_EQ("renamed", view.getTitle()) << "a change to the source's configuration shows in the view";
  }
  MBQ::MBQOptionalProperty<std::string> name;
  ASSERT_EQ(0, plain->getName(name)) << "the source's configuration survives the view";

  const KTREnv bare{MBQ::MBQEnv()};
  EXPECT_EQ(nullptr, bare.getVirtualConfig());
  EXPECT_EQ(nullptr, bare.getConfig());
}

TEST(KTREnvTest, IdOfAPlainVirtualConfigurationIsFoundToo) {
  // A record read while no factory knew the technology holds a plain MBQVEnvConfig.
  const auto technology = configWithCtid("202");
  auto plainVirtual = std::make_shared<MBQ::MBQVEnvConfig>(static_cast<const MBQ::MBQEnvConfig&>(*technology));
  MBQ::MBQEnv source(MBQ::MBQEID("src"), plainVirtual);
  const KTREnv view(source);
  EXPECT_EQ("#202", view.getTitle());
  EXPECT_EQ(202u, view.getSortKey());
  EXPECT_TRUE(MatchVeid(CtidWrapper(202u))(std::make_shared<MBQ::MBQEnv>(source)));
}

TEST(KTREnvTest, MatchVeidAndParent) {
  // Records under "node".
  const auto record = [](std::shared_ptr<KTREnvConfig> config) -> std::shared_ptr<const MBQ::MBQEnv> {
    auto env = std::make_shared<KTREnv>(MBQ::MBQEID("e"), config);
    env->setParentEID(MBQ::MBQEID("node"));
    return env;
  };
  auto emptyConfig = std::make_shared<KTREnvConfig>();
  emptyConfig->initMsg();
  const auto withId = record(configWithCtid("101"));
  // Ids are equal when their texts are: "0101" names another container than 101.
  const auto paddedId = record(configWithCtid("0101"));

  struct Case {
    const char* what;
    std::shared_ptr<const MBQ::MBQEnv> env;
    CtidWrapper ctid;
    bool expected;
  };
  const Case cases[] = {
      {"same id", withId, CtidWrapper(101u), true},
      {"same id as text", withId, CtidWrapper(std::string("101")), true},
      {"other id", withId, CtidWrapper(102u), false},
      {"same number, other text", paddedId, CtidWrapper(101u), false},
      {"same text", paddedId, CtidWrapper(std::string("0101")), true},
      {"no configuration", record(nullptr), CtidWrapper(0u), false},
      {"no id is not id 0", record(emptyConfig), CtidWrapper(0u), false},
      {"no record", nullptr, CtidWrapper(0u), false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.expected, MatchVeid(c.ctid)(c.env)) << c.what;
    EXPECT_EQ(c.expected, MatchVeidParent(MBQ::MBQEID("node"), c.ctid)(c.env)) << c.what;
  }
  EXPECT_FALSE(MatchVeidParent(MBQ::MBQEID("other"), CtidWrapper(101u))(withId));
  EXPECT_FALSE(MatchVeidParent(MBQ::MBQEID(), CtidWrapper(101u))(withId));
}

// The derived-record registrations are the catalog's (KTRRecordCatalogTest).
TEST(KTREnvTest, TechnologyIsRegisteredUnderItsKey) {
  EXPECT_NE(nullptr, std::dynamic_pointer_cast<KTREnv>(MBQ::MBQEnvFactory::getInstance().createEnv("quellix")));
  auto child = MBQ::MBQEnvFactory::getInstance().findEnv(KTREnv::type);
  ASSERT_NE(nullptr, child);
  EXPECT_NE(nullptr, std::dynamic_pointer_cast<KTREnvConfig>(child->createVirtualConfig()));
}

}  // namespace
}  // namespace KTR
