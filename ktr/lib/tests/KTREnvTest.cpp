#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <boost/date_time/posix_time/posix_time.hpp>

#include "KTRFunctionality/KTREnv.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQCore/MBQLogger.h"
#include "MBQFunctionalityCore/MBQEnvFactory.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

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

std::vector<MBQ::MBQIPAddress> addresses(std::initializer_list<const char*> texts) {
  std::vector<MBQ::MBQIPAddress> list;
  for (const char* text : texts) list.emplace_back(text);
  return list;
}

using testing::LogCapture;

// ---------------------------------------------------------------- title and sort key

TEST(KTREnvTest, TitleTakesTheFirstRuleThatGivesAValue) {
  struct Side {
    const char* name = nullptr;
    const char* hostname = nullptr;
    std::vector<MBQ::MBQIPAddress> addresses;
    bool addressesSpecified = false;
  };
  struct Case {
    const char* what;
    Side virtualSide;
    Side plainSide;
    const char* ctid;  // nullptr: no id at all
    int veid;          // used when ctid is nullptr and veid >= 0
    const char* expected;
  };
  const auto withAddresses = [](std::vector<MBQ::MBQIPAddress> list) {
    Side side;
    side.addresses = list;
    side.addressesSpecified = true;
    return side;
  };
  const Side none;
  const Side named{"vname", "vhost", {}, false};
  const Side plainNamed{"pname", "phost", {}, false};
  const Side hostOnly{nullptr, "host", {}, false};
  const Side emptyName{"", "host", {}, false};
  const std::vector<Case> cases = {
      {"virtual name first", named, plainNamed, "101", -1, "vname"},
      {"plain name before any hostname", hostOnly, plainNamed, "101", -1, "pname"},
      {"an empty name is still a name", emptyName, plainNamed, "101", -1, ""},
      {"virtual hostname", hostOnly, none, "101", -1, "host"},
      {"plain hostname", none, Side{nullptr, "phost", {}, false}, "101", -1, "phost"},
      {"container id", none, none, "101", -1, "#101"},
      {"number alone", none, none, nullptr, 7, "#7"},
      {"uuid", none, none, kUuid, -1, "#00112233-4455-6677-8899-aabbccddeeff"},
      {"id wins over addresses", withAddresses(addresses({"10.0.0.5"})), none, "101", -1, "#101"},
      {"first virtual address", withAddresses(addresses({"10.0.0.5/24", "10.0.0.6"})),
       withAddresses(addresses({"10.9.9.9"})), nullptr, -1, "10.0.0.5"},
      {"empty virtual list falls through", withAddresses({}), withAddresses(addresses({"10.9.9.9"})), nullptr, -1,
       "10.9.9.9"},
      {"nothing left but the eid", none, none, nullptr, -1, "eid-1"},
  };
  for (const Case& c : cases) {
    auto virtualConfig = std::make_shared<KTREnvConfig>();
    auto plainConfig = std::make_shared<MBQ::MBQEnvConfig>();
    const auto fill = [](MBQ::MBQEnvConfig& config, const Side& side) {
      config.initMsg();
      if (side.name) config.setName(std::string(side.name));
      if (side.hostname) config.setHostname(std::string(side.hostname));
      if (side.addressesSpecified) config.setAddresses(side.addresses);
    };
    fill(*virtualConfig, c.virtualSide);
    fill(*plainConfig, c.plainSide);
    if (c.ctid) virtualConfig->setVeid(CtidWrapper(std::string(c.ctid)));
    if (!c.ctid && c.veid >= 0) virtualConfig->setVeid(c.veid);
    KTREnv env(MBQ::MBQEID("eid-1"), virtualConfig);
    env.setConfig(plainConfig);
    EXPECT_EQ(c.expected, env.getTitle()) << c.what;
  }
}

TEST(KTREnvTest, TitleWithoutConfigurationsIsTheEid) {
  EXPECT_EQ("eid-2", KTREnv(MBQ::MBQEID("eid-2"), nullptr).getTitle());
  KTREnv env(MBQ::MBQEID("eid-3"), nullptr);
  auto plain = std::make_shared<MBQ::MBQEnvConfig>();
  plain->setHostname(std::string("plain-host"));
  env.setConfig(plain);
  EXPECT_EQ("plain-host", env.getTitle());
}

TEST(KTREnvTest, SortKeyIsTheContainerIdsKey) {
  struct Case {
    const char* ctid;
    std::uint64_t expected;
  };
  const Case cases[] = {
      {"101", 101},
      {"0", 0},
      {kUuid, uuidKey()},
      {"not-a-uuid", 0},
  };
  for (const Case& c : cases) {
    auto config = std::make_shared<KTREnvConfig>();
    config->setVeid(CtidWrapper(std::string(c.ctid)));
    LogCapture log;
    EXPECT_EQ(c.expected, KTREnv(MBQ::MBQEID("e"), config).getSortKey()) << c.ctid;
    EXPECT_EQ("", log.text()) << c.ctid;
  }
}

TEST(KTREnvTest, SortKeyWithoutIdLogsAndSortsAsZero) {
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

// ---------------------------------------------------------------- container ids

TEST(KTREnvTest, CtidWrapperKeepsTextAndNumber) {
  struct Case {
    std::string input;
    const char* text;
    unsigned id;
    bool numeric;
    std::uint64_t sortKey;
  };
  const std::string forty(40, '7');
  const std::string thirtySeven(37, '7');
  const Case cases[] = {
      {"101", "101", 101, true, 101},
      {"0", "0", 0, true, 0},
      {"", "", 0, true, 0},
      {"abc", "abc", 0, true, 0},
      {"4294967295", "4294967295", 4294967295u, true, 4294967295u},
      {"4294967296", "4294967296", 0, true, 0},
      {kUuid, kUuid, 0, false, uuidKey()},
      {"a-b", "a-b", 0, false, 0},
      {forty, thirtySeven.c_str(), 0, true, 0},
  };
  for (const Case& c : cases) {
    const CtidWrapper ctid(c.input);
    EXPECT_STREQ(c.text, ctid.toString()) << c.input;
    EXPECT_EQ(c.id, ctid.getId()) << c.input;
    EXPECT_EQ(c.numeric, ctid.hasNumericId()) << c.input;
    EXPECT_EQ(c.sortKey, ctid.getSortKey()) << c.input;
  }
  EXPECT_EQ(37u, std::strlen(CtidWrapper(forty).toString()));
  EXPECT_STREQ("0", CtidWrapper(0u).toString());
  EXPECT_TRUE(CtidWrapper(0u).hasNumericId());
  EXPECT_EQ(0u, CtidWrapper(0u).getSortKey());
}

// ---------------------------------------------------------------- file times

class KTRPathModTimeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/ktrenvtest.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    dir_ = pattern;
    file_ = dir_ + "/ve.conf";
    FILE* f = std::fopen(file_.c_str(), "w");
    ASSERT_NE(nullptr, f);
    std::fclose(f);
  }
  void TearDown() override {
    ::unlink(file_.c_str());
    ::rmdir(dir_.c_str());
  }
  void setMTime(time_t seconds, long micros) {
    struct timeval times[2] = {{seconds, micros}, {seconds, micros}};
    ASSERT_EQ(0, ::utimes(file_.c_str(), times));
  }

  std::string dir_;
  std::string file_;
};

TEST_F(KTRPathModTimeTest, MissingFileIsAlwaysModified) {
  KTRPathModTime watch;
  const std::string missing = dir_ + "/none";
  EXPECT_TRUE(watch.isModified(missing.c_str()));
  EXPECT_TRUE(watch.isModified(missing.c_str()));
  EXPECT_TRUE(watch.getModTime().is_not_a_date_time());

  setMTime(1000000000, 250000);
  ASSERT_TRUE(watch.isModified(file_.c_str()));
  const pt::ptime remembered = watch.getModTime();
  EXPECT_TRUE(watch.isModified(missing.c_str()));
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

  const std::string missing = dir_ + "/none";
  EXPECT_EQ(-1, KTRPathModTime::modify(missing.c_str()));
  EXPECT_NE(0, ::access(missing.c_str(), F_OK)) << "modify must not create the file";
  EXPECT_EQ(-1, KTRPathModTime::modify(dir_.c_str())) << "a directory cannot be opened for writing";
}

// ---------------------------------------------------------------- records built from others

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

// ---------------------------------------------------------------- messages and registration

TEST(KTREnvTest, UnknownRecordTypeDoesNotRead) {
  MBQ::MBQMessage message;
  ASSERT_EQ(0, message.parse("<m xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:k='" +
                             std::string(MBQ::kTypesNamespace) + "'><env xsi:type='k:otherType'><eid>e</eid></env></m>"));
  std::shared_ptr<MBQ::MBQEnv> back;
  EXPECT_EQ(-1, message.iterator()->getObject(back, MBQ::MBQReaderDerivedValid<MBQ::MBQEnv>(false), "env"));
  EXPECT_EQ(nullptr, back);
}

TEST(KTREnvTest, TechnologyIsRegisteredUnderItsKey) {
  EXPECT_STREQ("quellix", KTREnv::type.c_str());
  EXPECT_EQ("quellix", KTREnv::typeName);
  auto created = MBQ::MBQEnvFactory::getInstance().createEnv("quellix");
  EXPECT_NE(nullptr, std::dynamic_pointer_cast<KTREnv>(created));
  auto child = MBQ::MBQEnvFactory::getInstance().findEnv(KTREnv::type);
  ASSERT_NE(nullptr, child);
  EXPECT_NE(nullptr, std::dynamic_pointer_cast<KTREnvConfig>(child->createVirtualConfig()));

  using ConfigFactory = MBQ::MBQDerivedParserFactory<MBQ::MBQEnvConfig>;
  const auto* factory = ConfigFactory::findByName(std::string(MBQ::kTypesNamespace) + ":venv_configType");
  ASSERT_NE(nullptr, factory);
  std::unique_ptr<MBQ::MBQEnvConfig> made(factory->create());
  EXPECT_NE(nullptr, dynamic_cast<KTREnvConfig*>(made.get()));
  const std::string types = std::string(MBQ::kTypesNamespace) + ":";
  EXPECT_NE(nullptr, MBQ::MBQDerivedParserFactory<MBQ::MBQVtInfo>::findByName(types + "vt_infoType"));
  EXPECT_NE(nullptr, MBQ::MBQDerivedParserFactory<MBQ::MBQVtSettings>::findByName(types + "vt_settingsType"));
}

}  // namespace
}  // namespace KTR
