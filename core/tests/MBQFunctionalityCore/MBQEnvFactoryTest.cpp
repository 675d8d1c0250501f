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
  const char* const key = "abcdefghijklmno";  // keys hold fifteen characters
  auto first = std::make_shared<CountingFactory>();
  auto second = std::make_shared<CountingFactory>();
  factory.registerEnv(key, first);
  EXPECT_EQ(first, factory.findEnv(key));
  factory.registerEnv(key, second);
  EXPECT_EQ(second, factory.findEnv(key));
  factory.unregisterEnv(key);
  EXPECT_EQ(nullptr, factory.findEnv(key));
  EXPECT_EQ(nullptr, factory.createEnv(key));
  factory.unregisterEnv("unknown");
}

TEST(MBQEnvFactoryDeathTest, NullFactoryAborts) {
  EXPECT_DEATH(MBQEnvFactory::getInstance().registerEnv("x", nullptr), "core/src/MBQFunctionalityCore/MBQEnv:315 in registerEnv");
}

}  // namespace
}  // namespace MBQ
