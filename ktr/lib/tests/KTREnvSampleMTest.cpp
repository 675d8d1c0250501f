#include "KTRFunctionality/KTREnvSampleM.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRVocabulary.h"
#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"

// What the container check adds to the formula checker (KTRQoSTuneTest, which owns the
// checker's messages): the values it feeds in, the SLM modes, the records it reports.

namespace KTR {
namespace {

using MBQ::MBQQoS;
using Names = std::vector<std::string>;
using Values = std::set<MBQQoS>;

// Resources a, b (barrier:limit), numproc, avnumproc, slmmemorylimit; formulas 1-4.
const char* const kVocabulary =
    "<vocabulary><technology><name>quellix</name><category><name>qos</name>"
    "<parameter><name>a</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>b</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>numproc</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>avnumproc</name><value_type>1</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>slmmemorylimit</name><value_type>1</value_type><complexity>1</complexity></parameter>"
    "</category><category><name>tune</name>"
    "<parameter><name>f1</name><type>1</type><formula>QOS.soft &lt;= QOS.hard</formula>"
    "<formula_info>barrier above limit</formula_info></parameter>"
    "<parameter><name>f2</name><type>2</type><formula>b.hard &gt;= a.hard</formula>"
    "<formula_info>b below a</formula_info></parameter>"
    "<parameter><name>f3</name><type>3</type><formula>avnumproc.soft * 2 &lt;= numproc.soft</formula>"
    "<formula_info>avnumproc above half of numproc</formula_info></parameter>"
    "<parameter><name>f4</name><type>4</type><formula>a.soft &gt; 0</formula>"
    "<formula_info>a barrier of 0</formula_info></parameter>"
    "</category></technology></vocabulary>";

KTREnvConfig configWith(const Values& qoses, const char* slmMode = nullptr) {
  KTREnvConfig config;
  config.setQoSes(qoses);
  if (slmMode != nullptr) config.setSLMMode(std::string(slmMode));
  return config;
}

// Every formula of the test vocabulary holds.
const Values kGood = {MBQQoS("a", 10, 20), MBQQoS("b", 30, 40), MBQQoS("numproc", 100, 200), MBQQoS("avnumproc", 50)};

class KTREnvSampleMTest : public ::testing::Test {
 protected:
  int validate(const KTREnvConfig& config) {
    out_.clear();
    return validateQoSes(&out_, vocabulary_, config);
  }
  std::vector<int> ids() const {
    std::vector<int> found;
    for (const KTRQoSValidation& r : out_) found.push_back(r.getId());
    return found;
  }
  MBQ::MBQVocMapSP vocabulary_ = testing::vocabularyFrom(kVocabulary);
  std::vector<KTRQoSValidation> out_;
};

TEST_F(KTREnvSampleMTest, ReportsEachViolationWithNamesInIndexOrderAfterWhatTheOutputHeld) {
  out_.resize(1);
  EXPECT_EQ(0, validateQoSes(&out_, vocabulary_, configWith(kGood)));
  EXPECT_EQ(1u, out_.size()) << "satisfied formulas add nothing";
  const Values values = {MBQQoS("a", 30, 50), MBQQoS("b", 50, 40), MBQQoS("numproc", 100, 200), MBQQoS("avnumproc", 1)};
  ASSERT_EQ(0, validateQoSes(&out_, vocabulary_, configWith(values))) << MBQ::getErrorMessage();
  ASSERT_EQ(3u, out_.size());
  EXPECT_EQ(KTRQoSValidation({"b"}, 1, "QOS.soft <= QOS.hard", "barrier above limit"), out_[1]);
  EXPECT_EQ(KTRQoSValidation({"a", "b"}, 2, "b.hard >= a.hard", "b below a"), out_[2]);
}

TEST_F(KTREnvSampleMTest, SLMModeMayReplaceTheCheck) {
  // a's barrier is above its limit, so a check that runs reports formula 1.
  const Values violating = {MBQQoS("a", 30, 20), MBQQoS("b", 30, 40), MBQQoS("numproc", 100, 200),
                            MBQQoS("avnumproc", 1)};
  Values limited = violating;
  limited.insert(MBQQoS("slmmemorylimit", 1 << 30));
  struct Case {
    const char* mode;
    bool withLimit;
    int status;
    std::vector<int> reported;
  };
  const Case cases[] = {
      {"SLM", true, 0, {}},  {"slm", false, kSLMMemoryLimitMissing, {}},
      {"ALL", true, 0, {}},  {"all", false, 0, {1}},
      {"ub", true, 0, {1}},  {nullptr, true, 0, {1}},
  };
  for (const Case& c : cases) {
    const std::string what = std::string(c.mode ? c.mode : "(none)") + (c.withLimit ? " with limit" : "");
    EXPECT_EQ(c.status, validate(configWith(c.withLimit ? limited : violating, c.mode))) << what;
    EXPECT_EQ(c.reported, ids()) << what;
  }
}

TEST_F(KTREnvSampleMTest, FormulasSeeLimitForMissingBarrierAndHalfNumprocForAvnumproc) {
  const MBQQoS ones[] = {MBQQoS("a", 1, 1), MBQQoS("b", 1, 1)};
  struct Case {
    Values values;
    std::vector<Names> reported;  // names of each violation, all of formula 1
  };
  const Case cases[] = {
      // Without barrier, a is checked as 20:20 (formula 4 wants a barrier above 0).
      {{MBQQoS("a", 20), MBQQoS("b", 20), MBQQoS("numproc", 100, 200), MBQQoS("avnumproc", 50)}, {}},
      // avnumproc is numproc halved, rounding down, whatever the container says.
      {{ones[0], ones[1], MBQQoS("numproc", 99, 99), MBQQoS("avnumproc", 9223372036854775807LL)}, {}},
      {{ones[0], ones[1], MBQQoS("numproc", 4611686018427387903LL, 4611686018427387903LL), MBQQoS("avnumproc", 1)},
       {}},
      // numproc 101:50 breaks formula 1, and so does its half 50:25 under the name avnumproc.
      {{ones[0], ones[1], MBQQoS("numproc", 101, 50), MBQQoS("avnumproc", 1)}, {{"numproc"}, {"avnumproc"}}},
  };
  for (const Case& c : cases) {
    ASSERT_EQ(0, validate(configWith(c.values))) << MBQ::getErrorMessage();
    std::vector<Names> got;
    for (const KTRQoSValidation& r : out_) got.push_back(r.getNames());
    EXPECT_EQ(c.reported, got);
    EXPECT_EQ(std::vector<int>(c.reported.size(), 1), ids());
  }
  // Without numproc nothing is substituted, and formula 3 reads the absent numproc.
  EXPECT_EQ(kTuneParameterAbsent, validate(configWith({ones[0], ones[1], MBQQoS("avnumproc", 1)})));
}

TEST_F(KTREnvSampleMTest, AConfigurationWithoutResourcesOrAFailingCheckerFails) {
  KTREnvConfig empty;
  empty.setQoSes(Values());
  for (const KTREnvConfig& config : {KTREnvConfig(), empty}) {
    EXPECT_EQ(kTuneFailed, validate(config));
    EXPECT_EQ("invalid vocabulary", MBQ::getErrorMessage()) << "the wording callers match on";
  }
  vocabulary_ = nullptr;
  EXPECT_EQ(kTuneFailed, validate(configWith(kGood)));
  EXPECT_TRUE(out_.empty());
}

TEST(KTREnvSampleMDeathTest, ANullOutputAborts) {
  EXPECT_DEATH(validateQoSes(nullptr, testing::vocabularyFrom(kVocabulary), configWith(kGood)),
               "assertion failed at ktr/lib/src/KTRFunctionality/KTREnvSampleM:.*validateQoSes");
}

}  // namespace
}  // namespace KTR
