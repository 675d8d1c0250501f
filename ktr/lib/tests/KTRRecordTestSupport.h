#pragma once

// What the record tests share: writing a record under an element "r" of a message and reading
// it back from the message's text, so that every check goes through XML; and capturing the
// logger's lines.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "MBQCore/MBQLogger.h"
#include "MBQMessage/MBQMessage.h"

namespace KTR {
namespace testing {

class RecordTest : public ::testing::Test {
 protected:
  template <class T, class Writer = typename T::Writer>
  std::string write(const T& record, const Writer& writer = Writer()) {
    MBQ::MBQMessage message;
    auto it = message.iterator();
    EXPECT_EQ(0, it->addChildAndDescend("r"));
    EXPECT_EQ(0, it->putObject(record, writer));
    return message.toString();
  }
  // A cursor on "r" of the parsed text; the message stays alive with the fixture.
  MBQ::MBQMessageIterator& at(const std::string& text) {
    messages_.push_back(std::make_unique<MBQ::MBQMessage>());
    EXPECT_EQ(0, messages_.back()->parse(text)) << text;
    cursors_.push_back(messages_.back()->iterator());
    EXPECT_EQ(0, cursors_.back()->descend("r")) << text;
    return *cursors_.back();
  }
  template <class T, class Reader = typename T::Reader>
  int read(const std::string& text, T& record, const Reader& reader = Reader()) {
    return reader(at(text), record);
  }

 private:
  std::vector<std::unique_ptr<MBQ::MBQMessage>> messages_;
  std::vector<std::unique_ptr<MBQ::MBQMessageIterator>> cursors_;
};

// Captures the logger's lines for the life of the object.
class LogCapture {
 public:
  LogCapture() : stream_(open_memstream(&buffer_, &size_)) { MBQ::Logger::setStream(stream_); }
  ~LogCapture() {
    MBQ::Logger::setStream(stderr);
    std::fclose(stream_);
    std::free(buffer_);
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  std::string text() {
    MBQ::Logger::flush();
    std::fflush(stream_);
    return std::string(buffer_, size_);
  }

 private:
  char* buffer_ = nullptr;
  std::size_t size_ = 0;
  FILE* stream_;
};

}  // namespace testing
}  // namespace KTR
