#include <gtest/gtest.h>

#include <string>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQValueText.h"

namespace MBQ {
namespace {

// The value `text` reads into a T that held `old`, as digits; "-" when it is refused and kept.
template <class T>
std::string read(const std::string& text, T old) {
  T value = old;
  const int rc = MBQValueText<T>::parse(text, value);
  EXPECT_TRUE(rc == 0 || (rc == -1 && value == old)) << text;
  return rc == 0 ? std::to_string(value) : "-";
}

TEST(MBQValueTextTest, IntegersAndTruthValues) {
  for (const auto& c : test::caseRows(__FILE__, "parse")) {
    const std::string& type = c.at(0);
    const std::string value = type == "long"  ? read<long long>(c.at(1), 99)
                              : type == "int" ? read<int>(c.at(1), 5)
                              : type == "bool" ? read<bool>(c.at(1), c.at(2) != "1")
                                              : read<unsigned>(c.at(1), 5);
    EXPECT_EQ(c.at(2), value) << type << " '" << c[1] << "'";
  }
  EXPECT_EQ("1", MBQValueText<bool>::format(true));
  EXPECT_EQ("0", MBQValueText<bool>::format(false));
}

TEST(MBQValueTextTest, DoublesRoundTripInShortestForm) {
  for (double value : {0.0, -0.0, 0.1, 1.0 / 3, 1e300, 5e-324, -2.5, 123456789.0}) {
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
