#include "KTRFunctionality/KTRNetworkM.h"

#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;
using MBQ::lenient;
using MBQ::list;
using MBQ::optional;
using MBQ::required;

namespace {

constexpr const char* kNetDeviceId = "net_device_id";

}  // namespace

const MBQ::MBQLayout<KTRNetworkShapingIPRange>& KTRNetworkShapingIPRange::layout() {
  using R = KTRNetworkShapingIPRange;
  static const MBQ::MBQLayout<R> layout{
      required(Tag::kRangeText, &R::text_),
      required(Tag::kAddress, &R::address_, MBQ::MBQReaderIPAddress(), MBQ::MBQWriterIPAddress()),
      lenient(optional(Tag::kRangeParam, &R::param_))};
  return layout;
}

const MBQ::MBQLayout<KTRNetworkShapingClass>& KTRNetworkShapingClass::layout() {
  using R = KTRNetworkShapingClass;
  static const MBQ::MBQLayout<R> layout{required(Tag::kName, &R::name_), lenient(optional(Tag::kClassRate1, &R::rate1_)),
                                        lenient(optional(Tag::kClassRate2, &R::rate2_))};
  return layout;
}

const MBQ::MBQLayout<KTRNetworkInterfaceShaping>& KTRNetworkInterfaceShaping::layout() {
  using R = KTRNetworkInterfaceShaping;
  static const MBQ::MBQLayout<R> layout{required(kNetDeviceId, &R::device_), required(Tag::kBandwidth, &R::rate_)};
  return layout;
}

// Empty lists are valid (a node without shaping), a broken entry is not.
const MBQ::MBQLayout<KTRNetConfiguration>& KTRNetConfiguration::layout() {
  using R = KTRNetConfiguration;
  static const MBQ::MBQLayout<R> layout{MBQ::marker(Tag::kShapingFlag, &R::flag_), list(Tag::kIpRange, &R::ranges_),
                                        list(Tag::kShapingClass, &R::classes_), list(Tag::kIfaceShaping, &R::interfaces_)};
  return layout;
}

}  // namespace KTR
