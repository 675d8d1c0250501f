#include "MBQCore/limited_length_string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>

namespace {

using Key16 = MBQ::limited_length_string<16>;
using Key256 = MBQ::limited_length_string<256>;

// The type lives in shared memory: no pointers, no hidden state, exactly N bytes.
static_assert(sizeof(Key16) == 16, "exactly N bytes");
static_assert(sizeof(Key256) == 256, "exactly N bytes");
static_assert(std::is_trivially_copyable<Key16>::value, "copied with memcpy between processes");
static_assert(std::is_standard_layout<Key16>::value, "fixed layout");
static_assert(Key16::capacity() == 15, "N - 1 characters and the terminator");

TEST(limited_length_stringTest, KeepsTextUpToCapacity) {
  const std::string cases[] = {"", "quellix", "exactly15bytes!", std::string(255, 'a')};
  for (const auto& text : cases) {
    if (text.size() > Key16::capacity()) {
      Key256 big(text);
      EXPECT_EQ(text, big.str());
      continue;
    }
    Key16 fromString(text);
    Key16 fromChars(text.c_str());
    Key16 assigned;
    assigned = text;
    for (const Key16* k : {&fromString, &fromChars, &assigned}) {
      EXPECT_EQ(text, k->str());
      EXPECT_EQ(text.empty(), k->empty());
      EXPECT_TRUE(k->isSpecified());
    }
  }
}

TEST(limited_length_stringTest, ShorterAssignmentLeavesNoTailOfTheLongerOne) {
  Key16 key("abcdefghijklmno");
  key = "xy";
  EXPECT_EQ("xy", key.str());
  Key16 fresh("xy");
  EXPECT_EQ(0, std::memcmp(&key, &fresh, sizeof(Key16))) << "raw images of equal values are equal";
}

TEST(limited_length_stringTest, TellsSpecifiedEmptyFromUnsetByByteOne) {
  Key16 unset;
  Key16 nullText(static_cast<const char*>(nullptr));
  Key16 specifiedEmpty("");
  EXPECT_FALSE(unset.isSpecified());
  EXPECT_FALSE(nullText.isSpecified());
  EXPECT_TRUE(specifiedEmpty.isSpecified());
  const auto* bytes = reinterpret_cast<const unsigned char*>(&specifiedEmpty);
  EXPECT_EQ(0, bytes[0]);
  EXPECT_EQ(1, bytes[1]);
  for (std::size_t i = 0; i < sizeof(unset); ++i) EXPECT_EQ(0, reinterpret_cast<const unsigned char*>(&unset)[i]);

  Key16 key("x");
  key.clear();
  EXPECT_FALSE(key.isSpecified());
  EXPECT_TRUE(unset == specifiedEmpty) << "comparison looks at the text only";
}

TEST(limited_length_stringTest, OrdersByBytes) {
  EXPECT_TRUE(Key16("abc") < Key16("abd"));
  EXPECT_TRUE(Key16("") < Key16("a"));
  EXPECT_FALSE(Key16("b") < Key16("b"));
  EXPECT_TRUE(Key16("b") != Key16("B"));
}

TEST(limited_length_stringDeathTest, TooLongTextAborts) {
  EXPECT_DEATH(Key16 key(std::string(16, 'a')), "core/src/MBQCore/MBQContainers:95 in operator=");
}

}  // namespace
