#include "MBQFunctionalityCore/MBQQoS.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQMessage.h"

namespace MBQ {
namespace {

MBQQoS withoutBarrier(const std::string& id, long long limit) { return MBQQoS(id, limit); }

TEST(MBQQoSTest, TextFormHasTheBarrierOnlyWhenSpecified) {
  const MBQQoS kept("numproc", 55, 66);
  for (const auto& c : test::caseRows(__FILE__, "text")) {
    MBQQoS read = kept;
    if (c.at(1) == "refused") {
      EXPECT_EQ(-1, read.fromString(c[0])) << c[0];
      EXPECT_EQ(kept, read) << c[0];
      continue;
    }
    const MBQQoS expected = c[1] == "-" ? withoutBarrier("numproc", std::stoll(c.at(2)))
                                        : MBQQoS("numproc", std::stoll(c[1]), std::stoll(c.at(2)));
    ASSERT_EQ(0, read.fromString(c[0])) << c[0];
    EXPECT_EQ(expected, read) << c[0];
    EXPECT_EQ(c.at(3), expected.toString()) << c[0];
  }
}

TEST(MBQQoSTest, OrdersByIdThenBarrierThenLimit) {
  const MBQQoS ordered[] = {
      withoutBarrier("a", 1000), MBQQoS("a", -5, 0), MBQQoS("a", 1, 0), MBQQoS("a", 1, 2),
      withoutBarrier("b", -1000),
  };
  const std::size_t count = sizeof ordered / sizeof ordered[0];
  for (std::size_t i = 0; i + 1 < count; ++i) {
    EXPECT_LT(ordered[i], ordered[i + 1]) << i;
    EXPECT_FALSE(ordered[i + 1] < ordered[i]) << i;
    EXPECT_NE(ordered[i], ordered[i + 1]) << i;
  }
  // Records with one id but other values are distinct members of a set.
  EXPECT_EQ(count, std::set<MBQQoS>(ordered, ordered + count).size());
}

TEST(MBQQoSTest, UnspecifiedBarrierValueDoesNotCount) {
  MBQOptionalProperty<long long> stale(42);
  stale.specify(false);
  MBQQoS qos("a", 10);
  qos.setBarrier(stale);
  EXPECT_EQ(withoutBarrier("a", 10), qos);
  EXPECT_FALSE(qos < withoutBarrier("a", 10));
  EXPECT_FALSE(withoutBarrier("a", 10) < qos);
  EXPECT_EQ("10", qos.toString());
  qos.setBarrier(5);
  EXPECT_TRUE(qos.getBarrier().isSpecified());
  EXPECT_EQ("5:10", qos.toString());
}

// The round trip is the record catalog's (settings of a container); here the reader's checks.
TEST(MBQQoSTest, ReaderRequiresIdAndLimit) {
  const MBQQoS kept("kept", 7, 8);
  const std::pair<const char*, int> cases[] = {
      {"<m><id>a</id><barrier>1</barrier><limit>2</limit></m>", 0},
      {"<m><limit>2</limit><id>a</id></m>", 0},
      {"<m><barrier>1</barrier><limit>2</limit></m>", -1},
      {"<m><id>a</id><barrier>1</barrier></m>", -1},
      {"<m><id>a</id><limit>x</limit></m>", -1},
      {"<m><id>a</id><barrier>1.5</barrier><limit>2</limit></m>", -1},
  };
  for (const auto& [xml, result] : cases) {
    MBQQoS qos = kept;
    EXPECT_EQ(result, test::parsed(xml).iterator()->getObject(qos, MBQQoS::Reader())) << xml;
    if (result != 0) {
      EXPECT_EQ(kept, qos) << xml;
    }
  }
}

}  // namespace
}  // namespace MBQ
