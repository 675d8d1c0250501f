#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <boost/date_time/posix_time/posix_time.hpp>

#include "KTRFunctionality/KTREnv.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQFunctionalityCore/MBQEnvFactory.h"

namespace KTR {
namespace {

using MBQ::MBQOptionalProperty;
namespace pt = boost::posix_time;

constexpr const char* kUuid = "00112233-4455-6677-8899-aabbccddeeff";

// The UUID's first eight bytes as one host-order number, written out by hand.
std::uint64_t uuidKey() {
  const unsigned char bytes[8] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77};
  std::uint64_t key = 0;
  std::memcpy(&key, bytes, sizeof key);
  return key;
}

using testing::LogCapture;

TEST(KTREnvTest, TitleTakesTheFirstRuleThatGivesAValue) {
  struct Side {
    const char* name = nullptr;
    const char* hostname = nullptr;
    std::vector<const char*>* addresses = nullptr;  // nullptr: none given
  };
  std::vector<const char*> two = {"10.0.0.5/24", "10.0.0.6"}, other = {"10.9.9.9"}, empty;
  struct Case {
    const char* what;
    Side virtualSide, plainSide;
    const char* ctid;  // nullptr: no id at all, or the number `veid` when that is not negative
    int veid;
    const char* expected;
    bool withVirtual = true;
  };
  const Case cases[] = {
      {"virtual name first", {"vname", "vhost"}, {"pname", "phost"}, "101", -1, "vname"},
      {"plain name before any hostname", {nullptr, "host"}, {"pname", "phost"}, "101", -1, "pname"},
      {"an empty name is still a name", {"", "host"}, {"pname", "phost"}, "101", -1, ""},
      {"virtual hostname", {nullptr, "host"}, {}, "101", -1, "host"},
      {"plain hostname", {}, {nullptr, "phost"}, "101", -1, "phost"},
      {"container id", {}, {}, "101", -1, "#101"},
      {"number alone", {}, {}, nullptr, 7, "#7"},
      {"uuid", {}, {}, kUuid, -1, "#00112233-4455-6677-8899-aabbccddeeff"},
      {"id wins over addresses", {nullptr, nullptr, &other}, {}, "101", -1, "#101"},
      {"first virtual address", {nullptr, nullptr, &two}, {nullptr, nullptr, &other}, nullptr, -1, "10.0.0.5"},
      {"empty virtual list falls through", {nullptr, nullptr, &empty}, {nullptr, nullptr, &other}, nullptr, -1,
       "10.9.9.9"},
      {"nothing left but the eid", {}, {}, nullptr, -1, "eid-1"},
      {"no virtual configuration", {}, {nullptr, "phost"}, nullptr, -1, "phost", false},
      {"no configuration at all", {}, {}, nullptr, -1, "eid-1", false},
  };
  const auto fill = [](MBQ::MBQEnvConfig& config, const Side& side) {
    config.initMsg();
    if (side.name) config.setName(std::string(side.name));
    if (side.hostname) config.setHostname(std::string(side.hostname));
    if (side.addresses)
      config.setAddresses(std::vector<MBQ::MBQIPAddress>(side.addresses->begin(), side.addresses->end()));
  };
  for (const Case& c : cases) {
    auto virtualConfig = std::make_shared<KTREnvConfig>();
    auto plainConfig = std::make_shared<MBQ::MBQEnvConfig>();
    fill(*virtualConfig, c.virtualSide);
    fill(*plainConfig, c.plainSide);
    if (c.ctid) virtualConfig->setVeid(CtidWrapper(std::string(c.ctid)));
    if (!c.ctid && c.veid >= 0) virtualConfig->setVeid(c.veid);
    KTREnv env(MBQ::MBQEID("eid-1"), c.withVirtual ? virtualConfig : nullptr);
    if (c.withVirtual || c.plainSide.hostname) env.setConfig(plainConfig);
    EXPECT_EQ(c.expected, env.getTitle()) << c.what;
  }
}

TEST(KTREnvTest, SortKeyIsTheContainerIdsKeyAndWithoutIdLogsAndSortsAsZero) {
  for (const auto& [ctid, key] : {std::pair<const char*, std::uint64_t>{"101", 101}, {kUuid, uuidKey()}}) {
    auto config = std::make_shared<KTREnvConfig>();
    config->setVeid(CtidWrapper(std::string(ctid)));
    LogCapture log;
    EXPECT_EQ(key, KTREnv(MBQ::MBQEID("e"), config).getSortKey()) << ctid;
    EXPECT_EQ("", log.text()) << ctid;
  }
  auto empty = std::make_shared<KTREnvConfig>();
  empty->initMsg();
  for (const auto& config : {std::shared_ptr<KTREnvConfig>(), std::make_shared<KTREnvConfig>(), empty}) {
    LogCapture log;
    EXPECT_EQ(0u, KTREnv(MBQ::MBQEID("e"), config).getSortKey());
    const std::string text = log.text();
    EXPECT_NE(std::string::npos, text.find("ERROR")) << text;
    EXPECT_NE(std::string::npos, text.find("KTRFunctionality")) << text;
    EXPECT_NE(std::string::npos, text.find("[getSortKey] Failed to get veid")) << text;
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

TEST_F(KTRPathModTimeTest, MissingFileIsAlwaysModified) {
  KTRPathModTime watch;
  EXPECT_TRUE(watch.isModified(missing_.c_str()));
  EXPECT_TRUE(watch.isModified(missing_.c_str()));
  EXPECT_TRUE(watch.getModTime().is_not_a_date_time());

  setMTime(1000000000, 250000);
  ASSERT_TRUE(watch.isModified(file_.c_str()));
  const pt::ptime remembered = watch.getModTime();
  EXPECT_TRUE(watch.isModified(missing_.c_str()));
  EXPECT_EQ(remembered, watch.getModTime()) << "a failed stat keeps the remembered time";
}

TEST_F(KTRPathModTimeTest, UnchangedFileIsModifiedOnceThenNot) {
  KTRPathModTime watch;
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

std::shared_ptr<KTREnvConfig> configWithCtid(const char* ctid) {
  auto config = std::make_shared<KTREnvConfig>();
  config->setVeid(CtidWrapper(std::string(ctid)));
  return config;
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
  auto env = std::make_shared<KTREnv>(MBQ::MBQEID("e"), configWithCtid("101"));
  env->setParentEID(MBQ::MBQEID("node"));
  const std::shared_ptr<const MBQ::MBQEnv> withId = env;
  const std::shared_ptr<const MBQ::MBQEnv> withoutConfig = std::make_shared<KTREnv>(MBQ::MBQEID("e"), nullptr);
  auto emptyConfig = std::make_shared<KTREnvConfig>();
  emptyConfig->initMsg();
  const std::shared_ptr<const MBQ::MBQEnv> withoutId = std::make_shared<KTREnv>(MBQ::MBQEID("e"), emptyConfig);
  // Ids are equal when their texts are: "0101" names another container than 101.
  auto padded = std::make_shared<KTREnv>(MBQ::MBQEID("e"), configWithCtid("0101"));
  padded->setParentEID(MBQ::MBQEID("node"));
  const std::shared_ptr<const MBQ::MBQEnv> paddedId = padded;

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
      {"no configuration", withoutConfig, CtidWrapper(0u), false},
      {"no id is not id 0", withoutId, CtidWrapper(0u), false},
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
