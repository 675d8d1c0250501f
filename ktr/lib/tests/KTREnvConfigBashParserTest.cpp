#include "KTRFunctionality/KTREnvConfigBashParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigKeys.h"
#include "KTRFunctionality/KTRVEth.h"
#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"

// The key table layer: the resource map, put/get/getNext over a record, venet0, the
// differences. The line rules of reading and writing are KTRBashParserTest's; the value forms
// of each parser template are KTRBashParseTest's. What a read and a write make of a container
// file, key by key, with venet0 and the differences, is shown by ktrctl's read.t transcript; here
// what no file shows.

namespace KTR {
namespace {

using MBQ::MBQOptionalProperty;
using Changes = KTREnvConfigBashParser::Changes;
using Addresses = std::vector<MBQ::MBQIPAddress>;
using Keys = std::vector<std::string>;

// Four resources, one per value format and one without a format; names in mixed case.
const char* const kVocabulary =
    "<vocabulary><technology><name>quellix</name><category><name>qos</name>"
    "<parameter><name>NumProc</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>cpuweight</name><complexity>1</complexity></parameter>"
    "<parameter><name>cpulimit</name><value_type>1</value_type><complexity>0</complexity></parameter>"
    "<parameter><name>opaque</name><value_type>2</value_type></parameter>"
    "</category></technology></vocabulary>";

using testing::vocabularyFrom;

class KTREnvConfigBashParserTest : public ::testing::Test {
 protected:
  void SetUp() override {
    parser_ = KTREnvConfigBashParser::getInstance(vocabularyFrom(kVocabulary));
    ASSERT_NE(nullptr, parser_);
  }
  KTREnvConfig read(const std::string& text) const {
    KTREnvConfig config;
    std::istringstream in(text);
    EXPECT_EQ(0, parser_->getConfig(in, config)) << text;
    return config;
  }
  std::string write(const KTREnvConfig& config, const std::string& oldText) const {
    std::istringstream old(oldText);
    std::ostringstream out;
    EXPECT_EQ(0, parser_->putConfig(config, out, &old, true));
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

KTRNetVEth veth(const std::string& name, bool hostRouted, const Addresses& addresses) {
  KTRNetVEth device;
  device.setName(name);
  device.setHostRouted(hostRouted);
  device.setAddresses(addresses);
  return device;
}

MBQOptionalProperty<Addresses> addressesOf(const KTREnvConfig& config) {
  MBQOptionalProperty<Addresses> addresses;
  config.getAddresses(addresses);
  return addresses;
}

// Each entry's value format shows in the put and get codes below.
TEST_F(KTREnvConfigBashParserTest, ResourceMapComesFromTheVocabulary) {
  Keys entries;
  for (const auto& [id, entry] : parser_->getQoSMap()) entries.push_back(id + " " + entry.id + " " + entry.key);
  EXPECT_EQ((Keys{"cpulimit cpulimit CPULIMIT", "cpuweight cpuweight CPUWEIGHT", "numproc numproc NUMPROC",
                  "opaque opaque OPAQUE"}),
            entries);
  EXPECT_EQ(-1, parser_->initQoSMap(nullptr));
  EXPECT_TRUE(parser_->getQoSMap().empty()) << "a failed refill empties the map";
}

TEST(KTREnvConfigBashParserInstanceTest, FailsWithoutResourceCategory) {
  const MBQ::MBQVocMapSP vocabularies[] = {
      nullptr,
      vocabularyFrom("<vocabulary><category><name>other</name><parameter><name>a</name></parameter></category>"
                   "</vocabulary>"),
      vocabularyFrom("<vocabulary><category><name>qos</name></category></vocabulary>"),
  };
  for (const MBQ::MBQVocMapSP& vocabulary : vocabularies) {
    testing::LogCapture log;
    EXPECT_EQ(nullptr, KTREnvConfigBashParser::getInstance(vocabulary));
    EXPECT_EQ("can't read qos category from vocabulary", MBQ::getErrorMessage());
    const std::string line = log.text();
    EXPECT_NE(std::string::npos, line.find("ERROR")) << line;
    EXPECT_NE(std::string::npos, line.find("can't initQoSMap : can't read qos category from vocabulary")) << line;
  }
}

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
  KTREnvConfig config = read("ONBOOT=yes\nNUMPROC=1:2\nCPULIMIT=12.5\n");
  MBQOptionalProperty<std::set<MBQ::MBQQoS>> resources;
  config.getQoSes(resources);
  resources.get().insert(MBQ::MBQQoS("opaque", 5));
  config.setQoSes(resources);
  const struct {
    const char* key;
    const char* value;
  } cases[] = {
      {"onboot", "yes"}, {"numproc", "1:2"}, {"cpulimit", "12.5"}, {"hostname", "<-1002>"},
      {"opaque", ""},  // a resource without a format is written empty
      {"cpuweight", "<-1002>"}, {"no_such_key", "<-1001>"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.value, valueOf(config, c.key)) << c.key;
  EXPECT_EQ("<-1002>", valueOf(KTREnvConfig(), "numproc")) << "no subtree";
}

Keys allKeys(KTREnvConfigBashParser::ParameterParserGet get) {
  Keys keys;
  std::string key;
  while (get.getNext(key) == 0) keys.push_back(key);
  EXPECT_EQ(-1, get.getNext(key)) << "stays at the end";
  return keys;
}

TEST_F(KTREnvConfigBashParserTest, GetNextGivesTheFirstResourceThenFixedKeysThenTheOtherResources) {
  const KTREnvConfig config;
  // The fixed keys are the list published for programs that do not load the library.
  Keys expected(std::begin(kEnvConfigFixedKeys), std::end(kEnvConfigFixedKeys));
  std::sort(expected.begin(), expected.end());
  expected.insert(expected.begin(), "cpulimit");
  expected.insert(expected.end(), {"cpuweight", "numproc", "opaque"});
  EXPECT_EQ(expected, allKeys(KTREnvConfigBashParser::ParameterParserGet(config, parser_->getQoSMap())));
  const KTREnvConfigBashParser::QoSMap noResources;
  EXPECT_TRUE(allKeys(KTREnvConfigBashParser::ParameterParserGet(config, noResources)).empty());
}

TEST_F(KTREnvConfigBashParserTest, AFinishedReadMarksResourcesTypeAndVenet0) {
  KTREnvConfig config;
  std::istringstream open("ONBOOT=yes\nNAME=\"open\n");
  EXPECT_EQ(-1, parser_->getConfig(open, config));
  MBQOptionalProperty<int> type;
  config.getType(type);
  EXPECT_FALSE(type.isSpecified()) << "a read stopped by a value left open";

  config = read("# nothing but a comment\n");
  MBQOptionalProperty<std::set<MBQ::MBQQoS>> resources;
  config.getQoSes(resources);
  EXPECT_EQ(MBQOptionalProperty<std::set<MBQ::MBQQoS>>(std::set<MBQ::MBQQoS>()), resources);
  config.getType(type);
  EXPECT_EQ(MBQOptionalProperty<int>(KTREnvConfigBashParser::kTechnologyType), type);
  MBQOptionalProperty<std::vector<KTRNetVEth>> veths;
  config.getNetVEths(veths);
  EXPECT_EQ(MBQOptionalProperty<std::vector<KTRNetVEth>>(std::vector<KTRNetVEth>{veth("venet0", true, {})}), veths);

  read("NUMPROC=\"100:200\"\nCPULIMIT=12.5\n").getQoSes(resources);
  EXPECT_EQ((std::set<MBQ::MBQQoS>{MBQ::MBQQoS("numproc", 100, 200), MBQ::MBQQoS("cpulimit", 1250)}), resources.get());
}

TEST_F(KTREnvConfigBashParserTest, PutConfigWritesFromACopy) {
  KTREnvConfig config;
  config.setAddresses(Addresses{MBQ::MBQIPAddress("1.2.3.4")});
  config.setNetVEths(std::vector<KTRNetVEth>{veth("venet0", true, {MBQ::MBQIPAddress("10.0.0.1")})});
  EXPECT_EQ("IP_ADDRESS=\"10.0.0.1\"\nNETIF=\"\"\n", write(config, ""));
  EXPECT_EQ(MBQOptionalProperty<Addresses>(Addresses{MBQ::MBQIPAddress("1.2.3.4")}), addressesOf(config))
      << "the record keeps its own addresses";
}

TEST(KTREnvConfigBashParserVenetTest, WithoutASubtreeNoVenet0IsMadeAndUpdateIpDoesNothing) {
  KTREnvConfig noSubtree;
  MBQ::setErrorMessage("previous");
  EXPECT_EQ(-1, createFakeVENet0Device(noSubtree));
  EXPECT_EQ("can't get ip address list:previous", MBQ::getErrorMessage());
  EXPECT_EQ(0, KTREnvConfigBashParser::updateIp(noSubtree));
  EXPECT_FALSE(noSubtree.hasMsg());
}

TEST(KTREnvConfigBashParserVenetTest, UpdateIpTakesTheAddressesOfAHostRoutedDevice) {
  KTREnvConfig config;
  config.setAddresses(Addresses{MBQ::MBQIPAddress("1.2.3.4")});
  config.setNetVEths(std::vector<KTRNetVEth>{veth("eth0", false, {MBQ::MBQIPAddress("10.0.0.1")})});
  EXPECT_EQ(0, KTREnvConfigBashParser::updateIp(config));
  EXPECT_EQ(MBQOptionalProperty<Addresses>(Addresses{MBQ::MBQIPAddress("1.2.3.4")}), addressesOf(config));
  config.setNetVEths(std::vector<KTRNetVEth>{veth("venet0", true, {})});
  EXPECT_EQ(0, KTREnvConfigBashParser::updateIp(config));
  EXPECT_EQ(MBQOptionalProperty<Addresses>(Addresses{}), addressesOf(config));
}

TEST_F(KTREnvConfigBashParserTest, DiffConfigAppendsToTheChangesGiven) {
  Changes changes = {{"kept", "entry"}};
  EXPECT_EQ(0, parser_->diffConfig(read("ONBOOT=yes\n"), read("ONBOOT=no\n"), changes));
  EXPECT_EQ((Changes{{"kept", "entry"}, {"onboot", "no"}}), changes);
}

// The fixed table is shared; parsers of several threads read and write at once.
TEST_F(KTREnvConfigBashParserTest, ParsersWorkConcurrently) {
  const std::string text = "ONBOOT=yes\nNUMPROC=1:2\nFEATURES=\"a:on\"\nARCH=x86\n";
  const std::string expected = write(read(text), text);
  std::vector<std::thread> threads;
  std::vector<std::string> results(4);
  for (std::size_t i = 0; i < results.size(); ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 20; ++round) results[i] = write(read(text), text);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) EXPECT_EQ(expected, result);
}

}  // namespace
}  // namespace KTR
