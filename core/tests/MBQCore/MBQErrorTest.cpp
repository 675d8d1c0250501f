#include "MBQCore/MBQError.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

class MBQErrorTest : public ::testing::Test {
 protected:
  void SetUp() override { MBQ::clearErrorMessage(); }
  void TearDown() override { MBQ::clearErrorMessage(); }
};

TEST_F(MBQErrorTest, FormatsLikePrintfAndReplacesThePreviousText) {
  MBQ::setErrorMessage("can not parse formula: %s", "a+");
  EXPECT_EQ("can not parse formula: a+", MBQ::getErrorMessage());
  MBQ::setErrorMessage("code %d at %s:%u (%.2f)", -1003, "file", 12u, 1.5);
  EXPECT_EQ("code -1003 at file:12 (1.50)", MBQ::getErrorMessage());
  MBQ::setErrorMessage("%s", "");
  EXPECT_EQ("", MBQ::getErrorMessage());
}

TEST_F(MBQErrorTest, KeepsLongMessagesWhole) {
  // Lengths around any plausible internal buffer size, and far beyond.
  for (std::size_t length : {254u, 255u, 256u, 257u, 4096u, 100000u}) {
    std::string payload(length, 'x');
    payload.back() = 'E';
    MBQ::setErrorMessage("[%s]", payload.c_str());
    EXPECT_EQ("[" + payload + "]", MBQ::getErrorMessage()) << "length " << length;
  }
}

TEST_F(MBQErrorTest, CanWrapItsOwnPreviousText) {
  MBQ::setErrorMessage("inner failure %d", 7);
  MBQ::setErrorMessage("can't initQoSMap : %s", MBQ::getErrorMessage().c_str());
  EXPECT_EQ("can't initQoSMap : inner failure 7", MBQ::getErrorMessage());

  std::string longInner(1000, 'q');
  MBQ::setErrorMessage("%s", longInner.c_str());
  MBQ::setErrorMessage("outer: %s", MBQ::getErrorMessage().c_str());
  EXPECT_EQ("outer: " + longInner, MBQ::getErrorMessage());
}

TEST_F(MBQErrorTest, EachThreadHasItsOwnText) {
  MBQ::setErrorMessage("main thread");
  constexpr int kThreads = 4;
  std::mutex mutex;
  std::condition_variable allSet;
  int setCount = 0;
  std::vector<std::string> seenAtStart(kThreads), seenAfterOthers(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      seenAtStart[i] = MBQ::getErrorMessage();
      MBQ::setErrorMessage("thread %d", i);
      // Wait until every thread has written its text, so a shared text would be overwritten.
      std::unique_lock<std::mutex> hold(mutex);
      if (++setCount == kThreads) allSet.notify_all();
      allSet.wait(hold, [&] { return setCount == kThreads; });
      seenAfterOthers[i] = MBQ::getErrorMessage();
    });
  }
  for (std::thread& t : threads) t.join();
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ("", seenAtStart[i]) << "a new thread starts with no error text";
    EXPECT_EQ("thread " + std::to_string(i), seenAfterOthers[i]);
  }
  EXPECT_EQ("main thread", MBQ::getErrorMessage());
}

}  // namespace
