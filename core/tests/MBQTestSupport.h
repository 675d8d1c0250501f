#pragma once

// Helpers shared by the core tests.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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

// The rows of section [name] of cases/<unit>.txt beside the test source `source` (__FILE__).
// A row is fields apart by blanks: bare words, or "quoted" with the escapes \" \\ \t \n \r \0
// \xHH. Lines that start with # are comments.
inline std::vector<std::vector<std::string>> caseRows(const std::string& source, const std::string& name) {
  const std::string dir = source.substr(0, source.rfind('/') + 1);
  const std::string unit = source.substr(dir.size(), source.rfind('.') - dir.size());
  std::ifstream in(dir + "cases/" + unit + ".txt");
  std::vector<std::vector<std::string>> rows;
  bool inSection = false;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == '[') {
      inSection = line == "[" + name + "]";
      continue;
    }
    if (!inSection) continue;
    auto& row = rows.emplace_back();
    for (std::size_t i = 0; i < line.size(); ++i) {
      if (line[i] == ' ') continue;
      if (line[i] != '"') {
        const std::size_t end = std::min(line.find(' ', i), line.size());
        row.push_back(line.substr(i, end - i));
        i = end;
        continue;
      }
      std::string& field = row.emplace_back();
      for (++i; i < line.size() && line[i] != '"'; ++i) {
        if (line[i] != '\\') {
          field += line[i];
        } else if (line[++i] == 'x') {
          field += static_cast<char>(std::stoi(line.substr(i + 1, 2), nullptr, 16));
          i += 2;
        } else {
          const char c = line[i];
          field += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c == '0' ? '\0' : c;
        }
      }
    }
  }
  EXPECT_FALSE(rows.empty()) << "no cases [" << name << "] for " << source;
  return rows;
}

}  // namespace MBQ::test
