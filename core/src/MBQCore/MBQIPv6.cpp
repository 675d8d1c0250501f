#include "MBQCore/MBQIPv6.h"

#include <arpa/inet.h>

#include <algorithm>

#include "MBQCore/MBQError.h"

namespace MBQ {

namespace {

const char kBlanks[] = " \t\r\n";
// ::ffff:0:0/96: ten zero bytes, then two 0xff bytes, then the IPv4 address.
constexpr std::size_t kIPv4Offset = 12;

bool hasMappedPrefix(const MBQIPv6::Bytes& bytes) {
  for (std::size_t i = 0; i < 10; ++i)
    if (bytes[i] != 0) return false;
  return bytes[10] == 0xff && bytes[11] == 0xff;
}

}  // namespace

MBQIPv6::MBQIPv6() { bytes_.fill(0); }

MBQIPv6::MBQIPv6(const std::string& text) {
  bytes_.fill(0);
  fromString(text);
}

int MBQIPv6::fromString(const std::string& text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  const std::size_t last = text.find_last_not_of(kBlanks);
  const std::string body = first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
  // inet_pton reads a C string: an embedded NUL would cut the text short unnoticed.
  if (body.empty() || body.find('\0') != std::string::npos) {
    setErrorMessage("bad IPv6 address '%s'", text.c_str());
    return -1;
  }
  Bytes parsed;
  parsed.fill(0);
  if (isResembling(body)) {
    if (inet_pton(AF_INET6, body.c_str(), parsed.data()) != 1) {
      setErrorMessage("bad IPv6 address '%s'", text.c_str());
      return -1;
    }
  } else {
    if (inet_pton(AF_INET, body.c_str(), parsed.data() + kIPv4Offset) != 1) {
      setErrorMessage("bad IPv6 address '%s'", text.c_str());
      return -1;
    }
    parsed[10] = 0xff;
    parsed[11] = 0xff;
  }
  bytes_ = parsed;
  return 0;
}

std::string MBQIPv6::toString() const {
  char text[INET6_ADDRSTRLEN];
  if (inet_ntop(AF_INET6, bytes_.data(), text, sizeof text) == nullptr) return std::string();
  return text;
}

bool MBQIPv6::isAny() const {
  return std::all_of(bytes_.begin(), bytes_.end(), [](unsigned char b) { return b == 0; });
}

bool MBQIPv6::isResembling(const std::string& text) {
  return text.find(':') != std::string::npos;
}

namespace IPv6Format {

bool IPv4Compatible::test(const MBQIPv6& address) {
  return hasMappedPrefix(address.bytes());
}

std::string IPv4Compatible::format(const MBQIPv6& address) {
  if (!test(address)) return address.toString();
  char text[INET_ADDRSTRLEN];
  if (inet_ntop(AF_INET, address.bytes().data() + kIPv4Offset, text, sizeof text) == nullptr)
    return std::string();
  return text;
}

}  // namespace IPv6Format

}  // namespace MBQ
