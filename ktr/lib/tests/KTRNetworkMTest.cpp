#include "KTRFunctionality/KTRNetworkM.h"

#include <gtest/gtest.h>

#include <string>

#include "KTRRecordTesting.h"

namespace KTR {
namespace {

class KTRNetworkMTest : public testing::RecordTest {};

KTRNetConfiguration fullConfiguration() {
  KTRNetworkShapingIPRange range;
  range.setText("class1");
  range.setAddress(MBQ::MBQIPAddress("10.0.0.0/8"));
  range.setParam("p");
  KTRNetworkShapingClass shapingClass;
  shapingClass.setName("1");
  shapingClass.setRate1(8000000000LL);
  shapingClass.setRate2(42);
  KTRNetworkInterfaceShaping shaping;
  shaping.setDevice("eth0");
  shaping.setRate(100000);
  KTRNetConfiguration config;
  config.setFlag(true);
  config.setRanges({range, range});
  config.setClasses({shapingClass});
  config.setInterfaces({shaping});
  return config;
}

TEST_F(KTRNetworkMTest, ConfigurationRoundTrips) {
  const KTRNetConfiguration config = fullConfiguration();
  const std::string text = write(config);
  EXPECT_EQ((Texts{"shaping_flag", "ip_range", "ip_range", "shaping_class", "iface_shaping"}), childNames(at(text)));
  KTRNetConfiguration back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_TRUE(back.getFlag());
  ASSERT_EQ(2u, back.getRanges().size());
  EXPECT_EQ(config.getRanges()[0].getAddress(), back.getRanges()[1].getAddress());
  EXPECT_EQ("p", back.getRanges()[0].getParam());
  ASSERT_EQ(1u, back.getClasses().size());
  EXPECT_EQ(8000000000LL, back.getClasses()[0].getRate1());
  EXPECT_EQ(42, back.getClasses()[0].getRate2());
  ASSERT_EQ(1u, back.getInterfaces().size());
  EXPECT_EQ("eth0", back.getInterfaces()[0].getDevice());
  EXPECT_EQ(100000, back.getInterfaces()[0].getRate());
  EXPECT_EQ(text, write(back));
}

TEST_F(KTRNetworkMTest, EmptyListsReadButABrokenEntryFailsTheConfiguration) {
  struct Case {
    const char* body;
    int rc;
  };
  const Case cases[] = {
      {"", 0},
      {"<shaping_flag/>", 0},
      {"<iface_shaping><bandwidth>5</bandwidth></iface_shaping>", -1},  // no net_device_id
      {"<iface_shaping><net_device_id>eth0</net_device_id></iface_shaping>", -1},
      {"<iface_shaping><net_device_id>e</net_device_id><bandwidth>x</bandwidth></iface_shaping>", -1},
      {"<shaping_class><class_rate1>1</class_rate1></shaping_class>", -1},
      {"<ip_range><range_text>t</range_text></ip_range>", -1},
      {"<ip_range><range_text>t</range_text><address> </address></ip_range>", -1},
      {"<ip_range><address>10.1.1.1</address></ip_range>", -1},
      {"<ip_range><range_text>t</range_text><address>10.1.1.1</address></ip_range>", 0},
  };
  for (const auto& c : cases) {
    KTRNetConfiguration config = fullConfiguration();
    EXPECT_EQ(c.rc, read(doc(c.body), config)) << c.body;
    if (c.rc == 0) {
      EXPECT_TRUE(config.getInterfaces().empty()) << "lists are replaced: " << c.body;
    }
  }
  KTRNetConfiguration config;
  ASSERT_EQ(0, read(doc("<shaping_flag>0</shaping_flag>"), config));
  EXPECT_TRUE(config.getFlag()) << "the flag is the element's presence";
}

TEST_F(KTRNetworkMTest, ShapingClassWithoutRatesKeepsThem) {
  KTRNetworkShapingClass shapingClass;
  shapingClass.setRate1(7);
  shapingClass.setRate2(9);
  ASSERT_EQ(0, read(doc("<name>c</name>"), shapingClass));
  EXPECT_EQ("c", shapingClass.getName());
  EXPECT_EQ(7, shapingClass.getRate1());
  EXPECT_EQ(9, shapingClass.getRate2());
  ASSERT_EQ(0, read(doc("<name>c</name><class_rate1>x</class_rate1><class_rate2>3</class_rate2>"), shapingClass));
  EXPECT_EQ(7, shapingClass.getRate1());
  EXPECT_EQ(3, shapingClass.getRate2());
}

}  // namespace
}  // namespace KTR
