#include "KTRFunctionality/KTRNetworkM.h"

#include "MBQMessage/MBQCoreValueCodec.h"

namespace KTR {

namespace {

using MBQ::MBQMessageIterator;

constexpr int kRangeTextTag = 1417;
constexpr int kAddressTag = 2047;
constexpr int kRangeParamTag = 1034;
constexpr int kNameTag = 1010;
constexpr int kRate1Tag = 1251;
constexpr int kRate2Tag = 1252;
constexpr int kBandwidthTag = 1070;
constexpr int kShapingFlagTag = 1248;
constexpr int kRangeTag = 1253;
constexpr int kClassTag = 1094;
constexpr int kInterfaceTag = 1250;
constexpr const char* kNetDeviceId = "net_device_id";

// Empty lists are valid (a node without shaping), a broken entry is not.
template <class Record>
int readEntries(const MBQMessageIterator& it, int id, std::vector<Record>& entries) {
  std::vector<Record> read;
  if (MBQ::MBQReaderList(typename Record::Reader(), id, MBQ::MBQReaderOptional)(it, read) != 0) return -1;
  entries = std::move(read);
  return 0;
}

}  // namespace

int KTRNetworkShapingIPRange::Reader::operator()(const MBQMessageIterator& it, KTRNetworkShapingIPRange& r) const {
  if (it.getValue(kRangeTextTag, r.text_) != 0) return -1;
  if (MBQ::MBQReaderID(MBQ::MBQReaderIPAddress(), kAddressTag)(it, r.address_) != 0) return -1;
  it.getValue(kRangeParamTag, r.param_);
  return 0;
}

int KTRNetworkShapingIPRange::Writer::operator()(MBQMessageIterator& it, const KTRNetworkShapingIPRange& r) const {
  if (it.setValue(kRangeTextTag, r.text_) != 0) return -1;
  if (MBQ::MBQWriterID(MBQ::MBQWriterIPAddress(), kAddressTag)(it, r.address_) != 0) return -1;
  return it.setValue(kRangeParamTag, r.param_);
}

int KTRNetworkShapingClass::Reader::operator()(const MBQMessageIterator& it, KTRNetworkShapingClass& r) const {
  if (it.getValue(kNameTag, r.name_) != 0) return -1;
  it.getValue(kRate1Tag, r.rate1_);
  it.getValue(kRate2Tag, r.rate2_);
  return 0;
}

int KTRNetworkShapingClass::Writer::operator()(MBQMessageIterator& it, const KTRNetworkShapingClass& r) const {
  if (it.setValue(kNameTag, r.name_) != 0) return -1;
  if (it.setValue(kRate1Tag, r.rate1_) != 0) return -1;
  return it.setValue(kRate2Tag, r.rate2_);
}

int KTRNetworkInterfaceShaping::Reader::operator()(const MBQMessageIterator& it, KTRNetworkInterfaceShaping& r) const {
  if (it.getValue(kNetDeviceId, r.device_) != 0) return -1;
  return it.getValue(kBandwidthTag, r.rate_);
}

int KTRNetworkInterfaceShaping::Writer::operator()(MBQMessageIterator& it, const KTRNetworkInterfaceShaping& r) const {
  if (it.setValue(kNetDeviceId, r.device_) != 0) return -1;
  return it.setValue(kBandwidthTag, r.rate_);
}

int KTRNetConfiguration::Reader::operator()(const MBQMessageIterator& it, KTRNetConfiguration& r) const {
  r.flag_ = it.hasChild(kShapingFlagTag);
  if (readEntries(it, kRangeTag, r.ranges_) != 0) return -1;
  if (readEntries(it, kClassTag, r.classes_) != 0) return -1;
  return readEntries(it, kInterfaceTag, r.interfaces_);
}

int KTRNetConfiguration::Writer::operator()(MBQMessageIterator& it, const KTRNetConfiguration& r) const {
  if (r.flag_ && it.addChild(kShapingFlagTag) != 0) return -1;
  if (MBQ::MBQWriterList(KTRNetworkShapingIPRange::Writer(), kRangeTag)(it, r.ranges_) != 0) return -1;
  if (MBQ::MBQWriterList(KTRNetworkShapingClass::Writer(), kClassTag)(it, r.classes_) != 0) return -1;
  return MBQ::MBQWriterList(KTRNetworkInterfaceShaping::Writer(), kInterfaceTag)(it, r.interfaces_);
}

}  // namespace KTR
