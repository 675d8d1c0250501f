#include "MBQCore/MBQEID.h"

#include "MBQCore/MBQError.h"

namespace MBQ {

int MBQEID::fromString(const std::string& text) {
  if (text.empty()) {
    setErrorMessage("empty environment id");
    return -1;
  }
  text_ = text;
  return 0;
}

}  // namespace MBQ
