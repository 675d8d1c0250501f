#include "KTRFunctionality/KTRUp2date.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "MBQFunctionalityCore/MBQPackage.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"
#include "KTRRecordTesting.h"

namespace KTR {
namespace {

class KTRUp2dateTest : public testing::RecordTest {};

// ---------------------------------------------------------------- option tables

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

// ---------------------------------------------------------------- service settings

TEST_F(KTRUp2dateTest, EveryCheckDayRoundTripsAndNoDayWritesNoElement) {
  for (int day = 0; day <= 7; ++day) {
    KTRUpdateServiceSettings settings;
    settings.setCheckDays(static_cast<KTRUpdateServiceSettings::CheckDays>(day));
    settings.setPeriod(12);
    const std::string text = write(settings);
    EXPECT_EQ(day != 0, at(text).hasChild("check_period")) << day;
    KTRUpdateServiceSettings back;
    back.setCheckDays(KTRUpdateServiceSettings::Friday);
    ASSERT_EQ(0, read(text, back)) << text;
    EXPECT_EQ(day, back.getCheckDays());
    EXPECT_EQ(12, back.getPeriod());
  }
}

TEST_F(KTRUp2dateTest, ServiceSettingsMarkersAndRequiredPeriod) {
  struct Case {
    const char* body;
    int rc;
    bool autoreboot;
    bool flag;
  };
  const Case cases[] = {
      {"<period>5</period>", 0, false, false},
      {"<autoreboot/><period>5</period><service_flag/>", 0, true, true},
      {"<autoreboot>0</autoreboot><period>5</period>", 0, true, false},  // presence, not value
      {"<autoreboot/>", -1, true, false},
      {"<period>five</period>", -1, false, false},
      {"<check_period><someday/></check_period><period>5</period>", -1, false, false},
      {"<check_period/><period>5</period>", -1, false, false},
  };
  for (const auto& c : cases) {
    KTRUpdateServiceSettings settings;
    EXPECT_EQ(c.rc, read(doc(c.body), settings)) << c.body;
    if (c.rc == 0) {
      EXPECT_EQ(c.autoreboot, settings.getAutoreboot()) << c.body;
      EXPECT_EQ(c.flag, settings.getFlag()) << c.body;
    }
  }
  KTRUpdateServiceSettings settings;
  settings.setAutoreboot(true);
  settings.setFlag(true);
  settings.setCheckDays(KTRUpdateServiceSettings::Wednesday);
  auto& it = at(write(settings));
  EXPECT_EQ((Texts{"autoreboot", "check_period", "period", "service_flag"}), childNames(it));
  settings.setAutoreboot(false);
  settings.setFlag(false);
  EXPECT_EQ((Texts{"check_period", "period"}), childNames(at(write(settings))));
}

// ---------------------------------------------------------------- connection and proxy

TEST_F(KTRUp2dateTest, ProxyTypeIsAlwaysWrittenSoAnUnknownTypeFailsTheWriter) {
  KTRUpdateProxySettings proxy;
  proxy.setProxyType(static_cast<KTRUpdateProxySettings::ProxyType>(0));
  int rc = 0;
  write(proxy, &rc);
  EXPECT_EQ(-1, rc);

  proxy.setProxyType(KTRUpdateProxySettings::Explorer);
  proxy.setParam2(std::string("proxy.example"));
  const std::string text = write(proxy);
  EXPECT_EQ((Texts{"type", "conn_param2"}), childNames(at(text)));
  KTRUpdateProxySettings back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(KTRUpdateProxySettings::Explorer, back.getProxyType());
  EXPECT_EQ(proxy.getParam2(), back.getParam2());

  KTRUpdateProxySettings kept;
  kept.setProxyType(KTRUpdateProxySettings::Custom);
  EXPECT_EQ(0, read(doc("<conn_param1>h</conn_param1>"), kept)) << "the type is optional on reading";
  EXPECT_EQ(KTRUpdateProxySettings::Custom, kept.getProxyType());
  EXPECT_EQ(-1, read(doc("<type><socks/></type>"), kept));
  EXPECT_EQ(-1, read(doc("<type/>"), kept));
}

// ---------------------------------------------------------------- products

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

// ---------------------------------------------------------------- the configuration

TEST_F(KTRUp2dateTest, SrnProductLeavesTheListAndIsWrittenLast) {
  const std::string text = doc(
      "<product><name>a</name><key>k</key><install_type><manual/></install_type></product>"
      "<product><name>srn</name><key>mgmt</key><install_type><automatic/></install_type></product>"
      "<product><name>b</name><key>k</key><install_type><manual/></install_type></product>"
      "<connection/>");
  KTRUpdateConfig config;
  ASSERT_EQ(0, read(text, config));
  ASSERT_EQ(2u, config.getProducts().size());
  EXPECT_EQ("a", config.getProducts()[0].getName());
  EXPECT_EQ("b", config.getProducts()[1].getName());
  EXPECT_EQ("mgmt", config.getManagementProduct().getKey());

  auto& it = at(write(config));
  ASSERT_EQ(0, it.descend("product"));
  ASSERT_EQ(0, it.next("product"));
  ASSERT_EQ(0, it.next("product"));
  std::string name;
  EXPECT_EQ(0, it.getValue(1010, name));
  EXPECT_EQ("srn", name);
  EXPECT_NE(0, it.next("product"));
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

TEST_F(KTRUp2dateTest, ConfigWriterAddsConnectionForTheOptionWhateverTheAccess) {
  KTRUpdateConfig config;
  KTRUpdateServiceSettings settings;
  settings.setCheckDays(KTRUpdateServiceSettings::Monday);
  config.setAccess(settings);
  config.setOption(std::string("o"));
  const std::string text = write(config);
  EXPECT_EQ((Texts{"service_settings", "product", "connection"}), childNames(at(text)));
  KTRUpdateConfig back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(1, back.getAccess().which());
  EXPECT_EQ(std::string("o"), back.getOption().get());
  EXPECT_EQ(text, write(back));

  // An access record that cannot be written fails the whole configuration.
  settings.setCheckDays(static_cast<KTRUpdateServiceSettings::CheckDays>(12));
  config.setAccess(settings);
  int rc = 0;
  write(config, &rc);
  EXPECT_EQ(-1, rc);
}

// ---------------------------------------------------------------- yum

// ---------------------------------------------------------------- update kinds

template <class T>
std::shared_ptr<KTRUpdate> named(const std::string& name) {
  auto update = std::make_shared<T>();
  update->setName(name);
  return update;
}

KTRUpdateList appTemplates(int count) {
  KTRUpdateList list;
  for (int i = 0; i < count; ++i) list.push_back(named<KTRAppTemplateUpdate>("app" + std::to_string(i)));
  return list;
}

TEST_F(KTRUp2dateTest, AListMixingEveryUpdateKindReadsEachEntryAsItsOwnClass) {
  auto system = std::make_shared<KTRSystemUpdate>();
  system->setUpdateType(KTRSystemUpdate::Hotfix);
  system->setText2(std::string("t2"));
  auto windows = std::make_shared<KTRWindowsSystemUpdate>();
  windows->setUpdateType(KTRSystemUpdate::Version);
  windows->setProduct(std::string("server"));
  auto srn = std::make_shared<KTRSRNUpdate>();
  srn->setText1(std::string("t1"));
  auto os = std::make_shared<KTROsTemplateUpdate>();
  os->setAppTemplates(appTemplates(2));
  auto ez = std::make_shared<KTREzTemplateUpdate>();
  ez->setAppTemplates(appTemplates(1));
  auto plain = std::make_shared<KTRTemplateUpdate>();
  auto base = std::make_shared<KTRUpdate>();
  base->setName(std::string("base"));
  base->setSize(12345678901LL);
  base->setFlag(true);
  base->setInstalledVersion(std::string("1.0"));

  const KTRUpdateList list = {base, system, windows, srn, named<KTRAppTemplateUpdate>("app"), plain, os, ez};
  const std::string text = write(list);
  KTRUpdateList back;
  ASSERT_EQ(0, read(text, back));
  ASSERT_EQ(list.size(), back.size());
  for (std::size_t i = 0; i < list.size(); ++i) EXPECT_EQ(typeid(*list[i]), typeid(*back[i])) << i;

  EXPECT_EQ(12345678901LL, back[0]->getSize().get());
  EXPECT_TRUE(back[0]->getFlag());
  EXPECT_EQ(std::string("1.0"), back[0]->getInstalledVersion().get());
  EXPECT_EQ(KTRSystemUpdate::Hotfix, static_cast<KTRSystemUpdate&>(*back[1]).getUpdateType());
  EXPECT_EQ(KTRSystemUpdate::Version, static_cast<KTRWindowsSystemUpdate&>(*back[2]).getUpdateType());
  EXPECT_EQ(std::string("server"), static_cast<KTRWindowsSystemUpdate&>(*back[2]).getProduct().get());
  EXPECT_EQ(std::string("t1"), static_cast<KTRSRNUpdate&>(*back[3]).getText1().get());
  EXPECT_EQ(2u, static_cast<KTRTemplateUpdate&>(*back[6]).getAppTemplates().size());
  EXPECT_EQ(text, write(back));
}

TEST_F(KTRUp2dateTest, AnUnknownTypeFallsBackToKTRUpdateOnlyInTheUpdateRegistry) {
  auto update = std::make_shared<KTRAppTemplateUpdate>();
  update->setName(std::string("x"));
  const std::string text = replaced(write(KTRUpdateList{update}), "app_template_updateType", "future_updateType");
  KTRUpdateList back;
  ASSERT_EQ(0, read(text, back));
  ASSERT_EQ(1u, back.size());
  EXPECT_EQ(typeid(KTRUpdate), typeid(*back[0]));
  EXPECT_EQ(std::string("x"), back[0]->getName().get());

  auto& it = at(text);
  ASSERT_EQ(0, it.descend("update"));
  std::shared_ptr<MBQ::MBQPackage> package;
  EXPECT_EQ(-1, MBQ::MBQReaderDerivedValid<MBQ::MBQPackage>(true)(it, package));
  EXPECT_EQ(nullptr, package);
  std::shared_ptr<KTRUpdate> strict;
  EXPECT_EQ(-1, MBQ::MBQReaderDerivedValid<KTRUpdate>(false)(it, strict)) << "the default needs the flag";
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
      {"<type><patch/></type>", -1, KTRSystemUpdate::Hotfix},
      {"<type/>", -1, KTRSystemUpdate::Hotfix},
  };
  for (const auto& c : cases) {
    KTRSystemUpdate update;
    update.setUpdateType(KTRSystemUpdate::Hotfix);
    EXPECT_EQ(c.rc, read(doc(c.body), update)) << c.body;
    if (c.rc == 0) {
      EXPECT_EQ(c.type, update.getUpdateType()) << c.body;
    }
  }
  KTRSystemUpdate none;
  EXPECT_FALSE(at(write(none)).hasChild("type")) << "type 0 is not written";

  // In a list, the failing entry ends the list; the ones before it stay.
  auto good = std::make_shared<KTRSystemUpdate>();
  auto bad = std::make_shared<KTRSystemUpdate>();
  bad->setUpdateType(KTRSystemUpdate::Hotfix);
  const std::string text = replaced(write(KTRUpdateList{good, bad}), "hotfix/>", "patch/>");
  KTRUpdateList back;
  EXPECT_EQ(0, read(text, back));
  EXPECT_EQ(1u, back.size());
}

struct ExtraUpdate : KTRUpdate {
  struct Writer : KTRUpdate::Writer {
    static const char* getStrTypeID() { return "extra_updateType"; }
  };
};

void registerSecondDefault() {
  MBQ::MBQDerivedParserFactoryT<ExtraUpdate, KTRUpdate, std::string, KTRUpdate::Reader, ExtraUpdate::Writer> second(true);
}

TEST(KTRUp2dateDeathTest, SecondDefaultInTheUpdateRegistryIsFatal) {
  EXPECT_DEATH(registerSecondDefault(), "");
}

}  // namespace
}  // namespace KTR
