#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "MBQMessage/MBQValueText.h"

namespace MBQ {
namespace {

struct IntCase {
  const char* text;
  int rc;
  long long value;
};

TEST(MBQValueTextTest, SignedIntegers) {
  const IntCase cases[] = {
      {"0", 0, 0},
      {" 42 ", 0, 42},
      {"+7", 0, 7},
      {"-9223372036854775808", 0, LLONG_MIN},
      {"9223372036854775807", 0, LLONG_MAX},
      {"9223372036854775808", -1, 0},
      {"", -1, 0},
      {"  ", -1, 0},
      {"12a", -1, 0},
      {"1 2", -1, 0},
      {"0x10", -1, 0},
      {"--1", -1, 0},
      {"+-1", -1, 0},
      {"1.0", -1, 0},
  };
  for (const auto& c : cases) {
    long long value = 99;
    EXPECT_EQ(c.rc, MBQValueText<long long>::parse(c.text, value)) << c.text;
    EXPECT_EQ(c.rc == 0 ? c.value : 99, value) << c.text;
  }
}

TEST(MBQValueTextTest, NarrowTypesRejectWhatDoesNotFit) {
  int narrow = 5;
  EXPECT_EQ(-1, MBQValueText<int>::parse("2147483648", narrow));
  EXPECT_EQ(0, MBQValueText<int>::parse("-2147483648", narrow));
  EXPECT_EQ(INT_MIN, narrow);
  unsigned u = 5;
  EXPECT_EQ(-1, MBQValueText<unsigned>::parse("-1", u));
  EXPECT_EQ(-1, MBQValueText<unsigned>::parse("4294967296", u));
  EXPECT_EQ(0, MBQValueText<unsigned>::parse("4294967295", u));
  EXPECT_EQ(4294967295u, u);
}

TEST(MBQValueTextTest, BooleansReadWordsAndWriteDigits) {
  const std::pair<const char*, int> cases[] = {{"1", 1}, {"0", 0}, {"true", 1}, {" false ", 0},
                                               {"yes", -1}, {"TRUE", -1}, {"2", -1}, {"", -1}};
  for (const auto& [text, expected] : cases) {
    bool value = false;
    int rc = MBQValueText<bool>::parse(text, value);
    if (expected < 0) {
      EXPECT_EQ(-1, rc) << text;
    } else {
      EXPECT_EQ(0, rc) << text;
      EXPECT_EQ(expected == 1, value) << text;
    }
  }
  EXPECT_EQ("1", MBQValueText<bool>::format(true));
  EXPECT_EQ("0", MBQValueText<bool>::format(false));
}

TEST(MBQValueTextTest, DoublesRoundTripInShortestForm) {
  const double values[] = {0.0, -0.0, 0.1, 1.0 / 3, 1e300, 5e-324, -2.5, 123456789.0};
  for (double value : values) {
    double back = 1;
    ASSERT_EQ(0, MBQValueText<double>::parse(MBQValueText<double>::format(value), back));
    EXPECT_EQ(value, back);
  }
  EXPECT_EQ("0.1", MBQValueText<double>::format(0.1));
  EXPECT_EQ("inf", MBQValueText<double>::format(1.0 / 0.0));
  double value = 0;
  EXPECT_EQ(-1, MBQValueText<double>::parse("1,5", value));
  EXPECT_EQ(-1, MBQValueText<double>::parse("", value));
}

}  // namespace
}  // namespace MBQ
