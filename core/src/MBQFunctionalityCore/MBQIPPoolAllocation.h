#pragma once

#include <vector>

#include "MBQCore/MBQExport.h"
#include "MBQCore/MBQIPv6.h"
#include "MBQMessage/MBQOptionalProperty.h"

namespace MBQ {

class MBQMessageIterator;

// What an address pool handed out for one network interface, besides the interface's own
// addresses: the gateway to use and the addresses of the servers (name servers) the interface
// should know. IPv4 addresses are held in their IPv6 form (see MBQIPv6).
class MBQ_EXPORT MBQIPPoolAllocation {
 public:
  using AddressList = MBQOptionalProperty<std::vector<MBQIPv6>>;

  // No addresses (unspecified) and the any gateway "::", which means "no gateway".
  MBQIPPoolAllocation() = default;

  const AddressList& getAddresses() const { return addresses_; }
  void setAddresses(const AddressList& addresses) { addresses_ = addresses; }
  const MBQIPv6& getGateway() const { return gateway_; }
  void setGateway(const MBQIPv6& gateway) { gateway_ = gateway; }

  friend bool operator==(const MBQIPPoolAllocation& a, const MBQIPPoolAllocation& b) {
    return a.addresses_ == b.addresses_ && a.gateway_ == b.gateway_;
  }
  friend bool operator!=(const MBQIPPoolAllocation& a, const MBQIPPoolAllocation& b) { return !(a == b); }

  // Message layout, in the record's own element:
  //   "addresses"  present exactly when the address list is specified (an empty list is an
  //                empty element); inside it one element address per address, its IPv6 text
  //   "gateway"    the gateway's IPv6 text; always written
  // The reader returns -1 when an address or the gateway is not an address text, leaving the
  // record unchanged. A missing gateway keeps the record's gateway; a missing "addresses"
  // makes the list unspecified.
  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQIPPoolAllocation& allocation) const;
  };
  struct MBQ_EXPORT Writer {
    int operator()(MBQMessageIterator& it, const MBQIPPoolAllocation& allocation) const;
  };

 private:
  AddressList addresses_;
  MBQIPv6 gateway_;
};

}  // namespace MBQ
