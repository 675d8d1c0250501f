// Arbitrary bytes as a message whose root is read as every record the library knows, the way
// `ktrctl msg read --as CLASS` reads it, and once more the way it chooses the class by the
// root's declared type. A record that reads is written back and that text, when it parses, is
// read again. (Written text does not always parse: a configuration copies foreign subtrees,
// and an xsi:type whose local part holds ':' comes back as a namespace URI libxml2 refuses.)
#include <cstddef>
#include <cstdint>
#include <string>

#include "KTRFunctionality/KTRRecordCatalog.h"
#include "MBQMessage/MBQMessage.h"

namespace {

using RoundTrip = int (*)(const MBQ::MBQMessageIterator&, MBQ::MBQMessage&, int&);

void roundTwice(RoundTrip roundTrip, const MBQ::MBQMessageIterator& root) {
  MBQ::MBQMessage out;
  int status = 0;
  if (roundTrip(root, out, status) != 0) return;
  MBQ::MBQMessage again;
  const std::string text = out.toString();
  if (again.parse(text) != 0) return;
  MBQ::MBQMessage third;
  roundTrip(*again.iterator(), third, status);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 64 * 1024) return 0;
  MBQ::MBQMessage message;
  if (message.parse(reinterpret_cast<const char*>(data), size) != 0) return 0;
  const auto root = message.iterator();
  for (const auto& type : KTR::recordTypes()) roundTwice(type.roundTrip, *root);
  std::string schemaName;
  if (root->getSchemaType(schemaName) == 0) {
    const KTR::KTRRecordType* type = KTR::findRecordTypeBySchema(schemaName);
    if (type != nullptr && type->roundTripDerived != nullptr) roundTwice(type->roundTripDerived, *root);
  }
  return 0;
}
