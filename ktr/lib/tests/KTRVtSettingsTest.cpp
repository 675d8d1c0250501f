#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRVPSType.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// here that a read replaces what the record held, and what a failed read leaves in it.

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

// A read replaces the record's lists, also those the message says nothing of.
TEST_F(KTRVtSettingsTest, ReadingReplacesTheLists) {
  struct Case {
    const char* body;
    MBQOptionalProperty<Services> services;
    std::map<std::string, std::string> settings;
  };
  const Case cases[] = {
      {"", {}, {}},
      {"<no_offline_service/>", Services{}, {}},
      {"<item><name>k</name></item><offline_service><name>a</name><port>1</port><eid>s</eid></offline_service>",
       Services{KTRRedirectService("a", 1, MBQ::MBQEID("s"))}, {{"k", ""}}},
  };
  for (const Case& c : cases) {
    KTRVtSettings back = fullSettings();
    ASSERT_EQ(0, read(doc(std::string(c.body) + "<qoses/><settings_version>1</settings_version>"), back)) << c.body;
    EXPECT_EQ(c.services, back.getOfflineServices()) << c.body;
    EXPECT_EQ(c.settings, back.getSettingsMap()) << c.body;
    EXPECT_TRUE(back.getQoSes().empty()) << c.body;
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
