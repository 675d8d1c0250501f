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
using ArchParser = KTRBashParseString<MBQEnvConfig, std::string, &MBQEnvConfig::setArchitecture,
                                      &MBQEnvConfig::getArchitecture, Arch::FromString, Arch::ToString>;
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
using RolesParser = KTRBashParseStringList<KTREnvConfig, &KTREnvConfig::setServerRoles, &KTREnvConfig::getServerRoles>;
using TechnologiesParser = Technologies::Parser<MBQEnvConfig, &MBQEnvConfig::setArchitecture>;

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

TEST(KTRBashParseTest, BoolConverters) {
  for (const char* text : {"yes", "YES", "Yes", "yEs"}) EXPECT_TRUE(Bool::FromString()(text)) << text;
  for (const char* text : {"no", "1", "true", "", "y", "yess", " yes", "yes "}) {
    EXPECT_FALSE(Bool::FromString()(text)) << text;
  }
  EXPECT_EQ("yes", Bool::ToString()(true));
  EXPECT_EQ("no", Bool::ToString()(false));
}

TEST(KTRBashParseTest, ArchConverters) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "arch")) {
    EXPECT_EQ(c.at(1), Arch::FromString()(c[0])) << c[0];
    EXPECT_EQ(c.at(2), Arch::ToString()(c[1])) << c[0];
    EXPECT_EQ(c[2], roundTrip(ArchParser(), c[0])) << c[0];
  }
  EXPECT_EQ("<none>", written(ArchParser(), KTREnvConfig()));
}

TEST(KTRBashParseTest, AddressConverterKeepsWordsAndNetworkParts) {
  const AddressConverter convert;
  for (const char* text : {"10.0.0.5", "10.0.0.5/24", "10.0.0.5/255.255.255.0", "fe80::1/64", "dhcp", "not-an-ip"}) {
    EXPECT_EQ(text, convert(convert(std::string(text)))) << text;
  }
}

TEST(KTRBashParseTest, StringStoresEmptyValuesButNotEmptyDoesNot) {
  KTREnvConfig config;
  ASSERT_EQ(0, RootParser().read("ve_root", "", config));
  MBQOptionalProperty<std::string> root;
  config.getVERootVar(root);
  EXPECT_EQ(MBQOptionalProperty<std::string>(""), root);
  EXPECT_EQ("", written(RootParser(), config));

  ASSERT_EQ(0, HostnameParser().read("hostname", "ct.example.com", config));
  EXPECT_EQ("ct.example.com", written(HostnameParser(), config));
  ASSERT_EQ(0, HostnameParser().read("hostname", "", config));
  MBQOptionalProperty<std::string> hostname;
  config.getHostname(hostname);
  EXPECT_FALSE(hostname.isSpecified()) << "an empty value removes an earlier one";
  EXPECT_EQ("<none>", written(HostnameParser(), config));
}

TEST(KTRBashParseTest, NothingToWriteWithoutAValue) {
  KTREnvConfig noSubtree;
  KTREnvConfig empty;
  empty.initMsg();
  std::string value;
  EXPECT_EQ(-1, HostnameParser().write("hostname", noSubtree, value)) << "the getter's own code";
  for (const KTREnvConfig* config : {&noSubtree, &empty}) {
    EXPECT_EQ("<none>", written(RootParser(), *config));
    EXPECT_EQ("<none>", written(HostnameParser(), *config));
    EXPECT_EQ("<none>", written(OnBootParser(), *config));
    EXPECT_EQ("<none>", written(NameserverParser(), *config));
    EXPECT_EQ("<none>", written(FeaturesParser(), *config));
    EXPECT_EQ("<none>", written(KTRBashParsePlatform(), *config));
  }
}

TEST(KTRBashParseTest, ListsSplitAtEveryDelimiterAndJoinWithTheFirst) {
  const NameserverParser nameserver;
  const NetifParser netif;
  const FeaturesParser features;
  const RolesParser roles;
  const std::map<std::string, const KTRBashParse*> parsers = {
      {"nameserver", &nameserver}, {"netif", &netif}, {"features", &features}, {"roles", &roles}};
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

  EXPECT_EQ("windows", roundTrip(KTRBashParsePlatform(), "windows"));
  KTREnvConfig withoutPlatform;
  MBQ::MBQOsDescription nameOnly;
  nameOnly.name = std::string("centos");
  withoutPlatform.setOsDescription(nameOnly);
  EXPECT_EQ("<none>", written(KTRBashParsePlatform(), withoutPlatform));
}

TEST(KTRBashParseTest, TechnologiesTakeTheFirstSupportedArchitecture) {
  const struct {
    std::string value;
    const char* architecture;  // nullptr: nothing stored
  } cases[] = {
      // Which names count is KTRArchitectureSelector's (KTRTEMTest).
      {"hqfs x86_64", "x86_64"}, {"x86 x86_64", "i386"}, {" \tia64\n", "ia64"}, {"hqfs  nptl", nullptr}, {"", nullptr},
  };
  for (const auto& c : cases) {
    KTREnvConfig config;
    EXPECT_EQ(0, TechnologiesParser().read("technologies", c.value, config)) << c.value;
    MBQOptionalProperty<std::string> architecture;
    config.getArchitecture(architecture);
    if (c.architecture == nullptr) {
      EXPECT_FALSE(architecture.isSpecified()) << c.value;
    } else {
      EXPECT_EQ(MBQOptionalProperty<std::string>(c.architecture), architecture) << c.value;
    }
    EXPECT_EQ("<none>", written(TechnologiesParser(), config)) << "never written back";
  }
}

MBQ::MBQQoS qos(long long limit) { return MBQ::MBQQoS("r", limit); }
MBQ::MBQQoS qos(long long barrier, long long limit) { return MBQ::MBQQoS("r", barrier, limit); }

TEST(KTRBashParseTest, QoSValueFormats) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "qos")) {
    const QoS::Declaration declaration{std::stoi(c.at(0)), std::stoi(c[0].substr(2))};
    const auto colon = c.at(2).find(':');
    const MBQ::MBQQoS expected = colon == std::string::npos
                                     ? qos(std::stoll(c[2]))
                                     : qos(std::stoll(c[2].substr(0, colon)), std::stoll(c[2].substr(colon + 1)));
    MBQ::MBQQoS read("r");
    ASSERT_EQ(0, QoS::readValue(declaration, c.at(1), read)) << c[1];
    EXPECT_EQ(expected, read) << c[1] << " read " << read.toString();
    std::string text = "stale";
    ASSERT_EQ(0, QoS::writeValue(declaration, read, text)) << c[1];
    EXPECT_EQ(c.at(3), text) << c[1];
  }
}

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
