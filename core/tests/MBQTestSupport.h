#pragma once

// Helpers shared by the core tests.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "MBQCore/MBQLogger.h"
#include "MBQMessage/MBQMessage.h"

namespace MBQ::test {

// A private directory under /tmp, removed with everything in it at the end of its scope.
class TempDir {
 public:
  TempDir() {
    char pattern[] = "/tmp/mbqtestXXXXXX";
    if (::mkdtemp(pattern) != nullptr) path_ = pattern;
  }
  ~TempDir() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// Captures the logger's lines for the life of the object, and restores its threshold.
class LogCapture {
 public:
  LogCapture() : stream_(open_memstream(&buffer_, &size_)) { Logger::setStream(stream_); }
  ~LogCapture() {
    Logger::setStream(stderr);
    Logger::setLevel(level_);
    std::fclose(stream_);
    std::free(buffer_);
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  std::string text() {
    Logger::flush();
    std::fflush(stream_);
    return std::string(buffer_, size_);
  }

 private:
  char* buffer_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
  int level_ = Logger::level();
};

// Starts `count` processes at once, each running body(index) and exiting with what it returns.
template <class Body>
std::vector<pid_t> forkChildren(int count, Body body) {
  std::vector<pid_t> children;
  for (int i = 0; i < count; ++i) {
    const pid_t pid = ::fork();
    if (pid == 0) ::_exit(body(i));
    children.push_back(pid);
  }
  return children;
}

// Waits for each child; each must have exited with 0.
inline void expectCleanExits(const std::vector<pid_t>& children) {
  for (pid_t pid : children) {
    int status = -1;
    ASSERT_EQ(pid, ::waitpid(pid, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child " << pid << ": status " << status;
  }
}

// The whole content of a file; empty when it can't be read.
inline std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

// Each text is refused by `fromString` and leaves the value as it was.
template <class T, class Texts>
void expectRefusedAndKept(const T& kept, const Texts& texts) {
  for (const auto& text : texts) {
    T value = kept;
    EXPECT_NE(0, value.fromString(text)) << '"' << text << '"';
    EXPECT_EQ(kept, value) << '"' << text << '"';
  }
}

// `text` as a message (the parse must succeed).
inline MBQMessage parsed(const std::string& text) {
  MBQMessage message;
  EXPECT_EQ(0, message.parse(text)) << text;
  return message;
}

// The message read anew from its own text, so that checks go through XML.
inline MBQMessage reparsed(const MBQMessage& message) { return parsed(message.toString()); }

}  // namespace MBQ::test
