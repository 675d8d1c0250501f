#include "MBQFunctionalityCore/MBQAccessProvider.h"

#include <utility>

namespace MBQ {

namespace {

// A separate object rather than the provider answering itself: callers may hold the checker
// longer than the provider, and a checker must not keep a whole provider alive.
class EIDSetLocalityChecker : public MBQLocalityChecker {
 public:
  explicit EIDSetLocalityChecker(std::set<MBQEID> localEids) : localEids_(std::move(localEids)) {}

  bool isLocal(const MBQEID& eid) const override { return localEids_.count(eid) != 0; }

 private:
  const std::set<MBQEID> localEids_;
};

}  // namespace

MBQLocalityChecker::~MBQLocalityChecker() = default;

MBQAccessProviderPrototype::~MBQAccessProviderPrototype() = default;

MBQLocalAccessProvider::MBQLocalAccessProvider(std::set<MBQEID> localEids)
    : checker_(new EIDSetLocalityChecker(std::move(localEids))) {}

MBQLocalAccessProvider::~MBQLocalAccessProvider() = default;

MBQLocalityCheckerPtr MBQLocalAccessProvider::getLocalityChecker() const { return checker_; }

}  // namespace MBQ
