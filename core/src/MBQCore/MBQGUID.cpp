#include "MBQCore/MBQGUID.h"

#include <uuid/uuid.h>

#include <algorithm>
#include <cstring>

#include "MBQCore/MBQError.h"

namespace MBQ {

namespace {

constexpr std::size_t kTextLength = 36;
const char kBlanks[] = " \t\r\n";

static_assert(sizeof(uuid_t) == MBQGUID::kSize, "libuuid's uuid_t must be 16 bytes");

}  // namespace

MBQGUID::MBQGUID() { bytes_.fill(0); }

MBQGUID::MBQGUID(const unsigned char (&bytes)[kSize]) {
  std::copy(bytes, bytes + kSize, bytes_.begin());
}

MBQGUID::MBQGUID(std::uint64_t high, std::uint64_t low) {
  for (std::size_t i = 0; i < 8; ++i) {
    bytes_[i] = static_cast<unsigned char>(high >> (56 - 8 * i));
    bytes_[8 + i] = static_cast<unsigned char>(low >> (56 - 8 * i));
  }
}

MBQGUID MBQGUID::generate() {
  uuid_t raw;
  uuid_generate(raw);
  return MBQGUID(raw);
}

bool MBQGUID::isValid() const {
  return std::any_of(bytes_.begin(), bytes_.end(), [](unsigned char b) { return b != 0; });
}

std::string MBQGUID::toString() const {
  uuid_t raw;
  std::copy(bytes_.begin(), bytes_.end(), raw);
  char text[kTextLength + 1];
  uuid_unparse_lower(raw, text);
  return std::string(text, kTextLength);
}

int MBQGUID::fromString(const std::string& text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) {
    bytes_.fill(0);
    return 0;
  }
  const std::size_t last = text.find_last_not_of(kBlanks);
  std::string body = text.substr(first, last - first + 1);
  const bool opens = body.front() == '{';
  const bool closes = body.back() == '}';
  if (opens != closes || (opens && body.size() < 2)) {
    setErrorMessage("bad GUID text '%s': unbalanced braces", text.c_str());
    return -1;
  }
  if (opens) body = body.substr(1, body.size() - 2);
  // uuid_parse reads a C string: check the length here so that an embedded NUL or trailing
  // text can never pass as a shorter, valid GUID.
  uuid_t raw;
  if (body.size() != kTextLength || std::strlen(body.c_str()) != kTextLength ||
      uuid_parse(body.c_str(), raw) != 0) {
    setErrorMessage("bad GUID text '%s'", text.c_str());
    return -1;
  }
  std::copy(raw, raw + kSize, bytes_.begin());
  return 0;
}

std::uint64_t MBQGUID::high() const {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < 8; ++i) value = (value << 8) | bytes_[i];
  return value;
}

std::uint64_t MBQGUID::low() const {
  std::uint64_t value = 0;
  for (std::size_t i = 8; i < kSize; ++i) value = (value << 8) | bytes_[i];
  return value;
}

}  // namespace MBQ
