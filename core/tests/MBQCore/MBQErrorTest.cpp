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

TEST_F(MBQErrorTest, FormatsLikePrintfAndCanWrapItsOwnPreviousText) {
  MBQ::setErrorMessage("inner failure %d", 7);
  MBQ::setErrorMessage("can't initQoSMap : %s", MBQ::getErrorMessage().c_str());
  EXPECT_EQ("can't initQoSMap : inner failure 7", MBQ::getErrorMessage());
  // Lengths around any plausible internal buffer size, and far beyond, wrapped in turn.
  for (std::size_t length : {254u, 255u, 256u, 257u, 100000u}) {
    std::string payload(length, 'x');
    payload.back() = 'E';
    MBQ::setErrorMessage("%s", payload.c_str());
    MBQ::setErrorMessage("[%s]", MBQ::getErrorMessage().c_str());
    EXPECT_EQ("[" + payload + "]", MBQ::getErrorMessage()) << "length " << length;
  }
  MBQ::setErrorMessage("%s", "");
  EXPECT_EQ("", MBQ::getErrorMessage());
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
