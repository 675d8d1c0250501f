// Arbitrary bytes as a message whose root is read as every record the library knows, the way
// `ktrctl msg read --as CLASS` reads it, and once more the way it chooses the class by the
// root's declared type. A record that reads is written back and that text, when it parses, is
// read again. (Written text does not always parse: a configuration copies foreign subtrees,
// and an xsi:type whose local part holds ':' comes back as a namespace URI libxml2 refuses.)
//
// What a reader accepts, its writer writes valid against the published schemas. Records that
// keep a subtree as they got it (container configurations and what holds them) write back
// whatever came in, so for them only a valid message must come back valid.
#include <cstdio>
#include <vector>

#include "FuzzTarget.h"
#include "KTRFunctionality/KTRRecordCatalog.h"
#include "MBQMessage/MBQMessage.h"

namespace {

using RoundTrip = int (*)(const MBQ::MBQMessageIterator&, MBQ::MBQMessage&, int&);

bool keepsSubtrees(const KTR::KTRRecordType& type) {
  return type.name == "KTREnvConfig" || type.name == "KTREnv" || type.name == "KTRMigratorCloneOptions";
}

bool valid(const KTR::KTRRecordType& type, const std::string& text, std::vector<MBQ::MBQSchemaProblem>& problems) {
  return KTR::recordSchemas()->validate(text, type.ns, type.publishedType, problems) == 0;
}

// Whether `in` is a valid message of `type` itself: valid, and typed as `type` if typed at all.
bool validAs(const KTR::KTRRecordType& type, const MBQ::MBQMessage& in) {
  std::string declared;
  if (in.iterator()->getSchemaType(declared) == 0 && declared != type.schemaName()) return false;
  std::vector<MBQ::MBQSchemaProblem> problems;
  return valid(type, in.toString(), problems);
}

void expectValidBack(const KTR::KTRRecordType& type, const MBQ::MBQMessage& in, const std::string& out) {
  std::vector<MBQ::MBQSchemaProblem> problems;
  if (valid(type, out, problems)) return;
  if (keepsSubtrees(type) && !validAs(type, in)) return;
  std::fprintf(stderr, "%s writes what the schemas refuse: line %d: %s\n%s\n", type.name.c_str(), problems[0].line,
               problems[0].text.c_str(), out.c_str());
  std::abort();
}

void roundTwice(const KTR::KTRRecordType& type, RoundTrip roundTrip, const MBQ::MBQMessage& message) {
  MBQ::MBQMessage out;
  int status = 0;
  if (roundTrip(*message.iterator(), out, status) != 0) return;
  const std::string text = out.toString();
  expectValidBack(type, message, text);
  MBQ::MBQMessage again;
  if (again.parse(text) != 0) return;
  MBQ::MBQMessage third;
  roundTrip(*again.iterator(), third, status);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 64 * 1024) return 0;
  MBQ::MBQMessage message;
  if (message.parse(reinterpret_cast<const char*>(data), size) != 0) return 0;
  for (const auto& type : KTR::recordTypes()) roundTwice(type, type.roundTrip, message);
  std::string schemaName;
  if (message.iterator()->getSchemaType(schemaName) == 0) {
    const KTR::KTRRecordType* type = KTR::findRecordTypeBySchema(schemaName);
    if (type != nullptr && type->roundTripDerived != nullptr) roundTwice(*type, type->roundTripDerived, message);
  }
  return 0;
}
