#pragma once

#include <string>

#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQLayout.h"
#include "MBQMessage/MBQOptionalProperty.h"

namespace MBQ {


// One resource (QoS) parameter of an environment: the resource's id (its lower-case name in
// the vocabulary, e.g. "numproc"), an optional soft value (barrier) and a hard value (limit).
// Resources without a soft value carry only the limit.
//
// Records are values and are kept in std::set, ordered by id, then barrier (unspecified
// before any specified value), then limit.
class MBQ_EXPORT MBQQoS {
 public:
  // Id empty, barrier unspecified, limit 0.
  MBQQoS();
  explicit MBQQoS(const std::string& id);
  MBQQoS(const std::string& id, long long limit);
  MBQQoS(const std::string& id, long long barrier, long long limit);

  const std::string& getId() const { return id_; }
  void setId(const std::string& id) { id_ = id; }

  const MBQOptionalProperty<long long>& getBarrier() const { return barrier_; }
  // A plain number sets a specified barrier; MBQOptionalProperty<long long>() clears it.
  void setBarrier(const MBQOptionalProperty<long long>& barrier) { barrier_ = barrier; }

  long long getLimit() const { return limit_; }
  void setLimit(long long limit) { limit_ = limit; }

  // The values as text: "barrier:limit", or "limit" when the barrier is unspecified (the id is
  // not part of the text). fromString() reads the same forms, decimal numbers with an optional
  // sign and blanks around each number; a text without ":" leaves the barrier unspecified.
  // Returns 0, or -1 with the error text set and the record unchanged.
  std::string toString() const;
  int fromString(const std::string& text);

  friend bool operator==(const MBQQoS& a, const MBQQoS& b) { return a.compare(b) == 0; }
  friend bool operator!=(const MBQQoS& a, const MBQQoS& b) { return a.compare(b) != 0; }
  friend bool operator<(const MBQQoS& a, const MBQQoS& b) { return a.compare(b) < 0; }
  // <0, 0 or >0 in the set order above; the value of an unspecified barrier is ignored.
  int compare(const MBQQoS& other) const;

  // Message layout, in the record's own element: children "id" (text), "barrier" (only when
  // specified) and "limit". The reader requires "id" and "limit" and returns -1 when either
  // is missing or a number does not convert, leaving the record unchanged; the barrier is
  // specified exactly when its element is present.
  static const MBQ::MBQLayout<MBQQoS>& layout();
  using Reader = MBQ::MBQFreshLayoutReader<MBQQoS>;
  using Writer = MBQ::MBQLayoutWriter<MBQQoS>;

 private:
  std::string id_;
  MBQOptionalProperty<long long> barrier_;
  long long limit_;
};

}  // namespace MBQ
