#include "KTRFunctionality/KTREnvSampleM.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"

// What the container check adds to the formula checker (KTRQoSTuneTest, which owns the
// checker's messages). The values it feeds in, the SLM modes and the records it reports are
// shown by ktrctl validate (formulas.t); here what no container file shows.

namespace KTR {
namespace {

using MBQ::MBQQoS;
using Values = std::set<MBQQoS>;

// Resources a, b (barrier:limit); formulas 1-2.
const char* const kVocabulary =
    "<vocabulary><technology><name>quellix</name><category><name>qos</name>"
    "<parameter><name>a</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>b</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "</category><category><name>tune</name>"
    "<parameter><name>f1</name><type>1</type><formula>QOS.soft &lt;= QOS.hard</formula>"
    "<formula_info>barrier above limit</formula_info></parameter>"
    "<parameter><name>f2</name><type>2</type><formula>b.hard &gt;= a.hard</formula>"
    "<formula_info>b below a</formula_info></parameter>"
    "</category></technology></vocabulary>";

KTREnvConfig configWith(const Values& qoses) {
  KTREnvConfig config;
  config.setQoSes(qoses);
  return config;
}

// Every formula of the test vocabulary holds.
const Values kGood = {MBQQoS("a", 10, 20), MBQQoS("b", 30, 40)};

class KTREnvSampleMTest : public ::testing::Test {
 protected:
  MBQ::MBQVocMapSP vocabulary_ = testing::vocabularyFrom(kVocabulary);
  std::vector<KTRQoSValidation> out_;
};

TEST_F(KTREnvSampleMTest, AddsViolationsAfterWhatTheOutputHeld) {
  out_.resize(1);
  EXPECT_EQ(0, validateQoSes(&out_, vocabulary_, configWith(kGood)));
  EXPECT_EQ(1u, out_.size()) << "satisfied formulas add nothing";
  // Formula 1 is broken by b, formula 2 by a and b.
  ASSERT_EQ(0, validateQoSes(&out_, vocabulary_, configWith({MBQQoS("a", 30, 50), MBQQoS("b", 50, 40)})))
      << MBQ::getErrorMessage();
  ASSERT_EQ(3u, out_.size());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(i, out_[i].getId()) << "the record held, then formulas 1 and 2";
}

// An empty set of resources, as read from a file without any, fails the same way: validate.t's
// "no resource values to validate" step.
TEST_F(KTREnvSampleMTest, AConfigurationWithoutResourcesOrAFailingCheckerFails) {
  EXPECT_EQ(kTuneFailed, validateQoSes(&out_, vocabulary_, KTREnvConfig()));
  EXPECT_EQ("invalid vocabulary", MBQ::getErrorMessage()) << "the wording callers match on";
  vocabulary_ = nullptr;
  EXPECT_EQ(kTuneFailed, validateQoSes(&out_, vocabulary_, configWith(kGood)));
  EXPECT_TRUE(out_.empty());
}

TEST(KTREnvSampleMDeathTest, ANullOutputAborts) {
  EXPECT_DEATH(validateQoSes(nullptr, testing::vocabularyFrom(kVocabulary), configWith(kGood)),
               "assertion failed at ktr/lib/src/KTRFunctionality/KTREnvSampleM:.*validateQoSes");
}

}  // namespace
}  // namespace KTR
