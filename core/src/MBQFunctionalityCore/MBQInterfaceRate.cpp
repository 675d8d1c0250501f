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

int MBQInterfaceRate::Reader::operator()(const MBQMessageIterator& it, MBQInterfaceRate& rate) const {
  MBQInterfaceRate read;
  if (it.getValue("interface", read.interface_) != 0 || it.getValue("class", read.class_) != 0 ||
      it.getValue("rate", read.rate_) != 0)
    return -1;
  rate = read;
  return 0;
}

int MBQInterfaceRate::Writer::operator()(MBQMessageIterator& it, const MBQInterfaceRate& rate) const {
  if (it.setValue("interface", rate.interface_) != 0 || it.setValue("class", rate.class_) != 0) return -1;
  return it.setValue("rate", rate.rate_);
}

}  // namespace MBQ
