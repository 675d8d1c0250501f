#include "MBQMessage/MBQValueText.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>

namespace MBQ {

namespace {

// The text between leading and trailing white space.
std::pair<const char*, const char*> trimmed(const std::string& text) {
  const char* first = text.data();
  const char* last = first + text.size();
  while (first < last && std::isspace(static_cast<unsigned char>(*first))) ++first;
  while (last > first && std::isspace(static_cast<unsigned char>(last[-1]))) --last;
  return {first, last};
}

template <class T>
int parseInteger(const std::string& text, T& value) {
  auto [first, last] = trimmed(text);
  if (first < last && *first == '+') {
    ++first;
    if (first < last && *first == '-') return -1;
  }
  T parsed{};
  auto result = std::from_chars(first, last, parsed);
  if (first == last || result.ec != std::errc() || result.ptr != last) return -1;
  value = parsed;
  return 0;
}

}  // namespace

int parseSigned(const std::string& text, long long& value) { return parseInteger(text, value); }

int parseUnsigned(const std::string& text, unsigned long long& value) {
  auto [first, last] = trimmed(text);
  if (first < last && *first == '-') return -1;
  return parseInteger(text, value);
}

int parseBool(const std::string& text, bool& value) {
  auto [first, last] = trimmed(text);
  std::string word(first, last);
  if (word == "1" || word == "true") {
    value = true;
  } else if (word == "0" || word == "false") {
    value = false;
  } else {
    return -1;
  }
  return 0;
}

int parseDouble(const std::string& text, double& value) {
  auto [first, last] = trimmed(text);
  if (first < last && *first == '+') ++first;
  double parsed = 0;
  auto result = std::from_chars(first, last, parsed);
  if (first == last || result.ec != std::errc() || result.ptr != last) return -1;
  value = parsed;
  return 0;
}

std::string formatSigned(long long value) {
  char buffer[32];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

std::string formatUnsigned(unsigned long long value) {
  char buffer[32];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

std::string formatDouble(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  char buffer[64];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

}  // namespace MBQ
