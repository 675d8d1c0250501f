#include "MBQFunctionalityCore/MBQNetNIC.h"

#include <string>

#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQTags.h"

namespace MBQ {

namespace {

// Unlike the default address reader, a blank element is kept too (as an invalid address with
// that text): whatever the writer wrote must read back, and the record never validates.
struct AddressTextReader {
  int operator()(const MBQMessageIterator& it, MBQIPAddress& address) const {
    std::string text;
    if (it.getText(text) != 0) return -1;
    address = MBQIPAddress(text);
    return 0;
  }
};

// A missing flag keeps its value; a present one must be a boolean.
int readFlag(const MBQMessageIterator& it, const char* name, const std::string& ifname, bool& flag) {
  if (!it.hasChild(name) || it.getValue(name, flag) == 0) return 0;
  setErrorMessage("network interface '%s': element '%s' is not a boolean", ifname.c_str(), name);
  return -1;
}

}  // namespace

MBQNetDevice::~MBQNetDevice() = default;

MBQNetNIC::MBQNetNIC() : dhcp_(false), dhcp6_(false) {}

int MBQNetNIC::Reader::operator()(const MBQMessageIterator& it, MBQNetNIC& nic) const {
  MBQNetNIC read = nic;
  std::string name = read.getName();
  it.getValue("ifname", name);
  read.setName(name);
  read.addresses_.clear();
  MBQReaderList(AddressTextReader(), Tag::kAddress, MBQReaderOptional)(it, read.addresses_);
  // Texts cannot be malformed: a missing element leaves the value, which is all a failed
  // read can mean here.
  it.getValue("network", read.network_);
  it.getValue("gateway", read.gateway_);
  it.getValue("gateway6", read.gateway6_);
  if (readFlag(it, "dhcp", name, read.dhcp_) != 0 || readFlag(it, "dhcp6", name, read.dhcp6_) != 0) return -1;
  it.getValue("mac", read.mac_);
  nic = read;
  return 0;
}

int MBQNetNIC::Writer::operator()(MBQMessageIterator& it, const MBQNetNIC& nic) const {
  if (it.setValue("ifname", nic.getName()) != 0 ||
      MBQWriterData(nic.addresses_, Tag::kAddress)(it, nic.addresses_) != 0 ||
      it.setValue("network", nic.network_) != 0 || it.setValue("gateway", nic.gateway_) != 0 ||
      it.setValue("gateway6", nic.gateway6_) != 0 || it.setValue("dhcp", nic.dhcp_) != 0 ||
      it.setValue("dhcp6", nic.dhcp6_) != 0 || it.setValue("mac", nic.mac_) != 0)
    return -1;
  return 0;
}

}  // namespace MBQ
