#pragma once

// Helpers shared by the core tests.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

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
