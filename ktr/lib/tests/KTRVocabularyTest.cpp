#include "KTRFunctionality/KTRVocabulary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "MBQCore/MBQError.h"

namespace KTR {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// value_type/complexity of a resource, with the configuration reader's defaults (1 and 2).
std::pair<int, int> declarationOf(const MBQ::MBQMessageIterator& parameter) {
  std::pair<int, int> declaration(1, 2);
  parameter.getValue("value_type", declaration.first);
  parameter.getValue(1304, declaration.second);
  return declaration;
}

std::map<std::string, std::pair<int, int>> defaultResources() {
  std::map<std::string, std::pair<int, int>> resources;
  MBQ::MBQVocMapSP vocabulary = defaultVocabulary();
  MBQ::MBQVocIterator it = vocabulary->readCategory({"quellix", "qos"})->iterator();
  for (int rc = it.first(); rc == 0; rc = it.next()) {
    std::string name;
    EXPECT_EQ(0, it->getValue(1010, name));
    resources[name] = declarationOf(*it);
  }
  return resources;
}

TEST(KTRVocabularyTest, BuiltInVocabularyIsTheShippedFileLoadedOnce) {
  EXPECT_EQ(readFile(KTR_DEFAULT_VOCABULARY_FILE), defaultVocabularyText());
  std::vector<MBQ::MBQVocMapSP> seen(4);
  std::vector<std::thread> threads;
  for (MBQ::MBQVocMapSP& slot : seen) threads.emplace_back([&slot] { slot = defaultVocabulary(); });
  for (std::thread& thread : threads) thread.join();
  ASSERT_NE(nullptr, seen[0]) << MBQ::getErrorMessage();
  for (const MBQ::MBQVocMapSP& vocabulary : seen) EXPECT_EQ(seen[0], vocabulary);
  EXPECT_EQ(seen[0], defaultVocabulary());
  EXPECT_EQ(0, checkVocabulary(*seen[0])) << MBQ::getErrorMessage();
}

TEST(KTRVocabularyTest, BuiltInVocabularyHasResourcesAndFormulasOfTheTechnology) {
  MBQ::MBQVocMapSP vocabulary = defaultVocabulary();
  ASSERT_NE(nullptr, vocabulary);
  MBQ::MBQVocCategorySP resources = vocabulary->readCategory({"quellix", "qos"});
  MBQ::MBQVocCategorySP formulas = vocabulary->readCategory({"quellix", "tune"});
  ASSERT_NE(nullptr, resources);
  ASSERT_NE(nullptr, formulas);
  // The configuration parser reads the resources by name alone, the formulas also go by
  // their other name.
  EXPECT_EQ(resources, vocabulary->readCategory("qos"));
  EXPECT_EQ(formulas, vocabulary->readCategory("FORMULAE"));
  EXPECT_EQ(formulas, vocabulary->readCategory({"quellix", "FORMULAE"}));
}

TEST(KTRVocabularyTest, ResourcesUseEveryReadableDeclaration) {
  const std::map<std::string, std::pair<int, int>> resources = defaultResources();
  const std::pair<std::string, std::pair<int, int>> expected[] = {
      {"numproc", {2, 1}}, {"kernelmem", {2, 1}},       {"diskblocks", {2, 1}}, {"inodes", {2, 1}},
      {"avnumproc", {1, 1}}, {"slmmemorylimit", {1, 1}}, {"cpuweight", {1, 1}}, {"cpus", {1, 1}},
      {"cpulimit", {1, 0}},
  };
  for (const auto& resource : expected) {
    auto found = resources.find(resource.first);
    ASSERT_NE(resources.end(), found) << resource.first;
    EXPECT_EQ(resource.second, found->second) << resource.first;
  }
  std::set<std::pair<int, int>> declarations;
  const std::regex formulaName("[a-z][a-z0-9]*");
  for (const auto& resource : resources) {
    declarations.insert(resource.second);
    // Formulas can only name letters and digits, and the file keys are the upper-cased names.
    EXPECT_TRUE(std::regex_match(resource.first, formulaName)) << resource.first;
  }
  const std::set<std::pair<int, int>> readable = {{2, 1}, {1, 1}, {1, 0}};
  EXPECT_EQ(readable, declarations);
}

// The names a formula text refers to, with any ".soft"/".hard" suffix cut off; numbers and
// operators must be of the forms formulas allow, else the offending token is returned as "!".
std::vector<std::string> formulaNames(const std::string& text) {
  static const std::regex token(
      R"(\s*(?:([A-Za-z][A-Za-z0-9]*)(\.soft|\.hard)?|([0-9]+(?:\.[0-9]+)?(?:kb|mb)?)|(&&|>=|<=|==|>|<|\+|-|\*|/)))");
  std::vector<std::string> names;
  auto at = text.cbegin();
  std::smatch match;
  while (at != text.cend()) {
    if (!std::regex_search(at, text.cend(), match, token, std::regex_constants::match_continuous)) {
      names.push_back("!" + std::string(at, text.cend()));
      break;
    }
    if (match[1].matched) names.push_back(match[1]);
    at = match[0].second;
  }
  return names;
}

TEST(KTRVocabularyTest, EveryFormulaHasIdTextAndMessageOverKnownResources) {
  const std::map<std::string, std::pair<int, int>> resources = defaultResources();
  MBQ::MBQVocIterator it = defaultVocabulary()->readCategory({"quellix", "tune"})->iterator();
  std::set<long long> ids;
  int count = 0;
  int overEveryResource = 0;
  for (int rc = it.first(); rc == 0; rc = it.next(), ++count) {
    std::string name;
    long long id = 0;
    std::string text;
    std::string message;
    it->getValue(1010, name);
    ASSERT_EQ(0, it->getValue(1007, id)) << name;
    ASSERT_EQ(0, it->getValue(1307, text)) << name;
    ASSERT_EQ(0, it->getValue(1302, message)) << name;
    EXPECT_TRUE(ids.insert(id).second) << name << ": id " << id << " used twice";
    EXPECT_FALSE(message.empty()) << name;
    std::vector<std::string> names = formulaNames(text);
    ASSERT_FALSE(names.empty()) << name << ": " << text;
    for (const std::string& used : names) {
      if (used == "QOS") {
        ++overEveryResource;
        continue;
      }
      EXPECT_EQ(1u, resources.count(used)) << name << ": '" << used << "' in " << text;
    }
  }
  EXPECT_GE(count, 25);
  EXPECT_GE(overEveryResource, 1);
}

TEST(KTRVocabularyTest, CheckRejectsWhatTheLibraryCannotUse) {
  const std::string head = "<vocabulary><technology><name>quellix</name><category><name>qos</name>";
  const std::string numproc = "<parameter><name>numproc</name><value_type>2</value_type><complexity>1</complexity></parameter>";
  const std::string tail = "</technology></vocabulary>";
  struct Case {
    std::string text;
    const char* message;  // nullptr: accepted
  };
  const Case cases[] = {
      {head + numproc + "</category>" + tail, nullptr},
      {head + numproc + "<parameter><name>cpulimit</name><complexity>0</complexity></parameter></category>" + tail,
       nullptr},
      {head + numproc + "</category><category><name>tune</name><parameter><name>f</name><type>1</type>"
                        "<formula>numproc.soft &lt;= numproc.hard</formula><formula_info>m</formula_info>"
                        "</parameter></category>" + tail,
       nullptr},
      {"<vocabulary><category><name>qos</name>" + numproc + "</category></vocabulary>",
       "invalid vocabulary: technology 'quellix': no category 'qos'"},
      {head + "</category>" + tail, "invalid vocabulary: technology 'quellix', category 'qos': no parameters"},
      {head + "<parameter><name>QOS</name><complexity>1</complexity></parameter></category>" + tail,
       "invalid vocabulary: technology 'quellix', category 'qos', parameter 'QOS': the name is reserved"},
      {head + numproc + "<parameter><name>cpu</name></parameter></category>" + tail,
       "invalid vocabulary: technology 'quellix', category 'qos', parameter 'cpu': value_type/complexity 1/2 is none "
       "of 2/1, 1/1, 1/0"},
      {head + "<parameter><name>x</name><value_type>2</value_type><complexity>2</complexity></parameter></category>" +
           tail,
       "parameter 'x': value_type/complexity 2/2 is none"},
      {head + "<parameter><name>x</name><value_type>two</value_type><complexity>1</complexity></parameter></category>" +
           tail,
       "parameter 'x': value_type is not an integer"},
      {head + "<parameter><name>x</name><complexity/></parameter></category>" + tail,
       "parameter 'x': complexity is not an integer"},
      {head + numproc + "</category><category><name>tune</name><parameter><name>f</name>"
                        "<formula>a</formula><formula_info>m</formula_info></parameter></category>" + tail,
       "invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': no formula id"},
      {head + numproc + "</category><category><name>tune</name><parameter><name>f</name><type>x1</type>"
                        "<formula>a</formula><formula_info>m</formula_info></parameter></category>" + tail,
       "parameter 'f': formula id 'x1' is not an integer"},
      {head + numproc + "</category><category><name>tune</name><parameter><name>f</name><type>1</type>"
                        "<formula_info>m</formula_info></parameter></category>" + tail,
       "parameter 'f': no formula"},
      {head + numproc + "</category><category><name>tune</name><parameter><name>f</name><type>1</type>"
                        "<formula>a</formula></parameter></category>" + tail,
       "parameter 'f': no formula message"},
      // Formulas are parsed: the grammar, the names and the single multiple name all count.
      {head + numproc + "</category><category><name>tune</name><parameter><name>f</name><type>1</type>"
                        "<formula>(numproc)</formula><formula_info>m</formula_info></parameter></category>" + tail,
       "invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': formula '(numproc)' does not parse"},
      {head + numproc + "</category><category><name>tune</name><parameter><name>g</name><type>1</type>"
                        "<formula>numproc</formula><formula_info>m</formula_info></parameter><parameter><name>f</name>"
                        "<type>2</type><formula>cpus &gt; 0</formula><formula_info>m</formula_info></parameter>"
                        "</category>" + tail,
       "parameter 'f': formula 'cpus > 0' does not parse"},
      {head + numproc + "</category><category><name>tune</name><parameter><name>f</name><type>1</type>"
                        "<formula>numproc.limit &gt; 0</formula><formula_info>m</formula_info></parameter>"
                        "</category>" + tail,
       "parameter 'f': formula 'numproc.limit > 0' does not parse"},
      {head + numproc + "</category><category><name>tune</name></category>" + tail, nullptr},
  };
  for (const Case& c : cases) {
    MBQ::MBQVocMap vocabulary;
    ASSERT_EQ(0, vocabulary.load(c.text)) << c.text << ": " << MBQ::getErrorMessage();
    if (c.message == nullptr) {
      EXPECT_EQ(0, checkVocabulary(vocabulary)) << c.text << ": " << MBQ::getErrorMessage();
    } else {
      EXPECT_EQ(-1, checkVocabulary(vocabulary)) << c.text;
      EXPECT_THAT(MBQ::getErrorMessage(), HasSubstr(c.message)) << c.text;
    }
  }
}

TEST(KTRVocabularyTest, LoadVocabularyReadsAndChecksAFile) {
  char pattern[] = "/tmp/KTRVocabularyTest.XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(pattern));
  const std::string dir = pattern;
  const std::string good = dir + "/good.xml";
  const std::string unusable = dir + "/unusable.xml";
  std::ofstream(good) << defaultVocabularyText();
  std::ofstream(unusable) << "<vocabulary/>";

  MBQ::MBQVocMapSP loaded = loadVocabulary(good);
  ASSERT_NE(nullptr, loaded) << MBQ::getErrorMessage();
  EXPECT_NE(defaultVocabulary(), loaded);
  EXPECT_NE(nullptr, loaded->readCategory({"quellix", "tune"}));
  EXPECT_NE(loaded, loadVocabulary(good));  // a new object on every call

  EXPECT_EQ(nullptr, loadVocabulary(unusable));
  EXPECT_EQ(unusable + ": invalid vocabulary: technology 'quellix': no category 'qos'", MBQ::getErrorMessage());
  EXPECT_EQ(nullptr, loadVocabulary(dir + "/missing.xml"));
  EXPECT_THAT(MBQ::getErrorMessage(), StartsWith(dir + "/missing.xml: can not open"));

  std::remove(good.c_str());
  std::remove(unusable.c_str());
  rmdir(dir.c_str());
}

}  // namespace
}  // namespace KTR
