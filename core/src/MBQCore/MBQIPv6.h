#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// An IPv6 address, 16 bytes in network order. IPv4 addresses are held in it in the
// IPv4-mapped form ::ffff:a.b.c.d (the prefix ::ffff:0:0/96), which the helpers in
// IPv6Format::IPv4Compatible recognise and print back as dotted IPv4 text.
//
// We use the mapped prefix rather than the old "IPv4-compatible" ::a.b.c.d so that every
// address has one meaning: under ::a.b.c.d the loopback "::1" and the any address "::" would
// also read as the IPv4 addresses 0.0.0.1 and 0.0.0.0.
class MBQ_EXPORT MBQIPv6 {
 public:
  static constexpr std::size_t kSize = 16;
  using Bytes = std::array<unsigned char, kSize>;

  // The "any" address "::".
  MBQIPv6();
  explicit MBQIPv6(const Bytes& bytes) : bytes_(bytes) {}
  // From text as fromString() takes it; a text that does not parse gives the any address
  // (use fromString() to tell a failure).
  explicit MBQIPv6(const std::string& text);

  // Parses IPv6 text ("fe80::1", "::ffff:10.0.0.1") or dotted IPv4 text ("10.0.0.1", stored
  // as ::ffff:10.0.0.1). Blanks around the text are allowed; a network part ("/64") or a zone
  // ("%eth0") is not. Returns 0, or -1 with the error text set and the address unchanged.
  int fromString(const std::string& text);
  // The IPv6 text (lower case, zeros compressed; mapped IPv4 as "::ffff:a.b.c.d").
  std::string toString() const;

  // True for "::".
  bool isAny() const;

  // Whether an address text looks like IPv6 rather than IPv4: it contains a ':'. Only a
  // classifier for texts already known to be addresses; it does not validate.
  static bool isResembling(const std::string& text);

  const Bytes& bytes() const { return bytes_; }

  friend bool operator==(const MBQIPv6& a, const MBQIPv6& b) { return a.bytes_ == b.bytes_; }
  friend bool operator!=(const MBQIPv6& a, const MBQIPv6& b) { return a.bytes_ != b.bytes_; }
  friend bool operator<(const MBQIPv6& a, const MBQIPv6& b) { return a.bytes_ < b.bytes_; }

 private:
  Bytes bytes_;
};

namespace IPv6Format {

// IPv4 addresses carried in IPv6 form (see MBQIPv6).
struct MBQ_EXPORT IPv4Compatible {
  // True when the address lies in ::ffff:0:0/96, i.e. holds an IPv4 address.
  static bool test(const MBQIPv6& address);
  // Dotted IPv4 text ("10.0.0.1") for an address that passes test(), the IPv6 text otherwise.
  static std::string format(const MBQIPv6& address);
};

}  // namespace IPv6Format

}  // namespace MBQ
