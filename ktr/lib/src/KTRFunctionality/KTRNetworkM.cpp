#include "KTRFunctionality/KTRNetworkM.h"

#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQMessageIterator;
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
  if (it.getValue(Tag::kRangeText, r.text_) != 0) return -1;
  if (MBQ::MBQReaderID(MBQ::MBQReaderIPAddress(), Tag::kAddress)(it, r.address_) != 0) return -1;
  it.getValue(Tag::kRangeParam, r.param_);
  return 0;
}

int KTRNetworkShapingIPRange::Writer::operator()(MBQMessageIterator& it, const KTRNetworkShapingIPRange& r) const {
  if (it.setValue(Tag::kRangeText, r.text_) != 0) return -1;
  if (MBQ::MBQWriterID(MBQ::MBQWriterIPAddress(), Tag::kAddress)(it, r.address_) != 0) return -1;
  return it.setValue(Tag::kRangeParam, r.param_);
}

int KTRNetworkShapingClass::Reader::operator()(const MBQMessageIterator& it, KTRNetworkShapingClass& r) const {
  if (it.getValue(Tag::kName, r.name_) != 0) return -1;
  it.getValue(Tag::kClassRate1, r.rate1_);
  it.getValue(Tag::kClassRate2, r.rate2_);
  return 0;
}

int KTRNetworkShapingClass::Writer::operator()(MBQMessageIterator& it, const KTRNetworkShapingClass& r) const {
  if (it.setValue(Tag::kName, r.name_) != 0) return -1;
  if (it.setValue(Tag::kClassRate1, r.rate1_) != 0) return -1;
  return it.setValue(Tag::kClassRate2, r.rate2_);
}

int KTRNetworkInterfaceShaping::Reader::operator()(const MBQMessageIterator& it, KTRNetworkInterfaceShaping& r) const {
  if (it.getValue(kNetDeviceId, r.device_) != 0) return -1;
  return it.getValue(Tag::kBandwidth, r.rate_);
}

int KTRNetworkInterfaceShaping::Writer::operator()(MBQMessageIterator& it, const KTRNetworkInterfaceShaping& r) const {
  if (it.setValue(kNetDeviceId, r.device_) != 0) return -1;
  return it.setValue(Tag::kBandwidth, r.rate_);
}

int KTRNetConfiguration::Reader::operator()(const MBQMessageIterator& it, KTRNetConfiguration& r) const {
  r.flag_ = it.hasChild(Tag::kShapingFlag);
  if (readEntries(it, Tag::kIpRange, r.ranges_) != 0) return -1;
  if (readEntries(it, Tag::kShapingClass, r.classes_) != 0) return -1;
  return readEntries(it, Tag::kIfaceShaping, r.interfaces_);
}

int KTRNetConfiguration::Writer::operator()(MBQMessageIterator& it, const KTRNetConfiguration& r) const {
  if (r.flag_ && it.addChild(Tag::kShapingFlag) != 0) return -1;
  if (MBQ::MBQWriterList(KTRNetworkShapingIPRange::Writer(), Tag::kIpRange)(it, r.ranges_) != 0) return -1;
  if (MBQ::MBQWriterList(KTRNetworkShapingClass::Writer(), Tag::kShapingClass)(it, r.classes_) != 0) return -1;
  return MBQ::MBQWriterList(KTRNetworkInterfaceShaping::Writer(), Tag::kIfaceShaping)(it, r.interfaces_);
}

}  // namespace KTR
