#include "KTRFunctionality/KTRRawConfigBashParser.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "KTRFunctionality/KTRBashParser.h"

// What the map parser adds to the line engine (KTRBashParserTest): the first assignment of a
// key wins, also over the map's own entry, and keys are appended in map order.

namespace KTR {
namespace {

using Config = std::map<std::string, std::string>;

TEST(KTRRawConfigBashParserTest, TheFirstAssignmentOfAKeyWinsAlsoOverTheMap) {
  ASSERT_EQ(KTRRawConfigBashParser::getInstance(), KTRRawConfigBashParser::getInstance());
  Config config = {{"a", "before"}};
  std::istringstream in("# c\nB=\"x y\"\nA=file\nb=second\n");
  EXPECT_EQ(0, KTRRawConfigBashParser::getInstance()->getConfig(in, config));
  EXPECT_EQ((Config{{"a", "before"}, {"b", "x y"}}), config);
}

TEST(KTRRawConfigBashParserTest, WritesEachKeyInPlaceAndAppendsTheRestInMapOrder) {
  const auto write = [](const Config& config, bool merge) {
    std::istringstream old("Foo=old # trailing\nUNKNOWN=1\n");
    std::ostringstream out;
    EXPECT_EQ(0, KTRRawConfigBashParser::getInstance()->putConfig(config, out, &old, merge));
    return out.str();
  };
  const Config config = {{"foo", "new"}, {"zed", "z"}, {"a_key", "a"}};
  EXPECT_EQ("Foo=\"new\" # trailing\nUNKNOWN=1\nA_KEY=\"a\"\nZED=\"z\"\n", write(config, true));
  EXPECT_EQ("A_KEY=\"a\"\nFOO=\"new\"\nZED=\"z\"\n", write(config, false));
  EXPECT_EQ("Foo=old # trailing\nUNKNOWN=1\n", write(Config(), true));

  KTRRawConfigBashParser::ParameterParserGet get(config);
  std::string value;
  EXPECT_EQ(kUnknownKey, get.get("unknown", value));
}

}  // namespace
}  // namespace KTR
