#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <utility>

#include "../MBQTestSupport.h"
#include "MBQFunctionalityCore/MBQEnv.h"
#include "MBQFunctionalityCore/MBQEnvConfig.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {
namespace {

// A technology configuration registered the way a technology library registers its own.
struct TechConfig : MBQVEnvConfig {
  struct Writer : MBQEnvConfig::Writer {
    const char* getStrNSID() const { return kTypesNamespace; }
    const char* getStrTypeID() const { return "tech_configType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };
};
// A class of the configuration registry that is no virtual configuration.
struct NotVirtualConfig : MBQEnvConfig {
  struct Writer : TechConfig::Writer {
    const char* getStrTypeID() const { return "not_virtualType"; }
  };
};

MBQDerivedParserFactoryT<TechConfig, MBQEnvConfig, std::string, MBQEnvConfig::Reader, TechConfig::Writer> techFactory;
MBQDerivedParserFactoryT<NotVirtualConfig, MBQEnvConfig, std::string, MBQEnvConfig::Reader, NotVirtualConfig::Writer>
    notVirtualFactory;

class MBQEnvTest : public ::testing::Test {
 protected:
  // Writes the record under "env", then re-reads it from the message's text.
  std::string write(const MBQEnv& env) {
    MBQMessage message;
    EXPECT_EQ(0, message.iterator()->putObject(env, MBQEnv::Writer(), "env"));
    return message.toString();
  }
  int read(const std::string& text, MBQEnv& env) {
    return test::parsed(text).iterator()->getObject(env, MBQEnv::Reader(), "env");
  }
  template <class Config = MBQVEnvConfig>
  std::shared_ptr<Config> virtualConfig(const std::string& hostname) {
    auto config = std::make_shared<Config>();
    config->setHostname(hostname);
    return config;
  }
};

TEST_F(MBQEnvTest, AlertTypesKeepFiveReasonsAndIgnoreOthers) {
  const std::pair<int, int> cases[] = {{-1, 0}, {0, 10}, {4, 14}, {5, 0}, {1000, 0}};  // reason, type kept
  MBQEnv env;
  for (const auto& [reason, type] : cases) env.setAlertType(reason, reason + 10);
  for (const auto& [reason, type] : cases) EXPECT_EQ(type, env.getAlertType(reason)) << "reason " << reason;
}

TEST_F(MBQEnvTest, VirtualConfigOfUnknownTypeReadsAsPlainVirtualConfig) {
  // Written without any factory for its class: typed with the core's own schema ids.
  std::string text = write(MBQEnv(MBQEID("e"), virtualConfig("plain.example")));
  EXPECT_NE(std::string::npos, text.find("venv_configType")) << text;

  MBQEnv back;
  ASSERT_EQ(0, read(text, back));
  ASSERT_NE(nullptr, back.getVirtualConfig());
  EXPECT_EQ(typeid(MBQVEnvConfig), typeid(*back.getVirtualConfig()));

  // A type written by a technology this process does not know.
  const std::string from = "tech_configType";
  text = write(MBQEnv(MBQEID("e"), virtualConfig<TechConfig>("other.example")));
  text.replace(text.find(from), from.size(), "unknown_configType");
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(typeid(MBQVEnvConfig), typeid(*back.getVirtualConfig()));
  MBQOptionalProperty<std::string> hostname;
  back.getVirtualConfig()->getHostname(hostname);
  EXPECT_EQ(MBQOptionalProperty<std::string>("other.example"), hostname);
}

TEST_F(MBQEnvTest, FailedReadLeavesRecordUnchanged) {
  MBQEnv original(MBQEID("keep"), virtualConfig("keep.example"));
  original.setAlertType(0, 1);

  const std::string xsi = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";
  const std::pair<const char*, std::string> cases[] = {
      {"no eid", "<m><env><parent_eid>p</parent_eid></env></m>"},
      {"empty eid", "<m><env><eid/></env></m>"},
      {"status without state", "<m><env><eid>x</eid><status><since>5</since></status></env></m>"},
      {"alert without value", "<m><env><eid>x</eid><alert><reason>1</reason></alert></env></m>"},
      {"virtual config of a non-virtual class", "<m" + xsi + " xmlns:k='" + std::string(kTypesNamespace) +
                                                    "'><env><eid>x</eid><virtual_config xsi:type='k:not_virtualType'/>"
                                                    "</env></m>"},
  };
  for (const auto& [what, text] : cases) {
    MBQEnv env = original;
    EXPECT_EQ(-1, read(text, env)) << what;
    EXPECT_EQ("keep", env.getEID().toString()) << what;
    EXPECT_EQ(1, env.getAlertType(0)) << what;
    EXPECT_EQ(original.getVirtualConfig(), env.getVirtualConfig()) << what;
  }
}

TEST_F(MBQEnvTest, OptionalPartsAreLeftOutAndConfigsKeptWhenAbsent) {
  MBQEnv env(MBQEID("bare"), nullptr);
  const std::string text = write(env);
  for (const char* absent : {"parent_eid", "since", "alert", "<config", "virtual_config"})
    EXPECT_EQ(std::string::npos, text.find(absent)) << absent << " in " << text;

  MBQEnv back(MBQEID("old"), virtualConfig("old.example"));
  const auto kept = back.getVirtualConfig();
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ("bare", back.getEID().toString());
  EXPECT_EQ(kept, back.getVirtualConfig());
}

}  // namespace
}  // namespace MBQ
