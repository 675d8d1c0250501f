#include "KTRFunctionality/KTRIPAutoAllocator.h"

#include "MBQCore/MBQIPv6.h"

namespace KTR {
namespace IPAutoAllocation {

void Builder::set(const MBQ::MBQIPPoolAllocation& allocation, std::vector<KTRNetVEth>::iterator veth) {
  // A host-routed interface is routed by the host, which owns its gateway and name servers.
  if (veth->isHostRouted()) return;

  const MBQ::MBQIPv6& gateway = allocation.getGateway();
  if (!gateway.isAny()) {
    if (MBQ::IPv6Format::IPv4Compatible::test(gateway)) {
      if (veth->getGateway().empty()) veth->setGateway(MBQ::IPv6Format::IPv4Compatible::format(gateway));
    } else if (veth->getGateway6().empty()) {
      veth->setGateway6(gateway.toString());
    }
  }

  if (allocation.getAddresses().isSpecified())
    for (const MBQ::MBQIPv6& address : allocation.getAddresses().get())
      veth->addNameserver(MBQ::IPv6Format::IPv4Compatible::format(address));
}

}  // namespace IPAutoAllocation
}  // namespace KTR
