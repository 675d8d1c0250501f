#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "KTRFunctionality/KTRExport.h"

namespace KTR {

// A container identifier: a decimal number ("101") or a UUID text. The text is kept in a
// fixed buffer of 37 characters (a UUID is 36); longer input is truncated.
class KTR_EXPORT CtidWrapper {
 public:
  static constexpr std::size_t kMaxLength = 37;

  CtidWrapper();
  // The number formatted in decimal; the numeric id is the number.
  explicit CtidWrapper(unsigned int id);
  explicit CtidWrapper(int id) : CtidWrapper(static_cast<unsigned int>(id)) {}
  // The text as given (truncated); the numeric id is the text read as an unsigned decimal
  // number (0 when it is none) unless the text has a "-", which makes it a UUID without one.
  explicit CtidWrapper(const std::string& text);

  const char* toString() const { return text_; }
  // The numeric id, or 0 for a UUID.
  unsigned int getId() const { return hasId_ ? id_ : 0; }
  bool hasNumericId() const { return hasId_; }
  // The numeric id when there is one; otherwise the UUID's first eight bytes read as one
  // host-order 64-bit number. A text with a "-" that is no UUID has the key 0.
  std::uint64_t getSortKey() const;

  friend bool operator==(const CtidWrapper& a, const CtidWrapper& b) { return std::strcmp(a.text_, b.text_) == 0; }
  friend bool operator!=(const CtidWrapper& a, const CtidWrapper& b) { return !(a == b); }

 private:
  char text_[kMaxLength + 1];
  unsigned int id_ = 0;
  bool hasId_ = false;
};

}  // namespace KTR
