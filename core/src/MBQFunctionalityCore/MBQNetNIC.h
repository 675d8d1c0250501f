#pragma once

#include <string>
#include <vector>

#include "MBQCore/MBQExport.h"
#include "MBQCore/MBQIPAddress.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {

class MBQMessageIterator;

// The base of every network device record of an environment. Technology libraries derive
// their own device records from it and register them with the derived-parser factories of this
// base, so a device element is read into the class its schema type names.
class MBQ_EXPORT MBQNetDevice {
 public:
  MBQNetDevice() = default;
  MBQNetDevice(const MBQNetDevice&) = default;
  MBQNetDevice& operator=(const MBQNetDevice&) = default;
  virtual ~MBQNetDevice();

  // The interface name inside the environment ("eth0", "venet0").
  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }

 private:
  std::string name_;
};

// A network interface card of an environment: its addresses and how it gets them.
//
// Every field is a plain value; the record does not validate anything. Addresses are kept as
// MBQIPAddress values, which may be invalid ones that only carry a text (see MBQIPAddress).
// The gateways, the network and the MAC address are texts in the form the configuration holds
// them; empty means "not set".
class MBQ_EXPORT MBQNetNIC : public MBQNetDevice {
 public:
  // No name, no addresses, empty texts, both DHCP flags off.
  MBQNetNIC();

  // IPv4 and IPv6 addresses in one list, each with its network part if it has one.
  const std::vector<MBQIPAddress>& getAddresses() const { return addresses_; }
  void setAddresses(const std::vector<MBQIPAddress>& addresses) { addresses_ = addresses; }
  void addAddress(const MBQIPAddress& address) { addresses_.push_back(address); }

  // The network (bridge or virtual network) the interface is attached to.
  const std::string& getNetwork() const { return network_; }
  void setNetwork(const std::string& network) { network_ = network; }
  // The IPv4 and IPv6 default gateways.
  const std::string& getGateway() const { return gateway_; }
  void setGateway(const std::string& gateway) { gateway_ = gateway; }
  const std::string& getGateway6() const { return gateway6_; }
  void setGateway6(const std::string& gateway) { gateway6_ = gateway; }
  // Whether the interface takes its IPv4 / IPv6 configuration from DHCP.
  bool isDhcp() const { return dhcp_; }
  void setDhcp(bool on) { dhcp_ = on; }
  bool isDhcp6() const { return dhcp6_; }
  void setDhcp6(bool on) { dhcp6_ = on; }
  const std::string& getMac() const { return mac_; }
  void setMac(const std::string& mac) { mac_ = mac; }

  // Field by field; addresses compare in list order.
  friend bool operator==(const MBQNetNIC& a, const MBQNetNIC& b) {
    return a.getName() == b.getName() && a.addresses_ == b.addresses_ && a.network_ == b.network_ &&
           a.gateway_ == b.gateway_ && a.gateway6_ == b.gateway6_ && a.dhcp_ == b.dhcp_ && a.dhcp6_ == b.dhcp6_ &&
           a.mac_ == b.mac_;
  }
  friend bool operator!=(const MBQNetNIC& a, const MBQNetNIC& b) { return !(a == b); }

  // Message layout, in the record's own element, in this order:
  //   "ifname"    the interface name (text)
  //   address        one element per address, its text with the network part ("10.0.0.5/24")
  //   "network"   text
  //   "gateway"   IPv4 gateway (text)
  //   "gateway6"  IPv6 gateway (text)
  //   "dhcp"      boolean (0/1)
  //   "dhcp6"     boolean (0/1)
  //   "mac"       text
  // The writer writes every element, empty texts included; it returns 0, or -1 when the cursor
  // refuses an element.
  //
  // The reader accepts any subset: a missing element keeps the field's value, except the
  // address list, which becomes exactly the address elements present (none: empty). Address
  // texts are not validated (an element that is not an address gives an invalid MBQIPAddress
  // holding the text). It returns -1 only for a flag element whose text is not a boolean, and
  // then leaves the record unchanged.
  //
  // The writer declares the core schema (namespace kCoreTypesNamespaceId, type 167, "net_nicType"). A record
  // derived from MBQNetNIC writes this part in place by calling the Writer directly (not
  // through a typed write), so that its own schema type stays on the element.
  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQNetNIC& nic) const;
  };
  struct MBQ_EXPORT Writer {
    const char* getStrNSID() const { return ""; }
    const char* getStrTypeID() const { return ""; }
    int getNSID() const { return kCoreTypesNamespaceId; }
    int getTypeID() const { return 167; }
    int operator()(MBQMessageIterator& it, const MBQNetNIC& nic) const;
  };

 private:
  std::vector<MBQIPAddress> addresses_;
  std::string network_;
  std::string gateway_;
  std::string gateway6_;
  bool dhcp_;
  bool dhcp6_;
  std::string mac_;
};

}  // namespace MBQ
