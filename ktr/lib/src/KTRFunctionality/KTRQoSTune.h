#pragma once

// Resource-parameter formulas: parsing a formula text into postfix terms, and checking a set of
// resource values against every formula of a vocabulary.
//
// Formula grammar (the language an operator writes in the vocabulary's "tune" category; see
// docs/vocabulary.md for the operator's view):
//
//   formula  := operand (operator operand)*
//   operand  := name | number
//   name     := letter (letter | digit | ".")*          a "qos" parameter or the multiple name,
//                                                       optionally ".soft" / ".hard"
//   number   := digit (letter | digit | ".")*           read as a float, optionally "kb" / "mb"
//   operator := "&&" | ">=" | "<=" | ">" | "<" | "==" | "+" | "-" | "*" | "/"
//               | "&gt;=" | "&lt;=" | "&gt;" | "&lt;"  (entity spellings, same meaning)
//
// Binding from loose to tight: "&&" (3); comparisons (5); "+" "-" (7); "*" "/" (9). Operators of
// equal priority group to the left. There is no unary minus and there are no parentheses: a
// formula holding "(" or ")" is rejected when it is parsed.
//
// Arithmetic is on signed 64-bit values that wrap around (computed as unsigned), so "unlimited"
// values (9223372036854775807) in sums and products give defined, if meaningless, results.
// A division by zero yields 0, and the most negative value divided by -1 yields itself.

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"

namespace MBQ {
class MBQVocMap;
class MBQVEnvConfig;
}  // namespace MBQ

namespace KTR {

// Statuses of KTRQVTune (besides 0); the error text says what went wrong.
constexpr int kTuneFailed = -2;            // vocabulary unusable, formula unparsable, double index
constexpr int kTuneParameterAbsent = -3;   // a formula reads a parameter the checked set lacks

// Term values of parameters address the hard part (the limit) of parameter i as i + 100, so
// parameter indexes stay below this bound.
constexpr int kHardPartOffset = 100;

// One term of a parsed formula.
struct KTR_EXPORT KTRQVTermType {
  enum Kind : std::int32_t { kParameter = 1, kOperator = 2, kNumber = 3, kMultipleParameter = 4 };

  // One of Kind.
  std::int32_t kind = 0;
  // Parameter or multiple parameter: the parameter's index, plus kHardPartOffset for the hard
  // part. Operator: its row in KTRQVOperatorTable. Number: the number.
  std::int64_t value = 0;
};

// A row of the operator table: its text, its priority and what it computes (null for the
// rows that are not arithmetic: the end of the formula and the parentheses).
struct KTRQVOperator {
  const char* text;
  int priority;
  std::int64_t (*function)(std::int64_t a, std::int64_t b);
};

// Rows of KTRQVOperatorTable with a meaning of their own.
constexpr int kOperatorEnd = 0;     // "dummy": the terminating zero of the formula
constexpr int kOperatorOpen = 1;    // "("
constexpr int kOperatorClose = 2;   // ")"
// Rows with a text; the table has one more row, whose text is null.
constexpr int kOperatorRows = 17;

// The operator table, searched in row order: longer texts stand before their prefixes, so the
// first match is the longest. Comparisons yield 1 or 0.
KTR_EXPORT extern const KTRQVOperator KTRQVOperatorTable[kOperatorRows + 1];

// Reads one token at *cursor (a zero-terminated text) and advances the cursor past it.
// - A letter starts a name, a digit a number (kind kParameter or kNumber); the token runs over
//   letters, digits and dots and is put in `text`; term->value is not set.
// - Anything else is an operator (kind kOperator, value = its row). The terminating zero is
//   row kOperatorEnd, and the cursor then moves past the zero: read no further.
// Returns 0, or -1 (cursor unchanged) for a character that starts no token.
KTR_EXPORT int get_token(const char** cursor, KTRQVTermType* term, std::string& text);

// A resource value set entry, or a parameter index entry (see KTRQVTune).
struct KTR_EXPORT KTRQVParamsValue {
  // In a value set: the soft value (barrier). In the parameter index: the parameter's index.
  std::int64_t first = 0;
  // In a value set: the hard value (limit).
  std::int64_t second = 0;
  // In the parameter index: the indexes a multiple parameter stands for (else empty).
  std::vector<std::int32_t> members;
};

// One parsed formula, in postfix order.
struct KTR_EXPORT KTRQVPolishNotation {
  std::vector<KTRQVTermType> terms;
  // 1 when a multiple parameter occurs, then `multiple` is its parameter index entry (owned by
  // the KTRQVTune that parsed the formula); a formula names at most one multiple parameter.
  std::int32_t usesMultiple = 0;
  const KTRQVParamsValue* multiple = nullptr;
};

// A formula of the vocabulary: its id, its text and the message that goes with it.
struct KTR_EXPORT KTRQVFormula : KTRQVPolishNotation {
  std::int32_t id = 0;
  std::string formula;
  std::string info;
};

// A violated formula (owned by the KTRQVTune that reported it: valid while that lives) and the
// indexes of the parameters its evaluation read.
struct KTR_EXPORT KTRQVTuneFailure {
  const KTRQVFormula* formula = nullptr;
  std::set<int> used;
};

class KTRQVTune;
// The expansion of a multiple name into the indexes of the parameters it stands for.
using KTRQVMultipleOperation = int (KTRQVTune::*)(std::vector<std::int32_t>& members);

// The multiple names: "QOS" (every "qos" parameter, KTRQVTune::addQOStoIndex) and an empty name
// without an operation. Built at library load, read-only afterwards.
KTR_EXPORT extern const std::map<std::string, KTRQVMultipleOperation> MultipleTuneMap;

// The formula checker of one vocabulary. It reads the parameters of category "qos" and the
// formulas of category "tune" (both of technology "quellix") on first use, gives every
// parameter an index from 1 upward (the multiple name "QOS" last), and parses every formula once.
//
// Not thread-safe: one thread uses a checker at a time. Formulas and failures point into the
// checker, so it cannot be copied.
class KTR_EXPORT KTRQVTune {
 public:
  // The configuration is accepted for the callers' sake and not used; the vocabulary may be
  // null (init then fails).
  KTRQVTune(const MBQ::MBQVEnvConfig& config, std::shared_ptr<const MBQ::MBQVocMap> vocabulary);
  KTRQVTune(const KTRQVTune&) = delete;
  KTRQVTune& operator=(const KTRQVTune&) = delete;
  ~KTRQVTune();

  // Loads the parameter index and the formulas, once; 0 at once when already done. Failures:
  // kTuneFailed with "invalid vocabulary", "can not read QOS from vocabulary", "can not read
  // FORMULAE", "can not parse formula: <text>" or a getNewIndex message. Formulas lacking
  // an id (type), a text (formula) or a message (formula_info) are skipped. A failed init is retried by
  // the next call, but the names it indexed stay, so the retry fails as a double index.
  int init();

  // Gives `name` the next index and, when `entry` is not null, hands out its index entry
  // (valid while the checker lives). kTuneFailed with "double index '<name>' in formulas
  // initialization" for a name met before, or "too many parameters in formulas initialization
  // ('<name>')" when the index would reach kHardPartOffset.
  int getNewIndex(const std::string& name, KTRQVParamsValue** entry);

  // Appends the indexes of every "qos" parameter whose complexity (complexity, default 1) is not 2;
  // they must all be indexed already. 0, or kTuneFailed with "can not read QOS from vocabulary".
  int addQOStoIndex(std::vector<std::int32_t>& members);

  // The name of an index, 0 … the last index handed out (index 0 names nothing: ""). Any other
  // index ends the process.
  const std::string& getByIndex(int index) const;

  // Parses `formula` into `out` (appending to its terms; on failure they are partly filled):
  // 0, or -1 for a text that is not a formula of the grammar above (a zero byte inside the
  // text included), names an unknown
  // parameter, or uses two different multiple names. Needs the parameter index, so call it
  // after init(). Sets no error text.
  int formFormula(const std::string& formula, KTRQVPolishNotation& out);

  // Runs init(), then evaluates every formula on `values` (name → soft/hard values; names the
  // vocabulary does not know are ignored). A formula without a multiple name is evaluated once;
  // one with a multiple name once per member that `values` holds. Each evaluation to 0 appends
  // a failure. Returns 0, the init status, or kTuneParameterAbsent with "parameter '<name>' is
  // absent" when a formula reads a value that `values` lacks (`failures` then partly filled).
  int checkParameters(const std::map<std::string, KTRQVParamsValue>& values,
                      std::vector<KTRQVTuneFailure>& failures);

  // Evaluates one formula on values by index (`byIndex[i]` null: parameter i has no value),
  // adding the indexes read to `used`; `member` is the parameter a multiple name stands for in
  // this evaluation (-1 without). 1: violated (evaluates to 0); 0: holds, or the multiple
  // name's member has no value; kTuneParameterAbsent (with the error text) when another
  // parameter has no value. A formula not made by formFormula of this checker, or a negative
  // member for a formula with a multiple name, ends the process.
  int checkByFormula(const std::vector<const KTRQVParamsValue*>& byIndex, const KTRQVPolishNotation& formula,
                     std::set<int>& used, int member);

  // The parsed formulas in vocabulary order (empty before a successful init).
  const std::list<KTRQVFormula>& getFormulas() const { return formulas_; }
  // The last index handed out (0: none).
  int getLastIndex() const { return lastIndex_; }

 private:
  std::shared_ptr<const MBQ::MBQVocMap> vocabulary_;
  int lastIndex_ = 0;
  std::map<std::string, KTRQVParamsValue> index_;
  std::vector<std::string> namesByIndex_;
  std::list<KTRQVFormula> formulas_;
  bool initialised_ = false;
  // Scratch space of the checks, kept between calls so that checking allocates nothing.
  std::vector<std::int64_t> stack_;
  std::vector<const KTRQVParamsValue*> byIndex_;

  template <class Recorder>
  int evaluate(const std::vector<const KTRQVParamsValue*>& byIndex, const KTRQVPolishNotation& formula,
               Recorder& used, int member);
};

}  // namespace KTR
