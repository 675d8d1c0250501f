#include "KTRFunctionality/KTRVocabulary.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"

namespace KTR {
namespace {

// The shipped file is what the library holds, and it passes the library's own checks (every
// formula parses); what it contains is the operators' business, not restated here.
TEST(KTRVocabularyTest, BuiltInVocabularyIsTheShippedFileLoadedOnce) {
  EXPECT_EQ(testing::slurp(KTR_DEFAULT_VOCABULARY_FILE), defaultVocabularyText());
  std::vector<MBQ::MBQVocMapSP> seen(4);
  std::vector<std::thread> threads;
  for (MBQ::MBQVocMapSP& slot : seen) threads.emplace_back([&slot] { slot = defaultVocabulary(); });
  for (std::thread& thread : threads) thread.join();
  ASSERT_NE(nullptr, seen[0]) << MBQ::getErrorMessage();
  for (const MBQ::MBQVocMapSP& vocabulary : seen) EXPECT_EQ(seen[0], vocabulary);
  EXPECT_EQ(seen[0], defaultVocabulary());
}

// What a file vocabulary makes of configuration files, and the files refused, are in ktrctl's
// vocab.t; here the objects loadVocabulary hands out.
TEST(KTRVocabularyTest, LoadVocabularyMakesANewObjectOnEveryCall) {
  testing::TempDir dir;
  const std::string good = dir.file("good.xml");
  std::ofstream(good) << defaultVocabularyText();
  MBQ::MBQVocMapSP loaded = loadVocabulary(good);
  ASSERT_NE(nullptr, loaded) << MBQ::getErrorMessage();
  EXPECT_NE(defaultVocabulary(), loaded);
  EXPECT_NE(nullptr, loaded->readCategory({"quellix", "tune"}));
  EXPECT_NE(loaded, loadVocabulary(good));
}

}  // namespace
}  // namespace KTR
