#include "ktrctlContainer.h"

namespace ktrctl {

int containerCommand(const Options&, const std::string& command, const Args&) {
  return fail("unknown command '" + command + "' (see ktrctl --help)");
}

}  // namespace ktrctl
