#include "MBQFunctionalityCore/MBQIPPoolAllocation.h"

#include <string>

#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQTags.h"

namespace MBQ {

namespace {
const char kAddressesName[] = "addresses";
const char kGatewayName[] = "gateway";

}  // namespace

int MBQIPPoolAllocation::Reader::operator()(const MBQMessageIterator& it, MBQIPPoolAllocation& allocation) const {
  MBQIPPoolAllocation read = allocation;
  read.addresses_ = AddressList();
  if (it.descend(kAddressesName) == 0) {
    std::vector<MBQIPv6> addresses;
    const int rc = MBQReaderData(addresses, Tag::kAddress, MBQReaderOptional)(it, addresses);
    it.up();
    if (rc != 0) {
      setErrorMessage("bad address in an address pool allocation: %s", getErrorMessage().c_str());
      return -1;
    }
    read.addresses_ = addresses;
  }
  if (MBQReaderID(MBQDefaultReader<MBQIPv6>(), kGatewayName, MBQReaderOptional)(it, read.gateway_) != 0) {
    setErrorMessage("bad gateway in an address pool allocation: %s", getErrorMessage().c_str());
    return -1;
  }
  allocation = read;
  return 0;
}

int MBQIPPoolAllocation::Writer::operator()(MBQMessageIterator& it, const MBQIPPoolAllocation& allocation) const {
  if (allocation.addresses_.isSpecified()) {
    if (it.addChildAndDescend(kAddressesName) != 0) return -1;
    const std::vector<MBQIPv6>& addresses = allocation.addresses_.get();
    const int rc = MBQWriterData(addresses, Tag::kAddress)(it, addresses);
    it.up();
    if (rc != 0) return -1;
  }
  return MBQWriterID(MBQDefaultWriter<MBQIPv6>(), kGatewayName)(it, allocation.gateway_);
}

}  // namespace MBQ
