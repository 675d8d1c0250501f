#include "MBQCore/MBQLogger.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "../MBQTestSupport.h"

namespace {

class MBQLoggerTest : public ::testing::Test {
 protected:
  MBQ::test::LogCapture log_;
};

TEST_F(MBQLoggerTest, WritesLevelWordModuleAndFormattedText) {
  MBQ::Logger::setLevel(MBQ::kDebug);
  MBQ::Logger::put(MBQ::kFatal, "KTRFunctionality", "a %d", 0);
  MBQ::Logger::put(MBQ::kError, "KTRFunctionality", "b %s", "x");
  MBQ::Logger::put(MBQ::kWarning, "KTRFunctionality", "c");
  MBQ::Logger::put(MBQ::kInfo, "MBQCore", "d %05.1f", 2.25);
  MBQ::Logger::put(MBQ::kDebug, "MBQCore", "e%%");
  EXPECT_EQ(
      "FATAL KTRFunctionality: a 0\n"
      "ERROR KTRFunctionality: b x\n"
      "WARNING KTRFunctionality: c\n"
      "INFO MBQCore: d 002.2\n"
      "DEBUG MBQCore: e%\n",
      log_.text());
}

TEST_F(MBQLoggerTest, DropsMessagesAboveTheThreshold) {
  MBQ::Logger::setLevel(MBQ::kWarning);
  EXPECT_TRUE(MBQ::Logger::enabled(MBQ::kWarning));
  EXPECT_FALSE(MBQ::Logger::enabled(MBQ::kInfo));
  MBQ::Logger::put(MBQ::kInfo, "m", "dropped");
  MBQ::Logger::put(MBQ::kDebug, "m", "dropped");
  Log2(MBQ::kDebug, "m", "dropped");
  MBQ::Logger::put(MBQ::kWarning, "m", "kept");
  MBQ::Logger::put(MBQ::kError, "m", "kept");
  EXPECT_EQ("WARNING m: kept\nERROR m: kept\n", log_.text());
}

// Log2 passes the caller's own file and line.
TEST_F(MBQLoggerTest, LocationsShowOnlyTheFileName) {
  MBQ::Logger::setLevel(MBQ::kInfo);
  MBQ::Logger::putAt(MBQ::kError, "KTRFunctionality",
                     "/build/ktr/lib/src/KTRFunctionality/KTREnvConfigBashParser.cpp", 120,
                     "can't initQoSMap : %s", "no vocabulary");
  MBQ::Logger::putAt(MBQ::kWarning, "m", "plain.cpp", 3, "no directory");
  const int line = __LINE__ + 1;
  Log2(MBQ::kInfo, "KTRFunctionality", "value %d", 9);
  EXPECT_EQ(
      "ERROR KTREnvConfigBashParser.cpp:120 KTRFunctionality: can't initQoSMap : no vocabulary\n"
      "WARNING plain.cpp:3 m: no directory\n"
      "INFO MBQLoggerTest.cpp:" + std::to_string(line) + " KTRFunctionality: value 9\n",
      log_.text());
}

TEST_F(MBQLoggerTest, KeepsLongMessagesWhole) {
  MBQ::Logger::setLevel(MBQ::kInfo);
  std::string expected;
  // Messages of 511 and 512 bytes (one short of the first formatting buffer, and filling it)
  // and of 10,002.
  for (std::size_t size : {509, 510, 10000}) {
    const std::string text(size, 'z');
    MBQ::Logger::put(MBQ::kInfo, "m", "<%s>", text.c_str());
    expected += "INFO m: <" + text + ">\n";
  }
  EXPECT_EQ(expected, log_.text());
}

TEST_F(MBQLoggerTest, LinesFromManyThreadsNeverInterleave) {
  MBQ::Logger::setLevel(MBQ::kInfo);
  constexpr int kThreads = 4;
  constexpr int kLines = 500;
  // Long enough that a writer split into pieces would be caught in the middle.
  const std::string filler(300, '.');
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kLines; ++i) MBQ::Logger::put(MBQ::kInfo, "m", "t%d i%d %s end", t, i, filler.c_str());
    });
  }
  for (std::thread& t : threads) t.join();

  std::istringstream lines(log_.text());
  std::string line;
  std::set<std::string> seen;
  while (std::getline(lines, line)) {
    int t = -1, i = -1;
    ASSERT_EQ(2, std::sscanf(line.c_str(), "INFO m: t%d i%d", &t, &i)) << line;
    ASSERT_EQ("INFO m: t" + std::to_string(t) + " i" + std::to_string(i) + " " + filler + " end", line);
    seen.insert(line);
  }
  EXPECT_EQ(static_cast<std::size_t>(kThreads * kLines), seen.size());
}

// The threshold is read from the environment on first use only, so each case needs a process
// in which the logger has not been touched yet: "threadsafe" death tests re-run the binary, and
// the run of one case executes no other case's statement.
TEST(MBQLoggerDeathTest, TakesThresholdFromEnvironmentAtFirstUse) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::pair<const char*, int> cases[] = {{"0", MBQ::kFatal}, {"4", MBQ::kDebug}, {" 2 ", MBQ::kWarning},
                                               {"", MBQ::kInfo},     {"5", MBQ::kInfo},  {"-1", MBQ::kInfo},
                                               {"debug", MBQ::kInfo}, {"1x", MBQ::kInfo}};
  for (const auto& [value, expected] : cases) {
    EXPECT_EXIT(
        {
          setenv("MBQ_LOG_LEVEL", value, 1);
          int first = MBQ::Logger::level();
          setenv("MBQ_LOG_LEVEL", "0", 1);  // read once: a later change does not count
          std::exit(first == expected && MBQ::Logger::level() == expected ? 0 : 10 + first);
        },
        ::testing::ExitedWithCode(0), "")
        << "MBQ_LOG_LEVEL=\"" << value << "\"";
  }
}

}  // namespace
