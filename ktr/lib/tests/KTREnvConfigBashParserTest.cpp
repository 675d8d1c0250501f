#include <gtest/gtest.h>

#include "KTRRecordTesting.h"
#include "KTRFunctionality/KTREnvConfigKeys.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "KTRFunctionality/KTRBashParse.h"
#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "KTRFunctionality/KTRVEth.h"
#include "KTRFunctionality/KTRVocabulary.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"

namespace KTR {
namespace {

using MBQ::MBQOptionalProperty;
using Changes = KTREnvConfigBashParser::Changes;
using Addresses = std::vector<MBQ::MBQIPAddress>;

// Four resources, one per value format and one without a format; names in mixed case.
const char* const kVocabulary =
    "<vocabulary><technology><name>quellix</name><category><name>qos</name>"
    "<parameter><name>NumProc</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>cpuweight</name><complexity>1</complexity></parameter>"
    "<parameter><name>cpulimit</name><value_type>1</value_type><complexity>0</complexity></parameter>"
    "<parameter><name>opaque</name><value_type>2</value_type></parameter>"
    "</category></technology></vocabulary>";

MBQ::MBQVocMapSP vocabularyOf(const std::string& text) {
  auto vocabulary = std::make_shared<MBQ::MBQVocMap>();
  EXPECT_EQ(0, vocabulary->load(text)) << MBQ::getErrorMessage();
  return vocabulary;
}

using testing::LogCapture;

class KTREnvConfigBashParserTest : public ::testing::Test {
 protected:
  void SetUp() override {
    parser_ = KTREnvConfigBashParser::getInstance(vocabularyOf(kVocabulary));
    ASSERT_NE(nullptr, parser_);
  }

  KTREnvConfig read(const std::string& text) const {
    KTREnvConfig config;
    std::istringstream in(text);
    EXPECT_EQ(0, parser_->getConfig(in, config)) << text;
    return config;
  }

  std::string write(const KTREnvConfig& config, const std::string& oldText, bool merge = true) const {
    std::istringstream old(oldText);
    std::ostringstream out;
    EXPECT_EQ(0, parser_->putConfig(config, out, &old, merge));
    return out.str();
  }

  // The value the get side gives for `key`, or "<code>" when it gives none.
  std::string valueOf(const KTREnvConfig& config, const std::string& key) const {
    KTREnvConfigBashParser::ParameterParserGet get(config, parser_->getQoSMap());
    std::string value;
    const int rc = get.get(key, value);
    return rc == 0 ? value : "<" + std::to_string(rc) + ">";
  }

  KTREnvConfigBashParserSP parser_;
};

// The fixed keys as the key list published for programs that do not load the library; the
// parser's table must hold exactly these.
std::vector<std::string> sortedFixedKeys() {
  std::vector<std::string> keys(std::begin(kEnvConfigFixedKeys), std::end(kEnvConfigFixedKeys));
  std::sort(keys.begin(), keys.end());
  return keys;
}

KTRNetVEth veth(const std::string& name, bool hostRouted, const Addresses& addresses) {
  KTRNetVEth device;
  device.setName(name);
  device.setHostRouted(hostRouted);
  device.setAddresses(addresses);
  return device;
}

std::vector<KTRNetVEth> vethsOf(const KTREnvConfig& config) {
  MBQOptionalProperty<std::vector<KTRNetVEth>> veths;
  config.getNetVEths(veths);
  EXPECT_TRUE(veths.isSpecified());
  return veths.get();
}

MBQOptionalProperty<Addresses> addressesOf(const KTREnvConfig& config) {
  MBQOptionalProperty<Addresses> addresses;
  config.getAddresses(addresses);
  return addresses;
}

// ---------------------------------------------------------------- instance and tables

TEST_F(KTREnvConfigBashParserTest, ResourceMapComesFromTheVocabulary) {
  const auto& map = parser_->getQoSMap();
  ASSERT_EQ(4u, map.size());
  const struct {
    const char* id;
    const char* key;
    QoS::Declaration declaration;
  } expected[] = {{"cpulimit", "CPULIMIT", {1, 0}},
                  {"cpuweight", "CPUWEIGHT", {1, 1}},
                  {"numproc", "NUMPROC", {2, 1}},
                  {"opaque", "OPAQUE", {2, 2}}};
  for (const auto& e : expected) {
    const auto found = map.find(e.id);
    ASSERT_NE(map.end(), found) << e.id;
    EXPECT_EQ(e.id, found->second.id);
    EXPECT_EQ(e.key, found->second.key);
    EXPECT_EQ(e.declaration, found->second.declaration) << e.id;
  }
}

TEST_F(KTREnvConfigBashParserTest, EveryCallMakesANewParser) {
  const MBQ::MBQVocMapSP vocabulary = vocabularyOf(kVocabulary);
  const KTREnvConfigBashParserSP first = KTREnvConfigBashParser::getInstance(vocabulary);
  const KTREnvConfigBashParserSP second = KTREnvConfigBashParser::getInstance(vocabulary);
  ASSERT_NE(nullptr, first);
  EXPECT_NE(first, second);
  EXPECT_EQ(defaultVocabulary()->readCategory(std::string("qos"))->size(),
            KTREnvConfigBashParser::getInstance(defaultVocabulary())->getQoSMap().size());
}

TEST(KTREnvConfigBashParserInstanceTest, FailsWithoutResourceCategory) {
  const MBQ::MBQVocMapSP vocabularies[] = {
      nullptr,
      vocabularyOf("<vocabulary/>"),
      vocabularyOf("<vocabulary><category><name>other</name><parameter><name>a</name></parameter></category>"
                   "</vocabulary>"),
      vocabularyOf("<vocabulary><category><name>qos</name></category></vocabulary>"),
  };
  for (const MBQ::MBQVocMapSP& vocabulary : vocabularies) {
    LogCapture log;
    EXPECT_EQ(nullptr, KTREnvConfigBashParser::getInstance(vocabulary));
    EXPECT_EQ("can't read qos category from vocabulary", MBQ::getErrorMessage());
    const std::string line = log.text();
    EXPECT_NE(std::string::npos, line.find("ERROR")) << line;
    EXPECT_NE(std::string::npos, line.find("KTREnvConfigBashParser:")) << line;
    EXPECT_NE(std::string::npos,
              line.find("KTRFunctionality: can't initQoSMap : can't read qos category from vocabulary"))
        << line;
  }
}

TEST_F(KTREnvConfigBashParserTest, FailedRefillEmptiesTheResourceMap) {
  EXPECT_EQ(-1, parser_->initQoSMap(nullptr));
  EXPECT_TRUE(parser_->getQoSMap().empty());
  EXPECT_EQ(0, parser_->initQoSMap(vocabularyOf(kVocabulary)));
  EXPECT_EQ(4u, parser_->getQoSMap().size());
}

TEST(KTREnvConfigBashParserInstanceTest, KeyTableHoldsTheFixedKeysAfterTheEndMark) {
  const KTREnvConfigBashParser::KeyTable& table = KTREnvConfigBashParser::keyTable();
  ASSERT_EQ(32u, table.size());
  EXPECT_EQ("", table.begin()->first);
  EXPECT_EQ(nullptr, table.begin()->second);
  std::vector<std::string> keys;
  for (auto it = std::next(table.begin()); it != table.end(); ++it) {
    keys.push_back(it->first);
    EXPECT_NE(nullptr, it->second) << it->first;
  }
  EXPECT_EQ(sortedFixedKeys(), keys);
}

// ---------------------------------------------------------------- put, get, getNext

TEST_F(KTREnvConfigBashParserTest, PutCodes) {
  KTREnvConfig config;
  KTREnvConfigBashParser::ParameterParserPut put(config, parser_->getQoSMap());
  EXPECT_EQ(0, put.put("onboot", "yes"));
  EXPECT_EQ(0, put.put("numproc", "1:2"));
  EXPECT_EQ(kUnknownKey, put.put("no_such_key", "1"));
  EXPECT_EQ(kUnknownKey, put.put("", "1"));
  EXPECT_EQ(kUnknownKey, put.put("NUMPROC", "1")) << "keys arrive lower case";
  EXPECT_EQ(kBadResourceValue, put.put("opaque", "1:2"));
  EXPECT_EQ(0, put.put("numproc", "3"));
  EXPECT_EQ(0, put.put("cpuweight", "junk"));
  EXPECT_EQ((std::set<MBQ::MBQQoS>{MBQ::MBQQoS("cpuweight", 0), MBQ::MBQQoS("numproc", 3)}), put.collected().get())
      << "a resource given twice keeps the later value";
  EXPECT_FALSE(put.collected().isSpecified()) << "getConfig marks it";
}

TEST_F(KTREnvConfigBashParserTest, GetCodes) {
  KTREnvConfig config = read("ONBOOT=yes\nNUMPROC=1:2\nTECHNOLOGIES=x86_64\n");
  MBQ::MBQQoS opaque("opaque", 5);
  MBQOptionalProperty<std::set<MBQ::MBQQoS>> resources;
  config.getQoSes(resources);
  resources.get().insert(opaque);
  config.setQoSes(resources);

  EXPECT_EQ("yes", valueOf(config, "onboot"));
  EXPECT_EQ("1:2", valueOf(config, "numproc"));
  EXPECT_EQ("x86_64", valueOf(config, "arch"));
  EXPECT_EQ("", valueOf(config, "opaque")) << "a resource without a format is written empty";
  EXPECT_EQ("<-1002>", valueOf(config, "technologies"));
  EXPECT_EQ("<-1002>", valueOf(config, "hostname"));
  EXPECT_EQ("<-1002>", valueOf(config, "cpuweight"));
  EXPECT_EQ("<-1002>", valueOf(config, "disk")) << "no disk list";
  EXPECT_EQ("<-1001>", valueOf(config, "no_such_key"));
  EXPECT_EQ("<-1001>", valueOf(config, ""));
  EXPECT_EQ("<-1002>", valueOf(KTREnvConfig(), "numproc")) << "no subtree";
}

std::vector<std::string> allKeys(KTREnvConfigBashParser::ParameterParserGet get) {
  std::vector<std::string> keys;
  std::string key;
  while (get.getNext(key) == 0) keys.push_back(key);
  EXPECT_EQ(-1, get.getNext(key)) << "stays at the end";
  return keys;
}

TEST_F(KTREnvConfigBashParserTest, GetNextGivesTheFirstResourceThenFixedKeysThenTheOtherResources) {
  const KTREnvConfig config;
  std::vector<std::string> expected = {"cpulimit"};
  for (const std::string& key : sortedFixedKeys()) expected.push_back(key);
  for (const char* key : {"cpuweight", "numproc", "opaque"}) expected.push_back(key);
  EXPECT_EQ(expected, allKeys(KTREnvConfigBashParser::ParameterParserGet(config, parser_->getQoSMap())));

  const KTREnvConfigBashParser::QoSMap noResources;
  EXPECT_TRUE(allKeys(KTREnvConfigBashParser::ParameterParserGet(config, noResources)).empty());
}

// ---------------------------------------------------------------- reading

TEST_F(KTREnvConfigBashParserTest, ReadsEachKeyAsItsPropertyAndWritesItBack) {
  const std::string disk = "image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={6f1ed002-ab5d-11d1-8e4c-00c04fd430c8}";
  const struct {
    std::string file;
    std::string key;
    std::string value;  // as written back; "<code>" for none
  } cases[] = {
      {"ONBOOT=\"YES\"", "onboot", "yes"},
      {"ONBOOT=\"1\"", "onboot", "no"},
      {"onBoot=yes", "onboot", "yes"},
      {"OFFLINE_MANAGEMENT=no", "offline_management", "no"},
      {"DISABLED=Yes", "disabled", "yes"},
      {"RATEBOUND=yes", "ratebound", "yes"},
      {"ARCH=\"x86\"", "arch", "x86"},
      {"ARCH=\"amd64\"", "arch", "amd64"},
      {"HOSTNAME=\"\"", "hostname", "<-1002>"},
      {"HOSTNAME=ct1\nHOSTNAME=", "hostname", "<-1002>"},
      {"NAME=\"\"", "name", "<-1002>"},
      {"DESCRIPTION='a b'", "description", "a b"},
      {"VE_ROOT=\"\"", "ve_root", ""},
      {"VE_PRIVATE=/var/lib/quellix/private/101", "ve_private", "/var/lib/quellix/private/101"},
      {"NETFILTER=full", "netfilter", "full"},
      {"SLMMODE=all", "slmmode", "all"},
      {"UUID=abc", "uuid", "abc"},
      {"ORIGIN_SAMPLE=basic", "origin_sample", "basic"},
      {"OSTEMPLATE=centos-7-x86_64", "ostemplate", "centos-7-x86_64"},
      {"DISTRIBUTION=debian", "distribution", "debian"},
      {"VE_TYPE=1:101", "ve_type", "1:101"},
      {"TEMPLATES=\"a  b a\"", "templates", "a b a"},
      {"NAMESERVER=\"1.1.1.1  2.2.2.2\"", "nameserver", "1.1.1.1 2.2.2.2"},
      {"IP_ADDRESS=\"10.0.0.5/24 10.0.0.6\"", "ip_address", "10.0.0.5/24 10.0.0.6"},
      {"OFFLINE_SERVICE=\"web ssh\"", "offline_service", "ssh web"},
      {"ROLES=db", "roles", "db"},
      {"IPTABLES=\"ip_tables iptable_filter\"", "iptables", "ip_tables iptable_filter"},
      {"SEARCHDOMAIN=\"b.org a.org\"", "searchdomain", "a.org b.org"},
      {"FEATURES=\"a:on b:off\"", "features", "a:on b:off"},
      {"DEVNODES=\"sda:rw\"", "devnodes", "sda:rw"},
      {"RATE=\"eth0:1:8000 eth0:2:100\"", "rate", "eth0:1:8000 eth0:2:100"},
      {"PLATFORM=linux", "platform", "linux"},
      {"DISK=\"" + disk + "\"", "disk", disk},
      {"NETIF=\"ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes\"", "netif",
       "ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes"},
      {"NETIF=\";;\"", "netif", ""},
      {"NUMPROC=\"100:200\"", "numproc", "100:200"},
      {"NUMPROC=\"300\"", "numproc", "300"},
      {"NUMPROC=\"100:200\"\nNUMPROC=\"300\"", "numproc", "300"},
      {"CPUWEIGHT=42xyz", "cpuweight", "42"},
      {"CPULIMIT=12.5", "cpulimit", "12.5"},
      {"OPAQUE=\"1:2\"", "opaque", "<-1002>"},
      {"TECHNOLOGIES=\"hqfs x86_64\"", "arch", "x86_64"},
      {"TECHNOLOGIES=\"x86_64\"\nARCH=ia64", "arch", "ia64"},
      {"ARCH=ia64\nTECHNOLOGIES=\"nptl x86 x86_64\"", "arch", "x86"},
      {"ARCH=ia64\nTECHNOLOGIES=\"nptl\"", "arch", "ia64"},
      {"FOO=bar", "foo", "<-1001>"},
      {"NUMPROC=1:2 # comment\nNUMPROC=$X", "numproc", "1:2"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.value, valueOf(read(c.file), c.key)) << c.file;
}

TEST_F(KTREnvConfigBashParserTest, ArchitectureX86IsStoredAsI386) {
  MBQOptionalProperty<std::string> architecture;
  read("ARCH=x86").getArchitecture(architecture);
  EXPECT_EQ(MBQOptionalProperty<std::string>("i386"), architecture);
  read("TECHNOLOGIES=\"x86\"").getArchitecture(architecture);
  EXPECT_EQ(MBQOptionalProperty<std::string>("i386"), architecture);
}

TEST_F(KTREnvConfigBashParserTest, ReadingMarksResourcesTypeAndVenet0) {
  const KTREnvConfig config = read("# nothing but a comment\n");
  MBQOptionalProperty<std::set<MBQ::MBQQoS>> resources;
  config.getQoSes(resources);
  EXPECT_TRUE(resources.isSpecified());
  EXPECT_TRUE(resources.get().empty());
  MBQOptionalProperty<int> type;
  config.getType(type);
  EXPECT_EQ(MBQOptionalProperty<int>(KTREnvConfigBashParser::kTechnologyType), type);
  const std::vector<KTRNetVEth> veths = vethsOf(config);
  ASSERT_EQ(1u, veths.size());
  EXPECT_EQ("venet0", veths[0].getName());
  EXPECT_TRUE(veths[0].isHostRouted());

  MBQ::MBQQoS numproc;
  read("NUMPROC=\"100:200\"\nCPULIMIT=12.5\n").getQoSes(resources);
  EXPECT_EQ((std::set<MBQ::MBQQoS>{MBQ::MBQQoS("numproc", 100, 200), MBQ::MBQQoS("cpulimit", 1250)}), resources.get());
}

TEST_F(KTREnvConfigBashParserTest, OpenValueStopsTheRead) {
  KTREnvConfig config;
  std::istringstream in("ONBOOT=yes\nNAME=\"open\nHOSTNAME=late\n");
  EXPECT_EQ(-1, parser_->getConfig(in, config));
  EXPECT_EQ("yes", valueOf(config, "onboot")) << "what came before stays";
  EXPECT_EQ("<-1002>", valueOf(config, "hostname"));
  MBQOptionalProperty<int> type;
  config.getType(type);
  EXPECT_FALSE(type.isSpecified()) << "the record is not finished";
}

// ---------------------------------------------------------------- writing

TEST_F(KTREnvConfigBashParserTest, RealisticFileWrittenBackKeepsEveryOtherByte) {
  const std::string oldText =
      "# Configuration of container 101\n"
      "ONBOOT=\"yes\"   # start with the node\n"
      "\n"
      "# Resources (barrier:limit)\n"
      "KERNELMEM=12582912:13631488\n"
      "NUMPROC=\"256:256\"\n"
      "CPUWEIGHT=\"500\"\n"
      "CPULIMIT='12.5'\n"
      "\n"
      "VE_ROOT=\"/var/lib/quellix/root/$VEID\"\n"
      "VE_PRIVATE=\"/var/lib/quellix/private/101\"\n"
      "OSTEMPLATE=\"debian-12-minimal\"\n"
      "ORIGIN_SAMPLE=\"web-small\"\n"
      "HostName=\"ct101.example.com\"\n"
      "IP_ADDRESS=\"10.0.0.5/24 10.0.0.6\"\n"
      "NAMESERVER=\"8.8.8.8  8.8.4.4\"\n"
      "TECHNOLOGIES=\"nptl x86_64\"\n"
      "NETIF=\"ifname=eth0,network=,mac=02:00:00:00:00:01,nettype=bridged,gw=10.0.0.1,ip=10.0.0.7/24,dhcp=no\"\n"
      "DISK=\"image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={6f1ed002-ab5d-11d1-8e4c-00c04fd430c8}\"\n"
      "CUSTOM_SETTING=\"kept as it is\"\n"
      "export PATH=/bin\n"
      "\t# indented comment\n"
      "ONBOOT=\"no\"\n"
      "LAST=\"no newline\"";
  const std::string expected =
      "# Configuration of container 101\n"
      "ONBOOT=\"no\"   # start with the node\n"
      "\n"
      "# Resources (barrier:limit)\n"
      "KERNELMEM=\"12582912:13631488\"\n"
      "NUMPROC=\"256:256\"\n"
      "CPUWEIGHT=\"500\"\n"
      "CPULIMIT=\"12.5\"\n"
      "\n"
      "VE_ROOT=\"/var/lib/quellix/root/$VEID\"\n"
      "VE_PRIVATE=\"/var/lib/quellix/private/101\"\n"
      "OSTEMPLATE=\"debian-12-minimal\"\n"
      "ORIGIN_SAMPLE=\"web-small\"\n"
      "HostName=\"ct101.example.com\"\n"
      "IP_ADDRESS=\"10.0.0.5/24 10.0.0.6\"\n"
      "NAMESERVER=\"8.8.8.8 8.8.4.4\"\n"
      "TECHNOLOGIES=\"nptl x86_64\"\n"
      "NETIF=\"ifname=eth0,network=,mac=02:00:00:00:00:01,nettype=bridged,gw=10.0.0.1,ip=10.0.0.7/24,dhcp=no\"\n"
      "DISK=\"image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={6f1ed002-ab5d-11d1-8e4c-00c04fd430c8}\"\n"
      "CUSTOM_SETTING=\"kept as it is\"\n"
      "export PATH=/bin\n"
      "\t# indented comment\n"
      "ONBOOT=\"no\"\n"
      "LAST=\"no newline\"\n"
      "ARCH=\"x86_64\"\n";
  KTREnvConfigBashParserSP parser = KTREnvConfigBashParser::getInstance(defaultVocabulary());
  ASSERT_NE(nullptr, parser);
  KTREnvConfig config;
  std::istringstream in(oldText);
  ASSERT_EQ(0, parser->getConfig(in, config));
  std::istringstream old(oldText);
  std::ostringstream out;
  ASSERT_EQ(0, parser->putConfig(config, out, &old, true));
  EXPECT_EQ(expected, out.str());

  // And once more: a written file reads into the same record and is written unchanged.
  KTREnvConfig again;
  std::istringstream written(out.str());
  ASSERT_EQ(0, parser->getConfig(written, again));
  std::istringstream oldAgain(out.str());
  std::ostringstream outAgain;
  ASSERT_EQ(0, parser->putConfig(again, outAgain, &oldAgain, true));
  EXPECT_EQ(expected, outAgain.str());
}

TEST_F(KTREnvConfigBashParserTest, AppendsMissingKeysInKeyOrder) {
  KTREnvConfig config;
  config.setOnBoot(true);
  config.setHostname(std::string("ct"));
  config.setArchitecture(std::string("i386"));
  config.setQoSes(
      std::set<MBQ::MBQQoS>{MBQ::MBQQoS("numproc", 1, 2), MBQ::MBQQoS("cpulimit", 1250), MBQ::MBQQoS("opaque", 3)});
  const std::string appended =
      "CPULIMIT=\"12.5\"\n"
      "ARCH=\"x86\"\n"
      "HOSTNAME=\"ct\"\n"
      "ONBOOT=\"yes\"\n"
      "NUMPROC=\"1:2\"\n"
      "OPAQUE=\"\"\n";
  EXPECT_EQ(appended, write(config, ""));
  EXPECT_EQ(appended, write(config, "NAME=old\n", false)) << "without merging the old text is ignored";
  std::ostringstream out;
  EXPECT_EQ(0, parser_->putConfig(config, out, nullptr, true));
  EXPECT_EQ(appended, out.str());
  EXPECT_EQ(
      "# ct\nONBOOT=\"yes\" # on\nCPULIMIT=\"12.5\"\nARCH=\"x86\"\nHOSTNAME=\"ct\"\nNUMPROC=\"1:2\"\nOPAQUE=\"\"\n",
      write(config, "# ct\nONBOOT=no # on\n"));
}

TEST_F(KTREnvConfigBashParserTest, UnspecifiedAndUnknownKeysKeepTheirLines) {
  const std::string oldText = "HOSTNAME=\"\"\nNAME=\"old name\"\nUNKNOWN=\"x\"\nOPAQUE=1:2\nNUMPROC=5\n";
  const KTREnvConfig config = read(oldText);
  // NUMPROC is rewritten in its place (quoted), the rest stays; IP_ADDRESS and NETIF come from
  // the host-routed venet0 the read added.
  EXPECT_EQ("HOSTNAME=\"\"\nNAME=\"old name\"\nUNKNOWN=\"x\"\nOPAQUE=1:2\nNUMPROC=\"5\"\nIP_ADDRESS=\"\"\nNETIF=\"\"\n",
            write(config, oldText));
  KTREnvConfig withoutName = config;
  withoutName.setName(MBQOptionalProperty<std::string>());
  EXPECT_NE(std::string::npos, write(withoutName, oldText).find("NAME=\"old name\"\n"));
}

TEST_F(KTREnvConfigBashParserTest, NothingIsAppendedWithoutResources) {
  KTREnvConfig config = read("ONBOOT=yes\nNUMPROC=1:2\n");
  config.setHostname(std::string("new"));
  ASSERT_EQ(-1, parser_->initQoSMap(nullptr));
  EXPECT_EQ("", write(config, ""));
  EXPECT_EQ("ONBOOT=\"yes\"\nNUMPROC=1:2\n", write(config, "ONBOOT=no\nNUMPROC=1:2\n"))
      << "known lines are still rewritten, unknown ones kept";
}

TEST_F(KTREnvConfigBashParserTest, FailedOutputStreamFails) {
  const KTREnvConfig config = read("ONBOOT=yes\n");
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  EXPECT_EQ(-1, parser_->putConfig(config, out, nullptr, true));
  EXPECT_EQ("failed to write output stream", MBQ::getErrorMessage());
}

// ---------------------------------------------------------------- venet0 and addresses

TEST_F(KTREnvConfigBashParserTest, DhcpAddressGivesDhcpVenet0) {
  const std::string oldText = "IP_ADDRESS=\"dhcp\"\nNAMESERVER=\"1.1.1.1 8.8.8.8\"\n";
  const KTREnvConfig config = read(oldText);
  const std::vector<KTRNetVEth> veths = vethsOf(config);
  ASSERT_EQ(1u, veths.size());
  EXPECT_EQ("venet0", veths[0].getName());
  EXPECT_TRUE(veths[0].isHostRouted());
  EXPECT_TRUE(veths[0].isDhcp());
  EXPECT_FALSE(veths[0].isDhcp6());
  EXPECT_TRUE(veths[0].getAddresses().empty());
  EXPECT_EQ((std::vector<std::string>{"1.1.1.1", "8.8.8.8"}), veths[0].getNameservers());
  // The host-routed venet0 holds no address, and its (empty) list is what gets written.
  EXPECT_EQ("IP_ADDRESS=\"\"\nNAMESERVER=\"1.1.1.1 8.8.8.8\"\nNETIF=\"\"\n", write(config, oldText));
}

TEST_F(KTREnvConfigBashParserTest, Venet0TakesTheAddressesUnlessItExists) {
  const KTREnvConfig config = read("IP_ADDRESS=\"10.0.0.5/24 10.0.0.6\"\n");
  std::vector<KTRNetVEth> veths = vethsOf(config);
  ASSERT_EQ(1u, veths.size());
  EXPECT_EQ(veth("venet0", true, {MBQ::MBQIPAddress("10.0.0.5/24"), MBQ::MBQIPAddress("10.0.0.6")}), veths[0]);

  const KTREnvConfig bridged =
      read("IP_ADDRESS=10.0.0.5\nNETIF=\"ifname=venet0,network=,mac=,nettype=bridged,ip=10.1.1.1,dhcp=no\"\n");
  veths = vethsOf(bridged);
  ASSERT_EQ(1u, veths.size()) << "a record with a venet0 gets no second one";
  EXPECT_FALSE(veths[0].isHostRouted());
  EXPECT_NE(std::string::npos, write(bridged, "").find("IP_ADDRESS=\"10.0.0.5\"\n"))
      << "no host-routed interface: the record's own addresses are written";
}

TEST(KTREnvConfigBashParserVenetTest, CreateFakeVENet0Device) {
  KTREnvConfig noSubtree;
  MBQ::setErrorMessage("previous");
  EXPECT_EQ(-1, createFakeVENet0Device(noSubtree));
  EXPECT_EQ("can't get ip address list:previous", MBQ::getErrorMessage());
  EXPECT_FALSE(noSubtree.hasMsg());

  KTREnvConfig bare;
  bare.initMsg();
  ASSERT_EQ(0, createFakeVENet0Device(bare));
  EXPECT_EQ((std::vector<KTRNetVEth>{veth("venet0", true, {})}), vethsOf(bare));
  ASSERT_EQ(0, createFakeVENet0Device(bare));
  EXPECT_EQ(1u, vethsOf(bare).size());

  KTREnvConfig mixed;
  mixed.setAddresses(
      Addresses{MBQ::MBQIPAddress("10.0.0.5/24"), MBQ::MBQIPAddress("dhcp"), MBQ::MBQIPAddress("10.0.0.6")});
  mixed.setNetVEths(std::vector<KTRNetVEth>{veth("eth0", false, {MBQ::MBQIPAddress("10.9.9.9")})});
  ASSERT_EQ(0, createFakeVENet0Device(mixed));
  const std::vector<KTRNetVEth> veths = vethsOf(mixed);
  ASSERT_EQ(2u, veths.size());
  EXPECT_EQ("eth0", veths[0].getName());
  EXPECT_EQ("venet0", veths[1].getName());
  EXPECT_TRUE(veths[1].isDhcp());
  EXPECT_TRUE(veths[1].getAddresses().empty());
}

TEST_F(KTREnvConfigBashParserTest, HostRoutedInterfaceDecidesTheWrittenAddresses) {
  KTREnvConfig config;
  config.setAddresses(Addresses{MBQ::MBQIPAddress("1.2.3.4")});
  config.setNetVEths(
      std::vector<KTRNetVEth>{veth("eth0", false, {MBQ::MBQIPAddress("10.9.9.9")}),
                              veth("venet0", true, {MBQ::MBQIPAddress("10.0.0.1"), MBQ::MBQIPAddress("10.0.0.2/16")}),
                              veth("venet1", true, {MBQ::MBQIPAddress("10.0.0.3")})});
  EXPECT_EQ(
      "IP_ADDRESS=\"10.0.0.1 10.0.0.2/16\"\nNETIF=\"ifname=eth0,network=,mac=,nettype=bridged,ip=10.9.9.9,dhcp=no;"
      "ifname=venet1,network=,mac=,nettype=host-routed,ip=10.0.0.3,dhcp=no\"\n",
      write(config, ""));
  EXPECT_EQ(MBQOptionalProperty<Addresses>(Addresses{MBQ::MBQIPAddress("1.2.3.4")}), addressesOf(config))
      << "putConfig works on a copy";
}

TEST(KTREnvConfigBashParserVenetTest, UpdateIp) {
  KTREnvConfig noInterfaces;
  noInterfaces.setAddresses(Addresses{MBQ::MBQIPAddress("1.2.3.4")});
  EXPECT_EQ(0, KTREnvConfigBashParser::updateIp(noInterfaces));
  EXPECT_EQ(MBQOptionalProperty<Addresses>(Addresses{MBQ::MBQIPAddress("1.2.3.4")}), addressesOf(noInterfaces));

  KTREnvConfig bridgedOnly = noInterfaces;
  bridgedOnly.setNetVEths(std::vector<KTRNetVEth>{veth("eth0", false, {MBQ::MBQIPAddress("10.0.0.1")})});
  EXPECT_EQ(0, KTREnvConfigBashParser::updateIp(bridgedOnly));
  EXPECT_EQ(MBQOptionalProperty<Addresses>(Addresses{MBQ::MBQIPAddress("1.2.3.4")}), addressesOf(bridgedOnly));

  KTREnvConfig emptyHostRouted;
  emptyHostRouted.setNameservers(Addresses{MBQ::MBQIPAddress("8.8.8.8")});
  emptyHostRouted.setNetVEths(std::vector<KTRNetVEth>{veth("venet0", true, {})});
  EXPECT_EQ(0, KTREnvConfigBashParser::updateIp(emptyHostRouted));
  EXPECT_EQ(MBQOptionalProperty<Addresses>(Addresses{}), addressesOf(emptyHostRouted));
  MBQOptionalProperty<Addresses> nameservers;
  emptyHostRouted.getNameservers(nameservers);
  EXPECT_EQ(MBQOptionalProperty<Addresses>(Addresses{MBQ::MBQIPAddress("8.8.8.8")}), nameservers);

  KTREnvConfig noSubtree;
  EXPECT_EQ(0, KTREnvConfigBashParser::updateIp(noSubtree));
  EXPECT_FALSE(noSubtree.hasMsg());
}

// ---------------------------------------------------------------- differences

TEST_F(KTREnvConfigBashParserTest, DiffConfigReportsChangedKeysInKeyOrder) {
  const std::string text = "ONBOOT=yes\nHOSTNAME=ct\nNUMPROC=1:2\nCPULIMIT=50\nIP_ADDRESS=10.0.0.1\n";
  const KTREnvConfig oldConfig = read(text);

  Changes changes;
  EXPECT_EQ(0, parser_->diffConfig(oldConfig, read(text), changes));
  EXPECT_TRUE(changes.empty());

  KTREnvConfig onBootOnly = read(text);
  onBootOnly.setOnBoot(false);
  EXPECT_EQ(0, parser_->diffConfig(oldConfig, onBootOnly, changes));
  EXPECT_EQ((Changes{{"onboot", "no"}}), changes);

  const KTREnvConfig several =
      read("ONBOOT=yes\nCPULIMIT=25\nNUMPROC=1:3\nIP_ADDRESS=\"10.0.0.1 10.0.0.2\"\nCPUWEIGHT=10\nROLES=web\n");
  changes = {{"kept", "entry"}};
  EXPECT_EQ(0, parser_->diffConfig(oldConfig, several, changes));
  EXPECT_EQ((Changes{{"kept", "entry"},
                     {"cpulimit", "25"},
                     {"ip_address", "10.0.0.1 10.0.0.2"},
                     {"roles", "web"},
                     {"cpuweight", "10"},
                     {"numproc", "1:3"}}),
            changes)
      << "the removed hostname is not a change";
}

TEST_F(KTREnvConfigBashParserTest, DiffConfigSeesAddressesThroughVenet0) {
  const KTREnvConfig oldConfig = read("IP_ADDRESS=10.0.0.1\n");
  KTREnvConfig newConfig = oldConfig;
  newConfig.setNetVEths(std::vector<KTRNetVEth>{veth("venet0", true, {MBQ::MBQIPAddress("10.0.0.9")})});
  Changes changes;
  EXPECT_EQ(0, parser_->diffConfig(oldConfig, newConfig, changes));
  EXPECT_EQ((Changes{{"ip_address", "10.0.0.9"}}), changes);

  ASSERT_EQ(-1, parser_->initQoSMap(nullptr));
  changes.clear();
  EXPECT_EQ(0, parser_->diffConfig(oldConfig, newConfig, changes));
  EXPECT_TRUE(changes.empty()) << "no resources, no keys at all";
}

// The fixed table is shared; parsers of several threads read and write at once.
TEST_F(KTREnvConfigBashParserTest, ParsersWorkConcurrently) {
  const std::string text = "ONBOOT=yes\nNUMPROC=1:2\nFEATURES=\"a:on\"\nARCH=x86\n";
  const std::string expected = write(read(text), text);
  std::vector<std::thread> threads;
  std::vector<std::string> results(4);
  for (std::size_t i = 0; i < results.size(); ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 20; ++round) {
        KTREnvConfig config;
        std::istringstream in(text);
        if (parser_->getConfig(in, config) != 0) return;
        std::istringstream old(text);
        std::ostringstream out;
        if (parser_->putConfig(config, out, &old, true) != 0) return;
        results[i] = out.str();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) EXPECT_EQ(expected, result);
}

}  // namespace
}  // namespace KTR
