#pragma once

#include <mutex>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// A process-local mutual-exclusion lock. Not recursive. Not copyable.
class MBQ_EXPORT MBQLock {
 public:
  MBQLock() = default;
  MBQLock(const MBQLock&) = delete;
  MBQLock& operator=(const MBQLock&) = delete;

  void lock() { mutex_.lock(); }
  void unlock() { mutex_.unlock(); }
  bool tryLock() { return mutex_.try_lock(); }

 private:
  std::mutex mutex_;
};

// Scoped holder: locks on construction, unlocks on destruction.
template <class Lock>
class MBQGuardT {
 public:
  explicit MBQGuardT(Lock& lock) : lock_(lock) { lock_.lock(); }
  ~MBQGuardT() { lock_.unlock(); }
  MBQGuardT(const MBQGuardT&) = delete;
  MBQGuardT& operator=(const MBQGuardT&) = delete;

 private:
  Lock& lock_;
};

using MBQGuard = MBQGuardT<MBQLock>;

}  // namespace MBQ
