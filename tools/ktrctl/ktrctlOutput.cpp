#include "ktrctlOutput.h"

#include "KTRFunctionality/KTRBashParser.h"

namespace ktrctl {

namespace {
thread_local ErrorCapture* gCapture = nullptr;
}  // namespace

ErrorCapture::ErrorCapture() : outer_(gCapture) { gCapture = this; }
ErrorCapture::~ErrorCapture() { gCapture = outer_; }

std::string oneLine(const std::string& text) {
  std::string line;
  line.reserve(text.size());
  for (unsigned char c : text) {
    if (c == '\n') {
      line += "\\n";
    } else if (c == '\r') {
      line += "\\r";
    } else if (c < 0x20 || c == 0x7f) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", c);
      line += escaped;
    } else {
      line += static_cast<char>(c);
    }
  }
  return line;
}

int fail(const std::string& what) {
  // The message may quote a file's or the command line's bytes.
  const std::string line = oneLine(what);
  if (gCapture != nullptr) {
    gCapture->message_ = line;
    return kError;
  }
  std::fprintf(stderr, "ktrctl: %s\n", line.c_str());
  return kError;
}

void printAssignment(const std::string& name, const std::string& value, const std::string& prefix) {
  const std::string quoted = KTR::quoteValue(value, KTR::ValueQuoting::kShell);
  std::printf("%s%s=%s\n", prefix.c_str(), name.c_str(), quoted.c_str());
}

}  // namespace ktrctl
