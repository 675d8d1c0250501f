#pragma once

#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQFunctionalityCore/MBQNetNIC.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {
class MBQMessageIterator;
}

namespace KTR {

// A virtual Ethernet interface of a container: the core interface record plus what this
// technology adds. Held by value in the container configuration's interface list; an element
// of schema type "net_vethType" (types namespace) is read into this class through the
// derived-parser registry of MBQNetDevice.
class KTR_EXPORT KTRNetVEth : public MBQ::MBQNetNIC {
 public:
  // Bridged, no WINS servers, no server addresses.
  KTRNetVEth();
  KTRNetVEth(const KTRNetVEth&) = default;
  KTRNetVEth& operator=(const KTRNetVEth&) = default;
  ~KTRNetVEth() override;

  const std::vector<std::string>& getWinsServers() const { return winsServers_; }
  void setWinsServers(const std::vector<std::string>& servers) { winsServers_ = servers; }
  // The server addresses (name servers) the interface was given, from an address pool
  // allocation or from the container's own name server list.
  const std::vector<std::string>& getNameservers() const { return nameservers_; }
  void setNameservers(const std::vector<std::string>& servers) { nameservers_ = servers; }
  void addNameserver(const std::string& server) { nameservers_.push_back(server); }
  // Host-routed (true) or bridged (false).
  bool isHostRouted() const { return hostRouted_; }
  void setHostRouted(bool on) { hostRouted_ = on; }

  // The NETIF item of the container configuration file: "key=value" pairs joined by ",",
  //   ifname=<name>,network=<network>,mac=<mac>,nettype=host-routed|bridged[,gw=<ipv4 gw>]
  //   [,gw6=<ipv6 gw>][,ip=<a>:<b>:...],dhcp=yes|no[,dhcp6=yes][,ip6=<a>,<b>,...,]
  // e.g. "ifname=eth0,network=,mac=02:00:00:00:00:01,nettype=bridged,gw=10.0.0.1,
  // ip=10.0.0.5/24:10.0.0.6/24,dhcp=no,ip6=2001:db8::5/64,".
  // IPv4 addresses are separated by ":", IPv6 ones by ","; the IPv6 list comes last and keeps a
  // trailing ",". No address is written when DHCP is on. WINS and server addresses are not
  // part of the text.
  //
  // A host-routed "venet0" is implicit in the configuration file and gives the empty text.
  std::string toString() const;

  // Fills the record in place from a NETIF item; never fails. Only the fields the text names
  // change, and addresses are appended to the list, never replacing it. Pieces it does not
  // know are skipped; address texts are not validated. Everything after "ip6=" (including
  // later pieces that look like keys) is taken as IPv6 addresses. The flags "dhcp", "dhcp6"
  // and "nettype" are true when their value is a leading part of "yes" / "host-routed",
  // including the empty value.
  void fromString(const std::string& text);

  friend bool operator==(const KTRNetVEth& a, const KTRNetVEth& b) {
    return static_cast<const MBQ::MBQNetNIC&>(a) == static_cast<const MBQ::MBQNetNIC&>(b) &&
           a.winsServers_ == b.winsServers_ && a.nameservers_ == b.nameservers_ && a.hostRouted_ == b.hostRouted_;
  }
  friend bool operator!=(const KTRNetVEth& a, const KTRNetVEth& b) { return !(a == b); }

  // Message layout, in the record's own element (schema type "net_vethType"), in this order:
  //   1. the MBQNetNIC elements (see MBQNetNIC);
  //   2. one "wins_server" element per WINS server;
  //   3. one element server_address per server address;
  //   4. an empty "host_routed" element, present exactly when the interface is host-routed.
  // The reader returns -1 when the MBQNetNIC part fails or leaves an empty interface name;
  // otherwise it reads the rest and returns 0. Each list becomes exactly its elements (none:
  // empty), and the flag is whether "host_routed" exists. The writer writes every part and
  // returns 0.
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRNetVEth& veth) const;
  };
  struct KTR_EXPORT Writer {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "net_vethType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQ::MBQMessageIterator& it, const KTRNetVEth& veth) const;
  };

 private:
  std::vector<std::string> winsServers_;
  std::vector<std::string> nameservers_;
  bool hostRouted_;
};

}  // namespace KTR
