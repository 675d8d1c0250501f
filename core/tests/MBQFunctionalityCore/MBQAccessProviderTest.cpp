#include <gtest/gtest.h>

#include <utility>

#include "MBQFunctionalityCore/MBQAccessProvider.h"

namespace MBQ {
namespace {

TEST(MBQAccessProviderTest, LocalProviderAnswersFromItsEIDsExactly) {
  const MBQAccessProviderPtr provider(new MBQLocalAccessProvider({MBQEID("101"), MBQEID("node-a")}));
  const MBQLocalityCheckerPtr checker = provider->getLocalityChecker();
  ASSERT_NE(nullptr, checker);
  const std::pair<const char*, bool> cases[] = {
      {"101", true}, {"node-a", true}, {"1010", false}, {"10", false},
      {" 101", false}, {"NODE-A", false}, {"", false},
  };
  for (const auto& [eid, local] : cases) EXPECT_EQ(local, checker->isLocal(MBQEID(eid))) << "'" << eid << "'";
}

// A service may keep the checker after its caller has dropped the provider.
TEST(MBQAccessProviderTest, CheckerOutlivesItsProvider) {
  MBQAccessProviderPtr provider(new MBQLocalAccessProvider({MBQEID("101")}));
  const MBQLocalityCheckerPtr checker = provider->getLocalityChecker();
  EXPECT_EQ(checker, provider->getLocalityChecker());
  EXPECT_EQ(1u, provider->useCount());
  provider.reset();
  EXPECT_EQ(1u, checker->useCount());
  EXPECT_TRUE(checker->isLocal(MBQEID("101")));
}

}  // namespace
}  // namespace MBQ
