#include "KTRFunctionality/KTRNetworkM.h"

#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// here how an entry's failure reaches the configuration.

namespace KTR {
namespace {

class KTRNetworkMTest : public testing::RecordTest {};

TEST_F(KTRNetworkMTest, EmptyListsReadButABrokenEntryFailsTheConfiguration) {
  struct Case {
    const char* body;
    int rc;
  };
  const Case cases[] = {
      {"", 0},
      {"<ip_range><range_text>t</range_text><address>10.1.1.1</address></ip_range>", 0},
      {"<iface_shaping><net_device_id>eth0</net_device_id></iface_shaping>", -1},
      {"<iface_shaping><net_device_id>e</net_device_id><bandwidth>x</bandwidth></iface_shaping>", -1},
      {"<shaping_class><class_rate1>1</class_rate1></shaping_class>", -1},
      {"<ip_range><range_text>t</range_text></ip_range>", -1},
      {"<ip_range><range_text>t</range_text><address> </address></ip_range>", -1},
  };
  for (const auto& c : cases) {
    KTRNetworkInterfaceShaping shaping;
    shaping.setDevice("eth0");
    KTRNetConfiguration config;
    config.setInterfaces({shaping});
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
