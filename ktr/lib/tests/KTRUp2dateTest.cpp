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

TEST_F(KTRUp2dateTest, OptionTablesHoldExactlyTheirSpellings) {
  const KTROptionTable<KTRUpdateProduct::InstallType> install = {
      {KTRUpdateProduct::Disabled, "disabled"}, {KTRUpdateProduct::Automatic, "automatic"},
      {KTRUpdateProduct::AutoDownload, "auto_download"}, {KTRUpdateProduct::Manual, "manual"}};
  EXPECT_EQ(install, installTypeOptions()) << "the empty spelling of 0 must not replace \"disabled\"";
  EXPECT_EQ(3u, proxyTypeOptions().size());
  EXPECT_EQ(0u, proxyTypeOptions().count(static_cast<KTRUpdateProxySettings::ProxyType>(0)));
  EXPECT_EQ("no_proxy", proxyTypeOptions().at(KTRUpdateProxySettings::NoProxy));
  EXPECT_EQ("", checkDayOptions().at(KTRUpdateServiceSettings::NoDay));
  EXPECT_EQ("sunday", checkDayOptions().at(KTRUpdateServiceSettings::Sunday));
  EXPECT_EQ("saturday", checkDayOptions().at(KTRUpdateServiceSettings::Saturday));
  EXPECT_EQ("servicepack", systemUpdateTypeOptions().at(KTRSystemUpdate::ServicePack));
  EXPECT_EQ("", systemUpdateTypeOptions().at(KTRSystemUpdate::NoType));
}

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

TEST_F(KTRUp2dateTest, ConnectionRoundTripsWithBaseFieldsFirst) {
  KTRUpdateConnection connection;
  connection.setParam1(std::string("host"));
  connection.setParam3(std::string("8080"));
  connection.setParam5(std::string("user"));
  const std::string text = write(connection);
  EXPECT_EQ((Texts{"conn_param1", "conn_param3", "conn_param5"}), childNames(at(text)));
  KTRUpdateConnection back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(connection.getParam1(), back.getParam1());
  EXPECT_FALSE(back.getParam2().isSpecified());
  EXPECT_EQ(connection.getParam3(), back.getParam3());
  EXPECT_FALSE(back.getParam4().isSpecified());
  EXPECT_EQ(connection.getParam5(), back.getParam5());
  EXPECT_EQ(text, write(back));
}

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

TEST_F(KTRUp2dateTest, ProductRoundTripsWithInstallSource) {
  KTRUpdateProduct product;
  product.setName("kernel");
  product.setKey("k1");
  product.setInstallType(KTRUpdateProduct::AutoDownload);
  KTRUpdateInstallSource source;
  source.setSource("http://mirror");
  source.setStandard(std::string("yes"));
  product.setInstallSource(source);
  product.setParam(std::string("last"));
  const std::string text = write(product);
  EXPECT_EQ((Texts{"name", "key", "install_type", "install_source", "product_param"}), childNames(at(text)));
  KTRUpdateProduct back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ("kernel", back.getName());
  EXPECT_EQ("k1", back.getKey());
  EXPECT_EQ(KTRUpdateProduct::AutoDownload, back.getInstallType());
  ASSERT_TRUE(back.getInstallSource().isSpecified());
  EXPECT_EQ("http://mirror", back.getInstallSource().get().getSource());
  EXPECT_EQ(std::string("yes"), back.getInstallSource().get().getStandard().get());
  EXPECT_EQ(text, write(back));
}

TEST_F(KTRUp2dateTest, ProductFieldsRequiredAndOptional) {
  struct Case {
    const char* body;
    int rc;
  };
  const Case cases[] = {
      {"<name>n</name><key>k</key><install_type><disabled/></install_type>", 0},
      {"<key>k</key><install_type><manual/></install_type>", -1},
      {"<name>n</name><install_type><manual/></install_type>", -1},
      {"<name>n</name><key>k</key>", -1},
      {"<name>n</name><key>k</key><install_type/>", -1},
      {"<name>n</name><key>k</key><install_type><always/></install_type>", -1},
      // An install source without its value is absent, not an error.
      {"<name>n</name><key>k</key><install_type><manual/></install_type><install_source/>", 0},
  };
  for (const auto& c : cases) {
    KTRUpdateProduct product;
    EXPECT_EQ(c.rc, read(doc(c.body), product)) << c.body;
  }
  KTRUpdateProduct product;
  product.setInstallType(KTRUpdateProduct::Manual);
  ASSERT_EQ(0, read(doc(cases[0].body), product));
  EXPECT_EQ(KTRUpdateProduct::Disabled, product.getInstallType()) << "\"disabled\" reads as 0";
  EXPECT_EQ(Texts{"disabled"}, childNames(*[&]() {
              auto& it = at(write(product));
              it.descend("install_type");
              return &it;
            }()));
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

// ---------------------------------------------------------------- the configuration

KTRUpdateProduct product(const std::string& name) {
  KTRUpdateProduct p;
  p.setName(name);
  p.setKey(name + "-key");
  p.setInstallType(KTRUpdateProduct::Automatic);
  return p;
}

TEST_F(KTRUp2dateTest, ConfigWithConnectionRoundTrips) {
  KTRUpdateConfig config;
  config.setProducts({product("kernel"), product("tools")});
  KTRUpdateProduct management = product("whatever");
  management.setInstallType(KTRUpdateProduct::Manual);
  config.setManagementProduct(management);
  KTRUpdateConnection connection;
  connection.setParam4(std::string("direct"));
  config.setAccess(connection);
  config.setOption(std::string("opt"));

  const std::string text = write(config);
  EXPECT_EQ((Texts{"connection", "product", "product", "product"}), childNames(at(text)));
  KTRUpdateConfig back;
  ASSERT_EQ(0, read(text, back));
  ASSERT_EQ(2u, back.getProducts().size());
  EXPECT_EQ("kernel", back.getProducts()[0].getName());
  EXPECT_EQ("tools", back.getProducts()[1].getName());
  EXPECT_EQ("srn", back.getManagementProduct().getName()) << "the management product is always \"srn\"";
  EXPECT_EQ(KTRUpdateProduct::Manual, back.getManagementProduct().getInstallType());
  const auto* readConnection = boost::get<KTRUpdateConnection>(&back.getAccess());
  ASSERT_NE(nullptr, readConnection);
  EXPECT_EQ(std::string("direct"), readConnection->getParam4().get());
  EXPECT_EQ(std::string("opt"), back.getOption().get());
  EXPECT_EQ(text, write(back));
}

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

TEST_F(KTRUp2dateTest, ConfigWithoutConnectionReadsWithoutTakingOne) {
  KTRUpdateConfig config;
  Update::Yum::Config yum;
  config.setAccess(yum);
  ASSERT_EQ(0, read(doc(""), config));
  EXPECT_EQ(2, config.getAccess().which());
  EXPECT_FALSE(config.getOption().isSpecified());
  EXPECT_TRUE(config.getProducts().empty());
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

TEST_F(KTRUp2dateTest, YumRepositoryNeedsOnlyItsName) {
  struct Case {
    const char* body;
    int rc;
  };
  const Case cases[] = {
      {"<key>k</key><base_url>http://u</base_url><repo_flag/>", -1},
      {"<name>base</name>", 0},
      {"<name>base</name><repo_flag>0</repo_flag>", 0},
  };
  for (const auto& c : cases) {
    Update::Yum::Repository repository;
    EXPECT_EQ(c.rc, read(doc(c.body), repository)) << c.body;
  }
  Update::Yum::Repository fresh;
  EXPECT_EQ("", fresh.getKey());
  EXPECT_EQ("", fresh.getBaseUrl());
  EXPECT_EQ("", fresh.getName());
  EXPECT_FALSE(fresh.getFlag());

  Update::Yum::Repository repository;
  repository.setKey("k");
  repository.setBaseUrl("http://mirror/os");
  repository.setFlag(true);
  repository.setName("os");
  Update::Yum::Config yum;
  yum.setRepositories({repository, fresh});
  yum.setRepositories({repository});
  const std::string text = write(yum);
  Update::Yum::Config back;
  ASSERT_EQ(0, read(text, back));
  ASSERT_EQ(1u, back.getRepositories().size());
  EXPECT_TRUE(back.getRepositories()[0].getFlag());
  EXPECT_EQ("http://mirror/os", back.getRepositories()[0].getBaseUrl());
  EXPECT_EQ(text, write(back));
  EXPECT_EQ(-1, read(doc("<repository><key>k</key></repository>"), back));
}

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

TEST_F(KTRUp2dateTest, KindsDeclareTheirTypeNames) {
  EXPECT_STREQ("updateType", KTRUpdate::Writer::getStrTypeID());
  EXPECT_STREQ("system_updateType", KTRSystemUpdate::Writer::getStrTypeID());
  EXPECT_STREQ("windows_system_updateType", KTRWindowsSystemUpdate::Writer::getStrTypeID());
  EXPECT_STREQ("srn_updateType", KTRSRNUpdate::Writer::getStrTypeID());
  EXPECT_STREQ("app_template_updateType", KTRAppTemplateUpdate::Writer::getStrTypeID());
  EXPECT_STREQ("template_updateType", KTRTemplateUpdate::Writer::getStrTypeID());
  EXPECT_STREQ("os_template_updateType", KTROsTemplateUpdate::Writer::getStrTypeID());
  EXPECT_STREQ("ez_template_updateType", KTREzTemplateUpdate::Writer::getStrTypeID());
  using Factory = MBQ::MBQDerivedParserFactory<KTRUpdate>;
  ASSERT_NE(nullptr, Factory::defaultFactory());
  EXPECT_EQ(Factory::findByType(typeid(KTRUpdate)), Factory::defaultFactory());
  EXPECT_NE(nullptr, Factory::findByName(std::string(MBQ::kUpdateNamespace) + ":ez_template_updateType"));
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

TEST_F(KTRUp2dateTest, OsTemplateUpdateReadsItsNestedAppTemplates) {
  auto os = std::make_shared<KTROsTemplateUpdate>();
  os->setName(std::string("centos-7"));
  KTRUpdateList apps = appTemplates(3);
  apps.push_back(named<KTRSRNUpdate>("odd one"));  // entries keep their declared kind
  os->setAppTemplates(apps);
  const KTRUpdateList list = {os};
  const std::string text = write(list);
  KTRUpdateList back;
  ASSERT_EQ(0, read(text, back));
  ASSERT_EQ(1u, back.size());
  ASSERT_EQ(typeid(KTROsTemplateUpdate), typeid(*back[0]));
  const auto& nested = static_cast<KTROsTemplateUpdate&>(*back[0]).getAppTemplates();
  ASSERT_EQ(4u, nested.size());
  EXPECT_EQ(std::string("app2"), nested[2]->getName().get());
  EXPECT_EQ(typeid(KTRAppTemplateUpdate), typeid(*nested[0]));
  EXPECT_EQ(typeid(KTRSRNUpdate), typeid(*nested[3]));
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

TEST_F(KTRUp2dateTest, UpdateWritesOnlySpecifiedFieldsInOrder) {
  KTRUpdate update;
  update.setName(std::string("n"));
  update.setKey(std::string("k"));
  update.setDetail(std::string("d"));
  update.setSize(1LL);
  update.setFlag(true);
  update.setRelease(std::string("r"));
  update.setInstalledVersion(std::string("i"));
  update.setParam(std::string("p"));
  EXPECT_EQ((Texts{"name", "key", "detail", "size", "update_flag", "release", "installed_version", "update_param"}),
            childNames(at(write(update))));
  EXPECT_TRUE(childNames(at(write(KTRUpdate()))).empty());
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
