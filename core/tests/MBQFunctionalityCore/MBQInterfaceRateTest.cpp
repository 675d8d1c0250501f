#include "MBQFunctionalityCore/MBQInterfaceRate.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQMessage.h"

namespace MBQ {
namespace {

TEST(MBQInterfaceRateTest, TextFormIsReadAndWrittenOrRefusedKeepingTheRecord) {
  const MBQInterfaceRate kept("old", 9, 9);
  for (const auto& c : test::caseRows(__FILE__, "text")) {
    MBQInterfaceRate read = kept;
    if (c.at(1) == "refused") {
      EXPECT_EQ(-1, read.fromString(c[0])) << c[0];
      EXPECT_EQ(kept, read) << c[0];
      continue;
    }
    ASSERT_EQ(0, read.fromString(c[0])) << c[0];
    EXPECT_EQ(MBQInterfaceRate(c[1], std::stoi(c.at(2)), std::stoll(c.at(3))), read) << c[0];
    EXPECT_EQ(c.at(4), read.toString()) << c[0];
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
  const MBQInterfaceRate kept("kept", 7, 8);
  const std::pair<const char*, int> cases[] = {
      {"<m><interface>eth0</interface><class>1</class><rate>8000</rate></m>", 0},
      {"<m><class>1</class><rate>8000</rate></m>", -1},
      {"<m><interface>eth0</interface><rate>8000</rate></m>", -1},
      {"<m><interface>eth0</interface><class>1</class></m>", -1},
      {"<m><interface>eth0</interface><class>99999999999</class><rate>1</rate></m>", -1},
      {"<m><interface>eth0</interface><class>1</class><rate>fast</rate></m>", -1},
  };
  for (const auto& [xml, result] : cases) {
    MBQInterfaceRate rate = kept;
    EXPECT_EQ(result, test::parsed(xml).iterator()->getObject(rate, MBQInterfaceRate::Reader())) << xml;
    EXPECT_EQ(result == 0 ? MBQInterfaceRate("eth0", 1, 8000) : kept, rate) << xml;
  }
}

}  // namespace
}  // namespace MBQ
