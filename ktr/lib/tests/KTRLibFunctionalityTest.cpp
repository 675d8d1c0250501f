#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "KTRFunctionality/KTRLibFunctionality.h"

namespace KTR {
namespace {

// One do-nothing implementation of all nine interfaces: the registry only needs objects it can
// tell apart.
struct Stub : KTRTEM, KTREnvM, KTRPkgM, KTRNetworkM, KTRProcessMonitor, KTRProcessM, KTRUp2date, KTRSupport,
              KTRSampleM {
  int listTemplates(std::vector<std::shared_ptr<KTRPackageHQTemplate>>&) override { return -1; }
  int getTemplateConfigInfo(const std::string&, std::shared_ptr<KTRTemplateConfigInfo>&) override { return -1; }
  int listEnvs(std::vector<MBQ::MBQEID>&) override { return -1; }
  int getEnvConfig(const MBQ::MBQEID&, std::shared_ptr<KTREnvConfig>&) override { return -1; }
  int setEnvConfig(const MBQ::MBQEID&, const KTREnvConfig&) override { return -1; }
  int listPackages(const MBQ::MBQEID&, std::vector<std::shared_ptr<KTRPackageInfo>>&) override { return -1; }
  int installPackages(const MBQ::MBQEID&, const std::vector<std::string>&) override { return -1; }
  int removePackages(const MBQ::MBQEID&, const std::vector<std::string>&) override { return -1; }
  int getNetConfiguration(std::shared_ptr<KTRNetConfiguration>&) override { return -1; }
  int setNetConfiguration(const KTRNetConfiguration&) override { return -1; }
  int listProcesses(const MBQ::MBQEID&, std::vector<int>&) override { return -1; }
  int isProcessAlive(const MBQ::MBQEID&, int, bool&) override { return -1; }
  int startProcess(const MBQ::MBQEID&, const std::vector<std::string>&, int&) override { return -1; }
  int killProcess(const MBQ::MBQEID&, int, int) override { return -1; }
  int getUpdateConfig(std::shared_ptr<KTRUpdateConfig>&) override { return -1; }
  int setUpdateConfig(const KTRUpdateConfig&) override { return -1; }
  int listUpdates(std::vector<std::shared_ptr<KTRUpdate>>&) override { return -1; }
  int sendProblemReport(const KTRProblemReportData&) override { return -1; }
  int listSamples(std::vector<std::string>&) override { return -1; }
  int getSample(const std::string&, std::shared_ptr<KTREnvConfig>&) override { return -1; }
};

// Each interface's getters and multiplexer accessor, so one typed test covers all nine.
template <class I>
struct Getters;

#define KTR_GETTERS(Interface, Stem)                                                \
  template <>                                                                       \
  struct Getters<Interface> {                                                       \
    static constexpr auto local = &KTRLibFunctionality::get##Stem##Local;           \
    static constexpr auto agent = &KTRLibFunctionality::get##Stem##Agent;           \
    static constexpr auto plain = &KTRLibFunctionality::get##Stem;                  \
    static constexpr auto multiplexer = &KTRLibFunctionality::get##Stem##Multiplexer; \
  }

KTR_GETTERS(KTRTEM, TEM);
KTR_GETTERS(KTREnvM, KTREnvM);
KTR_GETTERS(KTRPkgM, KTRPkgM);
KTR_GETTERS(KTRNetworkM, KTRNetworkM);
KTR_GETTERS(KTRProcessMonitor, KTRProcessMonitor);
KTR_GETTERS(KTRProcessM, KTRProcessM);
KTR_GETTERS(KTRUp2date, KTRUp2date);
KTR_GETTERS(KTRSupport, KTRSupport);
KTR_GETTERS(KTRSampleM, KTRSampleM);

#undef KTR_GETTERS

template <class I>
struct RecordingLocalFactory : MBQ::MBQFunctionalFactoryLocal<I> {
  std::shared_ptr<I> create(const MBQ::MBQAccessProviderPtr& provider) const override {
    provider_ = provider;
    return product_;
  }
  const std::shared_ptr<I> product_ = std::make_shared<Stub>();
  mutable MBQ::MBQAccessProviderPtr provider_;
};

template <class I>
struct RecordingAgentFactory : MBQ::MBQFunctionalFactoryAgent<I> {
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
  const std::shared_ptr<I> product_ = std::make_shared<Stub>();
  mutable MBQ::MBQEID eid_;
  mutable MBQ::MBQAccessProviderPtr provider_;
  mutable std::string parameter_ = "(none)";
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
  const auto local = std::make_shared<RecordingLocalFactory<I>>();
  const auto agent = std::make_shared<RecordingAgentFactory<I>>();
  auto& multiplexer = (registry.*G::multiplexer)();
  multiplexer.registerLocal("quellix", local);
  multiplexer.registerAgent("quellix", agent);
  multiplexer.setAgentParameter("quellix", "port=4646");
  const MBQ::MBQAccessProviderPtr provider(new MBQ::MBQLocalAccessProvider({MBQ::MBQEID("101")}));

  EXPECT_EQ(local->product_, (registry.*G::local)(provider, "quellix"));
  EXPECT_EQ(provider, local->provider_);

  EXPECT_EQ(agent->product_, (registry.*G::agent)(MBQ::MBQEID("101"), provider, "quellix"));
  EXPECT_EQ(MBQ::MBQEID("101"), agent->eid_);
  EXPECT_EQ(provider, agent->provider_);
  EXPECT_EQ("port=4646", agent->parameter_);

  EXPECT_EQ(local->product_, (registry.*G::plain)(MBQ::MBQEID("101"), provider, "quellix"));
  EXPECT_EQ(agent->product_, (registry.*G::plain)(MBQ::MBQEID("202"), provider, "quellix"));
  EXPECT_EQ(MBQ::MBQEID("202"), agent->eid_);

  EXPECT_EQ(nullptr, (registry.*G::local)(provider, "other"));
  EXPECT_EQ(nullptr, (registry.*G::agent)(MBQ::MBQEID("202"), provider, "other"));
  EXPECT_EQ(nullptr, (registry.*G::plain)(MBQ::MBQEID("101"), provider, "other"));
}

// Managers register with the process-wide registry and callers find them there.
TEST(KTRLibFunctionalityTest, InstanceIsProcessWide) {
  KTRLibFunctionality& registry = KTRLibFunctionality::getInstance();
  EXPECT_EQ(&registry, &KTRLibFunctionality::getInstance());
  const auto factory = std::make_shared<RecordingLocalFactory<KTREnvM>>();
  registry.getKTREnvMMultiplexer().registerLocal("instance-test", factory);
  EXPECT_EQ(factory->product_,
            KTRLibFunctionality::getInstance().getKTREnvM(MBQ::MBQEID("101"), nullptr, "instance-test"));
  EXPECT_EQ(nullptr, KTRLibFunctionality::getInstance().getTEMLocal(nullptr, "instance-test"));
  registry.getKTREnvMMultiplexer().unregisterLocal("instance-test");
}

}  // namespace
}  // namespace KTR
