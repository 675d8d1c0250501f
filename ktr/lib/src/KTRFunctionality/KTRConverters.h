#pragma once

// Converters between a configuration file's value text and a record that owns its text form
// through member functions `std::string toString() const` and `fromString(const std::string&)`
// (KTRNetVEth, MBQIPAddress, MBQInterfaceRate, ...). The parameter parsers take them as
// template arguments, so a new record type needs no converter of its own.

#include <string>
#include <type_traits>
#include <utility>

namespace KTR {

template <class T>
struct ToStringConverter {
  std::string operator()(const T& value) const { return value.toString(); }
};

// Text to value, in two forms:
// - in place: fills `value` from `text` and returns what T::fromString returns (0, or its
//   failure code), or 0 for types whose fromString reports nothing (returns void);
// - as an item converter of the list splitter: a default-constructed T filled from `text`,
//   whatever fromString reports, so that one bad item never fails a whole value.
template <class T>
struct FromStringConverter {
  int operator()(const std::string& text, T& value) const {
    if constexpr (std::is_void<decltype(std::declval<T&>().fromString(text))>::value) {
      value.fromString(text);
      return 0;
    } else {
      return static_cast<int>(value.fromString(text));
    }
  }
  T operator()(const std::string& text) const {
    T value{};
    (*this)(text, value);
    return value;
  }
};

}  // namespace KTR
