#include "ktrctlMsg.h"
#include "ktrctlOutput.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "KTRFunctionality/KTRRecordCatalog.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQTagTable.h"

namespace ktrctl {

namespace {

int types() {
  for (const auto& type : KTR::recordTypes())
    std::printf("%s\t%s\t%s\n", type.name.c_str(), type.schema.empty() ? "-" : type.schema.c_str(), type.ns.c_str());
  return kOk;
}

int tags() {
  std::size_t count = 0;
  const MBQ::MBQTagEntry* table = MBQ::tagTable(&count);
  for (std::size_t i = 0; i < count; ++i) std::printf("%d %s\n", table[i].id, table[i].name);
  return kOk;
}

int read(const Args& args) {
  std::string className;
  std::string path;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--as") {
      if (++i >= args.size()) return fail("msg read: --as needs a CLASS");
      className = args[i];
    } else if (path.empty()) {
      path = args[i];
    } else {
      return fail("msg read: one FILE only");
    }
  }
  if (path.empty()) return fail("msg read needs a FILE");

  std::ifstream in(path, std::ios::binary);
  if (!in) return fail(path + ": cannot open");
  std::ostringstream text;
  text << in.rdbuf();
  MBQ::MBQMessage message;
  if (message.parse(text.str()) != 0) return fail(path + ": " + MBQ::getErrorMessage());
  const auto root = message.iterator();

  const KTR::KTRRecordType* type = nullptr;
  bool derived = false;
  if (!className.empty()) {
    type = KTR::findRecordType(className);
    if (type == nullptr) return fail("unknown record class " + className + " (see ktrctl msg types)");
  } else {
    std::string schemaName;
    if (root->getSchemaType(schemaName) != 0)
      return fail(path + ": the root element declares no schema type; name the class with --as");
    type = KTR::findRecordTypeBySchema(schemaName);
    if (type == nullptr) return fail(path + ": unknown schema type " + schemaName);
    derived = type->roundTripDerived != nullptr;
  }

  MBQ::MBQMessage out;
  int readStatus = 0;
  const int rc = derived ? type->roundTripDerived(*root, out, readStatus) : type->roundTrip(*root, out, readStatus);
  if (rc != 0) {
    if (readStatus != 0) {
      const std::string& why = MBQ::getErrorMessage();
      return fail(path + ": reading " + type->name + " failed: " +
                  (why.empty() ? "status " + std::to_string(readStatus) : oneLine(why)));
    }
    return fail(path + ": writing " + type->name + " back failed");
  }
  std::fputs(out.toString(true).c_str(), stdout);
  return kOk;
}

}  // namespace

int msgCommand(const Options&, const Args& args) {
  if (args.empty()) return fail("msg needs types, tags or read (see ktrctl --help)");
  const Args rest(args.begin() + 1, args.end());
  if (args[0] == "types" && rest.empty()) return types();
  if (args[0] == "tags" && rest.empty()) return tags();
  if (args[0] == "read") return read(rest);
  return fail("msg: unknown subcommand or arguments (see ktrctl --help)");
}

}  // namespace ktrctl
