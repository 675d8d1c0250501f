#include "KTRFunctionality/KTRTEM.h"

namespace KTR {

int KTRTemplate::fromString(const std::string& text) {
  name_ = text;
  release_.clear();
  return 0;
}

int KTRTemplate::Reader::operator()(const MBQ::MBQMessageIterator& it, KTRTemplate& record) const {
  // Templates named in a container file have no release, so its absence is not an error.
  it.getValue(1223, record.release_);
  return it.getValue(1026, record.name_);
}

int KTRTemplate::Writer::operator()(MBQ::MBQMessageIterator& it, const KTRTemplate& record) const {
  if (it.setValue(1223, record.release_) != 0) return -1;
  return it.setValue(1026, record.name_);
}

int KTRDistribution::Reader::operator()(const MBQ::MBQMessageIterator& it, KTRDistribution& record) const {
  return it.getValue(1010, record.name_);
}

int KTRDistribution::Writer::operator()(MBQ::MBQMessageIterator& it, const KTRDistribution& record) const {
  return it.setValue(1010, record.name_);
}

}  // namespace KTR
