#include "MBQMessage/MBQCoreValueCodec.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "MBQMessage/MBQMessage.h"

namespace MBQ {
namespace {

// Writes `value` as an element "v" and returns the element's text.
template <class T>
std::string writtenText(const T& value) {
  MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(0, it->putObj(value, "v"));
  std::string text;
  EXPECT_EQ(0, it->getValue("v", text));
  return text;
}

// Reads a T from an element "v" holding `text`.
template <class T>
int readFromText(const std::string& text, T& value) {
  MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(0, it->setValue("v", text));
  return it->getObj(value, "v");
}

template <class T>
T roundTrip(const T& value) {
  MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(0, it->putObj(value, "v"));
  T read;
  EXPECT_EQ(0, it->getObj(read, "v"));
  return read;
}

TEST(MBQCoreValueCodecTest, ValuesAreWrittenAsTheirTextForms) {
  EXPECT_EQ("ct-101", writtenText(MBQEID("ct-101")));
  EXPECT_EQ("00112233-4455-6677-8899-aabbccddeeff",
            writtenText(MBQGUID(0x0011223344556677ULL, 0x8899aabbccddeeffULL)));
  EXPECT_EQ("::ffff:10.0.0.1", writtenText(MBQIPv6("10.0.0.1")));
  EXPECT_EQ("10.0.0.5/255.255.255.0", writtenText(MBQIPAddress("10.0.0.5/255.255.255.0")));
  EXPECT_EQ("fe80::1/64", writtenText(MBQIPAddress("fe80::1/64")));
}

TEST(MBQCoreValueCodecTest, ValuesRoundTrip) {
  const MBQGUID guid = MBQGUID::generate();
  EXPECT_EQ(MBQEID("node/1"), roundTrip(MBQEID("node/1")));
  EXPECT_EQ(guid, roundTrip(guid));
  EXPECT_EQ(MBQIPv6("2001:db8::5"), roundTrip(MBQIPv6("2001:db8::5")));
  for (const char* text : {"10.0.0.5", "10.0.0.5/24", "10.0.0.5/255.255.0.0", "fe80::1/64", "dhcp"}) {
    const MBQIPAddress read = roundTrip(MBQIPAddress(text));
    EXPECT_EQ(MBQIPAddress(text), read) << text;
    EXPECT_EQ(text, read.toStringWithNetwork()) << text;
  }
}

TEST(MBQCoreValueCodecTest, TextThatDoesNotParseFailsAndKeepsTheValue) {
  const MBQEID eid("kept");
  MBQEID eidRead = eid;
  EXPECT_EQ(-1, readFromText("", eidRead));
  EXPECT_EQ(eid, eidRead);

  const MBQGUID guid = MBQGUID::generate();
  for (const char* text : {"zz", "{00112233-4455-6677-8899-aabbccddeeff"}) {
    MBQGUID guidRead = guid;
    EXPECT_EQ(-1, readFromText(text, guidRead)) << text;
    EXPECT_EQ(guid, guidRead) << text;
  }

  const MBQIPv6 address("::1");
  MBQIPv6 addressRead = address;
  EXPECT_EQ(-1, readFromText("fe80::1/64", addressRead));
  EXPECT_EQ(address, addressRead);
}

TEST(MBQCoreValueCodecTest, GuidReadsBracedAndEmptyText) {
  MBQGUID guid = MBQGUID::generate();
  ASSERT_EQ(0, readFromText("{00112233-4455-6677-8899-AABBCCDDEEFF}", guid));
  EXPECT_EQ(MBQGUID(0x0011223344556677ULL, 0x8899aabbccddeeffULL), guid);
  ASSERT_EQ(0, readFromText("", guid));
  EXPECT_FALSE(guid.isValid());
}

TEST(MBQCoreValueCodecTest, AddressKeepsWordsButAnEmptyElementFails) {
  MBQIPAddress address("10.0.0.1");
  ASSERT_EQ(0, readFromText("dhcp", address));
  EXPECT_FALSE(address.isValid());
  EXPECT_EQ("dhcp", address.toString());

  const MBQIPAddress kept("10.0.0.1");
  for (const char* text : {"", "  "}) {
    address = kept;
    EXPECT_EQ(-1, readFromText(text, address)) << '"' << text << '"';
    EXPECT_EQ(kept, address);
  }
}

TEST(MBQCoreValueCodecTest, DataListsOfValuesRoundTrip) {
  const std::vector<MBQIPAddress> addresses = {MBQIPAddress("10.0.0.5/24"), MBQIPAddress("fe80::1/64")};
  const std::set<MBQEID> eids = {MBQEID("a"), MBQEID("b")};
  MBQMessage message;
  auto it = message.iterator();
  ASSERT_EQ(0, it->putObject(addresses, MBQWriterData(addresses, "address")));
  ASSERT_EQ(0, it->putObject(eids, MBQWriterData(eids, "eid")));
  std::vector<MBQIPAddress> addressesRead;
  std::set<MBQEID> eidsRead;
  ASSERT_EQ(0, it->getObject(addressesRead, MBQReaderData(addressesRead, "address")));
  ASSERT_EQ(0, it->getObject(eidsRead, MBQReaderData(eidsRead, "eid")));
  EXPECT_EQ(addresses, addressesRead);
  EXPECT_EQ(eids, eidsRead);
}

}  // namespace
}  // namespace MBQ
