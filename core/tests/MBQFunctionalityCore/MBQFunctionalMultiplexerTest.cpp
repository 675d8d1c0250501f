#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "MBQFunctionalityCore/MBQAccessProvider.h"
#include "MBQFunctionalityCore/MBQFunctionalFactory.h"

namespace MBQ {
namespace {

using ::testing::_;
using ::testing::Return;

struct Service {
  virtual ~Service() = default;
};

using ServicePtr = std::shared_ptr<Service>;
using Multiplexer = MBQFunctionalMultiplexer<Service>;

struct MockLocalFactory : MBQFunctionalFactoryLocal<Service> {
  MOCK_METHOD(ServicePtr, create, (const MBQAccessProviderPtr&), (const, override));
};

struct MockAgentFactory : MBQFunctionalFactoryAgent<Service> {
  MOCK_METHOD(ServicePtr, create, (const MBQEID&, const MBQAccessProviderPtr&, const std::string&),
              (const, override));
  MOCK_METHOD(ServicePtr, create, (const MBQEID&, const MBQAccessProviderPtr&), (const, override));
};

// A provider that cannot tell which EIDs are local.
struct BlindProvider : MBQAccessProviderPrototype {
  MBQLocalityCheckerPtr getLocalityChecker() const override { return nullptr; }
};

const MBQEID kLocalEid("101");
const MBQEID kRemoteEid("202");

enum ProviderKind { kNoProvider, kWithoutChecker, kChecking };
enum LocalKind { kNoLocal, kLocalMakes, kLocalMakesNull };
enum AgentKind { kNoAgent, kAgentMakes, kAgentWithParameter };
enum Outcome { kNull, kLocal, kAgent };

struct GetCase {
  const char* what;
  ProviderKind provider;
  const MBQEID* eid;
  LocalKind local;
  AgentKind agent;
  Outcome outcome;
  bool localAsked;
};

const GetCase kGetCases[] = {
    {"local EID prefers the local factory", kChecking, &kLocalEid, kLocalMakes, kAgentMakes, kLocal, true},
    {"remote EID goes to the agent", kChecking, &kRemoteEid, kLocalMakes, kAgentMakes, kAgent, false},
    {"remote EID with a parameter", kChecking, &kRemoteEid, kLocalMakes, kAgentWithParameter, kAgent, false},
    {"remote EID never falls back to local", kChecking, &kRemoteEid, kLocalMakes, kNoAgent, kNull, false},
    {"local EID, agent factory only", kChecking, &kLocalEid, kNoLocal, kAgentMakes, kAgent, false},
    {"local EID, local makes nothing", kChecking, &kLocalEid, kLocalMakesNull, kAgentWithParameter, kAgent, true},
    {"local EID, nothing anywhere", kChecking, &kLocalEid, kLocalMakesNull, kNoAgent, kNull, true},
    {"registered nowhere", kChecking, &kLocalEid, kNoLocal, kNoAgent, kNull, false},
    {"no provider tries local first", kNoProvider, &kRemoteEid, kLocalMakes, kAgentMakes, kLocal, true},
    {"no provider, local makes nothing", kNoProvider, &kRemoteEid, kLocalMakesNull, kAgentMakes, kAgent, true},
    {"no checker tries local first", kWithoutChecker, &kRemoteEid, kLocalMakes, kAgentMakes, kLocal, true},
    {"no checker, agent factory only", kWithoutChecker, &kRemoteEid, kNoLocal, kAgentWithParameter, kAgent, false},
};

MBQAccessProviderPtr makeProvider(ProviderKind kind) {
  if (kind == kNoProvider) return nullptr;
  if (kind == kWithoutChecker) return new BlindProvider();
  return new MBQLocalAccessProvider({kLocalEid});
}

TEST(MBQFunctionalMultiplexerTest, GetChoosesBetweenLocalAndAgent) {
  for (const GetCase& c : kGetCases) {
    SCOPED_TRACE(c.what);
    Multiplexer multiplexer;
    const MBQAccessProviderPtr provider = makeProvider(c.provider);
    const ServicePtr localProduct = std::make_shared<Service>();
    const ServicePtr agentProduct = std::make_shared<Service>();

    auto local = std::make_shared<MockLocalFactory>();
    ON_CALL(*local, create(_)).WillByDefault(Return(c.local == kLocalMakes ? localProduct : nullptr));
    EXPECT_CALL(*local, create(provider)).Times(c.localAsked ? 1 : 0);
    if (c.local != kNoLocal) multiplexer.registerLocal("svc", local);

    auto agent = std::make_shared<MockAgentFactory>();
    const bool withParameter = c.agent == kAgentWithParameter;
    const int agentCalls = c.agent != kNoAgent && c.outcome == kAgent ? 1 : 0;
    ON_CALL(*agent, create(_, _, _)).WillByDefault(Return(agentProduct));
    ON_CALL(*agent, create(_, _)).WillByDefault(Return(agentProduct));
    EXPECT_CALL(*agent, create(*c.eid, provider, "node=2")).Times(withParameter ? agentCalls : 0);
    EXPECT_CALL(*agent, create(*c.eid, provider)).Times(withParameter ? 0 : agentCalls);
    if (c.agent != kNoAgent) multiplexer.registerAgent("svc", agent);
    if (withParameter) multiplexer.setAgentParameter("svc", "node=2");

    const ServicePtr expected[] = {nullptr, localProduct, agentProduct};
    EXPECT_EQ(expected[c.outcome], multiplexer.get(*c.eid, provider, "svc"));
  }
}

TEST(MBQFunctionalMultiplexerTest, AgentParameterIsKeptApartFromTheFactory) {
  Multiplexer multiplexer;
  auto agent = std::make_shared<MockAgentFactory>();
  const MBQAccessProviderPtr provider = makeProvider(kWithoutChecker);
  const ServicePtr product = std::make_shared<Service>();
  ::testing::InSequence order;

  // Set before the factory exists, the parameter is used once the factory comes.
  multiplexer.setAgentParameter("svc", "first");
  EXPECT_EQ(nullptr, multiplexer.getAgent(kRemoteEid, provider, "svc"));
  multiplexer.registerAgent("svc", agent);
  EXPECT_CALL(*agent, create(kRemoteEid, provider, "first")).WillOnce(Return(product));
  EXPECT_EQ(product, multiplexer.getAgent(kRemoteEid, provider, "svc"));

  // An empty parameter is still a parameter.
  multiplexer.setAgentParameter("svc", "");
  EXPECT_CALL(*agent, create(kRemoteEid, provider, "")).WillOnce(Return(product));
  EXPECT_EQ(product, multiplexer.getAgent(kRemoteEid, provider, "svc"));

  multiplexer.removeAgentParameter("svc");
  EXPECT_CALL(*agent, create(kRemoteEid, provider)).WillOnce(Return(product));
  EXPECT_EQ(product, multiplexer.getAgent(kRemoteEid, provider, "svc"));

  // Another name's parameter is not borrowed, and the parameter survives the factory.
  multiplexer.setAgentParameter("other", "second");
  multiplexer.setAgentParameter("svc", "third");
  multiplexer.unregisterAgent("svc");
  EXPECT_EQ(nullptr, multiplexer.getAgent(kRemoteEid, provider, "svc"));
  multiplexer.registerAgent("svc", agent);
  EXPECT_CALL(*agent, create(kRemoteEid, provider, "third")).WillOnce(Return(nullptr));
  EXPECT_EQ(nullptr, multiplexer.getAgent(kRemoteEid, provider, "svc"));
}

TEST(MBQFunctionalMultiplexerTest, OtherAndUnregisteredNamesAreNoLongerAsked) {
  Multiplexer multiplexer;
  // Strict: any call to these factories fails the test.
  multiplexer.registerLocal("svc", std::make_shared<::testing::StrictMock<MockLocalFactory>>());
  multiplexer.registerAgent("svc", std::make_shared<::testing::StrictMock<MockAgentFactory>>());
  const MBQAccessProviderPtr provider = makeProvider(kChecking);
  // Names are exact keys: neither case nor blanks are folded.
  for (const std::string name : {"SVC", "svc ", ""}) {
    SCOPED_TRACE("'" + name + "'");
    EXPECT_EQ(nullptr, multiplexer.getLocal(provider, name));
    EXPECT_EQ(nullptr, multiplexer.getAgent(kLocalEid, provider, name));
    EXPECT_EQ(nullptr, multiplexer.get(kLocalEid, provider, name));
  }
  multiplexer.unregisterLocal("svc");
  multiplexer.unregisterAgent("svc");
  multiplexer.unregisterLocal("unknown");
  multiplexer.unregisterAgent("unknown");
  multiplexer.removeAgentParameter("unknown");
  EXPECT_EQ(nullptr, multiplexer.get(kLocalEid, nullptr, "svc"));

  // The name is free again.
  auto replacement = std::make_shared<MockLocalFactory>();
  const ServicePtr product = std::make_shared<Service>();
  EXPECT_CALL(*replacement, create(_)).WillOnce(Return(product));
  multiplexer.registerLocal("svc", replacement);
  EXPECT_EQ(product, multiplexer.get(kLocalEid, nullptr, "svc"));
}

// Factories run outside the registry's lock: a local service that needs a proxy to another
// node's service gets it from the same registry while it is being made.
TEST(MBQFunctionalMultiplexerTest, FactoryMayUseTheRegistryWhileCreating) {
  Multiplexer multiplexer;
  const ServicePtr agentProduct = std::make_shared<Service>();
  auto agent = std::make_shared<MockAgentFactory>();
  EXPECT_CALL(*agent, create(kRemoteEid, _)).WillOnce(Return(agentProduct));
  multiplexer.registerAgent("peer", agent);

  auto local = std::make_shared<MockLocalFactory>();
  EXPECT_CALL(*local, create(_)).WillOnce([&](const MBQAccessProviderPtr& provider) {
    multiplexer.unregisterLocal("unused");
    return multiplexer.get(kRemoteEid, provider, "peer");
  });
  multiplexer.registerLocal("svc", local);
  EXPECT_EQ(agentProduct, multiplexer.getLocal(makeProvider(kChecking), "svc"));
}

TEST(MBQFunctionalMultiplexerDeathTest, NullOrDuplicateFactoryAborts) {
  const std::string where = "core/src/MBQFunctionalityCore/MBQFunctionalFactory:[0-9]+ in ";
  Multiplexer multiplexer;
  EXPECT_DEATH(multiplexer.registerLocal("svc", nullptr), where + "registerLocal");
  EXPECT_DEATH(multiplexer.registerAgent("svc", nullptr), where + "registerAgent");
  // Each kind under its own name, so that neither is taken for a duplicate of the other.
  multiplexer.registerLocal("local", std::make_shared<MockLocalFactory>());
  multiplexer.registerAgent("agent", std::make_shared<MockAgentFactory>());
  EXPECT_DEATH(multiplexer.registerLocal("local", std::make_shared<MockLocalFactory>()), where + "registerLocal");
  EXPECT_DEATH(multiplexer.registerAgent("agent", std::make_shared<MockAgentFactory>()), where + "registerAgent");
}

}  // namespace
}  // namespace MBQ
