#include "MBQFunctionalityCore/MBQQoS.h"

#include <tuple>

#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

MBQQoS::MBQQoS() : limit_(0) {}

MBQQoS::MBQQoS(const std::string& id) : id_(id), limit_(0) {}

MBQQoS::MBQQoS(const std::string& id, long long limit) : id_(id), limit_(limit) {}

MBQQoS::MBQQoS(const std::string& id, long long barrier, long long limit)
    : id_(id), barrier_(barrier), limit_(limit) {}

std::string MBQQoS::toString() const {
  if (!barrier_.isSpecified()) return longlongToStr(limit_);
  return longlongToStr(barrier_.get()) + ":" + longlongToStr(limit_);
}

int MBQQoS::fromString(const std::string& text) {
  const std::size_t colon = text.find(':');
  MBQOptionalProperty<long long> barrier;
  long long limit = 0;
  bool ok;
  if (colon == std::string::npos) {
    ok = strToLonglong(text, limit) == 0;
  } else {
    barrier.specify(true);
    ok = strToLonglong(text.substr(0, colon), barrier.get()) == 0 &&
         strToLonglong(text.substr(colon + 1), limit) == 0;
  }
  if (!ok) {
    setErrorMessage("bad QoS value '%s'", text.c_str());
    return -1;
  }
  barrier_ = barrier;
  limit_ = limit;
  return 0;
}

int MBQQoS::compare(const MBQQoS& other) const {
  if (int byId = id_.compare(other.id_)) return byId;
  const long long barrier = barrier_.isSpecified() ? barrier_.get() : 0;
  const long long otherBarrier = other.barrier_.isSpecified() ? other.barrier_.get() : 0;
  const auto mine = std::make_tuple(barrier_.isSpecified(), barrier, limit_);
  const auto theirs = std::make_tuple(other.barrier_.isSpecified(), otherBarrier, other.limit_);
  if (mine < theirs) return -1;
  if (theirs < mine) return 1;
  return 0;
}

// The barrier comes between id and limit when written; a missing one reads as unspecified.
const MBQLayout<MBQQoS>& MBQQoS::layout() {
  static const MBQLayout<MBQQoS> layout{required("id", &MBQQoS::id_), strictOptional("barrier", &MBQQoS::barrier_),
                                        required("limit", &MBQQoS::limit_)};
  return layout;
}

}  // namespace MBQ
