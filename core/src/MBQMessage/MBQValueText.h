#pragma once

#include <string>
#include <limits>
#include <type_traits>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// Text forms of the scalar values stored in message elements. Parsing is strict: the whole
// text must convert (surrounding white space is allowed), numbers must fit the target type.
// Booleans are written as "0"/"1" and read from "0", "1", "false" and "true".
// Doubles use the shortest text that reads back to the same value, with "." as decimal point.
MBQ_EXPORT int parseSigned(const std::string& text, long long& value);
MBQ_EXPORT int parseUnsigned(const std::string& text, unsigned long long& value);
MBQ_EXPORT int parseBool(const std::string& text, bool& value);
MBQ_EXPORT int parseDouble(const std::string& text, double& value);

template <class T, class = void>
struct MBQValueText;

template <>
struct MBQValueText<std::string> {
  static int parse(const std::string& text, std::string& value) {
    value = text;
    return 0;
  }
  static const std::string& format(const std::string& value) { return value; }
};

template <>
struct MBQValueText<bool> {
  static int parse(const std::string& text, bool& value) { return parseBool(text, value); }
  static std::string format(bool value) { return value ? "1" : "0"; }
};

MBQ_EXPORT std::string formatSigned(long long value);
MBQ_EXPORT std::string formatUnsigned(unsigned long long value);
MBQ_EXPORT std::string formatDouble(double value);

template <class T>
struct MBQValueText<T, std::enable_if_t<std::is_integral<T>::value && std::is_signed<T>::value>> {
  static int parse(const std::string& text, T& value) {
    long long wide = 0;
    if (parseSigned(text, wide) != 0) return -1;
    if (wide < static_cast<long long>(std::numeric_limits<T>::min()) ||
        wide > static_cast<long long>(std::numeric_limits<T>::max()))
      return -1;
    value = static_cast<T>(wide);
    return 0;
  }
  static std::string format(T value) { return formatSigned(value); }
};

template <class T>
struct MBQValueText<T, std::enable_if_t<std::is_integral<T>::value && std::is_unsigned<T>::value &&
                                        !std::is_same<T, bool>::value>> {
  static int parse(const std::string& text, T& value) {
    unsigned long long wide = 0;
    if (parseUnsigned(text, wide) != 0) return -1;
    if (wide > static_cast<unsigned long long>(std::numeric_limits<T>::max())) return -1;
    value = static_cast<T>(wide);
    return 0;
  }
  static std::string format(T value) { return formatUnsigned(value); }
};

template <>
struct MBQValueText<double> {
  static int parse(const std::string& text, double& value) { return parseDouble(text, value); }
  static std::string format(double value) { return formatDouble(value); }
};

template <class T, class = void>
struct MBQIsTextValue : std::false_type {};
template <class T>
struct MBQIsTextValue<T, std::void_t<decltype(MBQValueText<T>::parse)>> : std::true_type {};

}  // namespace MBQ
