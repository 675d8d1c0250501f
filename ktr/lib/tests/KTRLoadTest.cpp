// Loads the library the way the agent does, by its soname with only the core framework linked in,
// and checks its exported version, what its load-time initialisers register and what unloading
// takes away again.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "MBQFunctionalityCore/MBQEnvConfig.h"
#include "MBQFunctionalityCore/MBQEnvFactory.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace {

const std::string kConfigType = std::string(MBQ::kTypesNamespace) + ":venv_configType";

TEST(KTRLoadTest, LoadingRegistersTheTechnologyAndUnloadingRemovesIt) {
  using ConfigFactory = MBQ::MBQDerivedParserFactory<MBQ::MBQEnvConfig>;
  ASSERT_EQ(nullptr, MBQ::MBQEnvFactory::getInstance().findEnv("quellix"));
  ASSERT_EQ(nullptr, ConfigFactory::findByName(kConfigType));

  void* handle = dlopen(KTR_LIBRARY_DIR "/libKTRFunctionality.so.7", RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, handle) << dlerror();
  const auto version = reinterpret_cast<const char* (*)()>(dlsym(handle, "ktrLibraryVersion"));
  ASSERT_NE(nullptr, version) << dlerror();
  EXPECT_STREQ("7.0", version());

  EXPECT_NE(nullptr, MBQ::MBQEnvFactory::getInstance().findEnv("quellix"));
  ASSERT_NE(nullptr, ConfigFactory::findByName(kConfigType));
  {
    // A configuration element of the technology's type reads into the technology's class:
    // only that class knows the element order, where "disk_list" comes last.
    MBQ::MBQMessage message;
    const std::string xml = "<m xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:ktr='" +
                            std::string(MBQ::kTypesNamespace) +
                            "'><config xsi:type='ktr:venv_configType'><ktr:veid>101</ktr:veid>"
                            "<hostname>web01</hostname></config></m>";
    ASSERT_EQ(0, message.parse(xml));
    std::shared_ptr<MBQ::MBQEnvConfig> config;
    ASSERT_EQ(0, message.iterator()->getObject(config, MBQ::MBQReaderDerivedValid<MBQ::MBQEnvConfig>(false), "config"));
    ASSERT_NE(nullptr, config);
    EXPECT_EQ(31, config->getPositionOfTheTag("disk_list"));
    EXPECT_EQ(ConfigFactory::findByName(kConfigType)->runtimeTypeName(), typeid(*config).name());
    MBQ::MBQOptionalProperty<std::string> hostname;
    ASSERT_EQ(0, config->getHostname(hostname));
    EXPECT_EQ("web01", hostname.get());
    // Objects of the library's classes must be gone before the library is.
  }
  ASSERT_EQ(0, dlclose(handle));
  EXPECT_EQ(nullptr, MBQ::MBQEnvFactory::getInstance().findEnv("quellix"));
  EXPECT_EQ(nullptr, ConfigFactory::findByName(kConfigType));
}

}  // namespace
