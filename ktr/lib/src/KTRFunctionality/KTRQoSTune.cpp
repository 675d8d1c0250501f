#include "KTRFunctionality/KTRQoSTune.h"

#include <strings.h>

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "MBQFunctionalityCore/MBQVocMap.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

constexpr const char* kModuleName = "KTRFunctionality";
constexpr const char* kSourcePath = "ktr/lib/src/KTRFunctionality/KTRQoSTune";
constexpr const char* kTechnology = "quellix";
constexpr const char* kResourceCategory = "qos";
constexpr const char* kFormulasCategory = MBQ::MBQVocMap::kFormulasCategory;
// Parameters of this complexity have no readable value, so the multiple name leaves them out.
constexpr int kUncoveredComplexity = 2;

// Wrapping arithmetic: the values of "unlimited" resources are near the top of the range, and
// signed overflow would make a sum of two of them undefined rather than merely meaningless.
std::int64_t wrap(std::uint64_t value) { return static_cast<std::int64_t>(value); }

std::int64_t op_and(std::int64_t a, std::int64_t b) { return a != 0 && b != 0; }
std::int64_t op_ge(std::int64_t a, std::int64_t b) { return a >= b; }
std::int64_t op_le(std::int64_t a, std::int64_t b) { return a <= b; }
std::int64_t op_greater(std::int64_t a, std::int64_t b) { return a > b; }
std::int64_t op_less(std::int64_t a, std::int64_t b) { return a < b; }
std::int64_t op_eq(std::int64_t a, std::int64_t b) { return a == b; }
std::int64_t op_plus(std::int64_t a, std::int64_t b) {
  return wrap(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
std::int64_t op_minus(std::int64_t a, std::int64_t b) {
  return wrap(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}
std::int64_t op_mul(std::int64_t a, std::int64_t b) {
  return wrap(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}
// Formulas come from operators' vocabularies, so a zero divisor is bad input and must not end
// the agent. 0 makes the comparison around the quotient decide, which for the usual
// "x / y >= n" reports the formula as violated rather than silently passing it.
std::int64_t op_div(std::int64_t a, std::int64_t b) {
  if (b == 0) return 0;
  if (b == -1) return wrap(0 - static_cast<std::uint64_t>(a));  // INT64_MIN / -1 wraps too
  return a / b;
}

const std::pair<const char*, KTRQVMultipleOperation> Map_MultipleTuneMap_Array[] = {
    {"QOS", &KTRQVTune::addQOStoIndex},
    {"", nullptr},
};

// The single-precision reading of a number token; -1 for anything but a float with an optional
// "kb"/"mb" suffix, or a value beyond the signed 64-bit range.
int readNumber(const std::string& text, std::int64_t& value) {
  float number = 0;
  float multiplier = 1;
  int consumed = -1;
  char suffix[3] = {};
  const int length = static_cast<int>(text.size());
  if (std::sscanf(text.c_str(), "%f%n", &number, &consumed) == 1 && consumed == length) {
    multiplier = 1;
  } else {
    consumed = -1;
    if (std::sscanf(text.c_str(), "%f%2s%n", &number, suffix, &consumed) != 2 || consumed != length) return -1;
    if (strcasecmp(suffix, "kb") == 0)
      multiplier = 1024;
    else if (strcasecmp(suffix, "mb") == 0)
      multiplier = 1048576;
    else
      return -1;
  }
  const float product = multiplier * number;
  // 2^63 is exact in single precision; converting anything at or past it is undefined.
  constexpr float kLimit = 9223372036854775808.0f;
  if (!std::isfinite(product) || product >= kLimit || product < -kLimit) return -1;
  value = static_cast<std::int64_t>(product);
  return 0;
}

// MBQ::Debug::check with the condition tested here: the evaluation runs a few hundred of these
// per container, and a call into the core library for each would be most of its cost.
inline void expect(bool condition, int line, const char* function) {
  if (!condition) MBQ::abort(kModuleName, kSourcePath, line, function);
}

// What an evaluation does with the indexes it reads: the public check collects them, the bulk
// check first evaluates without collecting and re-runs only the violated formulas.
struct IgnoreUsed {
  void insert(int) {}
};

}  // namespace

const KTRQVOperator KTRQVOperatorTable[kOperatorRows + 1] = {
    {"dummy", -1, nullptr},  {"(", 0, nullptr},         {")", 1, nullptr},       {"&&", 3, op_and},
    {"&gt;=", 5, op_ge},     {"&lt;=", 5, op_le},       {"&gt;", 5, op_greater}, {"&lt;", 5, op_less},
    {">=", 5, op_ge},        {"<=", 5, op_le},          {">", 5, op_greater},    {"<", 5, op_less},
    {"==", 5, op_eq},        {"+", 7, op_plus},         {"-", 7, op_minus},      {"*", 9, op_mul},
    {"/", 9, op_div},        {nullptr, 0, nullptr},
};

const std::map<std::string, KTRQVMultipleOperation> MultipleTuneMap(std::begin(Map_MultipleTuneMap_Array),
                                                                      std::end(Map_MultipleTuneMap_Array));

int get_token(const char** cursor, KTRQVTermType* term, std::string& text) {
  const char* at = *cursor;
  while (std::isspace(static_cast<unsigned char>(*at))) ++at;
  const unsigned char first = static_cast<unsigned char>(*at);
  if (std::isalpha(first) || std::isdigit(first)) {
    term->kind = std::isalpha(first) ? KTRQVTermType::kParameter : KTRQVTermType::kNumber;
    text.clear();
    while (std::isalnum(static_cast<unsigned char>(*at)) || *at == '.') text.push_back(*at++);
    *cursor = at;
    return 0;
  }
  term->kind = KTRQVTermType::kOperator;
  if (*at == '\0') {
    term->value = kOperatorEnd;
    *cursor = at + 1;
    return 0;
  }
  // Row 0 ("dummy") only stands for the terminating zero; its text is never matched.
  for (int row = kOperatorEnd + 1; KTRQVOperatorTable[row].text != nullptr; ++row) {
    const char* operatorText = KTRQVOperatorTable[row].text;
    const std::size_t length = std::strlen(operatorText);
    if (std::strncmp(at, operatorText, length) == 0) {
      term->value = row;
      *cursor = at + length;
      return 0;
    }
  }
  return -1;
}

// ---------------------------------------------------------------- KTRQVTune

KTRQVTune::KTRQVTune(const MBQ::MBQVEnvConfig&, std::shared_ptr<const MBQ::MBQVocMap> vocabulary)
    : vocabulary_(std::move(vocabulary)) {}

KTRQVTune::~KTRQVTune() = default;

int KTRQVTune::formFormula(const std::string& formula, KTRQVPolishNotation& out) {
  std::vector<int> operators;
  const auto emitOperator = [&out](int row) {
    KTRQVTermType term;
    term.kind = KTRQVTermType::kOperator;
    term.value = row;
    out.terms.push_back(term);
  };
  const char* cursor = formula.c_str();
  std::string text;
  KTRQVTermType term;
  bool ended = false;
  while (!ended && get_token(&cursor, &term, text) == 0) {
    switch (term.kind) {
      case KTRQVTermType::kOperator: {
        const int row = static_cast<int>(term.value);
        if (row == kOperatorOpen) {
          operators.push_back(row);
          break;
        }
        // Popping equal priorities first is what groups a - b - c to the left.
        while (!operators.empty() &&
               KTRQVOperatorTable[operators.back()].priority >= KTRQVOperatorTable[row].priority) {
          emitOperator(operators.back());
          operators.pop_back();
        }
        if (row == kOperatorClose) {
          if (operators.empty()) return -1;
          // Everything of a priority above "(" was popped, a previous ")" included.
          MBQ::Debug::check(operators.back() == kOperatorOpen, kModuleName, kSourcePath, __LINE__,
                            "KTRQVTune::formFormula");
          operators.pop_back();
        }
        if (row == kOperatorEnd) {
          ended = true;
          break;
        }
        operators.push_back(row);
        break;
      }
      case KTRQVTermType::kNumber: {
        if (readNumber(text, term.value) != 0) return -1;
        out.terms.push_back(term);
        break;
      }
      case KTRQVTermType::kParameter: {
        bool hard = false;
        std::string name = text;
        const std::string::size_type dot = name.rfind('.');
        if (dot != std::string::npos) {
          // Searched for, not compared: ".softlimit" counts as soft.
          const std::string part = name.substr(dot + 1);
          if (part.find("soft") != std::string::npos)
            hard = false;
          else if (part.find("hard") != std::string::npos)
            hard = true;
          else
            return -1;
          name.erase(dot);
        }
        auto entry = index_.find(name);
        if (entry == index_.end()) return -1;
        if (MultipleTuneMap.count(name) != 0) {
          if (out.usesMultiple != 0 && out.multiple != &entry->second) return -1;
          out.usesMultiple = 1;
          out.multiple = &entry->second;
          term.kind = KTRQVTermType::kMultipleParameter;
        }
        term.value = entry->second.first + (hard ? kHardPartOffset : 0);
        out.terms.push_back(term);
        break;
      }
      default:
        MBQ::abort(kModuleName, kSourcePath, __LINE__, "KTRQVTune::formFormula");
    }
  }
  // A zero inside the text would end the formula early and hide the rest from these checks.
  if (!ended || cursor != formula.c_str() + formula.size() + 1) return -1;
  // The stack depth the evaluation will reach: it must never run dry and end at one value.
  int depth = 0;
  for (const KTRQVTermType& emitted : out.terms) {
    if (emitted.kind != KTRQVTermType::kOperator) {
      ++depth;
    } else if (emitted.value == kOperatorOpen || emitted.value == kOperatorClose) {
      // An unclosed "(", or the ")" that stays on the stack after closing its group. Texts such
      // as "(a) b" would otherwise pass the depth count with an operator that computes nothing.
      return -1;
    } else {
      --depth;
    }
    if (depth < 1) return -1;
  }
  return depth == 1 ? 0 : -1;
}

int KTRQVTune::init() {
  if (!vocabulary_) {
    MBQ::setErrorMessage("invalid vocabulary");
    return kTuneFailed;
  }
  if (initialised_) return 0;
  lastIndex_ = 0;
  MBQ::MBQVocCategorySP resources = vocabulary_->readCategory({kTechnology, kResourceCategory});
  std::unique_ptr<MBQ::MBQVocIterator> parameter;
  if (resources) parameter = std::make_unique<MBQ::MBQVocIterator>(*resources);
  if (!parameter || parameter->first() != 0) {
    MBQ::setErrorMessage("can not read QOS from vocabulary");
    return kTuneFailed;
  }
  for (; parameter->isValid(); parameter->next()) {
    std::string name;
    if ((*parameter)->getValue(Tag::kName, name) != 0) continue;
    if (int rc = getNewIndex(name, nullptr)) return rc;
  }
  for (const auto& [name, operation] : MultipleTuneMap) {
    if (name.empty()) continue;
    KTRQVParamsValue* entry = nullptr;
    if (int rc = getNewIndex(name, &entry)) return rc;
    if (int rc = (this->*operation)(entry->members)) return rc;
  }
  MBQ::MBQVocCategorySP formulas = vocabulary_->readCategory({kTechnology, kFormulasCategory});
  std::unique_ptr<MBQ::MBQVocIterator> formula;
  if (formulas) formula = std::make_unique<MBQ::MBQVocIterator>(*formulas);
  if (!formula || formula->first() != 0) {
    MBQ::setErrorMessage("can not read FORMULAE");
    return kTuneFailed;
  }
  std::list<KTRQVFormula> parsed;
  for (; formula->isValid(); formula->next()) {
    std::string id, text, info;
    const MBQ::MBQMessageIterator& element = formula->parameter();
    if (element.getValue(Tag::kType, id) != 0 || element.getValue(Tag::kFormula, text) != 0 ||
        element.getValue(Tag::kFormulaInfo, info) != 0)
      continue;
    KTRQVFormula& entry = parsed.emplace_back();
    entry.id = static_cast<std::int32_t>(MBQ::strToLonglong(id, 0LL));
    entry.formula = text;
    entry.info = info;
    if (formFormula(entry.formula, entry) != 0) {
      MBQ::setErrorMessage("can not parse formula: %s", text.c_str());
      return kTuneFailed;
    }
  }
  formulas_ = std::move(parsed);
  initialised_ = true;
  return 0;
}

int KTRQVTune::getNewIndex(const std::string& name, KTRQVParamsValue** entry) {
  if (index_.count(name) != 0) {
    MBQ::setErrorMessage("double index '%s' in formulas initialization", name.c_str());
    return kTuneFailed;
  }
  // Term values tell the hard part by adding kHardPartOffset; a larger index would read as the
  // hard part of another parameter.
  if (lastIndex_ + 1 >= kHardPartOffset) {
    MBQ::setErrorMessage("too many parameters in formulas initialization ('%s')", name.c_str());
    return kTuneFailed;
  }
  const int index = ++lastIndex_;
  KTRQVParamsValue& added = index_[name];
  added.first = index;
  if (static_cast<std::size_t>(index) >= namesByIndex_.size()) namesByIndex_.resize(index + 5);
  namesByIndex_[index] = name;
  if (entry != nullptr) *entry = &added;
  return 0;
}

int KTRQVTune::addQOStoIndex(std::vector<std::int32_t>& members) {
  MBQ::MBQVocCategorySP resources =
      vocabulary_ ? vocabulary_->readCategory({kTechnology, kResourceCategory}) : nullptr;
  if (!resources) {
    MBQ::setErrorMessage("can not read QOS from vocabulary");
    return kTuneFailed;
  }
  MBQ::MBQVocIterator parameter = resources->iterator();
  for (int rc = parameter.first(); rc == 0; rc = parameter.next()) {
    std::string name;
    if (parameter->getValue(Tag::kName, name) != 0) continue;
    int complexity = 1;
    parameter->getValue(Tag::kComplexity, complexity);
    if (complexity == kUncoveredComplexity) continue;
    auto entry = index_.find(name);
    MBQ::Debug::check(entry != index_.end(), kModuleName, kSourcePath, __LINE__, "KTRQVTune::addQOStoIndex");
    members.push_back(static_cast<std::int32_t>(entry->second.first));
  }
  return 0;
}

const std::string& KTRQVTune::getByIndex(int index) const {
  MBQ::Debug::check(index >= 0 && index <= lastIndex_ && static_cast<std::size_t>(index) < namesByIndex_.size(),
                    kModuleName, kSourcePath, __LINE__, "KTRQVTune::getByIndex");
  return namesByIndex_[index];
}

template <class Recorder>
int KTRQVTune::evaluate(const std::vector<const KTRQVParamsValue*>& byIndex, const KTRQVPolishNotation& formula,
                        Recorder& used, int member) {
  constexpr const char* kFunction = "KTRQVTune::checkByFormula";
  std::vector<std::int64_t>& stack = stack_;
  stack.clear();
  for (const KTRQVTermType& term : formula.terms) {
    switch (term.kind) {
      case KTRQVTermType::kNumber:
        stack.push_back(term.value);
        break;
      case KTRQVTermType::kParameter: {
        const std::int64_t index = term.value % kHardPartOffset;
        expect(index >= 0 && static_cast<std::uint64_t>(index) < byIndex.size(), __LINE__, kFunction);
        const KTRQVParamsValue* value = byIndex[index];
        if (value == nullptr) {
          MBQ::setErrorMessage("parameter '%s' is absent", getByIndex(static_cast<int>(index)).c_str());
          return kTuneParameterAbsent;
        }
        used.insert(static_cast<int>(index));
        stack.push_back(term.value >= kHardPartOffset ? value->second : value->first);
        break;
      }
      case KTRQVTermType::kMultipleParameter: {
        expect(member >= 0 && static_cast<std::size_t>(member) < byIndex.size(), __LINE__, kFunction);
        const KTRQVParamsValue* value = byIndex[member];
        if (value == nullptr) return 0;  // the formula does not apply to this member
        used.insert(member);
        stack.push_back(term.value >= kHardPartOffset ? value->second : value->first);
        break;
      }
      case KTRQVTermType::kOperator: {
        expect(stack.size() >= 2, __LINE__, kFunction);
        const std::int64_t b = stack.back();
        stack.pop_back();
        const std::int64_t a = stack.back();
        stack.pop_back();
        expect(term.value >= 0 && term.value <= kOperatorRows, __LINE__, kFunction);
        const KTRQVOperator& row = KTRQVOperatorTable[term.value];
        expect(row.function != nullptr, __LINE__, kFunction);
        stack.push_back(row.function(a, b));
        break;
      }
      default:
        MBQ::abort(kModuleName, kSourcePath, __LINE__, kFunction);
    }
  }
  expect(stack.size() == 1, __LINE__, kFunction);
  return stack.back() == 0 ? 1 : 0;
}

int KTRQVTune::checkByFormula(const std::vector<const KTRQVParamsValue*>& byIndex, const KTRQVPolishNotation& formula,
                              std::set<int>& used, int member) {
  return evaluate(byIndex, formula, used, member);
}

int KTRQVTune::checkParameters(const std::map<std::string, KTRQVParamsValue>& values,
                               std::vector<KTRQVTuneFailure>& failures) {
  if (int rc = init()) return rc;
  // One slot more than the last index: indexes start at 1, and the highest needs its slot too.
  byIndex_.assign(static_cast<std::size_t>(lastIndex_) + 1, nullptr);
  // Both maps are ordered by name, so one merging walk finds every known name.
  auto entry = index_.begin();
  for (auto value = values.begin(); value != values.end() && entry != index_.end();) {
    if (value->first < entry->first) {
      ++value;
    } else if (entry->first < value->first) {
      ++entry;
    } else {
      byIndex_[entry->second.first] = &value->second;
      ++value;
      ++entry;
    }
  }
  // Most evaluations hold, so they run without collecting the indexes read; a violated one is
  // evaluated again to collect them (evaluation has no side effects, so both runs agree).
  const auto check = [&](const KTRQVFormula& formula, int member) {
    IgnoreUsed ignore;
    int rc = evaluate(byIndex_, formula, ignore, member);
    if (rc <= 0) return rc;
    KTRQVTuneFailure failure;
    failure.formula = &formula;
    rc = evaluate(byIndex_, formula, failure.used, member);
    if (rc > 0) failures.push_back(std::move(failure));
    return rc;
  };
  for (const KTRQVFormula& formula : formulas_) {
    if (formula.usesMultiple == 0) {
      if (int rc = check(formula, -1); rc < 0) return rc;
      continue;
    }
    for (std::int32_t member : formula.multiple->members)
      if (int rc = check(formula, member); rc < 0) return rc;
  }
  return 0;
}

}  // namespace KTR
