#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRRecordTesting.h"

namespace KTR {
namespace {

using MBQ::MBQOptionalProperty;

class KTREnvConfigTest : public testing::RecordTest {};

TEST_F(KTREnvConfigTest, GettersWithoutSubtreeFailAndLeaveTheProperty) {
  KTREnvConfig config;
  MBQOptionalProperty<bool> onBoot(true);
  MBQOptionalProperty<std::set<std::string>> roles(std::set<std::string>{"web"});
  MBQOptionalProperty<std::map<std::string, std::string>> features;
  MBQOptionalProperty<std::set<MBQ::MBQQoS>> qoses(std::set<MBQ::MBQQoS>{MBQ::MBQQoS("numproc", 1, 2)});
  CtidWrapper ctid(5);
  int veid = 3;
  EXPECT_EQ(-1, config.getOnBoot(onBoot));
  EXPECT_EQ(-1, config.getQoSes(qoses));
  EXPECT_EQ(1u, qoses.get().size());
  EXPECT_EQ(-1, config.getServerRoles(roles));
  EXPECT_EQ(-1, config.getFeatures(features));
  EXPECT_EQ(-1, config.getVeid(ctid));
  EXPECT_EQ(-1, config.getVeid(veid));
  EXPECT_TRUE(onBoot.isSpecified());
  EXPECT_EQ(1u, roles.get().size());
  EXPECT_STREQ("5", ctid.toString());
  std::shared_ptr<HardDisk::List::Base> disks;
  EXPECT_EQ(0, config.getHardDisks(disks)) << "no subtree means no disks, not an error";
}

TEST_F(KTREnvConfigTest, ContainerIdComesFromCtidBeforeVeid) {
  KTREnvConfig numberOnly;
  numberOnly.setVeid(101);
  CtidWrapper ctid;
  ASSERT_EQ(0, numberOnly.getVeid(ctid));
  EXPECT_STREQ("101", ctid.toString());
  EXPECT_EQ(101u, ctid.getId());

  KTREnvConfig both;
  both.setVeid(7);
  both.msg()->setValue("ctid", std::string("abc"));
  ASSERT_EQ(0, both.getVeid(ctid));
  EXPECT_STREQ("abc", ctid.toString());

  KTREnvConfig uuid;
  ASSERT_EQ(0, uuid.setVeid(CtidWrapper(std::string("6a1f6f0e-8c2b-4d4e-9a43-0e5b2f3c9d11"))));
  ASSERT_EQ(0, uuid.getVeid(ctid));
  EXPECT_STREQ("6a1f6f0e-8c2b-4d4e-9a43-0e5b2f3c9d11", ctid.toString());
  int number = -1;
  ASSERT_EQ(0, uuid.getVeid(number));
  EXPECT_EQ(0, number) << "a UUID id writes 0 under veid";
  ASSERT_EQ(0, uuid.setVeid(CtidWrapper(102)));
  ASSERT_EQ(0, uuid.getVeid(ctid));
  EXPECT_STREQ("102", ctid.toString()) << "a new id replaces both elements";

  KTREnvConfig empty;
  empty.initMsg();
  EXPECT_EQ(-1, empty.getVeid(ctid)) << "neither ctid nor veid";
}

TEST_F(KTREnvConfigTest, SettingUnspecifiedPropertyRemovesItsElement) {
  KTREnvConfig config;
  config.setUUID(std::string("u-1"));
  config.setOnBoot(true);
  config.setServerRoles(std::set<std::string>{"dns", "web"});
  config.setFeatures(std::map<std::string, std::string>{{"nfs", "on"}});
  config.setUUID(MBQOptionalProperty<std::string>());
  config.setOnBoot(MBQOptionalProperty<bool>());
  config.setServerRoles(MBQOptionalProperty<std::set<std::string>>());
  config.setFeatures(MBQOptionalProperty<std::map<std::string, std::string>>());
  EXPECT_TRUE(childNames(at(write(config))).empty());
  MBQOptionalProperty<std::string> uuid(std::string("stale"));
  ASSERT_EQ(0, config.getUUID(uuid));
  EXPECT_FALSE(uuid.isSpecified());
}

TEST_F(KTREnvConfigTest, ElementsFollowTheFixedOrderWhateverTheSetterOrder) {
  KTREnvConfig config;
  config.setName(std::string("web01"));
  config.setDevNodes(std::map<std::string, std::string>{{"net/tun", "rw"}});
  config.setSample(false);
  config.setUUID(std::string("u"));
  config.setDisabled(false);
  config.setVERootVar(std::string("/var/lib/quellix/root/$VEID"));
  config.setVeid(CtidWrapper(101));
  EXPECT_EQ((Texts{"veid", "ctid", "ve_root", "disabled", "uuid", "is_sample", "devnodes", "name"}),
            childNames(at(write(config))));
}

TEST_F(KTREnvConfigTest, VeidSubstitutionReplacesBothSpellings) {
  // Container id, text, the text with the id put in.
  const char* const cases[][3] = {
      {"101", "/data/root/$VEID", "/data/root/101"},
      {"101", "${VEID}/x/$VEID", "101/x/101"},
      {"101", "$VEID$VEID", "101101"},
      {"101", "no id here", "no id here"},
      {"101", "$VEI", "$VEI"},
      {"$VEID", "$VEID", "$VEID"},
  };
  for (const auto& [ctid, text, expected] : cases) {
    std::string value = text;
    KTREnvConfig::veidSubstitute(CtidWrapper(std::string(ctid)), value);
    EXPECT_EQ(expected, value) << text;
  }
}

TEST_F(KTREnvConfigTest, ExpandedPathsNeedTheVariableAndTheId) {
  KTREnvConfig config;
  std::string path = "unchanged";
  config.setVERootVar(std::string("/var/lib/quellix/root/$VEID"));
  EXPECT_EQ(-1, config.getVERoot(path)) << "no container id yet";
  EXPECT_EQ("unchanged", path);
  config.setVeid(101);
  ASSERT_EQ(0, config.getVERoot(path));
  EXPECT_EQ("/var/lib/quellix/root/101", path);
  EXPECT_EQ(-1, config.getVEPrivate(path));
  EXPECT_EQ("/var/lib/quellix/root/101", path);
}

// Round trips of the record are the catalog's (KTRRecordCatalogTest), which takes one child
// away at a time; an empty list is not an absent one.
TEST_F(KTREnvConfigTest, AnEmptyListIsWrittenAndReadAsSpecified) {
  KTREnvConfig config;
  config.setWinsServers(std::vector<MBQ::MBQIPAddress>{});
  KTREnvConfig back;
  ASSERT_EQ(0, read(write(config), back));
  MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>> wins;
  MBQOptionalProperty<std::vector<MBQ::MBQInterfaceRate>> rates;
  ASSERT_EQ(0, back.getWinsServers(wins));
  ASSERT_EQ(0, back.getRatesList(rates));
  EXPECT_TRUE(wins.isSpecified());
  EXPECT_TRUE(wins.get().empty());
  EXPECT_FALSE(rates.isSpecified());
}

TEST_F(KTREnvConfigTest, BrokenListItemFailsTheGetterButKeepsEarlierItems) {
  KTREnvConfig config;
  ASSERT_EQ(0, read(doc("<interface_rate><interface>eth0</interface><class>1</class><rate>8000</rate></interface_rate>"
                        "<interface_rate><interface>eth1</interface></interface_rate>"),
                    config));
  MBQOptionalProperty<std::vector<MBQ::MBQInterfaceRate>> rates;
  EXPECT_EQ(-1, config.getRatesList(rates));
  EXPECT_EQ(1u, rates.get().size());
}

TEST_F(KTREnvConfigTest, FeatureItemsNeedAValueButNotAKey) {
  const std::string keyless = "<features><value>keyless</value></features>";
  KTREnvConfig config;
  ASSERT_EQ(0, read(doc(keyless), config));
  MBQOptionalProperty<std::map<std::string, std::string>> features(std::map<std::string, std::string>{{"s", "x"}});
  ASSERT_EQ(0, config.getDevNodes(features));  // none: read as unspecified, not as a failure
  EXPECT_FALSE(features.isSpecified());
  ASSERT_EQ(0, config.getFeatures(features));
  EXPECT_TRUE(features.isSpecified());
  EXPECT_EQ((std::map<std::string, std::string>{{"", "keyless"}}), features.get());
  ASSERT_EQ(0, read(doc(keyless + "<features><key>valueless</key></features>"), config));
  EXPECT_EQ(-1, config.getFeatures(features));
}

TEST_F(KTREnvConfigTest, CopiesAreIndependent) {
  KTREnvConfig original;
  original.setHostname(std::string("a.example"));
  KTREnvConfig copy(original);
  copy.setHostname(std::string("b.example"));
  MBQOptionalProperty<std::string> hostname;
  original.getHostname(hostname);
  EXPECT_EQ("a.example", hostname.get());
}

// The first calls race to build the order table; run in a fresh process so that no earlier
// test has built it already.
TEST(KTREnvConfigDeathTest, ThreadsRacingOnTheFirstPositionLookupAgree) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto race = [] {
    std::vector<std::thread> threads;
    std::vector<int> results(8, -2);
    for (int t = 0; t < 8; ++t)
      threads.emplace_back([&results, t] { results[t] = KTREnvConfig().getPositionOfTheTag("disk_list"); });
    for (auto& thread : threads) thread.join();
    for (int result : results)
      if (result != 31) std::_Exit(1);
    std::_Exit(0);
  };
  EXPECT_EXIT(race(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace KTR
