#pragma once

#include <string>

#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQLayout.h"

namespace MBQ {


// The traffic rate of one shaping class on one network interface of an environment.
class MBQ_EXPORT MBQInterfaceRate {
 public:
  // Empty interface, class 0, rate 0.
  MBQInterfaceRate();
  MBQInterfaceRate(const std::string& interfaceName, int rateClass, long long rate);

  const std::string& getInterface() const { return interface_; }
  void setInterface(const std::string& interfaceName) { interface_ = interfaceName; }
  int getClass() const { return class_; }
  void setClass(int rateClass) { class_ = rateClass; }
  long long getRate() const { return rate_; }
  void setRate(long long rate) { rate_ = rate; }

  // Text form "interface:class:rate", e.g. "eth0:1:8000". Interface names may themselves hold
  // ":" (alias devices such as "eth0:1"), so fromString() takes the class and the rate from
  // the last two fields and the interface from everything before them. The interface must not
  // be empty; class and rate are decimal numbers (optional sign, blanks around them allowed),
  // the class within int. Returns 0, or -1 with the error text set and the record unchanged.
  std::string toString() const;
  int fromString(const std::string& text);

  friend bool operator==(const MBQInterfaceRate& a, const MBQInterfaceRate& b) { return a.compare(b) == 0; }
  friend bool operator!=(const MBQInterfaceRate& a, const MBQInterfaceRate& b) { return a.compare(b) != 0; }
  friend bool operator<(const MBQInterfaceRate& a, const MBQInterfaceRate& b) { return a.compare(b) < 0; }
  // By interface, then class, then rate; <0, 0 or >0.
  int compare(const MBQInterfaceRate& other) const;

  // Message layout, in the record's own element: children "interface" (text), "class" and
  // "rate", all required. The reader returns -1 when one is missing or does not convert,
  // leaving the record unchanged.
  static const MBQ::MBQLayout<MBQInterfaceRate>& layout();
  using Reader = MBQ::MBQFreshLayoutReader<MBQInterfaceRate>;
  using Writer = MBQ::MBQLayoutWriter<MBQInterfaceRate>;

 private:
  std::string interface_;
  int class_;
  long long rate_;
};

}  // namespace MBQ
