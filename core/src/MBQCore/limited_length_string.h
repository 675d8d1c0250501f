#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace MBQ {

// A string of at most N bytes kept in a fixed buffer (N + 1 with the terminator), so that it
// can live inside shared memory and be compared cheaply. Longer input is truncated to its first
// N bytes. A value may be marked "specified" even when empty; the mark lives in the byte after
// the terminator slot, so the layout is exactly N + 2 bytes and has no pointers.
template <std::size_t N>
class limited_length_string {
 public:
  limited_length_string() { clear(); }
  limited_length_string(const char* text) { assign(text); }  // NOLINT: implicit on purpose
  limited_length_string(const std::string& text) { assign(text); }  // NOLINT

  limited_length_string& operator=(const char* text) { assign(text); return *this; }
  limited_length_string& operator=(const std::string& text) { assign(text); return *this; }

  void assign(const char* text) { assign(text, text ? std::strlen(text) : 0); }
  void assign(const std::string& text) { assign(text.data(), text.size()); }
  void assign(const char* data, std::size_t length) {
    if (length > N) length = N;
    if (length) std::memcpy(buffer_, data, length);
    std::memset(buffer_ + length, 0, N + 1 - length);
    specified_ = 1;
  }

  // Empty and not specified.
  void clear() {
    std::memset(buffer_, 0, sizeof(buffer_));
    specified_ = 0;
  }
  bool isSpecified() const { return specified_ != 0; }
  void specify(bool on) { specified_ = on ? 1 : 0; }

  const char* c_str() const { return buffer_; }
  std::size_t size() const { return std::strlen(buffer_); }
  bool empty() const { return buffer_[0] == '\0'; }
  std::string str() const { return std::string(buffer_); }
  static constexpr std::size_t capacity() { return N; }

  friend bool operator==(const limited_length_string& a, const limited_length_string& b) {
    return std::strcmp(a.buffer_, b.buffer_) == 0;
  }
  friend bool operator!=(const limited_length_string& a, const limited_length_string& b) {
    return !(a == b);
  }
  friend bool operator<(const limited_length_string& a, const limited_length_string& b) {
    return std::strcmp(a.buffer_, b.buffer_) < 0;
  }

 private:
  char buffer_[N + 1];
  char specified_;
};

}  // namespace MBQ
