#pragma once

#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// The id of an environment (a container, a node, a service instance) as the agent names it.
// The id is opaque text: it is kept and compared byte for byte, never normalised. The empty
// text means "no environment" and is the default.
class MBQ_EXPORT MBQEID {
 public:
  MBQEID() = default;
  explicit MBQEID(const std::string& text) : text_(text) {}

  const std::string& toString() const { return text_; }
  // Takes `text` as the id. Returns 0, or -1 for an empty text (which leaves the id unchanged).
  int fromString(const std::string& text);

  bool isValid() const { return !text_.empty(); }

  friend bool operator==(const MBQEID& a, const MBQEID& b) { return a.text_ == b.text_; }
  friend bool operator!=(const MBQEID& a, const MBQEID& b) { return a.text_ != b.text_; }
  friend bool operator<(const MBQEID& a, const MBQEID& b) { return a.text_ < b.text_; }

 private:
  std::string text_;
};

}  // namespace MBQ
