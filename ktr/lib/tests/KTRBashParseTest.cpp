#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParse.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "KTRFunctionality/KTRVEth.h"
#include "MBQTestSupport.h"

namespace KTR {
namespace {

using MBQ::MBQEnvConfig;
using MBQ::MBQOptionalProperty;
using NameValues = std::map<std::string, std::string>;

using RootParser =
    KTRBashParseString<KTREnvConfig, std::string, &KTREnvConfig::setVERootVar, &KTREnvConfig::getVERootVar>;
using HostnameParser =
    KTRBashParseStringNotEmpty<MBQEnvConfig, std::string, &MBQEnvConfig::setHostname, &MBQEnvConfig::getHostname>;
using OnBootParser = KTRBashParseBool<KTREnvConfig, &KTREnvConfig::setOnBoot, &KTREnvConfig::getOnBoot>;
using NameserverParser =
    KTRBashParseGenericList<MBQEnvConfig, std::vector<MBQ::MBQIPAddress>, &MBQEnvConfig::setNameservers,
                            &MBQEnvConfig::getNameservers, std::back_insert_iterator<std::vector<MBQ::MBQIPAddress>>,
                            AddressConverter, AddressConverter, spaceDelimiterProvider>;
using NetifParser =
    KTRBashParseGenericList<KTREnvConfig, std::vector<KTRNetVEth>, &KTREnvConfig::setNetVEths,
                            &KTREnvConfig::getNetVEths, std::back_insert_iterator<std::vector<KTRNetVEth>>,
                            FromStringConverter<KTRNetVEth>, ToStringConverter<KTRNetVEth>, semicolonDelimiterProvider>;
using FeaturesParser = KTRBashParseGenericList<KTREnvConfig, NameValues, &KTREnvConfig::setFeatures,
                                               &KTREnvConfig::getFeatures, insert_iterator_simple<NameValues>,
                                               Format::NameValue<':'>, Format::NameValue<':'>, spaceDelimiterProvider>;
using TechnologiesParser = Technologies::Parser<MBQEnvConfig, &MBQEnvConfig::setArchitecture>;

// What each parser of the key table reads from a container file and writes back is shown by
// ktrctl (tools/ktrctl/tests/transcripts/read.t); here what no file can show: records without a
// subtree or holding other values, values with line breaks, and the value format codes.

// The value a parser writes for `config`, or "<none>" when it has nothing to write.
std::string written(const KTRBashParse& parser, const KTREnvConfig& config) {
  std::string value = "stale";
  return parser.write("key", config, value) == 0 ? value : "<none>";
}

// The value read into a fresh record and written back.
std::string roundTrip(const KTRBashParse& parser, const std::string& value) {
  KTREnvConfig config;
  EXPECT_EQ(0, parser.read("key", value, config)) << value;
  return written(parser, config);
}

TEST(KTRBashParseTest, NothingToWriteWithoutASubtree) {
  const KTREnvConfig noSubtree;
  std::string value;
  EXPECT_EQ(-1, HostnameParser().write("hostname", noSubtree, value)) << "the getter's own code";
  EXPECT_EQ("<none>", written(RootParser(), noSubtree));
  EXPECT_EQ("<none>", written(HostnameParser(), noSubtree));
  EXPECT_EQ("<none>", written(OnBootParser(), noSubtree));
  EXPECT_EQ("<none>", written(NameserverParser(), noSubtree));
  EXPECT_EQ("<none>", written(FeaturesParser(), noSubtree));
  EXPECT_EQ("<none>", written(KTRBashParsePlatform(), noSubtree));
}

TEST(KTRBashParseTest, ListsSplitAtEveryDelimiterAndJoinWithTheFirst) {
  const NameserverParser nameserver;
  const NetifParser netif;
  const std::map<std::string, const KTRBashParse*> parsers = {{"nameserver", &nameserver}, {"netif", &netif}};
  for (const auto& c : MBQ::test::caseRows(__FILE__, "lists"))
    EXPECT_EQ(c.at(2), roundTrip(*parsers.at(c.at(0)), c.at(1))) << c[0] << " '" << c[1] << "'";
}

TEST(KTRBashParseTest, PlatformChangesOnlyThePlatform) {
  KTREnvConfig config;
  MBQ::MBQOsDescription os;
  os.name = std::string("centos");
  os.version = std::string("7");
  config.setOsDescription(os);
  ASSERT_EQ(0, KTRBashParsePlatform().read("platform", "linux", config));
  MBQOptionalProperty<MBQ::MBQOsDescription> read;
  config.getOsDescription(read);
  ASSERT_TRUE(read.isSpecified());
  EXPECT_EQ(MBQOptionalProperty<std::string>("linux"), read.get().platform);
  EXPECT_EQ(MBQOptionalProperty<std::string>("centos"), read.get().name);
  EXPECT_EQ(MBQOptionalProperty<std::string>("7"), read.get().version);
  EXPECT_EQ("linux", written(KTRBashParsePlatform(), config));

  KTREnvConfig withoutPlatform;
  MBQ::MBQOsDescription nameOnly;
  nameOnly.name = std::string("centos");
  withoutPlatform.setOsDescription(nameOnly);
  EXPECT_EQ("<none>", written(KTRBashParsePlatform(), withoutPlatform));
}

TEST(KTRBashParseTest, TechnologiesSplitAtLineBreaksToo) {
  KTREnvConfig config;
  EXPECT_EQ(0, TechnologiesParser().read("technologies", " \tia64\n", config));
  MBQOptionalProperty<std::string> architecture;
  config.getArchitecture(architecture);
  EXPECT_EQ(MBQOptionalProperty<std::string>("ia64"), architecture);
  EXPECT_EQ("<none>", written(TechnologiesParser(), config)) << "never written back";
}

MBQ::MBQQoS qos(long long barrier, long long limit) { return MBQ::MBQQoS("r", barrier, limit); }

TEST(KTRBashParseTest, QoSValueWithoutColonLeavesTheBarrier) {
  MBQ::MBQQoS read("r", 1, 2);
  ASSERT_EQ(0, QoS::readValue({2, 1}, "300", read));
  EXPECT_EQ(qos(1, 300), read);
}

TEST(KTRBashParseTest, QoSDeclarationsWithoutFormat) {
  for (const QoS::Declaration declaration : {QoS::Declaration{2, 2}, QoS::Declaration{1, 2}, QoS::Declaration{2, 0},
                                             QoS::Declaration{0, 1}, QoS::Declaration()}) {
    MBQ::MBQQoS read("r", 1, 2);
    EXPECT_EQ(QoS::kNoValueFormat, QoS::readValue(declaration, "100:200", read));
    EXPECT_EQ(qos(1, 2), read);
    std::string text = "kept";
    EXPECT_EQ(QoS::kNoValueFormat, QoS::writeValue(declaration, read, text));
    EXPECT_EQ("kept", text);
  }
}

}  // namespace
}  // namespace KTR
