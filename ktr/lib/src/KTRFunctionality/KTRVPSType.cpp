#include "KTRFunctionality/KTRVPSType.h"

#include <cctype>
#include <climits>
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

// The leading type number of the text form: blanks, an optional sign, digits, blanks. Returns
// false for anything else or a number that does not fit an int.
bool parseTypeNumber(const std::string& text, int& number) {
  std::size_t pos = 0;
  const auto skipBlanks = [&] {
    while (pos < text.size() && std::isspace(static_cast<unsigned char>(text[pos]))) ++pos;
  };
  skipBlanks();
  bool negative = false;
  if (pos < text.size() && (text[pos] == '-' || text[pos] == '+')) negative = text[pos++] == '-';
  const std::size_t digitsStart = pos;
  long long value = 0;
  for (; pos < text.size() && text[pos] >= '0' && text[pos] <= '9'; ++pos) {
    value = value * 10 + (text[pos] - '0');
    if (value > static_cast<long long>(INT_MAX) + 1) return false;
  }
  if (pos == digitsStart) return false;
  skipBlanks();
  if (pos != text.size()) return false;
  if (negative) value = -value;
  if (value > INT_MAX || value < INT_MIN) return false;
  number = static_cast<int>(value);
  return true;
}

}  // namespace

std::string KTRVPSType::toString() const {
  std::string text = std::to_string(type_);
  if (*ctid_.toString() != '\0') {
    text += ':';
    text += ctid_.toString();
  }
  return text;
}

int KTRVPSType::fromString(const std::string& text) {
  const std::size_t colon = text.find(':');
  int type = 0;
  if (!parseTypeNumber(text.substr(0, colon), type)) return -1;
  type_ = type;
  ctid_ = CtidWrapper(colon == std::string::npos ? std::string() : text.substr(colon + 1));
  return 0;
}

int KTRVPSType::Reader::operator()(const MBQ::MBQMessageIterator& it, KTRVPSType& type) const {
  if (it.getValue(Tag::kType, type.type_) != 0) return -1;
  // A missing "ctid" is deliberately not an error: it leaves the empty text, id 0.
  std::string ctid;
  it.getValue("ctid", ctid);
  type.ctid_ = CtidWrapper(ctid);
  return 0;
}

int KTRVPSType::Writer::operator()(MBQ::MBQMessageIterator& it, const KTRVPSType& type) const {
  if (it.setValue("ctid", std::string(type.ctid_.toString())) != 0) return -1;
  return it.setValue(Tag::kType, type.type_);
}

int KTREnvCapability::Reader::operator()(const MBQ::MBQMessageIterator& it, KTREnvCapability& capability) const {
  if (it.getValue(Tag::kName, capability.name_) != 0) return -1;
  return it.getValue(Tag::kValue, capability.value_);
}

int KTREnvCapability::Writer::operator()(MBQ::MBQMessageIterator& it, const KTREnvCapability& capability) const {
  if (it.setValue(Tag::kName, capability.name_) != 0) return -1;
  return it.setValue(Tag::kValue, static_cast<int>(capability.value_));
}

}  // namespace KTR
