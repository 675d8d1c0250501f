#include "MBQCore/MBQString.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

TEST(MBQStringTest, CaseMappingTouchesOnlyAsciiLetters) {
  const std::string mixed = "Quellix_VE-42 @[`{ \xC3\x84rger \xC3\xA4";  // "Ärger ä" in UTF-8
  EXPECT_EQ("quellix_ve-42 @[`{ \xC3\x84rger \xC3\xA4", MBQ::toLower(mixed));
  EXPECT_EQ("QUELLIX_VE-42 @[`{ \xC3\x84RGER \xC3\xA4", MBQ::toUpper(mixed));
  EXPECT_EQ("", MBQ::toLower(""));
  const std::string withNul("A\0b", 3);
  EXPECT_EQ(std::string("a\0b", 3), MBQ::toLower(withNul));
}

TEST(MBQStringTest, StrToLonglongAcceptsDecimalWithSignAndBlanks) {
  const std::pair<const char*, long long> cases[] = {
      {"0", 0}, {"7", 7}, {"-7", -7}, {"+7", 7}, {"007", 7}, {"-0", 0}, {"  42", 42}, {"42  ", 42},
      {"\t 42 \r\n", 42}, {"1024\n", 1024}, {"00000000000000000000000000001", 1},
      {"9223372036854775807", std::numeric_limits<long long>::max()},
      {"+9223372036854775807", std::numeric_limits<long long>::max()},
      {"-9223372036854775808", std::numeric_limits<long long>::min()},
      {"-9223372036854775807", std::numeric_limits<long long>::min() + 1},
  };
  for (const auto& [text, expected] : cases) {
    long long value = 12345;
    EXPECT_EQ(0, MBQ::strToLonglong(text, value)) << '"' << text << '"';
    EXPECT_EQ(expected, value) << '"' << text << '"';
    EXPECT_EQ(expected, MBQ::strToLonglong(std::string(text), -99LL)) << text;
  }
}

TEST(MBQStringTest, StrToLonglongRejectsAnythingElse) {
  const std::string bad[] = {
      "", " ", "\t\n", "+", "-", "+-5", "-+5", "--5", "- 5", "5 5", "12abc", "abc", "0x10", "1e3", "1.0", "1,000",
      "9223372036854775808", "-9223372036854775809", "99999999999999999999", "-99999999999999999999",
      std::string("12\0", 3), std::string("1\0" "2", 3),
      "\xD9\xA3",  // ARABIC-INDIC DIGIT THREE: a digit, but not ours
  };
  for (const std::string& text : bad) {
    long long value = 12345;
    EXPECT_EQ(-1, MBQ::strToLonglong(text, value)) << '"' << text << '"';
    EXPECT_EQ(12345, value) << "value changed for \"" << text << '"';
    EXPECT_EQ(-99, MBQ::strToLonglong(text, -99LL)) << '"' << text << '"';
  }
  EXPECT_EQ(0, MBQ::strToLonglong("junk")) << "the fallback defaults to 0";
}

TEST(MBQStringTest, LonglongToStrRoundTripsTheExtremes) {
  const long long values[] = {0, 1, -1, 10, -10, 1234567890123LL,
                              std::numeric_limits<long long>::max(),
                              std::numeric_limits<long long>::min()};
  for (long long v : values) {
    std::string text = MBQ::longlongToStr(v);
    long long back = 0;
    EXPECT_EQ(0, MBQ::strToLonglong(text, back)) << text;
    EXPECT_EQ(v, back) << text;
  }
  EXPECT_EQ("-9223372036854775808", MBQ::longlongToStr(std::numeric_limits<long long>::min()));
  EXPECT_EQ("-10", MBQ::longlongToStr(-10));
}

TEST(MBQStringTest, DoubleToStrIsShortestRoundTrip) {
  const std::pair<double, const char*> cases[] = {
      {0.0, "0"}, {-0.0, "-0"}, {1.0, "1"}, {-1.0, "-1"}, {0.1, "0.1"}, {12.5, "12.5"}, {100.0, "100"},
      {0.01, "0.01"}, {1.0 / 3.0, "0.3333333333333333"}, {2.0 / 3.0, "0.6666666666666666"},
      {0.1 + 0.2, "0.30000000000000004"}, {123456789012.0, "123456789012"}, {1e300, "1e+300"},
      {-1e300, "-1e+300"}, {1e-5, "1e-05"}, {1.5e-7, "1.5e-07"}, {5e-324, "5e-324"},
      {2.2250738585072014e-308, "2.2250738585072014e-308"}, {1.7976931348623157e308, "1.7976931348623157e+308"},
      {9007199254740993.0, "9007199254740992"},  // 2^53 + 1 is not a double
      // Neighbours of round numbers need all 17 digits.
      {0.10000000000000002, "0.10000000000000002"}, {1.0000000000000002, "1.0000000000000002"},
      {1.0000000000000001e+23, "1.0000000000000001e+23"}, {4.3500000000000005, "4.3500000000000005"},
  };
  for (const auto& [value, expected] : cases) {
    const std::string text = MBQ::doubleToStr(value);
    EXPECT_EQ(expected, text);
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
  std::string restore = saved ? saved : "C";
  bool switched = false;
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "ru_RU.UTF-8"}) {
    if (std::setlocale(LC_NUMERIC, name) != nullptr) {
      switched = true;
      break;
    }
  }
  if (!switched) GTEST_SKIP() << "no locale with a decimal comma installed";
  EXPECT_EQ("12.5", MBQ::doubleToStr(12.5));
  EXPECT_EQ("0.30000000000000004", MBQ::doubleToStr(0.1 + 0.2));
  std::setlocale(LC_NUMERIC, restore.c_str());
}

}  // namespace
