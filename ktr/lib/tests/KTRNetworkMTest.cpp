#include "KTRFunctionality/KTRNetworkM.h"

#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// here that a read replaces the lists a configuration held.

namespace KTR {
namespace {

class KTRNetworkMTest : public testing::RecordTest {};

TEST_F(KTRNetworkMTest, ReadingReplacesTheLists) {
  for (const char* body : {"", "<ip_range><range_text>t</range_text><address>10.1.1.1</address></ip_range>"}) {
    KTRNetworkInterfaceShaping shaping;
    shaping.setDevice("eth0");
    KTRNetConfiguration config;
    config.setInterfaces({shaping});
    ASSERT_EQ(0, read(doc(body), config)) << body;
    EXPECT_TRUE(config.getInterfaces().empty()) << body;
  }
}

}  // namespace
}  // namespace KTR
