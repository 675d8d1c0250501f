#include <gtest/gtest.h>

#include <memory>

#include "MBQFunctionalityCore/MBQEnvFactory.h"

namespace MBQ {
namespace {

struct CountingFactory : MBQEnvChildFactory {
  std::shared_ptr<MBQEnv> createEnv() const override { return nullptr; }
  std::shared_ptr<MBQVEnvConfig> createVirtualConfig() const override { return nullptr; }
};

TEST(MBQEnvFactoryTest, RegisterReplacesAndUnregisterRemoves) {
  auto& factory = MBQEnvFactory::getInstance();
  auto first = std::make_shared<CountingFactory>();
  auto second = std::make_shared<CountingFactory>();
  factory.registerEnv("testtech", first);
  EXPECT_EQ(first, factory.findEnv("testtech"));
  factory.registerEnv("testtech", second);
  EXPECT_EQ(second, factory.findEnv("testtech"));
  factory.unregisterEnv("testtech");
  EXPECT_EQ(nullptr, factory.findEnv("testtech"));
  EXPECT_EQ(nullptr, factory.createEnv("testtech"));
  factory.unregisterEnv("unknown");
}

TEST(MBQEnvFactoryTest, KeysHoldFifteenCharacters) {
  auto& factory = MBQEnvFactory::getInstance();
  auto child = std::make_shared<CountingFactory>();
  factory.registerEnv("abcdefghijklmno", child);
  EXPECT_EQ(child, factory.findEnv("abcdefghijklmno"));
  factory.unregisterEnv("abcdefghijklmno");
}

TEST(MBQEnvFactoryDeathTest, NullFactoryAborts) {
  EXPECT_DEATH(MBQEnvFactory::getInstance().registerEnv("x", nullptr), "core/src/MBQFunctionalityCore/MBQEnv:315 in registerEnv");
}

}  // namespace
}  // namespace MBQ
