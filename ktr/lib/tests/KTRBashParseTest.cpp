#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <set>
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
  const struct {
    std::string file;
    std::string stored;
    std::string writtenBack;
  } cases[] = {
      {"x86", "i386", "x86"},
      {"X86", "i386", "x86"},
      {"x86_64", "x86_64", "x86_64"},
      {"i386", "i386", "x86"},
      {"I386", "I386", "x86"},
      {"ia64", "ia64", "ia64"},
      {"", "", ""},
      {"x86 ", "x86 ", "x86 "},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.stored, Arch::FromString()(c.file)) << c.file;
    EXPECT_EQ(c.writtenBack, Arch::ToString()(c.stored)) << c.file;
    EXPECT_EQ(c.writtenBack, roundTrip(ArchParser(), c.file)) << c.file;
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
  const struct {
    const KTRBashParse& parser;
    std::string value;
    std::string writtenBack;
  } cases[] = {
      // Splitting itself is Format::Load's (KTRHardDiskTest).
      {NameserverParser(), "\t1.1.1.1\n2.2.2.2 ", "1.1.1.1 2.2.2.2"},
      {NameserverParser(), "2.2.2.2 1.1.1.1 2.2.2.2", "2.2.2.2 1.1.1.1 2.2.2.2"},
      {NameserverParser(), "10.0.0.5/24 dhcp", "10.0.0.5/24 dhcp"},
      {NameserverParser(), "", ""},
      {NetifParser(), ";;", ""},  // empty but specified
      {NetifParser(),
       "ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes ; ifname=eth1,network=,mac=,nettype=bridged,dhcp=no",
       "ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes;ifname=eth1,network=,mac=,nettype=bridged,dhcp=no"},
      // The implicit host-routed venet0 has no text and adds no separator.
      {NetifParser(), "ifname=venet0,nettype=host-routed;ifname=eth0,network=,mac=,nettype=bridged,dhcp=no",
       "ifname=eth0,network=,mac=,nettype=bridged,dhcp=no"},
      {FeaturesParser(), "a:on b:off", "a:on b:off"},
      {FeaturesParser(), "b:off a:on", "a:on b:off"},
      {FeaturesParser(), "a:1 a:2", "a:1"},  // the first of equal keys
      {FeaturesParser(), "bare", "bare:"},
      {FeaturesParser(), "a:b:c", "a:b:c"},
      {RolesParser(), "web  db web", "db web"},
      // The record keeps no empty set of roles: an empty list reads back unspecified.
      {RolesParser(), "", "<none>"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.writtenBack, roundTrip(c.parser, c.value)) << "'" << c.value << "'";
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

// ---------------------------------------------------------------- resource value formats

MBQ::MBQQoS qos(long long limit) { return MBQ::MBQQoS("r", limit); }
MBQ::MBQQoS qos(long long barrier, long long limit) { return MBQ::MBQQoS("r", barrier, limit); }

TEST(KTRBashParseTest, QoSValueFormats) {
  const QoS::Declaration complexInteger{2, 1};
  const QoS::Declaration simpleInteger{1, 1};
  const QoS::Declaration percent{1, 0};
  const struct {
    QoS::Declaration declaration;
    std::string text;
    MBQ::MBQQoS read;
    std::string writtenBack;
  } cases[] = {
      {complexInteger, "100:200", qos(100, 200), "100:200"},
      {complexInteger, "300", qos(300), "300"},
      {complexInteger, " 5 : 7", qos(5, 7), "5:7"},
      {complexInteger, ":5", qos(0, 5), "0:5"},
      {complexInteger, "abc:def", qos(0, 0), "0:0"},
      {complexInteger, "1:2:3", qos(1, 2), "1:2"},
      {complexInteger, "-1:9223372036854775807", qos(-1, LLONG_MAX), "-1:9223372036854775807"},
      {complexInteger, "99999999999999999999:-99999999999999999999", qos(LLONG_MAX, LLONG_MIN),
       "9223372036854775807:-9223372036854775808"},
      {simpleInteger, "42xyz", qos(42), "42"},
      {simpleInteger, "4:5", qos(4), "4"},
      {simpleInteger, "", qos(0), "0"},
      {simpleInteger, "+7", qos(7), "7"},
      {percent, "12.5", qos(1250), "12.5"},
      {percent, "100", qos(10000), "100"},
      {percent, "abc", qos(0), "0"},
      {percent, "-1.5", qos(-150), "-1.5"},
      // Single precision: 0.29 is 0.28999999 as a float, and the product is truncated.
      {percent, "0.29", qos(28), "0.28"},
      {percent, "0.07", qos(7), "0.07"},
      {percent, "12.5%", qos(1250), "12.5"},
      {percent, "1e50", qos(LLONG_MAX), "92233720368547760"},
      {percent, "-1e50", qos(LLONG_MIN), "-92233720368547760"},
      {percent, "nan", qos(0), "0"},
  };
  for (const auto& c : cases) {
    MBQ::MBQQoS read("r");
    ASSERT_EQ(0, QoS::readValue(c.declaration, c.text, read)) << c.text;
    EXPECT_EQ(c.read, read) << c.text << " read " << read.toString();
    std::string text = "stale";
    ASSERT_EQ(0, QoS::writeValue(c.declaration, read, text)) << c.text;
    EXPECT_EQ(c.writtenBack, text) << c.text;
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
