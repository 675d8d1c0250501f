#include "MBQFunctionalityCore/MBQInterfaceRate.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQMessage.h"

namespace MBQ {
namespace {

TEST(MBQInterfaceRateTest, ParsesAndWritesTheTextForm) {
  struct Case {
    const char* text;
    MBQInterfaceRate rate;
    const char* written;
  };
  const Case cases[] = {
      {"eth0:1:8000", MBQInterfaceRate("eth0", 1, 8000), "eth0:1:8000"},
      {"*:0:0", MBQInterfaceRate("*", 0, 0), "*:0:0"},
      // An alias device keeps its own colon.
      {"eth0:1:2:8000", MBQInterfaceRate("eth0:1", 2, 8000), "eth0:1:2:8000"},
      {"eth0: 1 :+8000 ", MBQInterfaceRate("eth0", 1, 8000), "eth0:1:8000"},
      {"venet0:-1:-5", MBQInterfaceRate("venet0", -1, -5), "venet0:-1:-5"},
      {"br0:2147483647:9223372036854775807", MBQInterfaceRate("br0", 2147483647, 9223372036854775807LL),
       "br0:2147483647:9223372036854775807"},
  };
  for (const Case& c : cases) {
    MBQInterfaceRate read("old", 9, 9);
    ASSERT_EQ(0, read.fromString(c.text)) << c.text;
    EXPECT_EQ(c.rate, read) << c.text;
    EXPECT_EQ(c.written, read.toString()) << c.text;
  }
}

TEST(MBQInterfaceRateTest, FromStringRejectsBadTextAndKeepsTheRecord) {
  const char* const texts[] = {
      "", "eth0", "eth0:1", ":1:8000", "eth0::8000", "eth0:1:", "eth0:x:8000", "eth0:1:8k",
      "eth0:1.5:8000", "eth0:2147483648:1", "eth0:-2147483649:1", "eth0:1:9223372036854775808", "::",
  };
  const MBQInterfaceRate kept("eth9", 3, 4);
  for (const char* text : texts) {
    MBQInterfaceRate rate = kept;
    EXPECT_EQ(-1, rate.fromString(text)) << text;
    EXPECT_EQ(kept, rate) << text;
  }
}

TEST(MBQInterfaceRateTest, OrdersByInterfaceThenClassThenRate) {
  const MBQInterfaceRate ordered[] = {
      MBQInterfaceRate("eth0", 1, 9000), MBQInterfaceRate("eth0", 2, 0), MBQInterfaceRate("eth0", 2, 1),
      MBQInterfaceRate("eth1", 0, 0),
  };
  const std::size_t count = sizeof ordered / sizeof ordered[0];
  for (std::size_t i = 0; i + 1 < count; ++i) {
    EXPECT_LT(ordered[i], ordered[i + 1]) << i;
    EXPECT_FALSE(ordered[i + 1] < ordered[i]) << i;
  }
  EXPECT_EQ(count, std::set<MBQInterfaceRate>(ordered, ordered + count).size());
}

TEST(MBQInterfaceRateTest, ListRoundTripsThroughAMessage) {
  const std::vector<MBQInterfaceRate> written = {MBQInterfaceRate("eth0", 1, 100), MBQInterfaceRate("eth1", 2, 200)};
  MBQMessage message;
  auto it = message.iterator();
  ASSERT_EQ(0, it->putObject(written, MBQWriterData(written, "interface_rate")));
  std::vector<MBQInterfaceRate> read;
  ASSERT_EQ(0, test::reparsed(message).iterator()->getObject(read, MBQReaderData(read, "interface_rate")));
  EXPECT_EQ(written, read);
}

TEST(MBQInterfaceRateTest, ReaderRequiresEveryChild) {
  struct Case {
    const char* xml;
    int result;
  };
  const Case cases[] = {
      {"<m><interface>eth0</interface><class>1</class><rate>8000</rate></m>", 0},
      {"<m><class>1</class><rate>8000</rate></m>", -1},
      {"<m><interface>eth0</interface><rate>8000</rate></m>", -1},
      {"<m><interface>eth0</interface><class>1</class></m>", -1},
      {"<m><interface>eth0</interface><class>99999999999</class><rate>1</rate></m>", -1},
      {"<m><interface>eth0</interface><class>1</class><rate>fast</rate></m>", -1},
  };
  for (const Case& c : cases) {
    const MBQMessage message = test::parsed(c.xml);
    const MBQInterfaceRate kept("kept", 7, 8);
    MBQInterfaceRate rate = kept;
    EXPECT_EQ(c.result, message.iterator()->getObject(rate, MBQInterfaceRate::Reader())) << c.xml;
    EXPECT_EQ(c.result == 0 ? MBQInterfaceRate("eth0", 1, 8000) : kept, rate) << c.xml;
  }
}

}  // namespace
}  // namespace MBQ
