#include "KTRFunctionality/KTRVEth.h"

#include <cctype>
#include <cstring>

#include "MBQCore/MBQIPv6.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {
const char kWinsServerName[] = "wins_server";
const char kHostRoutedName[] = "host_routed";

const char kVenet0[] = "venet0";
const char kHostRouted[] = "host-routed";
const char kBridged[] = "bridged";
const char kYes[] = "yes";

// Kept deliberately loose, as the configuration files have always been read: only as many
// characters as the value has are compared, so "", "y" and "ye" mean yes while "yess" does not
// (the word's terminating zero differs).
bool isLeadingPartOf(const std::string& value, const char* word) {
  return std::strncmp(value.c_str(), word, value.size()) == 0;
}

bool startsWith(const std::string& text, const char* prefix, std::string& rest) {
  const std::size_t length = std::strlen(prefix);
  if (text.compare(0, length, prefix) != 0) return false;
  rest = text.substr(length);
  return true;
}

std::vector<std::string> splitAll(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find(separator, start);
    pieces.push_back(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
    if (end == std::string::npos) return pieces;
    start = end + 1;
  }
}

std::string dropLeadingBlanks(const std::string& text) {
  std::size_t first = 0;
  while (first < text.size() && std::isspace(static_cast<unsigned char>(text[first]))) ++first;
  return text.substr(first);
}

// The registration of this record with the MBQNetDevice registry lives as long as the library.
MBQ::MBQDerivedParserFactoryT<KTRNetVEth, MBQ::MBQNetDevice> vethFactory(false);

}  // namespace

KTRNetVEth::KTRNetVEth() : hostRouted_(false) {}

KTRNetVEth::~KTRNetVEth() = default;

std::string KTRNetVEth::toString() const {
  if (getName() == kVenet0 && hostRouted_) return std::string();

  std::string text;
  text += "ifname=" + getName() + ",";
  text += "network=" + getNetwork() + ",";
  text += "mac=" + getMac() + ",";
  text += std::string("nettype=") + (hostRouted_ ? kHostRouted : kBridged) + ",";
  if (!getGateway().empty()) text += "gw=" + getGateway() + ",";
  if (!getGateway6().empty()) text += "gw6=" + getGateway6() + ",";

  std::string ipv6;
  if (!getAddresses().empty() && !isDhcp()) {
    std::string ipv4;
    for (const MBQ::MBQIPAddress& address : getAddresses()) {
      const std::string addressText = address.toStringWithNetwork();
      if (MBQ::MBQIPv6::isResembling(addressText))
        ipv6 += addressText + ",";
      else
        ipv4 += addressText + ":";
    }
    if (!ipv4.empty()) {
      ipv4.back() = ',';
      text += "ip=" + ipv4;
    }
  }
  text += std::string("dhcp=") + (isDhcp() ? "yes" : "no");
  if (isDhcp6()) text += ",dhcp6=yes";
  // Last, because on reading "ip6=" takes everything after it; the trailing "," stays.
  if (!ipv6.empty()) text += ",ip6=" + ipv6;
  return text;
}

void KTRNetVEth::fromString(const std::string& text) {
  const std::vector<std::string> pieces = splitAll(text, ',');
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    // Only leading blanks go: a trailing one is part of the value.
    const std::string piece = dropLeadingBlanks(pieces[i]);
    std::string rest;
    if (startsWith(piece, "ifname=", rest)) {
      setName(rest);
    } else if (startsWith(piece, "mac=", rest)) {
      setMac(rest);
    } else if (startsWith(piece, "ip=", rest)) {
      for (const std::string& address : splitAll(rest, ':'))
        if (!address.empty()) addAddress(MBQ::MBQIPAddress(address));
    } else if (startsWith(piece, "dhcp=", rest)) {
      setDhcp(isLeadingPartOf(rest, kYes));
    } else if (startsWith(piece, "dhcp6=", rest)) {
      setDhcp6(isLeadingPartOf(rest, kYes));
    } else if (startsWith(piece, "gw=", rest)) {
      setGateway(rest);
    } else if (startsWith(piece, "gw6=", rest)) {
      setGateway6(rest);
    } else if (startsWith(piece, "network=", rest)) {
      setNetwork(rest);
    } else if (startsWith(piece, "nettype=", rest)) {
      hostRouted_ = isLeadingPartOf(rest, kHostRouted);
    } else if (startsWith(piece, "ip6=", rest)) {
      // IPv6 addresses are separated by the item separator itself, so the list swallows the
      // rest of the item; later pieces are taken as they stand.
      if (!rest.empty()) addAddress(MBQ::MBQIPAddress(rest));
      for (++i; i < pieces.size(); ++i)
        if (!pieces[i].empty()) addAddress(MBQ::MBQIPAddress(pieces[i]));
      return;
    }
  }
}

int KTRNetVEth::Reader::operator()(const MBQ::MBQMessageIterator& it, KTRNetVEth& veth) const {
  if (MBQ::MBQNetNIC::Reader()(it, veth) != 0) return -1;
  if (veth.getName().empty()) {
    MBQ::setErrorMessage("ifname: missing");  // a card is known by its interface name
    return -1;
  }
  // The lists' own statuses are not looked at: their items are plain texts.
  std::vector<std::string> winsServers;
  MBQ::MBQReaderData(winsServers, kWinsServerName, MBQ::MBQReaderOptional)(it, winsServers);
  veth.winsServers_ = winsServers;
  std::vector<std::string> nameservers;
  MBQ::MBQReaderData(nameservers, Tag::kServerAddress, MBQ::MBQReaderOptional)(it, nameservers);
  veth.nameservers_ = nameservers;
  veth.hostRouted_ = it.hasChild(kHostRoutedName);
  return 0;
}

int KTRNetVEth::Writer::operator()(MBQ::MBQMessageIterator& it, const KTRNetVEth& veth) const {
  // The base part goes into this same element without a typed write of its own, which would
  // replace "net_vethType" with the core's "net_nicType" and lose the class on reading.
  MBQ::MBQNetNIC::Writer()(it, veth);
  MBQ::MBQWriterData(veth.winsServers_, kWinsServerName)(it, veth.winsServers_);
  MBQ::MBQWriterData(veth.nameservers_, Tag::kServerAddress)(it, veth.nameservers_);
  if (veth.hostRouted_) it.addChild(kHostRoutedName);
  return 0;
}

}  // namespace KTR
