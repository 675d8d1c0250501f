#include "KTRFunctionality/KTRUp2date.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>

#include "KTRRecordTesting.h"
#include "MBQFunctionalityCore/MBQPackage.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// here the option tables, the choices between parts and the update registry.

namespace KTR {
namespace {

class KTRUp2dateTest : public testing::RecordTest {};

TEST_F(KTRUp2dateTest, ReadOptionsTakesTheFirstChildsNameOrLeavesTheValue) {
  struct Case {
    const char* body;
    int rc;
    KTRUpdateServiceSettings::CheckDays expected;
  };
  const Case cases[] = {
      {"<monday/>", 0, KTRUpdateServiceSettings::Monday},
      {"<saturday/><sunday/>", 0, KTRUpdateServiceSettings::Saturday},  // first child only
      {"<Monday/>", -1, KTRUpdateServiceSettings::Friday},               // names match exactly
      {"<someday/>", -1, KTRUpdateServiceSettings::Friday},
      {"", -1, KTRUpdateServiceSettings::Friday},
      {"monday", -1, KTRUpdateServiceSettings::Friday},  // text is not a child element
  };
  for (const auto& c : cases) {
    auto value = KTRUpdateServiceSettings::Friday;
    auto& it = at(doc(c.body));
    EXPECT_EQ(c.rc, readOptions(value, it, checkDayOptions())) << c.body;
    EXPECT_EQ(c.expected, value) << c.body;
    EXPECT_EQ("r", it.getName()) << "the cursor ends on the holder";
  }
}

TEST_F(KTRUp2dateTest, WriteOptionsWritesNothingForAValueOutsideTheTable) {
  MBQ::MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(-1, writeOptions(static_cast<KTRUpdateProxySettings::ProxyType>(0), *it, proxyTypeOptions()));
  EXPECT_TRUE(childNames(*it).empty());
  EXPECT_EQ(0, writeOptions(KTRUpdateProxySettings::Custom, *it, proxyTypeOptions()));
  EXPECT_EQ(Texts{"custom"}, childNames(*it));
}

TEST_F(KTRUp2dateTest, ServiceSettingsReadMarkersByPresenceAndNoDayAsNoElement) {
  struct Case {
    const char* body;
    int rc;
    bool autoreboot;
  };
  const Case cases[] = {
      {"<period>5</period>", 0, false},
      {"<autoreboot>0</autoreboot><period>5</period>", 0, true},  // presence, not value
      {"<period>five</period>", -1, false},
      {"<check_period><someday/></check_period><period>5</period>", -1, false},
      {"<check_period/><period>5</period>", -1, false},
  };
  for (const auto& c : cases) {
    KTRUpdateServiceSettings settings;
    EXPECT_EQ(c.rc, read(doc(c.body), settings)) << c.body;
    if (c.rc == 0) {
      EXPECT_EQ(c.autoreboot, settings.getAutoreboot()) << c.body;
    }
  }
  KTRUpdateServiceSettings noDay;
  const std::string text = write(noDay);
  EXPECT_FALSE(at(text).hasChild("check_period"));
  KTRUpdateServiceSettings back;
  back.setCheckDays(KTRUpdateServiceSettings::Friday);
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(0, back.getCheckDays());
}

TEST_F(KTRUp2dateTest, ProxyTypeIsAlwaysWrittenButOptionalOnReading) {
  KTRUpdateProxySettings proxy;
  proxy.setProxyType(static_cast<KTRUpdateProxySettings::ProxyType>(0));
  int rc = 0;
  write(proxy, &rc);
  EXPECT_EQ(-1, rc) << "an unknown type fails the writer";

  KTRUpdateProxySettings kept;
  kept.setProxyType(KTRUpdateProxySettings::Custom);
  EXPECT_EQ(0, read(doc("<conn_param1>h</conn_param1>"), kept));
  EXPECT_EQ(KTRUpdateProxySettings::Custom, kept.getProxyType());
  EXPECT_EQ(-1, read(doc("<type><socks/></type>"), kept));
}

TEST_F(KTRUp2dateTest, InstallTypeOutsideTheTableLeavesAnEmptyHolder) {
  KTRUpdateProduct product;
  product.setName("n");
  product.setInstallType(static_cast<KTRUpdateProduct::InstallType>(9));
  const std::string text = write(product);  // the writer does not fail
  auto& it = at(text);
  ASSERT_EQ(0, it.descend("install_type"));
  EXPECT_TRUE(it.isEmptyElement());
  KTRUpdateProduct back;
  EXPECT_EQ(-1, read(text, back)) << "what was written cannot be read back";
}

TEST_F(KTRUp2dateTest, SrnProductLeavesTheListWhereverItStands) {
  const auto product = [](const char* name, const char* key) {
    return std::string("<product><name>") + name + "</name><key>" + key +
           "</key><install_type><manual/></install_type></product>";
  };
  KTRUpdateConfig config;
  ASSERT_EQ(0, read(doc(product("a", "k") + product("srn", "mgmt") + product("b", "k") + "<connection/>"), config));
  ASSERT_EQ(2u, config.getProducts().size());
  EXPECT_EQ("a", config.getProducts()[0].getName());
  EXPECT_EQ("b", config.getProducts()[1].getName());
  EXPECT_EQ("mgmt", config.getManagementProduct().getKey());
}

TEST_F(KTRUp2dateTest, ConfigAccessIsChosenBySettingsThenYumThenConnection) {
  const std::string settings = "<service_settings><period>7</period></service_settings>";
  const std::string yum = "<yum><repository><name>base</name></repository></yum>";
  const std::string connection = "<connection><conn_param1>h</conn_param1><conn_option>x</conn_option></connection>";
  struct Case {
    std::string body;
    int which;  // index into the variant
    bool option;
  };
  const Case cases[] = {
      {settings + yum + connection, 1, true},
      {yum + connection, 2, true},
      {connection, 0, true},
      {yum, 2, false},
      // A broken schedule does not let the connection in: the access stays as it was.
      {"<service_settings/>" + connection, 1, true},
  };
  for (const auto& c : cases) {
    KTRUpdateConfig config;
    KTRUpdateServiceSettings previous;
    previous.setPeriod(99);
    config.setAccess(previous);
    ASSERT_EQ(0, read(doc(c.body), config)) << c.body;
    EXPECT_EQ(c.which, config.getAccess().which()) << c.body;
    EXPECT_EQ(c.option, config.getOption().isSpecified()) << c.body;
  }
  KTRUpdateConfig config;
  ASSERT_EQ(0, read(doc(settings + yum), config));
  EXPECT_EQ(7, boost::get<KTRUpdateServiceSettings>(config.getAccess()).getPeriod());
}

TEST_F(KTRUp2dateTest, ConfigWriterAddsConnectionForTheOptionAndFailsWithItsAccess) {
  KTRUpdateConfig config;
  KTRUpdateServiceSettings settings;
  settings.setCheckDays(KTRUpdateServiceSettings::Monday);
  config.setAccess(settings);
  config.setOption(std::string("o"));
  EXPECT_EQ((Texts{"service_settings", "product", "connection"}), childNames(at(write(config))));

  settings.setCheckDays(static_cast<KTRUpdateServiceSettings::CheckDays>(12));
  config.setAccess(settings);
  int rc = 0;
  write(config, &rc);
  EXPECT_EQ(-1, rc);
}

TEST_F(KTRUp2dateTest, AnUnknownTypeFallsBackToKTRUpdate) {
  auto update = std::make_shared<KTRAppTemplateUpdate>();
  update->setName(std::string("x"));
  const std::string text = replaced(write(KTRUpdateList{update}), "app_template_updateType", "future_updateType");
  KTRUpdateList back;
  ASSERT_EQ(0, read(text, back));
  ASSERT_EQ(1u, back.size());
  EXPECT_EQ(typeid(KTRUpdate), typeid(*back[0]));
  EXPECT_EQ(std::string("x"), back[0]->getName().get());
}

TEST_F(KTRUp2dateTest, SystemUpdateTypeIsZeroWithoutTheElementAndUnknownFails) {
  struct Case {
    const char* body;
    int rc;
    KTRSystemUpdate::UpdateType type;
  };
  const Case cases[] = {
      {"<name>n</name>", 0, KTRSystemUpdate::NoType},
      {"<type><servicepack/></type>", 0, KTRSystemUpdate::ServicePack},
      {"<type><patch/></type>", -1, KTRSystemUpdate::NoType},
  };
  for (const auto& c : cases) {
    KTRSystemUpdate update;
    update.setUpdateType(KTRSystemUpdate::Hotfix);
    EXPECT_EQ(c.rc, read(doc(c.body), update)) << c.body;
    if (c.rc == 0) {
      EXPECT_EQ(c.type, update.getUpdateType()) << c.body;
    }
  }
  EXPECT_FALSE(at(write(KTRSystemUpdate())).hasChild("type")) << "type 0 is not written";

  // In a list, the failing entry ends the list; the ones before it stay.
  auto good = std::make_shared<KTRSystemUpdate>();
  auto bad = std::make_shared<KTRSystemUpdate>();
  bad->setUpdateType(KTRSystemUpdate::Hotfix);
  KTRUpdateList back;
  EXPECT_EQ(0, read(replaced(write(KTRUpdateList{good, bad}), "hotfix/>", "patch/>"), back));
  EXPECT_EQ(1u, back.size());
}

}  // namespace
}  // namespace KTR
