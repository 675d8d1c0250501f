#pragma once

#include <array>
#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// An IPv4 or IPv6 address, optionally with a network part: the form an interface address is
// configured in.
//
// Text forms (blanks around the whole text are allowed):
//   10.0.0.5                    IPv4 address
//   10.0.0.5/24                 with a prefix length, 0-32
//   10.0.0.5/255.255.255.0      with a dotted netmask, which must be contiguous
//   fe80::1                     IPv6 address
//   fe80::1/64                  with a prefix length, 0-128 (IPv6 takes no dotted mask)
// The address keeps its host bits (10.0.0.5/24 stays 10.0.0.5, not 10.0.0.0). The network
// part is remembered in the form it was written in, so that toStringWithNetwork() gives back
// "/24" or "/255.255.255.0" as read; the form is presentation only and does not take part in
// comparisons.
//
// The constructor from text never fails: a text that is not an address gives an invalid
// address that keeps the text verbatim, so that words which share an address list in the
// configuration files (such as "dhcp") survive being read and written back. fromString(), in
// contrast, accepts only addresses.
class MBQ_EXPORT MBQIPAddress {
 public:
  // An invalid address with an empty text.
  MBQIPAddress();
  explicit MBQIPAddress(const std::string& text);

  // Parses an address text (forms above). Returns 0, or -1 with the error text set and the
  // address unchanged.
  int fromString(const std::string& text);

  // The address alone ("10.0.0.5", "fe80::1"); for an invalid address the text it was made
  // from.
  std::string toString() const;
  // The address with "/" and the network part as it was written, or the address alone when it
  // has none; for an invalid address the text it was made from. fromString() and the
  // constructor accept this text back.
  std::string toStringWithNetwork() const;

  bool isValid() const { return family_ != kNone; }
  bool isV6() const { return family_ == kV6; }
  bool hasNetwork() const { return prefixLength_ >= 0; }
  // The network part as a prefix length (a dotted mask counted in bits); -1 without one.
  int getPrefixLength() const { return prefixLength_; }

  // Orders by family (invalid, IPv4, IPv6), then address bytes, then prefix length (none
  // first), then the kept text of invalid addresses; <0, 0 or >0 like strcmp.
  int compare(const MBQIPAddress& other) const;

  friend bool operator==(const MBQIPAddress& a, const MBQIPAddress& b) { return a.compare(b) == 0; }
  friend bool operator!=(const MBQIPAddress& a, const MBQIPAddress& b) { return a.compare(b) != 0; }
  friend bool operator<(const MBQIPAddress& a, const MBQIPAddress& b) { return a.compare(b) < 0; }

 private:
  enum Family : unsigned char { kNone, kV4, kV6 };
  enum NetworkForm : unsigned char { kNoNetwork, kPrefixForm, kMaskForm };

  Family family_;
  NetworkForm networkForm_;
  int prefixLength_;
  // IPv4 uses the first 4 bytes; the rest stay zero.
  std::array<unsigned char, 16> bytes_;
  // Only for invalid addresses: the text they were made from.
  std::string text_;
};

}  // namespace MBQ
