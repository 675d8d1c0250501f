#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParse.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "KTRFunctionality/KTRVEth.h"

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

TEST(KTRBashParseTest, NothingToWriteWithoutASubtree) {
  const KTREnvConfig noSubtree;
  std::string value;
  EXPECT_EQ(-1, HostnameParser().write("hostname", noSubtree, value)) << "the getter's own code";
  EXPECT_EQ("<none>", written(RootParser(), noSubtree));
  EXPECT_EQ("<none>", written(OnBootParser(), noSubtree));
  EXPECT_EQ("<none>", written(NameserverParser(), noSubtree));
  EXPECT_EQ("<none>", written(FeaturesParser(), noSubtree));
  EXPECT_EQ("<none>", written(KTRBashParsePlatform(), noSubtree));
}

// Splitting itself is Format::Load's (KTRHardDiskTest).
TEST(KTRBashParseTest, ListsSplitAtEveryDelimiterAndJoinWithTheFirst) {
  KTREnvConfig nameservers, netifs;
  // A line break, which no file line can hold, splits too.
  EXPECT_EQ(0, NameserverParser().read("key", "\t1.1.1.1\n2.2.2.2 ", nameservers));
  EXPECT_EQ("1.1.1.1 2.2.2.2", written(NameserverParser(), nameservers));
  // Empty but specified (a file read always holds venet0, so no file shows this).
  EXPECT_EQ(0, NetifParser().read("key", ";;", netifs));
  EXPECT_EQ("", written(NetifParser(), netifs));
}

TEST(KTRBashParseTest, PlatformChangesOnlyThePlatform) {
  KTREnvConfig config;
  MBQ::MBQOsDescription os;
  os.name = std::string("centos");
  os.version = std::string("7");
  config.setOsDescription(os);
  EXPECT_EQ("<none>", written(KTRBashParsePlatform(), config)) << "a description without a platform";
  ASSERT_EQ(0, KTRBashParsePlatform().read("platform", "linux", config));
  os.platform = std::string("linux");
  MBQOptionalProperty<MBQ::MBQOsDescription> read;
  config.getOsDescription(read);
  EXPECT_EQ(MBQOptionalProperty<MBQ::MBQOsDescription>(os), read);
  EXPECT_EQ("linux", written(KTRBashParsePlatform(), config));
}

TEST(KTRBashParseTest, TechnologiesSplitAtLineBreaksToo) {
  KTREnvConfig config;
  EXPECT_EQ(0, TechnologiesParser().read("technologies", " \tia64\n", config));
  MBQOptionalProperty<std::string> architecture;
  config.getArchitecture(architecture);
  EXPECT_EQ(MBQOptionalProperty<std::string>("ia64"), architecture);
  EXPECT_EQ("<none>", written(TechnologiesParser(), config)) << "never written back";
}

// A value without a colon leaves the barrier; the declarations without a format change nothing.
TEST(KTRBashParseTest, QoSValuesLeaveWhatTheyDoNotSet) {
  MBQ::MBQQoS limitOnly("r", 1, 2);
  ASSERT_EQ(0, QoS::readValue({2, 1}, "300", limitOnly));
  EXPECT_EQ(MBQ::MBQQoS("r", 1, 300), limitOnly);
  for (const QoS::Declaration declaration : {QoS::Declaration{2, 2}, QoS::Declaration{1, 2}, QoS::Declaration{2, 0},
                                             QoS::Declaration{0, 1}, QoS::Declaration()}) {
    MBQ::MBQQoS read("r", 1, 2);
    EXPECT_EQ(QoS::kNoValueFormat, QoS::readValue(declaration, "100:200", read));
    EXPECT_EQ(MBQ::MBQQoS("r", 1, 2), read);
    std::string text = "kept";
    EXPECT_EQ(QoS::kNoValueFormat, QoS::writeValue(declaration, read, text));
    EXPECT_EQ("kept", text);
  }
}

}  // namespace
}  // namespace KTR
