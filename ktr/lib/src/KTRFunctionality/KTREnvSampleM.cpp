#include "KTRFunctionality/KTREnvSampleM.h"

#include <map>
#include <set>

#include "KTRFunctionality/KTREnvConfig.h"
#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "MBQFunctionalityCore/MBQEnvConfig.h"
#include "MBQMessage/MBQCodec.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

constexpr const char* kModuleName = "KTRFunctionality";
constexpr const char* kSourcePath = "ktr/lib/src/KTRFunctionality/KTREnvSampleM";

constexpr const char* kSLMMemoryLimit = "slmmemorylimit";
constexpr const char* kNumProc = "numproc";
constexpr const char* kAvNumProc = "avnumproc";

}  // namespace

int KTRQoSValidation::Reader::operator()(const MBQ::MBQMessageIterator& it, KTRQoSValidation& record) const {
  if (it.getValue(Tag::kType, record.id_) != 0) return -1;
  record.names_.clear();
  MBQ::MBQReaderData(record.names_, Tag::kParameter, MBQ::MBQReaderOptional)(it, record.names_);
  if (it.getValue(Tag::kWarning, record.formula_) != 0) return -1;
  return it.getValue(Tag::kWarningInfo, record.info_);
}

int KTRQoSValidation::Writer::operator()(MBQ::MBQMessageIterator& it, const KTRQoSValidation& record) const {
  // The record is built by the library from a parsed vocabulary, so a write cannot meet bad
  // content; a failing cursor shows in the message as a missing element.
  it.setValue(Tag::kType, record.id_);
  MBQ::MBQWriterData(record.names_, Tag::kParameter)(it, record.names_);
  it.setValue(Tag::kWarning, record.formula_);
  it.setValue(Tag::kWarningInfo, record.info_);
  return 0;
}

int validateQoSes(std::vector<KTRQoSValidation>* out, MBQ::MBQVocMapSP vocabulary, const MBQ::MBQVEnvConfig& config) {
  MBQ::MBQOptionalProperty<std::set<MBQ::MBQQoS>> qoses;
  if (config.getQoSes(qoses) != 0 || !qoses.isSpecified() || qoses.get().empty()) {
    // The wording is the one callers match on, though the cause is the configuration.
    MBQ::setErrorMessage("invalid vocabulary");
    return kTuneFailed;
  }
  MBQ::Debug::check(out != nullptr, kModuleName, kSourcePath, __LINE__, "validateQoSes");

  std::map<std::string, KTRQVParamsValue> values;
  for (const MBQ::MBQQoS& qos : qoses.get()) {
    KTRQVParamsValue& value = values[qos.getId()];
    value.second = qos.getLimit();
    value.first = qos.getBarrier().isSpecified() ? qos.getBarrier().get() : qos.getLimit();
  }

  MBQ::MBQOptionalProperty<std::string> slmMode;
  KTREnvConfig(config.msg(), MBQ::EnvConfigVirtual).getSLMMode(slmMode);
  if (slmMode.isSpecified()) {
    const bool limited = values.count(kSLMMemoryLimit) != 0;
    const std::string mode = MBQ::toLower(slmMode.get());
    if (mode == "slm") return limited ? 0 : kSLMMemoryLimitMissing;
    if (mode == "all" && limited) return 0;
  }

  // The container's own avnumproc is an estimate nobody keeps up to date; half of numproc is
  // what the formulas are written for.
  auto numproc = values.find(kNumProc);
  auto avnumproc = values.find(kAvNumProc);
  if (numproc != values.end() && avnumproc != values.end()) {
    avnumproc->second = numproc->second;
    avnumproc->second.first /= 2;
    avnumproc->second.second /= 2;
  }

  KTRQVTune tune(config, vocabulary);
  std::vector<KTRQVTuneFailure> failures;
  if (int rc = tune.checkParameters(values, failures)) return rc;
  for (const KTRQVTuneFailure& failure : failures) {
    std::vector<std::string> names;
    for (int index : failure.used) names.push_back(tune.getByIndex(index));
    out->emplace_back(std::move(names), failure.formula->id, failure.formula->formula, failure.formula->info);
  }
  return 0;
}

}  // namespace KTR
