#pragma once

// What every ktrctl command shares: its options, its arguments, and how it reports.

#include <cstdio>
#include <string>
#include <vector>

namespace ktrctl {

using Args = std::vector<std::string>;

struct Options {
  std::string vocabularyPath;  // empty: the built-in vocabulary
  bool verbose = false;
  bool dryRun = false;         // set: print what would change, write nothing
  bool asAgent = false;        // set: write the whole file as the agent's writer does
  unsigned waitMilliseconds = 10000;  // set: how long to wait for another writer's lock
};

// Exit codes.
constexpr int kOk = 0;
constexpr int kNegative = 1;  // differences or violations found, a key without a value
constexpr int kError = 2;

// `text` with control bytes shown escaped (\n, \r, \xHH), so that it prints as one line
// whatever bytes of a file it quotes.
std::string oneLine(const std::string& text);

// Prints the one error line ("ktrctl: <what>") and gives the error exit code. A message that
// holds line breaks (from a file's bytes) is kept on one line.
int fail(const std::string& what);

// While one lives, fail() keeps the message of the thread's last failure in it instead of
// printing it (for commands that turn failures into findings).
class ErrorCapture {
 public:
  ErrorCapture();
  ~ErrorCapture();
  ErrorCapture(const ErrorCapture&) = delete;
  ErrorCapture& operator=(const ErrorCapture&) = delete;
  const std::string& message() const { return message_; }

 private:
  friend int fail(const std::string& what);
  std::string message_;
  ErrorCapture* outer_;
};

// Prints NAME="value" with the value quoted as set writes it, so that the line read by bash
// assigns exactly `value`.
// `prefix` goes first ("FILE: " when a command works on several files).
void printAssignment(const std::string& name, const std::string& value, const std::string& prefix = "");

}  // namespace ktrctl
