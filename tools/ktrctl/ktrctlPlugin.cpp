// ktrctl-records.so: the commands of ktrctl that need the library (see ktrctlRecords.h).

#include <string>
#include <vector>

#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTRLibFunctionality.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"
#include "ktrctlCache.h"
#include "ktrctlContainer.h"
#include "ktrctlContainerReport.h"
#include "ktrctlMsg.h"
#include "ktrctlRead.h"
#include "ktrctlRecords.h"
#include "ktrctlValidate.h"

namespace ktrctl {

namespace {

class Records : public RecordCommands {
 public:
  explicit Records(const Options& options) : options_(options), session_{options_, nullptr, nullptr} {
    // The library logs to stderr; the tool speaks there only through its one error line.
    if (!options_.verbose) MBQ::Logger::setLevel(-1);
  }

  int run(const std::string& command, const Args& args) override {
    if (command == "msg") return msgCommand(options_, args);
    if (command == "cache") return cacheCommand(options_, args);
    if (int rc = open()) return rc;
    return containerCommand(session_, command, args);
  }

  int planSet(const std::string& path, const std::string& text, const std::vector<KTR::KTRNamedValue>& changes,
              std::string& newText) override {
    if (int rc = open()) return rc;
    return planContainerSet(session_, path, text, changes, newText);
  }

  int validate(const std::string& path, const std::string& text, std::vector<Finding>& findings) override {
    if (int rc = open()) return rc;
    return validateText(session_, path, text, findings);
  }

  int inspect(const std::string& path, const std::string& text, FileReport& report) override {
    {
      ErrorCapture capture;
      if (open() != kOk) {
        report.validationError = capture.message();
        return kError;
      }
    }
    std::string id = path.substr(path.rfind('/') + 1);
    if (id.size() > 5 && id.compare(id.size() - 5, 5, ".conf") == 0) id.erase(id.size() - 5);
    return inspectContainer(session_, path, id, text, report);
  }

  int resourceKeys(std::vector<std::string>& keys) override {
    if (int rc = open()) return rc;
    for (const auto& resource : session_.parser->getQoSMap()) keys.push_back(resource.first);
    return kOk;
  }

  std::string library() override { return std::string("libKTRFunctionality.so.7 ") + KTR::ktrLibraryVersion(); }

 private:
  // The vocabulary and its parser, made once for all the files of a command.
  int open() {
    if (session_.parser) return kOk;
    return openParser(options_, session_);
  }

  const Options options_;
  Session session_;
};

}  // namespace

}  // namespace ktrctl

extern "C" __attribute__((visibility("default"))) ktrctl::RecordCommands* ktrctlOpenRecordCommands(
    const ktrctl::Options& options) {
  return new ktrctl::Records(options);
}
