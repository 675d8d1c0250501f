#include "MBQCore/MBQAbort.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "../MBQTestSupport.h"
#include "MBQCore/MBQLogger.h"

namespace {

TEST(MBQAbortDeathTest, PrintsExactlyOneLineWithModuleLocationAndFunction) {
  // Anchored at both ends: the whole of stderr is this one line.
  EXPECT_DEATH(MBQ::abort("MBQMessage", "core/src/MBQMessage/MBQMessageIterator", 752,
                          "MBQReaderIDT"),
               "^MBQMessage: assertion failed at core/src/MBQMessage/MBQMessageIterator:752 "
               "in MBQReaderIDT\n$");
}

TEST(MBQAbortDeathTest, FailedCheckAbortsWithTheSameLine) {
  EXPECT_DEATH(MBQ::Debug::check(false, "KTRFunctionality",
                                 "ktr/lib/src/KTRFunctionality/KTRQoSTune", 1027, "toPostfix"),
               "^KTRFunctionality: assertion failed at ktr/lib/src/KTRFunctionality/KTRQoSTune:"
               "1027 in toPostfix\n$");
}

TEST(MBQAbortDeathTest, FlushesBufferedLogLinesBeforeDying) {
  const MBQ::test::TempDir dir;
  const std::string path = dir.file("log");
  // An INFO line stays in the file stream's buffer; only the abort's flush can get it out.
  // A forked child ("fast" style) shares the parent's idea of the path; a re-executed one
  // would make a file of its own.
  GTEST_FLAG_SET(death_test_style, "fast");
  EXPECT_DEATH(
      {
        std::FILE* log = std::fopen(path.c_str(), "w");
        MBQ::Logger::setLevel(MBQ::kInfo);
        MBQ::Logger::setStream(log);
        MBQ::Logger::put(MBQ::kInfo, "MBQTest", "last words %d", 42);
        MBQ::abort("MBQTest", "core/tests/MBQCore/MBQAbortTest", 1, "body");
      },
      "MBQTest: assertion failed");
  EXPECT_EQ("INFO MBQTest: last words 42\n", MBQ::test::slurp(path));
}

}  // namespace
