#include "KTRFunctionality/KTREnvSampleM.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRVocabulary.h"
#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"

namespace KTR {
namespace {

using Names = std::vector<std::string>;

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

MBQ::MBQVocMapSP testVocabulary() {
  auto vocabulary = std::make_shared<MBQ::MBQVocMap>();
  EXPECT_EQ(0, vocabulary->load(kVocabulary)) << MBQ::getErrorMessage();
  return vocabulary;
}

KTREnvConfig configWith(const std::set<MBQ::MBQQoS>& qoses, const char* slmMode = nullptr) {
  KTREnvConfig config;
  config.setQoSes(qoses);
  if (slmMode != nullptr) config.setSLMMode(std::string(slmMode));
  return config;
}

// Every formula of the test vocabulary holds.
std::set<MBQ::MBQQoS> goodValues() {
  return {MBQ::MBQQoS("a", 10, 20), MBQ::MBQQoS("b", 30, 40), MBQ::MBQQoS("numproc", 100, 200),
          MBQ::MBQQoS("avnumproc", 50)};
}

std::vector<int> ids(const std::vector<KTRQoSValidation>& records) {
  std::vector<int> out;
  for (const KTRQoSValidation& r : records) out.push_back(r.getId());
  return out;
}

TEST(KTREnvSampleMTest, SatisfiedFormulasLeaveTheOutputUnchanged) {
  std::vector<KTRQoSValidation> out(1);
  EXPECT_EQ(0, validateQoSes(&out, testVocabulary(), configWith(goodValues())));
  EXPECT_EQ(1u, out.size());
}

TEST(KTREnvSampleMTest, ReportsEachViolationWithNamesInIndexOrder) {
  std::vector<KTRQoSValidation> out;
  std::set<MBQ::MBQQoS> values = {MBQ::MBQQoS("a", 30, 50), MBQ::MBQQoS("b", 50, 40), MBQ::MBQQoS("numproc", 100, 200),
                                  MBQ::MBQQoS("avnumproc", 1)};
  ASSERT_EQ(0, validateQoSes(&out, testVocabulary(), configWith(values))) << MBQ::getErrorMessage();
  ASSERT_EQ(2u, out.size());
  EXPECT_EQ(KTRQoSValidation({"b"}, 1, "QOS.soft <= QOS.hard", "barrier above limit"), out[0]);
  EXPECT_EQ(KTRQoSValidation({"a", "b"}, 2, "b.hard >= a.hard", "b below a"), out[1]);
}

TEST(KTREnvSampleMTest, SLMModeMayReplaceTheCheck) {
  // a's barrier is above its limit, so a check that runs reports formula 1.
  const std::set<MBQ::MBQQoS> violating = {MBQ::MBQQoS("a", 30, 20), MBQ::MBQQoS("b", 30, 40),
                                           MBQ::MBQQoS("numproc", 100, 200), MBQ::MBQQoS("avnumproc", 1)};
  std::set<MBQ::MBQQoS> limited = violating;
  limited.insert(MBQ::MBQQoS("slmmemorylimit", 1 << 30));
  struct Case {
    const char* mode;
    bool withLimit;
    int status;
    std::vector<int> reported;
  };
  const Case cases[] = {
      {"slm", true, 0, {}},
      {"SLM", true, 0, {}},
      {"slm", false, kSLMMemoryLimitMissing, {}},
      {"Slm", false, kSLMMemoryLimitMissing, {}},
      {"all", true, 0, {}},
      {"ALL", true, 0, {}},
      {"all", false, 0, {1}},
      {"ub", true, 0, {1}},
      {"", true, 0, {1}},
      {nullptr, true, 0, {1}},
  };
  for (const Case& c : cases) {
    std::vector<KTRQoSValidation> out;
    EXPECT_EQ(c.status, validateQoSes(&out, testVocabulary(), configWith(c.withLimit ? limited : violating, c.mode)))
        << (c.mode ? c.mode : "(none)") << " " << c.withLimit;
    EXPECT_EQ(c.reported, ids(out)) << (c.mode ? c.mode : "(none)") << " " << c.withLimit;
  }
}

TEST(KTREnvSampleMTest, FormulasSeeLimitForMissingBarrierAndHalfNumprocForAvnumproc) {
  struct Case {
    std::set<MBQ::MBQQoS> values;
    std::vector<Names> reported;  // names of each violation, all of formula 1
  };
  const Case cases[] = {
      // Without barrier, a is checked as 20:20 (formula 4 wants a barrier above 0).
      {{MBQ::MBQQoS("a", 20), MBQ::MBQQoS("b", 20), MBQ::MBQQoS("numproc", 100, 200), MBQ::MBQQoS("avnumproc", 50)},
       {}},
      // avnumproc is numproc halved, 50:100, whatever the container says.
      {{MBQ::MBQQoS("a", 1, 1), MBQ::MBQQoS("b", 1, 1), MBQ::MBQQoS("numproc", 100, 200),
        MBQ::MBQQoS("avnumproc", 99999)},
       {}},
      // numproc 101:50 breaks formula 1, and so does its half 50:25 under the name avnumproc.
      {{MBQ::MBQQoS("a", 1, 1), MBQ::MBQQoS("b", 1, 1), MBQ::MBQQoS("numproc", 101, 50), MBQ::MBQQoS("avnumproc", 1)},
       {{"numproc"}, {"avnumproc"}}},
  };
  for (const Case& c : cases) {
    std::vector<KTRQoSValidation> out;
    ASSERT_EQ(0, validateQoSes(&out, testVocabulary(), configWith(c.values))) << MBQ::getErrorMessage();
    std::vector<Names> got;
    for (const KTRQoSValidation& r : out) {
      EXPECT_EQ(1, r.getId());
      got.push_back(r.getNames());
    }
    EXPECT_EQ(c.reported, got);
  }
  // Without numproc, nothing is substituted, and formula 3 reads the absent numproc.
  std::vector<KTRQoSValidation> out;
  EXPECT_EQ(kTuneParameterAbsent,
            validateQoSes(&out, testVocabulary(),
                          configWith({MBQ::MBQQoS("a", 1, 1), MBQ::MBQQoS("b", 1, 1), MBQ::MBQQoS("avnumproc", 1)})));
  EXPECT_EQ("parameter 'numproc' is absent", MBQ::getErrorMessage());
}

TEST(KTREnvSampleMTest, AvnumprocIsCheckedAsHalfOfNumproc) {
  // Formula 3 (avnumproc * 2 <= numproc) holds for any numproc once avnumproc is its half,
  // rounding down; with an odd barrier the halved value still fits.
  for (long long barrier : {0LL, 1LL, 99LL, 100LL, 4611686018427387903LL}) {
    std::vector<KTRQoSValidation> out;
    const std::set<MBQ::MBQQoS> values = {MBQ::MBQQoS("a", 1, 1), MBQ::MBQQoS("b", 1, 1),
                                          MBQ::MBQQoS("numproc", barrier, barrier),
                                          MBQ::MBQQoS("avnumproc", 9223372036854775807LL)};
    ASSERT_EQ(0, validateQoSes(&out, testVocabulary(), configWith(values)));
    EXPECT_TRUE(out.empty()) << barrier;
  }
}

TEST(KTREnvSampleMTest, FailuresComeWithTheirStatusAndMessage) {
  std::vector<KTRQoSValidation> out;
  EXPECT_EQ(kTuneFailed, validateQoSes(&out, testVocabulary(), KTREnvConfig()));
  EXPECT_EQ("invalid vocabulary", MBQ::getErrorMessage());
  KTREnvConfig empty;
  empty.setQoSes(std::set<MBQ::MBQQoS>());
  EXPECT_EQ(kTuneFailed, validateQoSes(&out, testVocabulary(), empty));
  EXPECT_EQ("invalid vocabulary", MBQ::getErrorMessage());
  EXPECT_EQ(kTuneFailed, validateQoSes(&out, nullptr, configWith(goodValues())));
  EXPECT_EQ("invalid vocabulary", MBQ::getErrorMessage());
  auto noFormulas = std::make_shared<MBQ::MBQVocMap>();
  ASSERT_EQ(0, noFormulas->load("<vocabulary><technology><name>quellix</name><category><name>qos</name>"
                                "<parameter><name>a</name></parameter></category></technology></vocabulary>"));
  EXPECT_EQ(kTuneFailed, validateQoSes(&out, noFormulas, configWith(goodValues())));
  EXPECT_EQ("can not read FORMULAE", MBQ::getErrorMessage());
  EXPECT_TRUE(out.empty());
}

TEST(KTREnvSampleMTest, TheDefaultVocabularyAcceptsTheShippedExample) {
  // The values of examples/containers/101.conf that the formulas read.
  const std::set<MBQ::MBQQoS> values = {
      MBQ::MBQQoS("kernelmem", 12582912, 13631488), MBQ::MBQQoS("dircache", 2621440, 2883584),
      MBQ::MBQQoS("privmem", 131072, 139264),       MBQ::MBQQoS("sharedmem", 32768, 32768),
      MBQ::MBQQoS("lockedmem", 512, 512),           MBQ::MBQQoS("guarmem", 65536, 9223372036854775807LL),
      MBQ::MBQQoS("oomsafemem", 49152, 9223372036854775807LL), MBQ::MBQQoS("numproc", 256, 256),
      MBQ::MBQQoS("avnumproc", 192),                MBQ::MBQQoS("openfiles", 8192, 8192),
      MBQ::MBQQoS("filelocks", 256, 288),           MBQ::MBQQoS("terminals", 32, 32),
      MBQ::MBQQoS("tcpsockets", 320, 320),          MBQ::MBQQoS("othersockets", 320, 320),
      MBQ::MBQQoS("tcpsendbuf", 1572864, 2424832),  MBQ::MBQQoS("tcprecvbuf", 1572864, 2424832),
      MBQ::MBQQoS("otherbuf", 1048576, 1900544),    MBQ::MBQQoS("dgramrecvbuf", 196608, 196608),
      MBQ::MBQQoS("diskblocks", 4194304, 4718592),  MBQ::MBQQoS("inodes", 262144, 294912),
      MBQ::MBQQoS("cpuweight", 500),
  };
  std::vector<KTRQoSValidation> out;
  ASSERT_EQ(0, validateQoSes(&out, defaultVocabulary(), configWith(values))) << MBQ::getErrorMessage();
  for (const KTRQoSValidation& r : out) ADD_FAILURE() << r.getId() << ": " << r.getFormula();
}

// ---------------------------------------------------------------- the record

class KTRQoSValidationTest : public testing::RecordTest {};

TEST_F(KTRQoSValidationTest, WritesInLayoutOrderAndReadsBack) {
  const KTRQoSValidation record({"numproc", "avnumproc"}, 501, "openfiles.soft >= 32 * avnumproc", "too few files");
  const std::string text = write(record);
  EXPECT_THAT(text, ::testing::HasSubstr("<r><type>501</type><parameter>numproc</parameter><parameter>avnumproc"
                                         "</parameter><warning>openfiles.soft &gt;= 32 * avnumproc</warning>"
                                         "<warning_info>too few files</warning_info></r>"));
  KTRQoSValidation read;
  ASSERT_EQ(0, this->read(text, read));
  EXPECT_EQ(record, read);
  KTRQoSValidation noNames;
  ASSERT_EQ(0, this->read(write(KTRQoSValidation({}, 1, "f", "i")), noNames));
  EXPECT_EQ(KTRQoSValidation({}, 1, "f", "i"), noNames);
}

TEST_F(KTRQoSValidationTest, ReaderRequiresIdFormulaAndMessage) {
  const std::string full = write(KTRQoSValidation({"n"}, 1, "f", "i"));
  const auto replaced = [&full](const std::string& from, const std::string& to) {
    std::string text = full;
    text.replace(text.find(from), from.size(), to);
    return text;
  };
  for (const std::string& text : {replaced("<type>1</type>", ""), replaced("<type>1</type>", "<type>x</type>"),
                                   replaced("<warning>f</warning>", ""),
                                   replaced("<warning_info>i</warning_info>", "")}) {
    KTRQoSValidation record;
    EXPECT_EQ(-1, read(text, record)) << text;
  }
}

TEST(KTREnvSampleMDeathTest, ANullOutputAborts) {
  EXPECT_DEATH(validateQoSes(nullptr, testVocabulary(), configWith(goodValues())),
               "assertion failed at ktr/lib/src/KTRFunctionality/KTREnvSampleM:.*validateQoSes");
}

}  // namespace
}  // namespace KTR
