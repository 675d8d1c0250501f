#pragma once

#include <cstddef>
#include <cstring>
#include <string>

#include "MBQCore/MBQAbort.h"

namespace MBQ {

// A string in a fixed N-byte buffer, so that it can live inside a shared mapping and be
// compared cheaply: NUL-terminated text of at most N - 1 characters, no pointers, exactly N
// bytes. An unset value is all zero. A set value is marked "specified"; an empty set value is
// told from an unset one by byte 1 being 1 (both have a 0 first byte).
//
// Text longer than N - 1 characters is a programming error: the keys stored this way have a
// fixed maximum and callers check untrusted text before assigning it.
template <std::size_t N>
class limited_length_string {
  static_assert(N >= 2, "room for the text's terminator and the specified-empty mark");

 public:
  limited_length_string() { clear(); }
  limited_length_string(const char* text) { assign(text); }         // NOLINT: implicit on purpose
  limited_length_string(const std::string& text) { assign(text); }  // NOLINT

  limited_length_string& operator=(const char* text) {
    assign(text);
    return *this;
  }
  limited_length_string& operator=(const std::string& text) {
    assign(text);
    return *this;
  }

  // A null text leaves the value unset.
  void assign(const char* text) {
    if (text == nullptr) {
      clear();
      return;
    }
    assign(text, std::strlen(text));
  }
  void assign(const std::string& text) { assign(text.data(), text.size()); }
  void assign(const char* data, std::size_t length) {
    Debug::check(length + 1 < N + 1, "MBQCore", "core/src/MBQCore/MBQContainers", 95, "operator=");
    std::memset(buffer_, 0, N);
    if (length) std::memcpy(buffer_, data, length);
    buffer_[N - 1] = '\0';
    if (buffer_[0] == '\0') buffer_[1] = 1;
  }

  // Unset: all zero.
  void clear() { std::memset(buffer_, 0, N); }
  bool isSpecified() const { return buffer_[0] != '\0' || buffer_[1] == 1; }

  const char* c_str() const { return buffer_; }
  std::size_t size() const { return std::strlen(buffer_); }
  bool empty() const { return buffer_[0] == '\0'; }
  std::string str() const { return std::string(buffer_); }
  // The longest text a value can hold.
  static constexpr std::size_t capacity() { return N - 1; }

  friend bool operator==(const limited_length_string& a, const limited_length_string& b) {
    return std::strcmp(a.buffer_, b.buffer_) == 0;
  }
  friend bool operator!=(const limited_length_string& a, const limited_length_string& b) { return !(a == b); }
  friend bool operator<(const limited_length_string& a, const limited_length_string& b) {
    return std::strcmp(a.buffer_, b.buffer_) < 0;
  }

 private:
  char buffer_[N];
};

}  // namespace MBQ
