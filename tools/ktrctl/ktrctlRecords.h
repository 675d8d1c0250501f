#pragma once

// The commands that need the container records, the vocabulary, the message layer or the
// template cache live in a module of their own (ktrctl-records.so) that ktrctl loads only for
// them: the quick commands (get, raw and global files, set of raw and global files) then start
// without loading the library, the message layer or libxml2.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTRConfigEdit.h"
#include "ktrctlOutput.h"

namespace ktrctl {

// A violated formula: `text` as validate prints it, `names` the parameters it read.
struct Finding {
  std::string text;
  std::vector<std::string> names;
};

// Something a container holds that no other container of the node may hold too.
struct Identity {
  std::string kind;   // "IPv4 address", "MAC address", "UUID", ...
  std::string value;  // in a form that compares equal for equal meanings
  std::string key;    // the file key it comes from, lower case
};

// What `check` learns of one container file through its record.
struct FileReport {
  int validation = kOk;              // of validate(): kOk, kNegative or kError
  std::string validationError;       // the reason of kError
  std::vector<Finding> violations;
  std::vector<Identity> identities;
  // Keys (lower case) whose value, as the file's last assignment writes it, the agent reads as
  // something else, with what it makes of it.
  std::vector<std::pair<std::string, std::string>> misread;
};

// Every method prints its own error line and returns kError on failure, inspect excepted.
class RecordCommands {
 public:
  virtual ~RecordCommands() = default;

  // read, diff, msg ..., cache ...: the command's words after its name are in `args`.
  virtual int run(const std::string& command, const Args& args) = 0;

  // The new text of a container file for `set` (or `set --as-agent`): the whole file read as
  // the agent reads it with the changes, each value checked to read back as given.
  virtual int planSet(const std::string& path, const std::string& text, const std::vector<KTR::KTRNamedValue>& changes,
                      std::string& newText) = 0;

  // The formulas the container file's text violates: kOk (none), kNegative (some) or kError.
  virtual int validate(const std::string& path, const std::string& text, std::vector<Finding>& findings) = 0;

  // Reads the container file's text into its record and reports its violations and identities;
  // kError, with nothing printed and the reason in `report`, when the file cannot be read as a
  // container at all.
  virtual int inspect(const std::string& path, const std::string& text, FileReport& report) = 0;

  // The resource keys of the vocabulary in use, lower case.
  virtual int resourceKeys(std::vector<std::string>& keys) = 0;

  // "libKTRFunctionality.so.7 7.0".
  virtual std::string library() = 0;
};

// The module's entry point.
using OpenRecordCommands = RecordCommands* (*)(const Options& options);
constexpr const char* kOpenRecordCommands = "ktrctlOpenRecordCommands";

// Loads the module (beside the program, or in ../lib/ktrctl/) and opens its commands with
// `options`. Null, with the error line printed, when it cannot.
std::unique_ptr<RecordCommands> loadRecordCommands(const Options& options);

}  // namespace ktrctl
