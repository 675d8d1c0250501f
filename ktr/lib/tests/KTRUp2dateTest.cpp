#include "KTRFunctionality/KTRUp2date.h"

#include <gtest/gtest.h>

#include <string>

#include "KTRRecordTesting.h"
#include "MBQMessage/MBQMessage.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// what the readers make of a message, read into a new record, is ktrctl's (msg-update.t). Here
// what that cannot show: reading over earlier values, and writers given options outside their
// tables.

namespace KTR {
namespace {

class KTRUp2dateTest : public testing::RecordTest {};

TEST_F(KTRUp2dateTest, ReadOptionsThatFailsLeavesTheValueAndTheCursorOnTheHolder) {
  for (const char* body : {"<Monday/>", "<someday/>", "", "monday"}) {
    auto value = KTRUpdateServiceSettings::Friday;
    auto& it = at(doc(body));
    EXPECT_EQ(-1, readOptions(value, it, checkDayOptions())) << body;
    EXPECT_EQ(KTRUpdateServiceSettings::Friday, value) << body;
    EXPECT_EQ("r", it.getName()) << body;
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

// An option with a "none" value reads a missing holder as none; one without keeps its value.
TEST_F(KTRUp2dateTest, AMissingOptionHolderReadsAsNoneOrKeepsTheValue) {
  KTRUpdateServiceSettings settings;
  settings.setCheckDays(KTRUpdateServiceSettings::Friday);
  ASSERT_EQ(0, read(doc("<period>5</period>"), settings));
  EXPECT_EQ(KTRUpdateServiceSettings::NoDay, settings.getCheckDays());

  KTRSystemUpdate update;
  update.setUpdateType(KTRSystemUpdate::Hotfix);
  ASSERT_EQ(0, read(doc("<name>n</name>"), update));
  EXPECT_EQ(KTRSystemUpdate::NoType, update.getUpdateType());

  KTRUpdateProxySettings proxy;
  proxy.setProxyType(KTRUpdateProxySettings::Custom);
  ASSERT_EQ(0, read(doc("<conn_param1>h</conn_param1>"), proxy));
  EXPECT_EQ(KTRUpdateProxySettings::Custom, proxy.getProxyType());
}

TEST_F(KTRUp2dateTest, AProxyTypeOrScheduleOutsideTheTableFailsTheWriter) {
  KTRUpdateProxySettings proxy;
  proxy.setProxyType(static_cast<KTRUpdateProxySettings::ProxyType>(0));
  int rc = 0;
  write(proxy, &rc);
  EXPECT_EQ(-1, rc) << "the proxy type is always written";

  KTRUpdateServiceSettings settings;
  settings.setCheckDays(static_cast<KTRUpdateServiceSettings::CheckDays>(12));
  KTRUpdateConfig config;
  config.setAccess(settings);
  config.setOption(std::string("o"));
  write(config, &rc);
  EXPECT_EQ(-1, rc) << "the access fails the configuration";
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

TEST_F(KTRUp2dateTest, ABrokenScheduleLeavesTheAccessAsItWas) {
  KTRUpdateServiceSettings previous;
  previous.setPeriod(99);
  KTRUpdateConfig config;
  config.setAccess(previous);
  const std::string connection = "<connection><conn_param1>h</conn_param1><conn_option>x</conn_option></connection>";
  ASSERT_EQ(0, read(doc("<service_settings/>" + connection), config));
  ASSERT_EQ(1, config.getAccess().which());
  EXPECT_EQ(99, boost::get<KTRUpdateServiceSettings>(config.getAccess()).getPeriod());
  EXPECT_TRUE(config.getOption().isSpecified());
}

}  // namespace
}  // namespace KTR
