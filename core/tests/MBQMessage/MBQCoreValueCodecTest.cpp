#include "MBQMessage/MBQCoreValueCodec.h"

#include <gtest/gtest.h>

#include <string>

#include "MBQMessage/MBQMessage.h"

// The text forms themselves are the value types' own tests; here only what the codec adds.

namespace MBQ {
namespace {

// Reads a T from an element "v" holding `text`.
template <class T>
int readFromText(const std::string& text, T& value) {
  MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(0, it->setValue("v", text));
  return it->getObj(value, "v");
}

// Writes `value`, expects `text` in its element, and returns what reads back from it.
template <class T>
T expectWrittenAndReadBack(const T& value, const std::string& text) {
  MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(0, it->putObj(value, "v"));
  std::string written;
  EXPECT_EQ(0, it->getValue("v", written));
  EXPECT_EQ(text, written);
  T read;
  EXPECT_EQ(0, it->getObj(read, "v")) << text;
  EXPECT_EQ(value, read) << text;
  return read;
}

TEST(MBQCoreValueCodecTest, ValuesAreTheirTextAndReadBack) {
  expectWrittenAndReadBack(MBQEID("ct-101"), "ct-101");
  expectWrittenAndReadBack(MBQGUID(0x0011223344556677ULL, 0x8899aabbccddeeffULL),
                           "00112233-4455-6677-8899-aabbccddeeff");  // no braces
  expectWrittenAndReadBack(MBQIPv6("10.0.0.1"), "::ffff:10.0.0.1");
  // An address keeps its network in the form it was written in.
  for (const char* text : {"10.0.0.5", "10.0.0.5/24", "10.0.0.5/255.255.0.0", "fe80::1/64", "dhcp"})
    EXPECT_EQ(text, expectWrittenAndReadBack(MBQIPAddress(text), text).toStringWithNetwork());
  // An empty element is the empty GUID.
  MBQGUID guid = MBQGUID::generate();
  ASSERT_EQ(0, readFromText("", guid));
  EXPECT_FALSE(guid.isValid());
}

// Address lists mix words with addresses: only a blank element, an empty list's mark, fails.
TEST(MBQCoreValueCodecTest, TextThatDoesNotParseFailsAndKeepsTheValue) {
  MBQEID eid("kept");
  EXPECT_EQ(-1, readFromText("", eid));
  EXPECT_EQ(MBQEID("kept"), eid);
  const MBQIPAddress kept("10.0.0.1");
  for (const char* text : {"", "  "}) {
    MBQIPAddress address = kept;
    EXPECT_EQ(-1, readFromText(text, address)) << '"' << text << '"';
    EXPECT_EQ(kept, address);
  }
  MBQIPAddress address = kept;
  ASSERT_EQ(0, readFromText("dhcp", address));
  EXPECT_FALSE(address.isValid());
  EXPECT_EQ("dhcp", address.toString());
}

}  // namespace
}  // namespace MBQ
