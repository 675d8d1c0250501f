#include "MBQFunctionalityCore/MBQIPPoolAllocation.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQMessage.h"

namespace MBQ {
namespace {

MBQIPPoolAllocation allocation(const std::string& gateway, const std::vector<std::string>* addresses) {
  MBQIPPoolAllocation result;
  result.setGateway(MBQIPv6(gateway));
  if (addresses != nullptr) {
    std::vector<MBQIPv6> list;
    for (const std::string& text : *addresses) list.push_back(MBQIPv6(text));
    result.setAddresses(list);
  }
  return result;
}

TEST(MBQIPPoolAllocationTest, RoundTripsThroughMessageText) {
  const std::vector<std::string> some = {"10.0.0.53", "2001:db8::53"};
  const std::vector<std::string> none;
  const MBQIPPoolAllocation cases[] = {
      allocation("10.0.0.1", &some),
      allocation("2001:db8::1", &none),  // specified but empty: told apart from unspecified
      allocation("::", nullptr),
  };
  for (const MBQIPPoolAllocation& written : cases) {
    MBQMessage message;
    ASSERT_EQ(0, message.iterator()->putObject(written, MBQIPPoolAllocation::Writer(), "allocation"));
    MBQIPPoolAllocation read = allocation("10.9.9.9", &some);
    ASSERT_EQ(0, test::reparsed(message).iterator()->getObject(read, MBQIPPoolAllocation::Reader(), "allocation"));
    EXPECT_EQ(written, read) << message.toString();
  }
}

TEST(MBQIPPoolAllocationTest, BadAddressTextsFailAndLeaveTheRecordAndMissingPartsAreKeptOrUnspecified) {
  const std::vector<std::string> kept = {"10.0.0.53"};
  const std::pair<const char*, int> cases[] = {
      {"<m><a><gateway>10.0.0.256</gateway></a></m>", -1},
      {"<m><a><addresses><address>10.0.0.1</address><address>dhcp</address></addresses></a></m>", -1},
      {"<m><a><addresses><address/></addresses></a></m>", -1},
      {"<m><a/></m>", 0},  // keeps the gateway; the list, missing, becomes unspecified
  };
  for (const auto& [document, result] : cases) {
    MBQIPPoolAllocation read = allocation("10.0.0.1", &kept);
    const MBQMessage message = test::parsed(document);
    EXPECT_EQ(result, message.iterator()->getObject(read, MBQIPPoolAllocation::Reader(), "a")) << document;
    EXPECT_EQ(allocation("10.0.0.1", result == 0 ? nullptr : &kept), read) << document;
  }
}

}  // namespace
}  // namespace MBQ
