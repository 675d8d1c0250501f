#include "KTRFunctionality/KTRVocabulary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"

namespace KTR {
namespace {

using ::testing::HasSubstr;

// The shipped file is what the library holds, and it passes the library's own checks (every
// formula parses); what it contains is the operators' business, not restated here.
TEST(KTRVocabularyTest, BuiltInVocabularyIsTheShippedFileLoadedOnce) {
  EXPECT_EQ(testing::slurp(KTR_DEFAULT_VOCABULARY_FILE), defaultVocabularyText());
  std::vector<MBQ::MBQVocMapSP> seen(4);
  std::vector<std::thread> threads;
  for (MBQ::MBQVocMapSP& slot : seen) threads.emplace_back([&slot] { slot = defaultVocabulary(); });
  for (std::thread& thread : threads) thread.join();
  ASSERT_NE(nullptr, seen[0]) << MBQ::getErrorMessage();
  for (const MBQ::MBQVocMapSP& vocabulary : seen) EXPECT_EQ(seen[0], vocabulary);
  EXPECT_EQ(seen[0], defaultVocabulary());
}

// A vocabulary of the technology: `qos` is the resource category's body, `tune` (when given)
// the formula category's.
std::string vocabulary(const std::string& qos, const char* tune = nullptr) {
  return "<vocabulary><technology><name>quellix</name><category><name>qos</name>" + qos + "</category>" +
         (tune ? std::string("<category><name>tune</name>") + tune + "</category>" : "") + "</technology></vocabulary>";
}

TEST(KTRVocabularyTest, CheckRejectsWhatTheLibraryCannotUse) {
  const std::string numproc =
      "<parameter><name>numproc</name><value_type>2</value_type><complexity>1</complexity></parameter>";
  const std::string where = "invalid vocabulary: technology 'quellix', category ";
  struct Case {
    std::string text;
    std::string message;  // empty: accepted
  };
  const Case cases[] = {
      {vocabulary(numproc), ""},
      {vocabulary(numproc + "<parameter><name>cpulimit</name><complexity>0</complexity></parameter>"), ""},
      {vocabulary(numproc, "<parameter><name>f</name><type>1</type><formula>numproc.soft &lt;= numproc.hard"
                           "</formula><formula_info>m</formula_info></parameter>"),
       ""},
      {vocabulary(numproc, ""), ""},
      {"<vocabulary><category><name>qos</name>" + numproc + "</category></vocabulary>",
       "invalid vocabulary: technology 'quellix': no category 'qos'"},
      {vocabulary(""), where + "'qos': no parameters"},
      {vocabulary("<parameter><name>QOS</name><complexity>1</complexity></parameter>"),
       where + "'qos', parameter 'QOS': the name is reserved"},
      {vocabulary(numproc + "<parameter><name>cpu</name></parameter>"),
       where + "'qos', parameter 'cpu': value_type/complexity 1/2 is none of 2/1, 1/1, 1/0"},
      {vocabulary("<parameter><name>x</name><value_type>2</value_type><complexity>2</complexity></parameter>"),
       "parameter 'x': value_type/complexity 2/2 is none"},
      {vocabulary("<parameter><name>x</name><value_type>two</value_type><complexity>1</complexity></parameter>"),
       "parameter 'x': value_type is not an integer"},
      {vocabulary("<parameter><name>x</name><complexity/></parameter>"), "parameter 'x': complexity is not an integer"},
      {vocabulary(numproc, "<parameter><name>f</name><formula>a</formula><formula_info>m</formula_info></parameter>"),
       where + "'tune', parameter 'f': no formula id"},
      {vocabulary(numproc, "<parameter><name>f</name><type>x1</type><formula>a</formula><formula_info>m"
                           "</formula_info></parameter>"),
       "parameter 'f': formula id 'x1' is not an integer"},
      {vocabulary(numproc, "<parameter><name>f</name><type>1</type><formula_info>m</formula_info></parameter>"),
       "parameter 'f': no formula"},
      {vocabulary(numproc, "<parameter><name>f</name><type>1</type><formula>a</formula></parameter>"),
       "parameter 'f': no formula message"},
      // Formulas are parsed: the grammar, the names and the single multiple name all count.
      {vocabulary(numproc, "<parameter><name>f</name><type>1</type><formula>(numproc)</formula><formula_info>m"
                           "</formula_info></parameter>"),
       where + "'tune', parameter 'f': formula '(numproc)' does not parse"},
      {vocabulary(numproc, "<parameter><name>g</name><type>1</type><formula>numproc</formula><formula_info>m"
                           "</formula_info></parameter><parameter><name>f</name><type>2</type><formula>cpus &gt; 0"
                           "</formula><formula_info>m</formula_info></parameter>"),
       "parameter 'f': formula 'cpus > 0' does not parse"},
  };
  for (const Case& c : cases) {
    MBQ::MBQVocMap loaded;
    ASSERT_EQ(0, loaded.load(c.text)) << c.text << ": " << MBQ::getErrorMessage();
    if (c.message.empty()) {
      EXPECT_EQ(0, checkVocabulary(loaded)) << c.text << ": " << MBQ::getErrorMessage();
    } else {
      EXPECT_EQ(-1, checkVocabulary(loaded)) << c.text;
      EXPECT_THAT(MBQ::getErrorMessage(), HasSubstr(c.message)) << c.text;
    }
  }
}

TEST(KTRVocabularyTest, LoadVocabularyReadsAndChecksAFile) {
  testing::TempDir dir;
  const std::string good = dir.file("good.xml"), unusable = dir.file("unusable.xml");
  std::ofstream(good) << defaultVocabularyText();
  std::ofstream(unusable) << "<vocabulary/>";

  MBQ::MBQVocMapSP loaded = loadVocabulary(good);
  ASSERT_NE(nullptr, loaded) << MBQ::getErrorMessage();
  EXPECT_NE(defaultVocabulary(), loaded);
  EXPECT_NE(nullptr, loaded->readCategory({"quellix", "tune"}));
  EXPECT_NE(loaded, loadVocabulary(good));  // a new object on every call

  EXPECT_EQ(nullptr, loadVocabulary(unusable));
  EXPECT_EQ(unusable + ": invalid vocabulary: technology 'quellix': no category 'qos'", MBQ::getErrorMessage());
}

}  // namespace
}  // namespace KTR
