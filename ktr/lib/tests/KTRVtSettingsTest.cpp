#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRVPSType.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// here what a reader does with parts that are empty, broken or left out.

namespace KTR {
namespace {

using MBQ::MBQOptionalProperty;
using Services = std::vector<KTRRedirectService>;

class KTRVtSettingsTest : public testing::RecordTest {};

KTRVtSettings fullSettings() {
  KTRVtSettings settings;
  settings.setSettingsVersion(3);
  settings.setLockDir(std::string("/run/quellix/lock"));
  settings.setSettingsMap({{"a", "1"}, {"b", "2"}});
  settings.setOfflineServices(Services{KTRRedirectService("webpanel", 8080, MBQ::MBQEID("sve-1"), true)});
  settings.setQoSes({MBQ::MBQQoS("numproc", 100, 200)});
  return settings;
}

TEST_F(KTRVtSettingsTest, OfflineServicesTellEmptyFromUnspecified) {
  struct Case {
    const char* what;
    MBQOptionalProperty<Services> services;
    bool marker;
    long items;
  };
  const Case cases[] = {
      {"unspecified", {}, false, 0},
      {"specified, empty", Services{}, true, 0},
      {"one service", Services{KTRRedirectService("a", 1, MBQ::MBQEID("s"))}, false, 1},
  };
  for (const Case& c : cases) {
    KTRVtSettings settings;
    settings.setOfflineServices(c.services);
    const std::string text = write(settings);
    const Texts names = childNames(at(text));
    EXPECT_EQ(c.marker, at(text).hasChild("no_offline_service")) << c.what;
    EXPECT_EQ(c.items, std::count(names.begin(), names.end(), "offline_service")) << c.what;

    KTRVtSettings back = fullSettings();
    ASSERT_EQ(0, read(text, back)) << c.what;
    EXPECT_EQ(c.services, back.getOfflineServices()) << c.what;
  }
}

TEST_F(KTRVtSettingsTest, BrokenOfflineServiceLeavesTheListUnspecified) {
  KTRVtSettings settings;
  settings.setOfflineServices(Services{KTRRedirectService("a", 1, MBQ::MBQEID("s"))});
  KTRVtSettings back;
  EXPECT_EQ(0, read(replaced(write(settings), "<ktr:port>1</ktr:port>", ""), back))
      << "the list's failure is not the record's";
  EXPECT_FALSE(back.getOfflineServices().isSpecified());
}

TEST_F(KTRVtSettingsTest, SettingsMapItemsMayLackEitherPart) {
  struct Case {
    const char* what;
    const char* items;
    std::map<std::string, std::string> expected;
  };
  const Case cases[] = {
      {"no map at all", "", {}},
      {"key without value", "<item><name>k</name></item>", {{"k", ""}}},
      {"value without key", "<item><value>v</value></item>", {{"", "v"}}},
      {"repeated key keeps the first value",
       "<item><name>k</name><value>1</value></item><item><name>k</name><value>2</value></item>", {{"k", "1"}}},
  };
  for (const Case& c : cases) {
    KTRVtSettings back = fullSettings();
    ASSERT_EQ(0, read(doc(std::string(c.items) + "<qoses/><settings_version>1</settings_version>"), back)) << c.what;
    EXPECT_EQ(c.expected, back.getSettingsMap()) << c.what;
    EXPECT_TRUE(back.getQoSes().empty()) << c.what << ": the old resources are dropped too";
  }
}

TEST_F(KTRVtSettingsTest, ResourcesAreReadWithoutFailingTheRecord) {
  const std::string a = "<qos_value><id>a</id><limit>1</limit></qos_value>";
  struct Case {
    std::string qoses;
    std::size_t expected;
  };
  const Case cases[] = {
      {"", 0},
      {"<qoses/>", 0},
      {"<qoses>" + a + "<qos_value><id>b</id><limit>2</limit></qos_value></qoses>", 2},
      {"<qoses>" + a + "<qos_value><id>b</id></qos_value></qoses>", 1},  // the broken second one ends the list
  };
  for (const Case& c : cases) {
    KTRVtSettings back;
    ASSERT_EQ(0, read(doc(c.qoses + "<settings_version>1</settings_version>"), back)) << c.qoses;
    EXPECT_EQ(c.expected, back.getQoSes().size()) << c.qoses;
  }
}

TEST_F(KTRVtSettingsTest, OwnElementsAreReadBeforeTheBasePartDecidesTheResult) {
  KTRVtSettings back;
  EXPECT_EQ(-1, read(replaced(write(fullSettings()), "<mbq:settings_version>3</mbq:settings_version>", ""), back));
  EXPECT_EQ(MBQOptionalProperty<std::string>(std::string("/run/quellix/lock")), back.getLockDir());
}

TEST_F(KTRVtSettingsTest, VtInfoWithoutItemsDropsTheOldOnes) {
  KTRVtInfo info;
  info.setItems({"stale"});
  ASSERT_EQ(0, read(doc("<vt_name>quellix</vt_name>"), info));
  EXPECT_TRUE(info.getItems().empty());
}

TEST_F(KTRVtSettingsTest, ContainerTypeTextForm) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "vps-type")) {
    KTRVPSType type(4, CtidWrapper(4u));
    const bool refused = c.at(1) == "refused";
    EXPECT_EQ(refused ? -1 : 0, type.fromString(c[0])) << c[0];
    EXPECT_EQ(refused ? 4 : std::stoi(c[1]), type.getType()) << c[0];
    EXPECT_EQ(refused ? "4" : c.at(2), type.getCtid().toString()) << c[0];
  }
  EXPECT_EQ("1:101", KTRVPSType(1, CtidWrapper(101u)).toString());
  EXPECT_EQ("3", KTRVPSType(3, CtidWrapper(std::string())).toString());
}

}  // namespace
}  // namespace KTR
