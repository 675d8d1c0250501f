#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "KTRFunctionality/KTRLibFunctionality.h"

namespace KTR {
namespace {

// Do-nothing implementations: the registry only needs objects it can tell apart.
struct StubTEM : KTRTEM {
  int listTemplates(std::vector<std::shared_ptr<KTRPackageHQTemplate>>&) override { return -1; }
  int getTemplateConfigInfo(const std::string&, std::shared_ptr<KTRTemplateConfigInfo>&) override { return -1; }
};
struct StubEnvM : KTREnvM {
  int listEnvs(std::vector<MBQ::MBQEID>&) override { return -1; }
  int getEnvConfig(const MBQ::MBQEID&, std::shared_ptr<KTREnvConfig>&) override { return -1; }
  int setEnvConfig(const MBQ::MBQEID&, const KTREnvConfig&) override { return -1; }
};
struct StubPkgM : KTRPkgM {
  int listPackages(const MBQ::MBQEID&, std::vector<std::shared_ptr<KTRPackageInfo>>&) override { return -1; }
  int installPackages(const MBQ::MBQEID&, const std::vector<std::string>&) override { return -1; }
  int removePackages(const MBQ::MBQEID&, const std::vector<std::string>&) override { return -1; }
};
struct StubNetworkM : KTRNetworkM {
  int getNetConfiguration(std::shared_ptr<KTRNetConfiguration>&) override { return -1; }
  int setNetConfiguration(const KTRNetConfiguration&) override { return -1; }
};
struct StubProcessMonitor : KTRProcessMonitor {
  int listProcesses(const MBQ::MBQEID&, std::vector<int>&) override { return -1; }
  int isProcessAlive(const MBQ::MBQEID&, int, bool&) override { return -1; }
};
struct StubProcessM : KTRProcessM {
  int startProcess(const MBQ::MBQEID&, const std::vector<std::string>&, int&) override { return -1; }
  int killProcess(const MBQ::MBQEID&, int, int) override { return -1; }
};
struct StubUp2date : KTRUp2date {
  int getUpdateConfig(std::shared_ptr<KTRUpdateConfig>&) override { return -1; }
  int setUpdateConfig(const KTRUpdateConfig&) override { return -1; }
  int listUpdates(std::vector<std::shared_ptr<KTRUpdate>>&) override { return -1; }
};
struct StubSupport : KTRSupport {
  int sendProblemReport(const KTRProblemReportData&) override { return -1; }
};
struct StubSampleM : KTRSampleM {
  int listSamples(std::vector<std::string>&) override { return -1; }
  int getSample(const std::string&, std::shared_ptr<KTREnvConfig>&) override { return -1; }
};

// Each interface's getters and multiplexer accessor, so one typed test covers all nine.
template <class I>
struct Getters;

#define KTR_GETTERS(Interface, Stem, StubType)                                      \
  template <>                                                                       \
  struct Getters<Interface> {                                                       \
    using Stub = StubType;                                                          \
    static constexpr auto local = &KTRLibFunctionality::get##Stem##Local;           \
    static constexpr auto agent = &KTRLibFunctionality::get##Stem##Agent;           \
    static constexpr auto plain = &KTRLibFunctionality::get##Stem;                  \
    static constexpr auto multiplexer = &KTRLibFunctionality::get##Stem##Multiplexer; \
  }

KTR_GETTERS(KTRTEM, TEM, StubTEM);
KTR_GETTERS(KTREnvM, KTREnvM, StubEnvM);
KTR_GETTERS(KTRPkgM, KTRPkgM, StubPkgM);
KTR_GETTERS(KTRNetworkM, KTRNetworkM, StubNetworkM);
KTR_GETTERS(KTRProcessMonitor, KTRProcessMonitor, StubProcessMonitor);
KTR_GETTERS(KTRProcessM, KTRProcessM, StubProcessM);
KTR_GETTERS(KTRUp2date, KTRUp2date, StubUp2date);
KTR_GETTERS(KTRSupport, KTRSupport, StubSupport);
KTR_GETTERS(KTRSampleM, KTRSampleM, StubSampleM);

#undef KTR_GETTERS

template <class I>
class RecordingLocalFactory : public MBQ::MBQFunctionalFactoryLocal<I> {
 public:
  explicit RecordingLocalFactory(std::shared_ptr<I> product) : product_(std::move(product)) {}
  std::shared_ptr<I> create(const MBQ::MBQAccessProviderPtr& provider) const override {
    provider_ = provider;
    return product_;
  }
  mutable MBQ::MBQAccessProviderPtr provider_;

 private:
  std::shared_ptr<I> product_;
};

template <class I>
class RecordingAgentFactory : public MBQ::MBQFunctionalFactoryAgent<I> {
 public:
  explicit RecordingAgentFactory(std::shared_ptr<I> product) : product_(std::move(product)) {}
  std::shared_ptr<I> create(const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider,
                            const std::string& parameter) const override {
    parameter_ = parameter;
    return create(eid, provider);
  }
  std::shared_ptr<I> create(const MBQ::MBQEID& eid, const MBQ::MBQAccessProviderPtr& provider) const override {
    eid_ = eid;
    provider_ = provider;
    return product_;
  }
  mutable MBQ::MBQEID eid_;
  mutable MBQ::MBQAccessProviderPtr provider_;
  mutable std::string parameter_ = "(none)";

 private:
  std::shared_ptr<I> product_;
};

template <class I>
class KTRLibFunctionalityGetterTest : public ::testing::Test {};

using Interfaces = ::testing::Types<KTRTEM, KTREnvM, KTRPkgM, KTRNetworkM, KTRProcessMonitor, KTRProcessM,
                                    KTRUp2date, KTRSupport, KTRSampleM>;
TYPED_TEST_SUITE(KTRLibFunctionalityGetterTest, Interfaces);

TYPED_TEST(KTRLibFunctionalityGetterTest, EachFormForwardsToItsMultiplexer) {
  using I = TypeParam;
  using G = Getters<I>;
  KTRLibFunctionality registry;
  const std::shared_ptr<I> localProduct = std::make_shared<typename G::Stub>();
  const std::shared_ptr<I> agentProduct = std::make_shared<typename G::Stub>();
  auto local = std::make_shared<RecordingLocalFactory<I>>(localProduct);
  auto agent = std::make_shared<RecordingAgentFactory<I>>(agentProduct);
  auto& multiplexer = (registry.*G::multiplexer)();
  multiplexer.registerLocal("quellix", local);
  multiplexer.registerAgent("quellix", agent);
  multiplexer.setAgentParameter("quellix", "port=4646");
  const MBQ::MBQAccessProviderPtr provider(new MBQ::MBQLocalAccessProvider({MBQ::MBQEID("101")}));

  EXPECT_EQ(localProduct, (registry.*G::local)(provider, "quellix"));
  EXPECT_EQ(provider, local->provider_);

  EXPECT_EQ(agentProduct, (registry.*G::agent)(MBQ::MBQEID("101"), provider, "quellix"));
  EXPECT_EQ(MBQ::MBQEID("101"), agent->eid_);
  EXPECT_EQ(provider, agent->provider_);
  EXPECT_EQ("port=4646", agent->parameter_);

  EXPECT_EQ(localProduct, (registry.*G::plain)(MBQ::MBQEID("101"), provider, "quellix"));
  EXPECT_EQ(agentProduct, (registry.*G::plain)(MBQ::MBQEID("202"), provider, "quellix"));
  EXPECT_EQ(MBQ::MBQEID("202"), agent->eid_);

  EXPECT_EQ(nullptr, (registry.*G::local)(provider, "other"));
  EXPECT_EQ(nullptr, (registry.*G::agent)(MBQ::MBQEID("202"), provider, "other"));
  EXPECT_EQ(nullptr, (registry.*G::plain)(MBQ::MBQEID("101"), provider, "other"));
}

// Managers register with the process-wide registry and callers find them there.
TEST(KTRLibFunctionalityTest, InstanceIsProcessWide) {
  KTRLibFunctionality& registry = KTRLibFunctionality::getInstance();
  EXPECT_EQ(&registry, &KTRLibFunctionality::getInstance());
  const KTREnvMSP product = std::make_shared<StubEnvM>();
  registry.getKTREnvMMultiplexer().registerLocal("instance-test",
                                                 std::make_shared<RecordingLocalFactory<KTREnvM>>(product));
  EXPECT_EQ(product, KTRLibFunctionality::getInstance().getKTREnvM(MBQ::MBQEID("101"), nullptr, "instance-test"));
  EXPECT_EQ(nullptr, KTRLibFunctionality::getInstance().getTEMLocal(nullptr, "instance-test"));
  registry.getKTREnvMMultiplexer().unregisterLocal("instance-test");
}

}  // namespace
}  // namespace KTR
