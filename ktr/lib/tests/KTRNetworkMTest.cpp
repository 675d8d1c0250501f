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

}  // namespace
}  // namespace KTR
