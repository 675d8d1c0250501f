#include "ktrctlRecords.h"

#include <dlfcn.h>
#include <limits.h>
#include <unistd.h>

#include <string>

namespace ktrctl {

namespace {

// The folder of the running program, links resolved (/usr/bin/ktrctl is a link to the
// installed program).
std::string programFolder() {
  char path[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return ".";
  std::string program(path, static_cast<std::size_t>(length));
  const std::string::size_type slash = program.rfind('/');
  return slash == std::string::npos ? "." : program.substr(0, slash);
}

}  // namespace

std::unique_ptr<RecordCommands> loadRecordCommands(const Options& options) {
  const std::string folder = programFolder();
  // Beside the program in the build tree; in lib/ktrctl/ of the prefix once installed.
  const std::string candidates[] = {folder + "/ktrctl-records.so", folder + "/../lib/ktrctl/ktrctl-records.so"};
  std::string reason;
  for (const std::string& candidate : candidates) {
    if (::access(candidate.c_str(), F_OK) != 0) continue;
    // Kept loaded until the process ends: the library it brings registers its records for good.
    void* module = ::dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
      const char* error = ::dlerror();
      reason = error != nullptr ? error : candidate;
      break;
    }
    auto open = reinterpret_cast<OpenRecordCommands>(::dlsym(module, kOpenRecordCommands));
    if (open == nullptr) {
      reason = candidate + " is not ktrctl's records module";
      break;
    }
    return std::unique_ptr<RecordCommands>(open(options));
  }
  fail("cannot load the records module: " + (reason.empty() ? "ktrctl-records.so not found beside " + folder : reason));
  return nullptr;
}

}  // namespace ktrctl
