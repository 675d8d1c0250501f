#include "ktrctlMsg.h"
#include "ktrctlOutput.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTRRecordCatalog.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQSchemaSet.h"
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

  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  MBQ::MBQMessage message;
  if (message.parse(text) != 0) return fail(path + ": " + MBQ::getErrorMessage());
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

// The problems of one message file as "FILE:LINE: what" lines; kOk, kNegative when there are
// problems, kError when the file cannot be checked.
int validateFile(const MBQ::MBQSchemaSet& schemas, const std::string& path, const KTR::KTRRecordType* as,
                 bool verbose) {
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  std::vector<MBQ::MBQSchemaProblem> problems;
  const int rc = schemas.validate(text, as != nullptr ? as->ns : "", as != nullptr ? as->publishedType : "",
                                  problems);
  if (rc < 0 && as == nullptr && !problems.empty() && problems.front().text.find("declares no schema type") != std::string::npos)
    return fail(path + ": the root element declares no schema type; name the class with --as");
  for (const MBQ::MBQSchemaProblem& problem : problems)
    std::printf("%s:%d: %s\n", path.c_str(), problem.line, oneLine(problem.text).c_str());
  if (rc == 0 && verbose) std::printf("%s: valid\n", path.c_str());
  return rc == 0 ? kOk : kNegative;
}

int validate(const Options& options, const Args& args) {
  const KTR::KTRRecordType* as = nullptr;
  std::string schemaDir;
  Args paths;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--as" || args[i] == "--schemas") {
      if (i + 1 >= args.size()) return fail("msg validate: " + args[i] + (args[i] == "--as" ? " needs a CLASS" : " needs a DIR"));
      if (args[i] == "--schemas") {
        schemaDir = args[++i];
        continue;
      }
      as = KTR::findRecordType(args[++i]);
      if (as == nullptr) return fail("unknown record class " + args[i] + " (see ktrctl msg types)");
    } else {
      paths.push_back(args[i]);
    }
  }
  if (paths.empty()) return fail("msg validate needs a FILE");

  std::unique_ptr<MBQ::MBQSchemaSet> fromDir;
  const MBQ::MBQSchemaSet* schemas = nullptr;
  std::string error;
  if (!schemaDir.empty()) {
    fromDir = MBQ::MBQSchemaSet::loadDirectory(schemaDir, error);
    schemas = fromDir.get();
  } else {
    schemas = KTR::recordSchemas(&error);
  }
  if (schemas == nullptr) return fail("schemas: " + error);

  int worst = kOk;
  for (const std::string& path : paths) worst = std::max(worst, validateFile(*schemas, path, as, options.verbose));
  return worst;
}

}  // namespace

int msgCommand(const Options& options, const Args& args) {
  if (args.empty()) return fail("msg needs types, tags, read or validate (see ktrctl --help)");
  const Args rest(args.begin() + 1, args.end());
  if (args[0] == "types" && rest.empty()) return types();
  if (args[0] == "tags" && rest.empty()) return tags();
  if (args[0] == "read") return read(rest);
  if (args[0] == "validate") return validate(options, rest);
  return fail("msg: unknown subcommand or arguments (see ktrctl --help)");
}

}  // namespace ktrctl
