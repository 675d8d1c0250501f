#pragma once

// What every ktrctl command shares: its options, its arguments, and how it reports a failure.

#include <cstdio>
#include <string>
#include <vector>

namespace ktrctl {

using Args = std::vector<std::string>;

struct Options {
  std::string vocabularyPath;  // empty: the built-in vocabulary
  bool verbose = false;
};

// Exit codes.
constexpr int kOk = 0;
constexpr int kNegative = 1;  // differences or violations found, a key without a value
constexpr int kError = 2;

// Prints the one error line ("ktrctl: <what>") and gives the error exit code.
inline int fail(const std::string& what) {
  std::fprintf(stderr, "ktrctl: %s\n", what.c_str());
  return kError;
}

}  // namespace ktrctl
