#include "KTRFunctionality/CtidWrapper.h"

#include <uuid/uuid.h>

#include <cstdio>
#include <cstring>

namespace KTR {

namespace {

// Digits only, read as an unsigned 32-bit number; anything else (or an overflow) yields 0,
// as strtoul would for a text that is no number.
unsigned int parseDecimal(const char* text) {
  unsigned long long value = 0;
  const char* p = text;
  while (*p == ' ' || *p == '\t') ++p;
  if (*p == '+') ++p;
  if (*p < '0' || *p > '9') return 0;
  for (; *p >= '0' && *p <= '9'; ++p) {
    value = value * 10 + static_cast<unsigned>(*p - '0');
    if (value > 0xffffffffULL) return 0;
  }
  return static_cast<unsigned int>(value);
}

}  // namespace

CtidWrapper::CtidWrapper() : CtidWrapper(std::string()) {}

CtidWrapper::CtidWrapper(unsigned int id) : id_(id), hasId_(true) {
  std::snprintf(text_, sizeof text_, "%u", id);
}

CtidWrapper::CtidWrapper(const std::string& text) {
  std::snprintf(text_, sizeof text_, "%s", text.c_str());
  if (std::strchr(text_, '-') == nullptr) {
    id_ = parseDecimal(text_);
    hasId_ = true;
  }
}

std::uint64_t CtidWrapper::getSortKey() const {
  if (hasId_) return id_;
  // Only a full, valid UUID text gives a key from its bytes; anything else with a "-" sorts
  // as 0 rather than on whatever a failed parse would leave behind.
  uuid_t bytes;
  if (uuid_parse(text_, bytes) != 0) return 0;
  std::uint64_t key = 0;
  std::memcpy(&key, bytes, sizeof key);
  return key;
}

}  // namespace KTR
