#pragma once

#include <boost/intrusive_ptr.hpp>
#include <set>

#include "MBQCore/MBQEID.h"
#include "MBQCore/MBQExport.h"
#include "MBQCore/MBQRefCounter.h"

namespace MBQ {

// Tells which environments this host serves. Implementations answer from whatever the host
// knows (its own EID, the containers it runs); the service registry asks it to choose between
// a local service object and a proxy to the agent of another node.
//
// isLocal may be called from any thread at once.
class MBQ_EXPORT MBQLocalityChecker : public MBQRefCounter {
 public:
  // True when `eid` is served on this host. An EID the checker does not know is not local.
  virtual bool isLocal(const MBQEID& eid) const = 0;

 protected:
  ~MBQLocalityChecker() override;
};

using MBQLocalityCheckerPtr = boost::intrusive_ptr<MBQLocalityChecker>;

// What a caller brings along when it asks for a service object: the means to reach the
// services of this host and of others. Service factories receive it unchanged and may keep a
// handle to it for the lifetime of the objects they make.
class MBQ_EXPORT MBQAccessProviderPrototype : public MBQRefCounter {
 public:
  // The checker that tells which EIDs this host serves, or null when the provider cannot
  // tell; without a checker the registry tries the local service first. The checker stays
  // valid as long as the returned handle is held, even after the provider is gone.
  virtual MBQLocalityCheckerPtr getLocalityChecker() const = 0;

 protected:
  ~MBQAccessProviderPrototype() override;
};

using MBQAccessProviderPtr = boost::intrusive_ptr<MBQAccessProviderPrototype>;

// A provider for a host that knows its local environments up front: its checker answers from
// a fixed set of EIDs, compared byte for byte. The set never changes, so the provider and its
// checker may be shared between threads freely.
class MBQ_EXPORT MBQLocalAccessProvider : public MBQAccessProviderPrototype {
 public:
  explicit MBQLocalAccessProvider(std::set<MBQEID> localEids);

  // Never null; the same checker on every call.
  MBQLocalityCheckerPtr getLocalityChecker() const override;

 protected:
  ~MBQLocalAccessProvider() override;

 private:
  MBQLocalityCheckerPtr checker_;
};

}  // namespace MBQ
