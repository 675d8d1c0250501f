// Arbitrary bytes as a formula and values: the text up to the first newline is parsed; the bytes
// after it give the values of the resources a, b, c, x, y, d (16 bytes each: barrier, limit;
// a resource whose bytes run out has no value). A formula that parses is then evaluated, once
// per member when it uses QOS. Nothing may abort: not a division by zero, not an overflow, not a
// parenthesised text that slipped through the parser.
#include <cstring>
#include <memory>
#include <set>
#include <vector>

#include "FuzzTarget.h"
#include "KTRFunctionality/KTRQoSTune.h"
#include "MBQFunctionalityCore/MBQEnvConfig.h"
#include "MBQFunctionalityCore/MBQVocMap.h"

namespace {

const char* const kVocabulary =
    "<vocabulary><technology><name>quellix</name><category><name>qos</name>"
    "<parameter><name>a</name><complexity>1</complexity></parameter>"
    "<parameter><name>b</name><complexity>1</complexity></parameter>"
    "<parameter><name>c</name><complexity>1</complexity></parameter>"
    "<parameter><name>x</name><complexity>1</complexity></parameter>"
    "<parameter><name>y</name><complexity>0</complexity></parameter>"
    "<parameter><name>d</name><complexity>2</complexity></parameter>"
    "</category><category><name>tune</name><parameter><name>f</name><type>1</type><formula>a</formula>"
    "<formula_info>m</formula_info></parameter></category></technology></vocabulary>";
constexpr int kResources = 6;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static KTR::KTRQVTune& tune = *[] {
    auto vocabulary = std::make_shared<MBQ::MBQVocMap>();
    if (vocabulary->load(kVocabulary) != 0) std::abort();
    static const MBQ::MBQVEnvConfig config;
    auto* made = new KTR::KTRQVTune(config, vocabulary);
    if (made->init() != 0) std::abort();
    return made;
  }();
  const char* bytes = reinterpret_cast<const char*>(data);
  const char* newline = static_cast<const char*>(std::memchr(bytes, '\n', size));
  const std::size_t formulaLength = newline ? static_cast<std::size_t>(newline - bytes) : size;
  const std::string formula(bytes, formulaLength);

  KTR::KTRQVPolishNotation notation;
  if (tune.formFormula(formula, notation) != 0) return 0;
  if (formula.find_first_of("()") != std::string::npos) std::abort();
  KTR::KTRQVPolishNotation again;
  if (tune.formFormula(formula, again) != 0 || again.terms.size() != notation.terms.size()) std::abort();

  std::vector<KTR::KTRQVParamsValue> values(kResources);
  std::vector<const KTR::KTRQVParamsValue*> byIndex(tune.getLastIndex() + 1, nullptr);
  std::size_t at = newline ? formulaLength + 1 : size;
  for (int i = 0; i < kResources && at + 16 <= size; ++i, at += 16) {
    std::memcpy(&values[i].first, data + at, 8);
    std::memcpy(&values[i].second, data + at + 8, 8);
    byIndex[i + 1] = &values[i];
  }
  std::vector<int> members = {-1};
  if (notation.usesMultiple != 0) members.assign(notation.multiple->members.begin(), notation.multiple->members.end());
  for (int member : members) {
    std::set<int> used;
    const int rc = tune.checkByFormula(byIndex, notation, used, member);
    if (rc != 0 && rc != 1 && rc != KTR::kTuneParameterAbsent) std::abort();
    for (int index : used)
      if (index < 1 || index > kResources || byIndex[index] == nullptr) std::abort();
  }
  return 0;
}
