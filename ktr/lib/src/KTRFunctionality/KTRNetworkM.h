#pragma once

#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQCore/MBQIPAddress.h"
#include "MBQMessage/MBQLayout.h"

// The network manager's traffic shaping configuration: address ranges assigned to shaping
// classes, the classes with their two rates, and each interface's own rate.
//
// Layouts in reading order; writers emit the same elements. "req": a missing or malformed
// element fails the reader (-1) at once; "lenient": a failure leaves the field as it was.

namespace KTR {

// Layout: range_text (req), address (req; any non-blank text reads, see
// MBQCoreValueCodec.h), range_param (lenient).
class KTR_EXPORT KTRNetworkShapingIPRange {
 public:
  const std::string& getText() const { return text_; }
  void setText(const std::string& text) { text_ = text; }
  const MBQ::MBQIPAddress& getAddress() const { return address_; }
  void setAddress(const MBQ::MBQIPAddress& address) { address_ = address; }
  const std::string& getParam() const { return param_; }
  void setParam(const std::string& param) { param_ = param; }

  static const MBQ::MBQLayout<KTRNetworkShapingIPRange>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRNetworkShapingIPRange>;
  using Writer = MBQ::MBQLayoutWriter<KTRNetworkShapingIPRange>;

 private:
  std::string text_;
  MBQ::MBQIPAddress address_;
  std::string param_;
};

// Layout: name (req), class_rate1 and class_rate2 (64-bit, lenient).
class KTR_EXPORT KTRNetworkShapingClass {
 public:
  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  long long getRate1() const { return rate1_; }
  void setRate1(long long rate) { rate1_ = rate; }
  long long getRate2() const { return rate2_; }
  void setRate2(long long rate) { rate2_ = rate; }

  static const MBQ::MBQLayout<KTRNetworkShapingClass>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRNetworkShapingClass>;
  using Writer = MBQ::MBQLayoutWriter<KTRNetworkShapingClass>;

 private:
  std::string name_;
  long long rate1_ = 0;
  long long rate2_ = 0;
};

// Layout: "net_device_id" device (req), bandwidth as the rate (64-bit, req).
class KTR_EXPORT KTRNetworkInterfaceShaping {
 public:
  const std::string& getDevice() const { return device_; }
  void setDevice(const std::string& device) { device_ = device; }
  long long getRate() const { return rate_; }
  void setRate(long long rate) { rate_ = rate; }

  static const MBQ::MBQLayout<KTRNetworkInterfaceShaping>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRNetworkInterfaceShaping>;
  using Writer = MBQ::MBQLayoutWriter<KTRNetworkInterfaceShaping>;

 private:
  std::string device_;
  long long rate_ = 0;
};

// Layout: shaping_flag (true exactly when present; written empty only when true), one ip_range
// per range, one shaping_class per class, one iface_shaping per interface. A list may be empty; one entry that does not
// read fails the whole configuration.
class KTR_EXPORT KTRNetConfiguration {
 public:
  bool getFlag() const { return flag_; }
  void setFlag(bool on) { flag_ = on; }
  const std::vector<KTRNetworkShapingIPRange>& getRanges() const { return ranges_; }
  void setRanges(const std::vector<KTRNetworkShapingIPRange>& ranges) { ranges_ = ranges; }
  const std::vector<KTRNetworkShapingClass>& getClasses() const { return classes_; }
  void setClasses(const std::vector<KTRNetworkShapingClass>& classes) { classes_ = classes; }
  const std::vector<KTRNetworkInterfaceShaping>& getInterfaces() const { return interfaces_; }
  void setInterfaces(const std::vector<KTRNetworkInterfaceShaping>& interfaces) { interfaces_ = interfaces; }

  static const MBQ::MBQLayout<KTRNetConfiguration>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRNetConfiguration>;
  using Writer = MBQ::MBQLayoutWriter<KTRNetConfiguration>;

 private:
  bool flag_ = false;
  std::vector<KTRNetworkShapingIPRange> ranges_;
  std::vector<KTRNetworkShapingClass> classes_;
  std::vector<KTRNetworkInterfaceShaping> interfaces_;
};

}  // namespace KTR
