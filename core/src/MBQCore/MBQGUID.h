#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// A 128-bit globally unique id (an RFC 4122 UUID), held as its 16 bytes in network order.
//
// The all-zero GUID is the "empty" GUID: the default value, and what an absent GUID reads as.
// It is not valid (isValid() is false); every other value is.
//
// Text form: the 36-character lower-case form "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx" without
// braces. Formats that want braces ("{...}") add them around toString(); fromString() accepts
// both.
class MBQ_EXPORT MBQGUID {
 public:
  static constexpr std::size_t kSize = 16;
  using Bytes = std::array<unsigned char, kSize>;

  // The empty GUID.
  MBQGUID();
  // From raw bytes (a libuuid uuid_t fits here).
  explicit MBQGUID(const unsigned char (&bytes)[kSize]);
  explicit MBQGUID(const Bytes& bytes) : bytes_(bytes) {}
  // From two 64-bit halves: `high` gives bytes 0-7 and `low` bytes 8-15, each most
  // significant byte first, so MBQGUID(0x0011223344556677, 0x8899aabbccddeeff).toString() is
  // "00112233-4455-6677-8899-aabbccddeeff".
  MBQGUID(std::uint64_t high, std::uint64_t low);

  // A new random (or, without a random source, time-based) GUID.
  static MBQGUID generate();

  bool isValid() const;

  // The bare 36-character lower-case text; the empty GUID gives
  // "00000000-0000-0000-0000-000000000000".
  std::string toString() const;

  // Parses a GUID text: the 36-character form (any case), bare or wrapped in "{" and "}", with
  // blanks (spaces, tabs, line ends) allowed around it. A text that is empty or only blanks
  // stands for an absent GUID and sets the empty GUID. Returns 0 on success; on any other text
  // returns -1, sets the error text and leaves the GUID unchanged.
  int fromString(const std::string& text);

  const Bytes& bytes() const { return bytes_; }
  const unsigned char* data() const { return bytes_.data(); }
  std::uint64_t high() const;
  std::uint64_t low() const;

  // Byte order, i.e. the order of the text forms.
  friend bool operator==(const MBQGUID& a, const MBQGUID& b) { return a.bytes_ == b.bytes_; }
  friend bool operator!=(const MBQGUID& a, const MBQGUID& b) { return a.bytes_ != b.bytes_; }
  friend bool operator<(const MBQGUID& a, const MBQGUID& b) { return a.bytes_ < b.bytes_; }

 private:
  Bytes bytes_;
};

}  // namespace MBQ
