#pragma once

#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "KTRFunctionality/KTRVEth.h"
#include "MBQFunctionalityCore/MBQIPPoolAllocation.h"

namespace KTR {
namespace IPAutoAllocation {

struct KTR_EXPORT Builder {
  // Completes a virtual Ethernet interface from what an address pool handed out for it,
  // never overwriting what the interface already has:
  // - a host-routed interface is left as it is;
  // - a gateway other than "::" fills the IPv4 gateway (an IPv4 address) or the IPv6 gateway
  //   (any other address), only when that gateway is still empty;
  // - a specified address list is appended, in order, to the interface's server addresses
  //   (IPv4 ones as dotted text). Nothing is de-duplicated: setting twice appends twice.
  // `veth` must point to an element of its vector (not end()).
  static void set(const MBQ::MBQIPPoolAllocation& allocation, std::vector<KTRNetVEth>::iterator veth);
};

}  // namespace IPAutoAllocation
}  // namespace KTR
