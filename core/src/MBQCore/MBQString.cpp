#include "MBQCore/MBQString.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace MBQ {

namespace {

// <cctype> would consult the process locale; these tables must not.
char asciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
char asciiUpper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}
bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::string toLower(const std::string& text) {
  std::string lowered(text);
  for (char& c : lowered) c = asciiLower(c);
  return lowered;
}

std::string toUpper(const std::string& text) {
  std::string raised(text);
  for (char& c : raised) c = asciiUpper(c);
  return raised;
}

// std::from_chars rather than strtoll: no locale, no errno, no silent stop at the first junk
// byte, and it never reads past the string (which may hold NUL bytes of its own).
int strToLonglong(const std::string& text, long long& value) {
  const char* first = text.data();
  const char* last = first + text.size();
  while (first < last && isBlank(*first)) ++first;
  while (last > first && isBlank(last[-1])) --last;
  // One sign, then a digit at once: "+-5", "- 5" and a lone sign are all junk.
  const char* digits = (first < last && (*first == '+' || *first == '-')) ? first + 1 : first;
  if (digits == last || !isDigit(*digits)) return -1;
  // from_chars takes '-' but not '+'.
  if (*first == '+') first = digits;
  long long parsed = 0;
  std::from_chars_result result = std::from_chars(first, last, parsed, 10);
  if (result.ec != std::errc() || result.ptr != last) return -1;
  value = parsed;
  return 0;
}

long long strToLonglong(const std::string& text, const long long& fallback) {
  long long value = fallback;
  strToLonglong(text, value);
  return value;
}

std::string longlongToStr(long long value) {
  char buffer[24];  // 19 digits, a sign and room to spare
  std::to_chars_result result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return std::string(buffer, result.ptr);
}

// std::to_chars without a precision gives the shortest text that reads back to the same double
// and never consults the locale (printf("%g") would write "0,5" under a German locale). It
// picks plain or exponent notation by whichever is shorter, so 100 stays "100" where the
// shortest "%.*g" would give "1e+02".
std::string doubleToStr(double value) {
  // to_chars would write "-nan" for a NaN with the sign bit set; one spelling is enough.
  if (std::isnan(value)) return "nan";
  char buffer[32];  // the longest shortest form is 24 characters ("-2.2250738585072014e-308")
  std::to_chars_result result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return std::string(buffer, result.ptr);
}

}  // namespace MBQ
