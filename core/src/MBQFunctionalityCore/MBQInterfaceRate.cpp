#include "MBQFunctionalityCore/MBQInterfaceRate.h"

#include <climits>
#include <tuple>

#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

MBQInterfaceRate::MBQInterfaceRate() : class_(0), rate_(0) {}

MBQInterfaceRate::MBQInterfaceRate(const std::string& interfaceName, int rateClass, long long rate)
    : interface_(interfaceName), class_(rateClass), rate_(rate) {}

std::string MBQInterfaceRate::toString() const {
  return interface_ + ":" + longlongToStr(class_) + ":" + longlongToStr(rate_);
}

int MBQInterfaceRate::fromString(const std::string& text) {
  const std::size_t rateColon = text.rfind(':');
  const std::size_t classColon =
      rateColon == std::string::npos || rateColon == 0 ? std::string::npos : text.rfind(':', rateColon - 1);
  long long rateClass = 0;
  long long rate = 0;
  if (classColon == std::string::npos || classColon == 0 ||
      strToLonglong(text.substr(classColon + 1, rateColon - classColon - 1), rateClass) != 0 ||
      rateClass < INT_MIN || rateClass > INT_MAX || strToLonglong(text.substr(rateColon + 1), rate) != 0) {
    setErrorMessage("bad interface rate '%s', expected interface:class:rate", text.c_str());
    return -1;
  }
  interface_ = text.substr(0, classColon);
  class_ = static_cast<int>(rateClass);
  rate_ = rate;
  return 0;
}

int MBQInterfaceRate::compare(const MBQInterfaceRate& other) const {
  if (int byInterface = interface_.compare(other.interface_)) return byInterface;
  const auto mine = std::tie(class_, rate_);
  const auto theirs = std::tie(other.class_, other.rate_);
  if (mine < theirs) return -1;
  if (theirs < mine) return 1;
  return 0;
}

const MBQLayout<MBQInterfaceRate>& MBQInterfaceRate::layout() {
  static const MBQLayout<MBQInterfaceRate> layout{required("interface", &MBQInterfaceRate::interface_),
                                                  required("class", &MBQInterfaceRate::class_),
                                                  required("rate", &MBQInterfaceRate::rate_)};
  return layout;
}

}  // namespace MBQ
