#pragma once

#include <atomic>
#include <cstddef>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// The reference count of an object that counts itself, for boost::intrusive_ptr.
//
// Derive from it (virtually, when a class could reach it through more than one base) and
// hold the object through boost::intrusive_ptr<Derived>; intrusive_ptr finds the two hooks
// below through the base. The count starts at 0, so the first intrusive_ptr owns the object,
// and the object is deleted, through the virtual destructor, when the last one goes away.
// Objects must therefore be created with `new`; one on the stack or inside another object
// must never be handed to an intrusive_ptr.
//
// The count is atomic: handles to one object may be copied and dropped from any thread at
// once. It says nothing about the thread safety of the object itself.
//
// Copying an object does not copy its count: the copy is a new object, owned by nobody yet.
class MBQ_EXPORT MBQRefCounter {
 public:
  // How many intrusive_ptr hold the object now; only a hint while other threads hold it too.
  std::size_t useCount() const { return count_.load(std::memory_order_relaxed); }

 protected:
  MBQRefCounter() = default;
  MBQRefCounter(const MBQRefCounter&) : count_(0) {}
  MBQRefCounter& operator=(const MBQRefCounter&) { return *this; }
  virtual ~MBQRefCounter() = default;

 private:
  friend void intrusive_ptr_add_ref(const MBQRefCounter* object) {
    // Taking a new reference needs no ordering: whoever hands the pointer over already holds one.
    object->count_.fetch_add(1, std::memory_order_relaxed);
  }
  friend void intrusive_ptr_release(const MBQRefCounter* object) {
    // The last release must see every write made through the other references before the
    // object is destroyed, hence acquire-release.
    if (object->count_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete object;
  }

  mutable std::atomic<std::size_t> count_{0};
};

}  // namespace MBQ
