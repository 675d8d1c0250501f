#include "KTRFunctionality/KTRRawConfigBashParser.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "KTRFunctionality/KTRBashParser.h"

namespace KTR {
namespace {

using Config = std::map<std::string, std::string>;

Config read(const std::string& text, Config config = Config()) {
  std::istringstream in(text);
  EXPECT_EQ(0, KTRRawConfigBashParser::getInstance()->getConfig(in, config));
  return config;
}

std::string write(const Config& config, const std::string& oldText, bool merge = true) {
  std::istringstream old(oldText);
  std::ostringstream out;
  EXPECT_EQ(0, KTRRawConfigBashParser::getInstance()->putConfig(config, out, &old, merge));
  return out.str();
}

TEST(KTRRawConfigBashParserTest, IsOneSharedInstance) {
  ASSERT_NE(nullptr, KTRRawConfigBashParser::getInstance());
  EXPECT_EQ(KTRRawConfigBashParser::getInstance(), KTRRawConfigBashParser::getInstance());
}

TEST(KTRRawConfigBashParserTest, ReadsEveryAssignmentUnderItsLowerCaseName) {
  EXPECT_EQ((Config{{"foo", "a b"}, {"ve_root", "/var/lib/quellix/root/$VEID"}, {"empty", ""}}),
            read("# header\nFoo=\"a b\" # c\nVE_ROOT='/var/lib/quellix/root/$VEID'\necho hi\nEMPTY=\n"));
}

TEST(KTRRawConfigBashParserTest, TheFirstAssignmentOfAKeyWinsAlsoOverTheMap) {
  EXPECT_EQ((Config{{"a", "first"}}), read("A=first\na=second\n"));
  EXPECT_EQ((Config{{"a", "before"}, {"b", "new"}}), read("A=file\nB=new\n", Config{{"a", "before"}}));
}

TEST(KTRRawConfigBashParserTest, WritesEachKeyInPlaceAndAppendsTheRest) {
  const std::string old = "# keep\nFoo=old # trailing\nUNKNOWN=1\nfoo='again'\n";
  EXPECT_EQ("# keep\nFoo=\"new\" # trailing\nUNKNOWN=1\nfoo=\"new\"\nA_KEY=\"a\"\nZED=\"z\"\n",
            write(Config{{"foo", "new"}, {"zed", "z"}, {"a_key", "a"}}, old));
  EXPECT_EQ("A_KEY=\"a\"\nFOO=\"new\"\n", write(Config{{"foo", "new"}, {"a_key", "a"}}, old, false));
}

TEST(KTRRawConfigBashParserTest, ReadingAndWritingBackChangesNothing) {
  const std::string old = "# comment\n\nA=1\nB=\"two words\"  # why\nA=again\nexport C=3\n";
  const Config config = read(old);
  EXPECT_EQ("# comment\n\nA=\"1\"\nB=\"two words\"  # why\nA=\"1\"\nexport C=3\n", write(config, old));
}

TEST(KTRRawConfigBashParserTest, AnEmptyMapReproducesTheOldFile) {
  const std::string old = "# comment\nA=1\n  B='x' # y\n\n";
  EXPECT_EQ(old, write(Config(), old));
  EXPECT_EQ("", write(Config(), old, false));
}

TEST(KTRRawConfigBashParserTest, GetSideAnswersUnknownForAbsentKeys) {
  const Config config = {{"a", "1"}};
  KTRRawConfigBashParser::ParameterParserGet get(config);
  std::string value;
  EXPECT_EQ(kUnknownKey, get.get("b", value));
  EXPECT_EQ(0, get.get("a", value));
  EXPECT_EQ("1", value);
  std::string key;
  EXPECT_EQ(0, get.getNext(key));
  EXPECT_EQ("a", key);
  EXPECT_EQ(-1, get.getNext(key));
}

}  // namespace
}  // namespace KTR
