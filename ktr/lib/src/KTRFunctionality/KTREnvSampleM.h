#pragma once

// Validation of a container's resource (QoS) values against the vocabulary's formulas, and the
// record that reports one violated formula.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "KTRFunctionality/KTRQoSTune.h"
#include "MBQFunctionalityCore/MBQVocMap.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {
class MBQVEnvConfig;
}  // namespace MBQ

namespace KTR {

// One violated formula: the names of the parameters it read, its id, its text and its message.
//
// Layout, in writing order: type id; parameter one element per parameter name; warning the formula
// text; warning_info the message. The writer writes all of them and returns 0. The reader requires the
// id, the formula and the message (-1 when one is missing, fields read before it keeping their
// new values) and takes the names as found (none: an empty list).
class KTR_EXPORT KTRQoSValidation {
 public:
  KTRQoSValidation() = default;
  KTRQoSValidation(std::vector<std::string> names, std::int32_t id, std::string formula, std::string info)
      : names_(std::move(names)), id_(id), formula_(std::move(formula)), info_(std::move(info)) {}

  const std::vector<std::string>& getNames() const { return names_; }
  void setNames(const std::vector<std::string>& names) { names_ = names; }
  std::int32_t getId() const { return id_; }
  void setId(std::int32_t id) { id_ = id; }
  const std::string& getFormula() const { return formula_; }
  void setFormula(const std::string& formula) { formula_ = formula; }
  // The formula's message (formula_info in the vocabulary).
  const std::string& getInfo() const { return info_; }
  void setInfo(const std::string& info) { info_ = info; }

  bool operator==(const KTRQoSValidation& o) const {
    return names_ == o.names_ && id_ == o.id_ && formula_ == o.formula_ && info_ == o.info_;
  }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRQoSValidation& record) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRQoSValidation& record) const;
  };

 private:
  std::vector<std::string> names_;
  std::int32_t id_ = 0;
  std::string formula_;
  std::string info_;
};

// The result of validateQoSes when the container's SLM mode is "slm" and it sets no
// "slmmemorylimit".
constexpr int kSLMMemoryLimitMissing = 1;

// Checks the resource values of `config` against the formulas of `vocabulary` (a new
// KTRQVTune each call) and appends one record per violation to *out, in formula order (a
// formula over the multiple name once per violating resource); names are in index order.
//
// What the formulas see: a value without a barrier has barrier = limit; when both "numproc" and
// "avnumproc" are set, "avnumproc" is replaced by "numproc" with barrier and limit halved.
// The SLM mode (compared without case) may replace the check: "slm" returns 0 when
// "slmmemorylimit" is set, else kSLMMemoryLimitMissing; "all" with "slmmemorylimit" set returns
// 0; nothing is appended in either case.
//
// Returns 0 when the check ran (violations, if any, appended), the SLM result above,
// kTuneFailed (-2) with "invalid vocabulary" when the configuration has no resource values,
// or the status and message of KTRQVTune::checkParameters (kTuneFailed, kTuneParameterAbsent).
// A null `out` ends the process.
KTR_EXPORT int validateQoSes(std::vector<KTRQoSValidation>* out, MBQ::MBQVocMapSP vocabulary,
                             const MBQ::MBQVEnvConfig& config);

}  // namespace KTR
