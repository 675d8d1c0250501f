#include "KTRFunctionality/KTRQoSTune.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"
#include "MBQFunctionalityCore/MBQEnvConfig.h"

namespace KTR {
namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

struct Formula {
  int id;
  std::string text;  // as the XML holds it: "<" written "&lt;"
  std::string info;
};

// The checker does not use its configuration.
const MBQ::MBQVEnvConfig kConfig;

// Resources a, b, c, x, y (indexes 1-5) and d (6, complexity 2: not a member of QOS); QOS is 7.
const char* const kResources =
    "<parameter><name>a</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>b</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>c</name><value_type>2</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>x</name><value_type>1</value_type><complexity>1</complexity></parameter>"
    "<parameter><name>y</name><value_type>1</value_type><complexity>0</complexity></parameter>"
    "<parameter><name>d</name><value_type>1</value_type><complexity>2</complexity></parameter>";

std::string vocabularyText(const std::string& resources, const std::vector<Formula>& formulas) {
  std::string text = "<vocabulary><technology><name>quellix</name><category><name>qos</name>" + resources +
                     "</category><category><name>tune</name>";
  int n = 0;
  for (const Formula& f : formulas)
    text += "<parameter><name>f" + std::to_string(++n) + "</name><type>" + std::to_string(f.id) + "</type><formula>" +
            f.text + "</formula><formula_info>" + f.info + "</formula_info></parameter>";
  return text + "</category></technology></vocabulary>";
}

using testing::vocabularyFrom;

MBQ::MBQVocMapSP vocabulary(const std::vector<Formula>& formulas) {
  return vocabularyFrom(vocabularyText(kResources, formulas));
}

// Terms as text: P<value> parameter, M<value> multiple, N<value> number, O<row> operator.
std::string render(const KTRQVPolishNotation& notation) {
  std::string out;
  for (const KTRQVTermType& term : notation.terms) {
    if (!out.empty()) out += ' ';
    const char* kinds = "?PONM";
    out += term.kind >= 1 && term.kind <= 4 ? kinds[term.kind] : '?';
    out += std::to_string(term.value);
  }
  return out;
}

class KTRQoSTuneTest : public ::testing::Test {
 protected:
  KTRQoSTuneTest() : tune_(kConfig, vocabulary({{1, "a", "m"}})) { EXPECT_EQ(0, tune_.init()); }

  KTRQVTune tune_;
};

// Which row each operator text is shows in the parsed formulas below; here the scanning. A
// character that starts no token fails and leaves the cursor; the end of the text is row 0 and
// moves past the terminating zero.
TEST(KTRQoSTuneTokenTest, ReadsOneTokenAndAdvances) {
  const std::map<std::string, int> kinds = {{"parameter", KTRQVTermType::kParameter},
                                            {"number", KTRQVTermType::kNumber},
                                            {"operator", KTRQVTermType::kOperator}};
  for (const auto& c : MBQ::test::caseRows(__FILE__, "tokens")) {
    const std::string& input = c.at(0);
    const char* cursor = input.c_str();
    KTRQVTermType term;
    std::string text = "old";
    if (c.at(1) == "refused") {
      EXPECT_EQ(-1, get_token(&cursor, &term, text)) << input;
      EXPECT_EQ(input.c_str(), cursor) << input;
      continue;
    }
    ASSERT_EQ(0, get_token(&cursor, &term, text)) << input;
    EXPECT_EQ(kinds.at(c[1]), term.kind) << input;
    if (c[1] == "operator") {
      EXPECT_EQ(std::stoll(c.at(2)), term.value) << input;
    } else {
      EXPECT_EQ(c.at(2), text) << input;
    }
    if (c.at(3) == "<end>") {
      EXPECT_EQ(input.c_str() + input.size() + 1, cursor) << input;
    } else {
      EXPECT_EQ(c[3], cursor) << input;
    }
  }
}

TEST(KTRQoSTuneTokenTest, OperatorFunctionsComputeWithWrapAndASafeDivision) {
  // Row, operands, result.
  const std::int64_t cases[][4] = {
      {3, 2, -1, 1},    {3, 0, 5, 0},        {3, 5, 0, 0},        {4, 3, 3, 1},       {4, 2, 3, 0},
      {5, 3, 3, 1},     {5, 4, 3, 0},        {6, 4, 3, 1},        {6, 3, 3, 0},       {7, 2, 3, 1},
      {7, 3, 3, 0},     {8, 3, 3, 1},        {9, -4, 3, 1},       {10, 3, -4, 1},     {11, -4, 3, 1},
      {12, 7, 7, 1},    {12, 7, 8, 0},       {13, 2, 3, 5},       {13, kMax, 1, kMin}, {13, kMax, kMax, -2},
      {14, 2, 3, -1},   {14, kMin, 1, kMax}, {15, 6, -7, -42},    {15, kMax, 2, -2},  {15, kMin, -1, kMin},
      {16, 7, 2, 3},    {16, -7, 2, -3},     {16, 7, 0, 0},       {16, kMin, -1, kMin},
  };
  for (const auto& [row, a, b, expected] : cases) {
    ASSERT_NE(nullptr, KTRQVOperatorTable[row].function) << row;
    EXPECT_EQ(expected, KTRQVOperatorTable[row].function(a, b)) << KTRQVOperatorTable[row].text << " " << a << " " << b;
  }
  EXPECT_EQ(nullptr, KTRQVOperatorTable[kOperatorRows].text);
  for (int row : {kOperatorEnd, kOperatorOpen, kOperatorClose}) EXPECT_EQ(nullptr, KTRQVOperatorTable[row].function);
}

TEST_F(KTRQoSTuneTest, ParsesFormulasToPostfixTerms) {
  for (const auto& row : MBQ::test::caseRows(__FILE__, "parsed")) {
    KTRQVPolishNotation notation;
    ASSERT_EQ(0, tune_.formFormula(row.at(0), notation)) << row[0];
    EXPECT_EQ(row.at(1), render(notation)) << row[0];
  }
}

// What a vocabulary can not hold; the formulas refused for their text are in formulas.t.
TEST_F(KTRQoSTuneTest, RejectsAZeroByteAndASecondMultipleName) {
  KTRQVPolishNotation zero, notation;
  EXPECT_EQ(-1, tune_.formFormula(std::string("a\0(b) c", 7), zero)) << "the text does not end early";
  // The library knows one multiple name; a second one is stood in for by an entry of the same
  // name elsewhere, which formFormula must tell apart from its own.
  ASSERT_EQ(0, tune_.formFormula("QOS", notation));
  KTRQVParamsValue other;
  notation.multiple = &other;
  EXPECT_EQ(-1, tune_.formFormula("QOS", notation));
}

TEST(KTRQoSTuneInitTest, FailsWithTheStatusAndMessage) {
  const std::string qos = "<category><name>qos</name>" + std::string(kResources) + "</category>";
  const std::string tune = "<category><name>tune</name><parameter><name>f</name><type>1</type>"
                           "<formula>a</formula><formula_info>m</formula_info></parameter></category>";
  // The vocabulary (empty: none at all), the message.
  const std::pair<std::string, const char*> cases[] = {
      {"", "invalid vocabulary"},
      {"<vocabulary>" + qos + tune + "</vocabulary>", "can not read QOS from vocabulary"},
      {vocabularyText("", {{1, "a", "m"}}), "can not read QOS from vocabulary"},
      {"<vocabulary><technology><name>quellix</name>" + qos + "</technology></vocabulary>", "can not read FORMULAE"},
      {vocabularyText(kResources, {}), "can not read FORMULAE"},
      {vocabularyText(kResources, {{1, "a &lt;= b", "m"}, {2, "(a) b", "m"}}), "can not parse formula: (a) b"},
      {vocabularyText(kResources, {{1, "QOS.soft &lt;= a.limit", "m"}}),
       "can not parse formula: QOS.soft <= a.limit"},
      {vocabularyText("<parameter><name>QOS</name></parameter>", {{1, "1", "m"}}),
       "double index 'QOS' in formulas initialization"},
  };
  for (const auto& [text, message] : cases) {
    KTRQVTune checker(kConfig, text.empty() ? nullptr : vocabularyFrom(text));
    MBQ::clearErrorMessage();
    EXPECT_EQ(kTuneFailed, checker.init()) << text;
    EXPECT_EQ(message, MBQ::getErrorMessage()) << text;
    EXPECT_TRUE(checker.getFormulas().empty());
    std::vector<KTRQVTuneFailure> failures;
    EXPECT_EQ(kTuneFailed, checker.checkParameters({}, failures));
  }
}

TEST(KTRQoSTuneInitTest, ARetryAfterAFailedInitMeetsItsOwnNames) {
  KTRQVTune tune(kConfig, vocabulary({{1, "(a)", "m"}}));
  EXPECT_EQ(kTuneFailed, tune.init());
  EXPECT_EQ(kTuneFailed, tune.init());
  EXPECT_EQ("double index 'a' in formulas initialization", MBQ::getErrorMessage());
}

TEST(KTRQoSTuneInitTest, IndexesResourcesThenQOSAndKeepsFormulasInOrder) {
  std::string text = vocabularyText(kResources, {{11, "a &lt;= b", "first"}, {12, "QOS >= 0", "second"}});
  // A formula without an id, a text or a message is skipped.
  text.insert(text.find("</category></technology>"),
              "<parameter><name>n</name><formula>a</formula><formula_info>m</formula_info></parameter>"
              "<parameter><name>o</name><type>3</type><formula_info>m</formula_info></parameter>"
              "<parameter><name>p</name><type>4</type><formula>a</formula></parameter>");
  KTRQVTune tune(kConfig, vocabularyFrom(text));
  ASSERT_EQ(0, tune.init()) << MBQ::getErrorMessage();
  EXPECT_EQ(0, tune.init());
  EXPECT_EQ(7, tune.getLastIndex());
  const char* const names[] = {"", "a", "b", "c", "x", "y", "d", "QOS"};
  for (int i = 0; i <= 7; ++i) EXPECT_EQ(names[i], tune.getByIndex(i)) << i;
  ASSERT_EQ(2u, tune.getFormulas().size());
  EXPECT_EQ(11, tune.getFormulas().front().id);
  EXPECT_EQ("a <= b", tune.getFormulas().front().formula);
  EXPECT_EQ("first", tune.getFormulas().front().info);
  EXPECT_EQ(12, tune.getFormulas().back().id);
  EXPECT_EQ(1, tune.getFormulas().back().usesMultiple);
}

// 98 resources fit (99 are refused: formulas.t), the last one's hard part still below QOS.
TEST(KTRQoSTuneInitTest, IndexesStayBelowTheHardPartOffset) {
  std::string resources;
  for (int i = 0; i < 98; ++i)
    resources += "<parameter><name>r" + std::to_string(i) + "</name><complexity>1</complexity></parameter>";
  KTRQVTune fits(kConfig, vocabularyFrom(vocabularyText(resources, {{1, "r97.hard >= 0", "m"}})));
  ASSERT_EQ(0, fits.init()) << MBQ::getErrorMessage();
  EXPECT_EQ(99, fits.getLastIndex());
  EXPECT_EQ("P198 N0 O8", render(fits.getFormulas().front()));
}

KTRQVParamsValue value(std::int64_t soft, std::int64_t hard) {
  KTRQVParamsValue v;
  v.first = soft;
  v.second = hard;
  return v;
}

TEST(KTRQoSTuneCheckTest, AnAbsentParameterFailsTheWholeCheck) {
  KTRQVTune tune(kConfig, vocabulary({{1, "a &lt;= a.hard", "m"}, {2, "a.hard &lt;= b.hard", "n"}, {3, "c", "o"}}));
  std::vector<KTRQVTuneFailure> failures;
  EXPECT_EQ(kTuneParameterAbsent, tune.checkParameters({{"a", value(2, 1)}}, failures));
  EXPECT_EQ("parameter 'b' is absent", MBQ::getErrorMessage());
  ASSERT_EQ(1u, failures.size()) << "the violation found before the failure stays";
  EXPECT_EQ(&tune.getFormulas().front(), failures[0].formula);
  EXPECT_EQ(std::set<int>{1}, failures[0].used);
}

// Violations checked through formulas.t; here what no container file can hold.
TEST(KTRQoSTuneCheckTest, UnknownNamesTheMultipleNameAndNonMembersOfQOSAreIgnored) {
  KTRQVTune tune(kConfig, vocabulary({{1, "QOS.soft &lt;= QOS.hard", "m"}}));
  std::vector<KTRQVTuneFailure> failures;
  // "QOS" holds the highest index: the by-index array has a slot for it. d is of complexity 2.
  ASSERT_EQ(0, tune.checkParameters({{"zz", value(9, 1)}, {"QOS", value(9, 1)}, {"A", value(9, 1)}, {"d", value(9, 1)}},
                                    failures));
  EXPECT_TRUE(failures.empty());
  EXPECT_EQ(0, tune.checkParameters({{"a", value(1, 1)}}, failures));  // repeated use of one checker
  EXPECT_TRUE(failures.empty());
}

TEST_F(KTRQoSTuneTest, CheckByFormulaReportsEveryIndexRead) {
  KTRQVPolishNotation notation;
  ASSERT_EQ(0, tune_.formFormula("QOS.hard <= a.hard + b", notation));
  const KTRQVParamsValue a = value(1, 5), b = value(2, 2), x = value(7, 7);
  const std::vector<const KTRQVParamsValue*> byIndex = {nullptr, &a, &b, nullptr, &x, nullptr, nullptr, nullptr};
  std::set<int> used;
  EXPECT_EQ(0, tune_.checkByFormula(byIndex, notation, used, 4));
  EXPECT_EQ((std::set<int>{1, 2, 4}), used);
  used.clear();
  EXPECT_EQ(0, tune_.checkByFormula(byIndex, notation, used, 3));  // no value: does not apply
  EXPECT_TRUE(used.empty());
  const KTRQVParamsValue big = value(0, 8);
  const std::vector<const KTRQVParamsValue*> violated = {nullptr, &a, &b, &big};
  EXPECT_EQ(1, tune_.checkByFormula(violated, notation, used, 3));
  EXPECT_EQ((std::set<int>{1, 2, 3}), used);
}

using KTRQoSTuneDeathTest = KTRQoSTuneTest;

TEST_F(KTRQoSTuneDeathTest, GetByIndexOutsideTheIndexesAborts) {
  EXPECT_EQ("QOS", tune_.getByIndex(7));
  EXPECT_DEATH(tune_.getByIndex(8), "assertion failed at ktr/lib/src/KTRFunctionality/KTRQoSTune:.*getByIndex");
  EXPECT_DEATH(tune_.getByIndex(-1), "assertion failed at ktr/lib/src/KTRFunctionality/KTRQoSTune");
}

TEST_F(KTRQoSTuneDeathTest, EvaluatingANotationNotMadeByTheParserAborts) {
  const KTRQVParamsValue a = value(1, 1);
  const std::vector<const KTRQVParamsValue*> byIndex = {nullptr, &a, nullptr, nullptr,
                                                        nullptr, nullptr, nullptr, nullptr};
  const auto notation = [](std::vector<KTRQVTermType> terms) {
    KTRQVPolishNotation n;
    n.terms = std::move(terms);
    return n;
  };
  const KTRQVTermType p{KTRQVTermType::kParameter, 1};
  const KTRQVTermType m{KTRQVTermType::kMultipleParameter, 7};
  const auto op = [](int row) { return KTRQVTermType{KTRQVTermType::kOperator, row}; };
  std::set<int> used;
  const char* const where = "assertion failed at ktr/lib/src/KTRFunctionality/KTRQoSTune:.*checkByFormula";
  EXPECT_DEATH(tune_.checkByFormula(byIndex, notation({p, op(13)}), used, -1), where);            // stack runs dry
  EXPECT_DEATH(tune_.checkByFormula(byIndex, notation({p, p}), used, -1), where);                 // two values left
  EXPECT_DEATH(tune_.checkByFormula(byIndex, notation({p, p, op(kOperatorClose)}), used, -1), where);  // no function
  EXPECT_DEATH(tune_.checkByFormula(byIndex, notation({p, p, op(18)}), used, -1), where);         // past the table
  EXPECT_DEATH(tune_.checkByFormula(byIndex, notation({m}), used, -1), where);                    // no member
  EXPECT_DEATH(tune_.checkByFormula(byIndex, notation({KTRQVTermType{9, 0}}), used, -1), where);  // unknown kind
}

}  // namespace
}  // namespace KTR
