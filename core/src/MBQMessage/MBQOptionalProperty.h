#pragma once

#include <utility>

namespace MBQ {

// A value plus a "specified" flag. Readers set the flag from whether the element was found;
// writers and setters skip (or delete the element of) an unspecified property.
template <class T>
class MBQOptionalProperty {
 public:
  using value_type = T;

  MBQOptionalProperty() : value_(), specified_(false) {}
  // A property built from a value is specified.
  MBQOptionalProperty(const T& value) : value_(value), specified_(true) {}  // NOLINT: implicit
  MBQOptionalProperty(T&& value) : value_(std::move(value)), specified_(true) {}  // NOLINT

  MBQOptionalProperty& operator=(const T& value) {
    value_ = value;
    specified_ = true;
    return *this;
  }

  T& get() { return value_; }
  const T& get() const { return value_; }
  void specify(bool on) { specified_ = on; }
  bool isSpecified() const { return specified_; }

  friend bool operator==(const MBQOptionalProperty& a, const MBQOptionalProperty& b) {
    return a.specified_ == b.specified_ && (!a.specified_ || a.value_ == b.value_);
  }
  friend bool operator!=(const MBQOptionalProperty& a, const MBQOptionalProperty& b) {
    return !(a == b);
  }

 private:
  T value_;
  bool specified_;
};

}  // namespace MBQ
