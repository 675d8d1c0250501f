#include "MBQCore/MBQIPAddress.h"

#include <arpa/inet.h>

#include <cstdint>
#include <tuple>

#include "MBQCore/MBQError.h"

namespace MBQ {

namespace {

const char kBlanks[] = " \t\r\n";

struct Parsed {
  bool v6 = false;
  bool maskForm = false;
  int prefixLength = -1;
  std::array<unsigned char, 16> bytes{};
};

// A prefix length: one to three decimal digits, at most `maxLength`.
bool parsePrefixLength(const std::string& text, int maxLength, int& length) {
  if (text.empty() || text.size() > 3) return false;
  int value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  if (value > maxLength) return false;
  length = value;
  return true;
}

// A dotted IPv4 netmask; only masks whose one bits are contiguous from the top name a network.
bool parseMask(const std::string& text, int& length) {
  unsigned char raw[4];
  if (inet_pton(AF_INET, text.c_str(), raw) != 1) return false;
  const std::uint32_t mask = (std::uint32_t{raw[0]} << 24) | (std::uint32_t{raw[1]} << 16) |
                             (std::uint32_t{raw[2]} << 8) | raw[3];
  const std::uint32_t hostBits = ~mask;
  if ((hostBits & (hostBits + 1)) != 0) return false;
  length = __builtin_popcount(mask);
  return true;
}

bool parse(const std::string& text, Parsed& out) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return false;
  const std::size_t last = text.find_last_not_of(kBlanks);
  const std::string body = text.substr(first, last - first + 1);
  // inet_pton reads C strings: an embedded NUL would cut the text short unnoticed.
  if (body.find('\0') != std::string::npos) return false;

  const std::size_t slash = body.find('/');
  const std::string address = body.substr(0, slash);
  out.v6 = address.find(':') != std::string::npos;
  if (inet_pton(out.v6 ? AF_INET6 : AF_INET, address.c_str(), out.bytes.data()) != 1) return false;
  if (slash == std::string::npos) return true;

  const std::string network = body.substr(slash + 1);
  if (parsePrefixLength(network, out.v6 ? 128 : 32, out.prefixLength)) return true;
  if (!out.v6 && network.find('.') != std::string::npos && parseMask(network, out.prefixLength)) {
    out.maskForm = true;
    return true;
  }
  return false;
}

std::string maskText(int prefixLength) {
  const std::uint32_t mask = prefixLength == 0 ? 0 : ~std::uint32_t{0} << (32 - prefixLength);
  const unsigned char raw[4] = {static_cast<unsigned char>(mask >> 24), static_cast<unsigned char>(mask >> 16),
                                static_cast<unsigned char>(mask >> 8), static_cast<unsigned char>(mask)};
  char text[INET_ADDRSTRLEN];
  inet_ntop(AF_INET, raw, text, sizeof text);
  return text;
}

}  // namespace

MBQIPAddress::MBQIPAddress() : family_(kNone), networkForm_(kNoNetwork), prefixLength_(-1), bytes_{} {}

MBQIPAddress::MBQIPAddress(const std::string& text) : MBQIPAddress() {
  if (fromString(text) != 0) text_ = text;
}

int MBQIPAddress::fromString(const std::string& text) {
  Parsed parsed;
  if (!parse(text, parsed)) {
    setErrorMessage("bad IP address '%s'", text.c_str());
    return -1;
  }
  family_ = parsed.v6 ? kV6 : kV4;
  prefixLength_ = parsed.prefixLength;
  networkForm_ = parsed.prefixLength < 0 ? kNoNetwork : parsed.maskForm ? kMaskForm : kPrefixForm;
  bytes_ = parsed.bytes;
  text_.clear();
  return 0;
}

std::string MBQIPAddress::toString() const {
  if (family_ == kNone) return text_;
  char text[INET6_ADDRSTRLEN];
  if (inet_ntop(family_ == kV6 ? AF_INET6 : AF_INET, bytes_.data(), text, sizeof text) == nullptr)
    return std::string();
  return text;
}

std::string MBQIPAddress::toStringWithNetwork() const {
  switch (networkForm_) {
    case kPrefixForm:
      return toString() + "/" + std::to_string(prefixLength_);
    case kMaskForm:
      return toString() + "/" + maskText(prefixLength_);
    case kNoNetwork:
      break;
  }
  return toString();
}

int MBQIPAddress::compare(const MBQIPAddress& other) const {
  const auto mine = std::tie(family_, bytes_, prefixLength_);
  const auto theirs = std::tie(other.family_, other.bytes_, other.prefixLength_);
  if (mine < theirs) return -1;
  if (theirs < mine) return 1;
  return text_.compare(other.text_);
}

}  // namespace MBQ
