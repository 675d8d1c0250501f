#include "MBQCore/MBQString.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "../MBQTestSupport.h"

namespace {

TEST(MBQStringTest, CaseMappingTouchesOnlyAsciiLetters) {
  const std::string mixed = "Quellix_VE-42 @[`{ \xC3\x84rger \xC3\xA4";  // "Ärger ä" in UTF-8
  EXPECT_EQ("quellix_ve-42 @[`{ \xC3\x84rger \xC3\xA4", MBQ::toLower(mixed));
  EXPECT_EQ("QUELLIX_VE-42 @[`{ \xC3\x84RGER \xC3\xA4", MBQ::toUpper(mixed));
  EXPECT_EQ("", MBQ::toLower(""));
  const std::string withNul("A\0b", 3);
  EXPECT_EQ(std::string("a\0b", 3), MBQ::toLower(withNul));
}

TEST(MBQStringTest, StrToLonglongAcceptsDecimalWithSignAndBlanksOnly) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "strToLonglong")) {
    const std::string& text = c.at(0);
    const bool refused = c.at(1) == "refused";
    const long long expected = refused ? 12345 : std::stoll(c[1]);
    long long value = 12345;
    EXPECT_EQ(refused ? -1 : 0, MBQ::strToLonglong(text, value)) << '"' << text << '"';
    EXPECT_EQ(expected, value) << '"' << text << '"';
    EXPECT_EQ(refused ? -99 : expected, MBQ::strToLonglong(text, -99LL)) << '"' << text << '"';
  }
  EXPECT_EQ(0, MBQ::strToLonglong("junk")) << "the fallback defaults to 0";
}

TEST(MBQStringTest, LonglongToStrWritesPlainDecimalThatReadsBack) {
  for (long long v : {0LL, 1LL, -1LL, 10LL, -10LL, 1234567890123LL, std::numeric_limits<long long>::max(),
                      std::numeric_limits<long long>::min()}) {
    const std::string text = MBQ::longlongToStr(v);
    EXPECT_EQ(std::to_string(v), text);
    long long back = 0;
    EXPECT_EQ(0, MBQ::strToLonglong(text, back)) << text;
    EXPECT_EQ(v, back) << text;
  }
}

TEST(MBQStringTest, DoubleToStrIsShortestRoundTrip) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "doubleToStr")) {
    const double value = std::strtod(c.at(0).c_str(), nullptr);
    const std::string text = MBQ::doubleToStr(value);
    EXPECT_EQ(c.size() > 1 ? c[1] : c[0], text);
    // Read back in the C locale's terms: same bits, sign of zero included.
    const double back = std::strtod(text.c_str(), nullptr);
    EXPECT_EQ(0, std::memcmp(&back, &value, sizeof(double))) << text;
  }
}

TEST(MBQStringTest, DoubleToStrSpellsSpecialValues) {
  EXPECT_EQ("inf", MBQ::doubleToStr(std::numeric_limits<double>::infinity()));
  EXPECT_EQ("-inf", MBQ::doubleToStr(-std::numeric_limits<double>::infinity()));
  EXPECT_EQ("nan", MBQ::doubleToStr(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ("nan", MBQ::doubleToStr(-std::numeric_limits<double>::quiet_NaN()));
}

TEST(MBQStringTest, DoubleToStrIgnoresTheLocale) {
  const char* saved = std::setlocale(LC_NUMERIC, nullptr);
  const std::string restore = saved ? saved : "C";
  const auto switchTo = [](const char* name) { return std::setlocale(LC_NUMERIC, name) != nullptr; };
  if (!switchTo("de_DE.UTF-8") && !switchTo("de_DE.utf8") && !switchTo("fr_FR.UTF-8") && !switchTo("ru_RU.UTF-8"))
    GTEST_SKIP() << "no locale with a decimal comma installed";
  EXPECT_EQ("12.5", MBQ::doubleToStr(12.5));
  EXPECT_EQ("0.30000000000000004", MBQ::doubleToStr(0.1 + 0.2));
  std::setlocale(LC_NUMERIC, restore.c_str());
}

}  // namespace
