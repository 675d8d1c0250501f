#include "MBQFunctionalityCore/MBQVocMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQCore/MBQError.h"

namespace MBQ {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

const char kSample[] = R"(<?xml version="1.0"?>
<!-- a vocabulary as operators write them -->
<vocabulary>
  <category><name>common</name>
    <parameter><name>shared</name></parameter>
  </category>
  <technology>
    <name>quellix</name>
    <category>
      <name>qos</name>
      <parameter><name>numproc</name><value_type>2</value_type><complexity>1</complexity></parameter>
      <parameter><name>cpuweight</name><value_type>1</value_type><complexity>1</complexity></parameter>
      <parameter><name>cpulimit</name><complexity>0</complexity><note>percent</note></parameter>
    </category>
    <category>
      <name>tune</name>
      <parameter><name>order</name><type>7</type><formula>numproc.soft &lt;= numproc.hard</formula></parameter>
    </category>
    <category><name>empty</name></category>
    <category><name>common</name><parameter><name>own</name></parameter></category>
  </technology>
  <technology>
    <name>other</name>
    <category><name>qos</name><parameter><name>memory</name></parameter></category>
  </technology>
</vocabulary>
)";

MBQVocMapSP loaded(const std::string& text) {
  auto vocabulary = std::make_shared<MBQVocMap>();
  EXPECT_EQ(0, vocabulary->load(text)) << getErrorMessage();
  return vocabulary;
}

// "name,name,..." of a category's parameters, in iteration order.
std::string parameterNames(const MBQVocCategory& category) {
  std::string names;
  MBQVocIterator it = category.iterator();
  for (int rc = it.first(); rc == 0; rc = it.next()) {
    std::string name;
    EXPECT_EQ(0, it->getValue(1010, name));
    names += (names.empty() ? "" : ",") + name;
  }
  return names;
}

// "technology/category:size" of every category, in document order.
std::string layout(const MBQVocMap& vocabulary) {
  std::string text;
  for (const MBQVocCategorySP& category : vocabulary.getCategories()) {
    if (!text.empty()) text += ' ';
    text += category->getTechnology() + "/" + category->getName() + ":" + std::to_string(category->size());
  }
  return text;
}

TEST(MBQVocMapTest, LoadsWellFormedDocuments) {
  EXPECT_EQ("/common:1 quellix/qos:3 quellix/tune:1 quellix/empty:0 quellix/common:1 other/qos:1",
            layout(*loaded(kSample)));
  for (const auto& c : test::caseRows(__FILE__, "loaded")) {
    MBQVocMap vocabulary;
    ASSERT_EQ(0, vocabulary.load(c.at(0))) << c[0] << ": " << getErrorMessage();
    EXPECT_EQ(c.at(1), layout(vocabulary)) << c[0];
  }
}

TEST(MBQVocMapTest, RejectsBadDocumentsSayingWhatAndWhere) {
  for (const auto& c : test::caseRows(__FILE__, "refused")) {
    MBQVocMap vocabulary;
    EXPECT_EQ(-1, vocabulary.load(c.at(0))) << c[0];
    EXPECT_THAT(getErrorMessage(), StartsWith(c.at(1))) << c[0];
  }
}

TEST(MBQVocMapTest, FailedLoadKeepsThePreviousContent) {
  MBQVocMapSP vocabulary = loaded(kSample);
  MBQVocCategorySP before = vocabulary->readCategory({"quellix", "qos"});
  EXPECT_EQ(-1, vocabulary->load("<vocabulary><category/></vocabulary>"));
  EXPECT_EQ(before, vocabulary->readCategory({"quellix", "qos"}));
  // A successful load replaces everything, while handles taken before stay usable.
  ASSERT_EQ(0, vocabulary->load("<vocabulary/>"));
  EXPECT_EQ(nullptr, vocabulary->readCategory("qos"));
  EXPECT_EQ("numproc,cpuweight,cpulimit", parameterNames(*before));
}

TEST(MBQVocMapTest, ReadsCategoriesByNameAndByPath) {
  MBQVocMapSP vocabulary = loaded(kSample);
  for (const auto& c : test::caseRows(__FILE__, "categories")) {
    const auto arrow = std::find(c.begin(), c.end(), "->");
    const std::vector<std::string> path(c.begin(), arrow);
    const std::string where = ::testing::PrintToString(path);
    MBQVocCategorySP category = vocabulary->readCategory(path);
    if (arrow[1] == "none") {
      EXPECT_EQ(nullptr, category) << where;
      EXPECT_FALSE(getErrorMessage().empty()) << where;
      continue;
    }
    ASSERT_NE(nullptr, category) << where;
    EXPECT_EQ(arrow[1], category->getTechnology()) << where;
    EXPECT_EQ(arrow[2], parameterNames(*category)) << where;
    if (path.size() == 1) {
      EXPECT_EQ(category, vocabulary->readCategory(path[0])) << where;
    }
  }
  clearErrorMessage();
  EXPECT_EQ(nullptr, vocabulary->readCategory({"quellix", "missing"}));
  EXPECT_EQ("no category 'missing' of technology 'quellix' in vocabulary", getErrorMessage());
  EXPECT_EQ(nullptr, vocabulary->readCategory("missing"));
  EXPECT_EQ("no category 'missing' in vocabulary", getErrorMessage());
  EXPECT_EQ(nullptr, MBQVocMap().readCategory("qos"));
}

// The handed-out cursor is confined to the parameter: moving it does not move the iteration.
TEST(MBQVocMapTest, IteratorReadsParametersInOrderWhateverTheCallerDoesWithIt) {
  MBQVocMapSP vocabulary = loaded(kSample);
  MBQVocIterator empty = vocabulary->readCategory({"quellix", "empty"})->iterator();
  EXPECT_EQ(-1, empty.next());  // before first()
  EXPECT_EQ(-1, empty.first());
  EXPECT_FALSE(empty.isValid());
  EXPECT_EQ(-1, empty.next());

  MBQVocIterator it = vocabulary->readCategory({"quellix", "qos"})->iterator();
  EXPECT_FALSE(it.isValid());
  ASSERT_EQ(0, it.first());
  ASSERT_TRUE(it.isValid());
  std::string name;
  int valueType = 0;
  int complexity = -1;
  EXPECT_EQ(0, it->getValue(1010, name));
  EXPECT_EQ("numproc", name);
  EXPECT_EQ(0, it->getValue("value_type", valueType));
  EXPECT_EQ(0, it->getValue(1304, complexity));
  EXPECT_EQ(2, valueType);
  EXPECT_EQ(1, complexity);
  EXPECT_NE(0, it->up());
  EXPECT_EQ(0, it->descend(1010));

  ASSERT_EQ(0, it.next());
  EXPECT_EQ(0, it->getValue(1010, name));
  EXPECT_EQ("cpuweight", name);
  ASSERT_EQ(0, it.next());
  EXPECT_EQ(0, (*it).getValue(1010, name));
  EXPECT_EQ("cpulimit", name);
  valueType = 7;
  EXPECT_NE(0, it->getValue("value_type", valueType));  // absent element: value untouched
  EXPECT_EQ(7, valueType);
  EXPECT_EQ(0, it->getValue("note", name));
  EXPECT_EQ("percent", name);
  EXPECT_EQ(0, it->getValue(1304, complexity));
  EXPECT_EQ(0, complexity);
  EXPECT_EQ(-1, it.next());
  EXPECT_FALSE(it.isValid());
  EXPECT_EQ(-1, it.next());
  ASSERT_EQ(0, it.first());
  EXPECT_EQ(0, it->getValue(1010, name));
  EXPECT_EQ("numproc", name);

  // An iterator keeps the document alive after the vocabulary and category are gone.
  MBQVocIterator survivor = vocabulary->readCategory({"other", "qos"})->iterator();
  vocabulary.reset();
  ASSERT_EQ(0, survivor.first());
  EXPECT_EQ(0, survivor->getValue(1010, name));
  EXPECT_EQ("memory", name);
  EXPECT_EQ(-1, survivor.next());
}

TEST(MBQVocMapTest, ThreadsIterateOneCategoryAtOnce) {
  MBQVocMapSP vocabulary = loaded(kSample);
  MBQVocCategorySP category = vocabulary->readCategory({"quellix", "qos"});
  std::vector<std::string> seen(4);
  std::vector<std::thread> threads;
  for (std::string& names : seen)
    threads.emplace_back([&category, &names] {
      for (int round = 0; round < 200; ++round) names = parameterNames(*category);
    });
  for (std::thread& thread : threads) thread.join();
  for (const std::string& names : seen) EXPECT_EQ("numproc,cpuweight,cpulimit", names);
}

TEST(MBQVocMapTest, LoadsFilesAndPrefixesFailuresWithThePath) {
  const test::TempDir dir;
  const auto write = [&dir](const char* name, const std::string& text) {
    std::ofstream(dir.file(name), std::ios::binary) << text;
    return dir.file(name);
  };
  MBQVocMap vocabulary;
  ASSERT_EQ(0, vocabulary.loadFile(write("good.xml", kSample))) << getErrorMessage();
  EXPECT_NE(nullptr, vocabulary.readCategory({"quellix", "tune"}));

  const std::string invalid = write("invalid.xml", "<vocabulary><category/></vocabulary>");
  EXPECT_EQ(-1, vocabulary.loadFile(invalid));
  EXPECT_EQ(invalid + ": invalid vocabulary: category #1: no name", getErrorMessage());

  EXPECT_EQ(-1, vocabulary.loadFile(dir.path()));
  EXPECT_EQ(dir.path() + ": can not read: Is a directory", getErrorMessage());

  const std::string huge = write("huge.xml", "");
  ASSERT_EQ(0, truncate(huge.c_str(), static_cast<off_t>(MBQVocMap::kMaxFileSize + 1)));
  EXPECT_EQ(-1, vocabulary.loadFile(huge));
  EXPECT_THAT(getErrorMessage(), HasSubstr("file is larger than"));
  EXPECT_NE(nullptr, vocabulary.readCategory({"quellix", "tune"}));
}

TEST(MBQVocMapDeathTest, ParameterOfAnInvalidIteratorAborts) {
  MBQVocMapSP vocabulary = loaded(kSample);
  MBQVocIterator it = vocabulary->readCategory("qos")->iterator();
  EXPECT_DEATH(it.parameter(), "assertion failed at core/src/MBQFunctionalityCore/MBQVocMap:");
  ASSERT_EQ(0, it.first());
  while (it.next() == 0) continue;
  EXPECT_DEATH(it->getName(), "MBQVocMap");
}

}  // namespace
}  // namespace MBQ
