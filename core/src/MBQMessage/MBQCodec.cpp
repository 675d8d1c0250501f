#include <string>

#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQTagTable.h"

namespace MBQ {
namespace codec_detail {

namespace {

std::string elementName(int id) {
  const char* name = tagName(id);
  return name != nullptr ? name : "tag " + std::to_string(id);
}

// A value as it may stand in a one-line message: at most 40 bytes, control bytes shown as '?'.
std::string quoted(const std::string& text) {
  std::string shown = text.substr(0, 40);
  for (char& c : shown)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  return "\"" + shown + (text.size() > 40 ? "...\"" : "\"");
}

}  // namespace

void noteMissingElement(const std::string& name) { setErrorMessage("%s: missing", name.c_str()); }
void noteMissingElement(int id) { noteMissingElement(elementName(id)); }

void noteFailedElement(const std::string& name) {
  const std::string& inner = getErrorMessage();
  if (inner.empty())
    setErrorMessage("%s: invalid", name.c_str());
  else
    setErrorMessage("%s: %s", name.c_str(), inner.c_str());
}
void noteFailedElement(int id) { noteFailedElement(elementName(id)); }

void noteBadValue(const std::string& text, const char* kind) {
  setErrorMessage("%s is not a %s", quoted(text).c_str(), kind);
}

}  // namespace codec_detail
}  // namespace MBQ
